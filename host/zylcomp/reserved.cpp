#include "host/zylcomp/analyzer.h"

#include <cstddef>
#include <cstring>

#include "frontend/parser.h"
#include "frontend/preprocessor.h"

namespace {

// Always reserved: the words of the schema language itself. Case matters,
// so "OID" is reserved while "HA" and "AUTO_OID" are not.
char const* const schemaWords[] = {
    "class", "signed", "unsigned", "char", "binary", "OID", "oid", "compact", "struct", "list",
    "sequences", "autoid", "hash", "tree", "double", "float", "string", "declare", "database",
    "voluntary", "optional", "date", "time", "datetime", "vector", "history", "unique", "nonunique",
    "ascending", "asc", "descending", "desc", "case_insensitive", "ignore_case", "ref", "event", "new",
    "delete", "delete_all", "checkpoint", "update", "uptable", "downtable", "iot", "calculator",
    "nchar", "nstring", "direct", "packed", "persistent", "transient", "local", "distributed",
    "distrib", "userdef", "collate"
};

// Reserved only when the job asks for SQL names to be kept free. Some words
// stand in both lists; the first list answers for them.
char const* const sqlWords[] = {
    "add", "all", "and", "any", "as", "asc", "avg", "atomic", "between", "binary", "bigint", "bit",
    "blob", "boolean", "by", "cascade", "cast", "char", "constraint", "count", "create", "date",
    "delete", "desc", "distinct", "domain", "drop", "escape", "except", "exists", "false", "for",
    "foreign", "from", "group", "having", "in", "index", "inner", "into", "intersect", "insert", "is",
    "int", "integer", "join", "key", "left", "length", "like", "limit", "longint", "lower", "max",
    "min", "minus", "natural", "not", "nonatomic", "now", "null", "on", "or", "order", "outer",
    "primary", "reference", "references", "right", "select", "set", "smallint", "some", "string",
    "sysdate", "substr", "sum", "table", "time", "timestamp", "tinyint", "to", "true", "values",
    "varbinary", "varchar", "longvarbinary", "longvarchar", "union", "unique", "unsigned", "update",
    "upper", "using", "where", "unicode", "abs", "acos", "asin", "atan", "ceil", "cos", "decimal",
    "double", "exp", "float", "floor", "log", "numeric", "real", "sin", "sqrt", "tan", "TTL_count",
    "TTL_clock_time"
};

// Both lists in one hash table, built once: a name is looked up by its
// length and its first and last characters, and compared in full only
// with the few words that share those.
class WordTable {
public:
    WordTable() {
        for (unsigned i = 0; i < kBuckets; i++)
            m_head[i] = -1;
        for (char const* w : schemaWords)
            enter(w, false);
        for (char const* w : sqlWords)
            enter(w, true);
    }

    // Whether `word` is in the schema list, or (with `sql`) in the SQL list.
    bool find(char const* word, bool sql) const {
        std::size_t n = std::strlen(word);
        if (n == 0)
            return false;
        for (int i = m_head[bucket(word, n)]; i >= 0; i = m_entries[i].next) {
            Entry const& e = m_entries[i];
            if (e.len == n && (sql || !e.sql) && std::memcmp(e.text, word, n) == 0)
                return true;
        }
        return false;
    }

private:
    static unsigned const kBuckets = 512;
    static std::size_t const kWords = sizeof schemaWords / sizeof schemaWords[0] + sizeof sqlWords / sizeof sqlWords[0];

    struct Entry {
        char const* text;
        std::size_t len;
        bool sql;
        int next;
    };

    static unsigned bucket(char const* w, std::size_t n) {
        unsigned h = static_cast<unsigned>(n) * 31u + static_cast<unsigned char>(w[0]) * 7u +
                     static_cast<unsigned char>(w[n - 1]) + static_cast<unsigned char>(w[n / 2]) * 131u;
        return h % kBuckets;
    }

    void enter(char const* w, bool sql) {
        Entry& e = m_entries[m_count];
        e.text = w;
        e.len = std::strlen(w);
        e.sql = sql;
        unsigned b = bucket(w, e.len);
        e.next = m_head[b];
        m_head[b] = static_cast<int>(m_count++);
    }

    int m_head[kBuckets];
    Entry m_entries[kWords];
    unsigned m_count = 0;
};

WordTable const& wordTable() {
    static WordTable const table;
    return table;
}

}  // namespace

bool Analyzer::isReservedWord(mstring const& word) const {
    return wordTable().find(word.c_str(), m_sqlReservedWords);
}

void Analyzer::checkIsNotReserved(mstring const& word) {
    if (isReservedWord(word))
        m_parser->pp().error1("reserved word #1", word, 0);
}
