#include "host/zylcomp/analyzer.h"

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

bool inList(char const* const* list, unsigned n, char const* word) {
    // The first characters are compared before strcmp is called: most
    // names differ from most words there.
    for (unsigned i = 0; i < n; i++)
        if (list[i][0] == word[0] && std::strcmp(list[i], word) == 0)
            return true;
    return false;
}

}  // namespace

bool Analyzer::isReservedWord(mstring const& word) const {
    if (inList(schemaWords, sizeof schemaWords / sizeof schemaWords[0], word.c_str()))
        return true;
    if (!m_sqlReservedWords)
        return false;
    return inList(sqlWords, sizeof sqlWords / sizeof sqlWords[0], word.c_str());
}

void Analyzer::checkIsNotReserved(mstring const& word) {
    if (isReservedWord(word))
        m_parser->pp().error1("reserved word #1", word, 0);
}
