#include "support/schema_gen.h"

#include <iterator>
#include <map>
#include <numeric>
#include <regex>
#include <sstream>

std::string describe(SchemaCase const& c) {
    static char const* const kExpect[] = {"valid", "invalid", "edited"};
    std::string s = "seed " + std::to_string(c.seed) + " (" + kExpect[c.expect];
    s += (c.fault.empty() ? "" : ": " + c.fault) + ")\nzylcomp";
    for (std::string const& o : c.options)
        s += " " + o;
    s += " s.zyl\n--- s.zyl\n" + c.schema;
    for (auto const& inc : c.includes)
        s += "--- " + inc.first + "\n" + inc.second;
    return s;
}

namespace {

// splitmix64: small and the same everywhere, unlike the standard library's distributions.
struct Rng {
    std::uint64_t state;
    std::uint64_t next() {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    unsigned below(unsigned n) { return static_cast<unsigned>(next() % n); }  // 0 to n - 1
    bool chance(unsigned percent) { return below(100) < percent; }
    template <class T>
    T const& pick(std::vector<T> const& v) { return v[below(static_cast<unsigned>(v.size()))]; }
};

// What a field holds, as far as the rules for keys, events and initial
// values care. The order counts: the kinds up to FLOAT take initial values
// of their own (and ENUM its names), those up to DATE may make a struct a
// sequence element, and those up to VARBIN an update event.
enum Kind { INT, INT8, BOOL, FLOAT, DATE, NUMERIC, ENUM, CHARS, NCHARS, BINARY, STRING, NSTRING, VARBIN, BLOB,
            STRUCT, DIRECT, REF, AUTOID_T, SEQ, RECT, POINT };

struct GField {
    std::string name;
    Kind kind = INT;
    bool array = false, vector = false, optional = false, nullable = false;
    int arraySize = 0;
    std::string type = "";      // struct, direct struct or enum name
    std::string refClass = "";  // the class of ref<C> or autoid_t<C>
};
// fixed: no dynamic member, so that it may be a sequence element
struct GStruct { std::string name; std::vector<GField> fields; bool fixed = true; };
struct GClass { std::string name; bool persistent, oid, autoid; };
// A key an index may name: a field or, nested, a struct member through it;
// multi: it lies in a vector or an array.
struct GKey { std::string path; Kind kind; bool multi, nested; GField const* f; };

using Words = std::vector<std::string>;

Words words(char const* list) {
    std::istringstream in(list);
    return Words(std::istream_iterator<std::string>(in), {});
}

Words const kWords = words("a b id qty name price code kind flag stamp x y t c h value result len size src handle "
                           "total rank title body tag ts owner n "
                           // named like functions the compiler writes for other fields
                           "a_length s_fixed a_get v_size t_find");
// Keywords of C, C++, Java or C# that the schema language leaves free.
Words const kKeywords = words("int switch public base package namespace long short static default this object case "
                              "try final goto volatile operator lock typename do if while virtual register extern "
                              "auto sizeof byte private for in union is as const");
// Those of the names above that --sql-reserved-words refuses.
std::set<std::string> const kSql = {"int", "for", "in", "union", "is", "as"};
Words const kClassWords = words("Item Order Part Note Cell Node Tick Doc Word Shop Acct Log");
Words const kEnumWords = words("RED GREEN BLUE LOW HIGH ON OFF NORTH SOUTH");
Words const kEnumKeywords = words("virtual explicit sealed abstract override native");

bool isText(Kind k) { return k == CHARS || k == STRING || k == NCHARS || k == NSTRING; }

// The generator: what it drew so far, and a function for each rule of the grammar.
struct Gen {
    explicit Gen(std::uint64_t seed) : r{seed * 0x100000001B3ull + 7} { c.seed = seed; }

    Rng r;
    SchemaCase c;
    std::string prelude;  // directives that stand at the top
    std::set<std::string> enumElems, eventNames;
    Words enums;
    std::map<std::string, Words> enumValues;
    std::vector<GStruct> structs, directs;
    std::vector<GClass> classes;
    std::string oidType;
    bool autoOid = false, iot = false, anySequence = false, anyColumns = false, functionLike = false;
    int macros = 0, events = 0, typeNames = 0;

    // One of the spellings of a list separated by blanks.
    std::string one(char const* list) {
        Words const w = words(list);
        return w.size() == 1 ? w[0] : r.pick(w);
    }
    // What `draw` returns, `n` times over.
    template <class Draw>
    std::string times(unsigned n, Draw draw) {
        std::string s;
        while (n-- > 0)
            s += draw();
        return s;
    }
    // A new macro named prefix{n} defined as `value` at the top; its name.
    std::string define(char const* prefix, std::string const& value) {
        std::string const m = prefix + std::to_string(++macros);
        prelude += "#define " + m + (value.empty() ? "" : " ") + value + "\n";
        return m;
    }
    bool sql() const { return c.has("--sql-reserved-words"); }

    // A word of kWords, or a keyword, unused so far, with a number when needed.
    std::string freshName(std::set<std::string>& used, bool keywords) {
        for (;;) {
            std::string n = keywords && r.chance(30) ? r.pick(kKeywords) : r.pick(kWords);
            if (sql() && kSql.count(n))
                continue;
            if (used.count(n))
                n += std::to_string(r.below(100));
            if (used.insert(n).second) {
                // Only the names like other fields' functions hold a "_".
                functionLike = functionLike || n.find('_') != std::string::npos;
                return n;
            }
        }
    }
    // The name of a new struct, enum or class.
    std::string typeName() { return r.pick(kClassWords) + std::to_string(typeNames++); }

    // Drawn before the text, as some options change its rules.
    void drawOptions() {
        Words const flags = words("-c 30 --cpp 30 --prefix-names 15 --xml-access 15 --json-access 15 --java 12 --cs 12 "
                                  "--dll-spec 10 --keep-field-order 10 --wide-offsets 10 --dynamic-dict 10 --compact 8 "
                                  "--persistent 10 --nonatomic 8 --sql-reserved-words 8 --xml-schema 8 "
                                  "--relative-class-codes 3");
        for (size_t i = 0; i < flags.size(); i += 2)  // a flag, then its chance in percent
            if (r.chance(static_cast<unsigned>(std::stoi(flags[i + 1]))))
                c.options.push_back(flags[i]);
        if (c.has("--cpp") && r.chance(30))
            c.options.push_back("--cpp-runtime-header");
        // A package and a namespace of their own let all cases compile together.
        if (c.has("--java"))
            c.options.insert(c.options.end(), {"--java-package", "p" + std::to_string(c.seed) + ".gen"});
        if (c.has("--cs"))
            c.options.insert(c.options.end(), {"--cs-namespace", "N" + std::to_string(c.seed)});
        if (r.chance(5))
            c.options.push_back("--sizeof-size=" + std::to_string(r.chance(50) ? 4 : 16));
    }

    // enum -> "enum" name "{" elem ["=" int] {"," elem ["=" int]} "}" ";"
    std::string drawEnum() {
        std::string const name = typeName();
        std::ostringstream out;
        out << "enum " << name << " {";
        for (unsigned i = 0, n = 1 + r.below(4); i < n; i++) {
            std::string e = r.chance(15) ? r.pick(kEnumKeywords) : r.pick(kEnumWords) + "_" + name;
            if (!enumElems.insert(e).second)
                e = "E" + std::to_string(enumElems.size()) + name, enumElems.insert(e);
            enumValues[name].push_back(e);
            out << (i ? ", " : " ") << e;
            if (r.chance(25))
                out << " = " << (r.chance(20) ? "-" : "") << r.below(r.chance(20) ? 200000 : 300);
        }
        enums.push_back(name);
        return out.str() + " };\n";
    }

    // type -> scalar | "char" "<" n ">" | "string" | struct | enum | "ref" ["<" class ">"] | ...
    std::string drawType(GField& f, bool inClass) {
        static Kind const kinds[] = {INT,  INT,  INT,    INT8,   FLOAT,    DATE, NUMERIC, CHARS,  NCHARS, BINARY, ENUM,
                                     ENUM, BOOL, STRUCT, STRUCT, AUTOID_T, REF,  STRING,  STRING, VARBIN, BLOB,   DIRECT};
        // A kind whose declarations are missing gives way to a plain one.
        Kind const k = kinds[r.below(22)];
        f.kind = k == ENUM && enums.empty()                     ? BOOL
                 : k == STRUCT && structs.empty()               ? STRING
                 : k == REF && oidType.empty()                  ? INT
                 : k == DIRECT && (directs.empty() || !inClass) ? NSTRING
                                                                : k;
        switch (f.kind) {
        case INT: {
            std::string const t = one("signed<1> signed<2> signed<4> unsigned<1> unsigned<2> unsigned<4>");
            return r.chance(8) ? define("MTY", t) : t;  // a type through a macro
        }
        case NUMERIC: {
            unsigned const w = 1 + r.below(19);
            std::string const t = one("numeric decimal") + "<" + std::to_string(w);
            return r.chance(60) ? t + "," + std::to_string(r.below(w + 1)) + ">" : t + ">";
        }
        case CHARS: case NCHARS: case BINARY: {
            std::string const n = std::to_string(1 + r.below(f.kind == NCHARS ? 20 : 40));
            std::string const t = f.kind == CHARS ? "char<" : f.kind == NCHARS ? "nchar<" : "binary<";
            return t + (r.chance(10) ? define("MSZ", n) : n) + ">";  // a size through a macro, or not
        }
        case ENUM: return f.type = r.pick(enums);
        case STRUCT: return f.type = r.pick(structs).name;
        case DIRECT: c.holdsDirect = true; return f.type = r.pick(directs).name;
        case AUTOID_T: case REF:
            for (GClass const& k : classes)
                if ((f.kind == REF ? k.oid : k.autoid) && r.chance(65))
                    f.refClass = k.name;
            return f.kind == REF ? "ref" : "autoid_t";
        case STRING: case NSTRING:
            f.kind = f.kind == NSTRING || r.chance(30) ? NSTRING : STRING;
            return f.kind == STRING ? "string" : "nstring";
        default:
            return one(std::map<Kind, char const*>{{INT8, "signed<8> unsigned<8>"}, {FLOAT, "float double"},
                                                   {DATE, "date time datetime"}, {BOOL, "boolean"},
                                                   {VARBIN, "varbinary"}, {BLOB, "blob"}}.at(f.kind));
        }
    }

    // init -> "=" value | "=" "{" value {"," value} "}"
    std::string drawInit(GField const& f) {
        auto value = [&]() -> std::string {
            switch (f.kind) {
            case BOOL: return one("true false 1 0 TRUE");
            case FLOAT: return one("1.5 -2.25 3 0.125");
            case INT8: return r.chance(50) ? "-1234567890123" : "42";
            case ENUM: return r.chance(70) ? r.pick(enumValues[f.type]) : "0";
            default: return std::to_string(r.below(100));
            }
        };
        std::string s = (f.array ? " = {" : " = ") + value();
        for (unsigned i = 1, n = f.array ? 1 + r.below(static_cast<unsigned>(f.arraySize)) : 1; i < n; i++)
            s += ", " + value();
        return s + (f.array ? "}" : "");
    }

    // field -> ["nullable"] (["optional"] type | "vector" "<" type ">" | "rect" "<" type ">" | "point" "<" type ">"
    //          | "sequence" "<" type [order] ">") name [dim] [init] {"," name [dim] [init]} ";"
    std::string drawField(std::vector<GField>& fields, bool inClass, std::set<std::string>& names) {
        GField f;
        std::string decl, type, dim;
        unsigned const form = r.below(20);
        bool const plain = form > 2 || (form == 2 && !inClass);
        if (form < 2) {  // a rectangle or a point of scalars
            bool const rect = form == 0;
            int const n = 2 + static_cast<int>(r.below(rect ? 3 : 2));
            f.kind = rect ? RECT : POINT, f.array = true, f.arraySize = rect ? 2 * n : n;
            std::string const coord = one("signed<2> signed<4> float double unsigned<4> signed<8>");
            type = (rect ? one("rect rectangle") : "point") + "<" + coord + ">";
            dim = "[" + std::to_string(n) + "]";
        } else if (!plain) {  // a sequence: a class only
            f.kind = SEQ;
            anySequence = true;
            type = one("signed<4> unsigned<8> float double date datetime signed<2> boolean");
            if (r.chance(30))
                type = one("char char binary") + "<" + std::to_string(1 + r.below(32)) + ">";
            else if (r.chance(15))
                for (GStruct const& s : structs)
                    if (s.fixed && s.fields.size() <= 2 && r.chance(70)) {
                        type = s.name, c.sequenceOfStructs = true;
                        break;
                    }
            type = "sequence<" + type + r.pick(Words{"", " asc", " desc", " ascending", " descending"}) + ">";
        } else {
            decl = (f.nullable = r.chance(12)) ? "nullable " : "";
            type = drawType(f, inClass);
            if (form == 3 && f.kind != DIRECT) {
                f.optional = true, decl += "optional ";
                f.refClass.clear();  // the optional form takes no class behind the type
            } else if ((form == 4 || form == 5) && f.kind != BLOB && f.kind != DIRECT) {
                f.vector = true, type = "vector<" + type + ">";
            } else if (form == 6 && f.kind != BLOB && f.kind != VARBIN) {
                f.array = true, f.arraySize = 1 + static_cast<int>(r.below(5));
                dim = "[" + std::to_string(f.arraySize) + "]";
            }
            // The class of a reference follows the type, behind "vector<...>" too.
            if (!f.refClass.empty())
                type += "<" + f.refClass + ">";
        }
        bool const init = plain && !f.optional && !f.vector && (f.kind <= FLOAT || f.kind == ENUM) && r.chance(20);
        decl += type + " ";
        for (unsigned i = 0, n = plain && r.chance(15) ? 2 : 1; i < n; i++) {
            f.name = freshName(names, true);
            fields.push_back(f);
            decl += (i ? ", " : "") + f.name + (i ? "" : dim) + (init ? drawInit(f) : "");
        }
        return decl + ";";
    }

    // struct -> "struct" name "{" field {field} "}" ";"
    // direct_struct -> ["packed"] "direct" "struct" name "{" type name ["[" n "]"] ";" {...} "}" ";"
    std::string drawStruct(bool direct) {
        static std::pair<char const*, Kind> const kMembers[] = {
            {"signed<2>", INT}, {"signed<4>", INT}, {"unsigned<1>", INT}, {"double", FLOAT},  {"float", FLOAT},
            {"char<3>", CHARS}, {"nchar<2>", NCHARS}, {"binary<5>", BINARY}, {"signed<8>", INT}, {"unsigned<4>", INT}};
        GStruct s;
        s.name = typeName();
        std::set<std::string> names;
        std::string out = direct ? std::string(r.chance(40) ? "packed " : "") + "direct struct " : "struct ";
        out += s.name + " {";
        out += times(1 + r.below(4), [&] {
            if (!direct)
                return "\n  " + drawField(s.fields, false, names);
            auto const& t = kMembers[r.below(10)];
            s.fields.push_back(GField{freshName(names, true), t.second, r.chance(20), false, false, false, 2});
            return std::string(" ") + t.first + " " + s.fields.back().name + (s.fields.back().array ? "[2]" : "") + ";";
        });
        // Sequence elements are kept to plain numbers, whose size is known.
        for (GField const& f : s.fields)
            s.fixed = s.fixed && (f.kind <= DATE || f.kind == AUTOID_T) && !f.vector && !f.optional && !f.nullable &&
                      !f.array;
        (direct ? directs : structs).push_back(s);
        return out + (direct ? " };\n" : "\n};\n");
    }

    // The keys an index may take among `fields`, one struct level deep.
    std::vector<GKey> keys(std::vector<GField> const& fields) {
        std::vector<GKey> out;
        for (GField const& f : fields) {
            bool const multi = f.array || f.vector;
            if (f.optional || f.kind == SEQ || f.kind == BLOB)
                continue;
            if (f.kind != STRUCT && f.kind != DIRECT) {
                out.push_back({f.name, f.kind, multi, false, &f});
                continue;
            }
            for (GStruct const& s : f.kind == STRUCT ? structs : directs)
                for (GField const& g : s.fields)
                    if (s.name == f.type && !g.optional && g.kind != BLOB && g.kind != STRUCT &&
                        !(multi && (g.array || g.vector)))
                        out.push_back({f.name + "." + g.name, g.kind, multi || g.array || g.vector, true, &g});
        }
        return out;
    }

    // index -> {prefix} kind "<" key {"," key} ">" name ["[" n "]"] ";"
    std::string drawIndex(GClass const& k, std::vector<GField> const& fields, std::set<std::string>& names) {
        std::vector<GKey> all = keys(fields), ok;
        unsigned const kind = r.below(10);
        auto pick = [&](auto test) {
            ok.clear();
            std::copy_if(all.begin(), all.end(), std::back_inserter(ok), test);
            return !ok.empty();
        };
        std::string const name = freshName(names, true);
        // The kinds of their own rules: kdtree, rtree, patricia and trigram.
        static std::pair<char const*, bool (*)(GKey const&)> const special[] = {
            {"kdtree", [](GKey const& x) { return !x.nested && !x.multi && (x.kind == INT || x.kind == FLOAT); }},
            {"rtree", [](GKey const& x) {
                 return !x.nested && (x.kind == RECT || x.kind == POINT || (x.f->array && x.kind == INT && x.f->arraySize % 2 == 0));
             }},
            {"patricia", [](GKey const& x) {
                 return x.kind == CHARS || x.kind == BINARY || x.kind == INT || (x.kind == BOOL && x.multi) ||
                        (x.f->vector && x.kind != BOOL);
             }},
            {"trigram", [](GKey const& x) { return !x.nested && !x.f->array && isText(x.kind); }},
        };
        if (kind >= 6 && !(kind == 8 && k.persistent) && pick(special[kind - 6].second)) {
            std::string s = std::string(kind == 9 && r.chance(20) ? "voluntary " : "") + special[kind - 6].first + "<";
            // A kdtree takes the first keys that fit, the others one key.
            for (size_t i = 0; i < (kind == 6 ? std::min<size_t>(ok.size(), 3) : 1); i++)
                s += (i ? ", " : "") + (kind == 6 ? ok[i] : r.pick(ok)).path;
            return s + "> " + name + ";";
        }
        // A tree or a hash.
        bool const hash = kind < 3, userdef = r.chance(12);
        if (!pick([](GKey const& x) { return x.kind != BOOL && x.kind != RECT && x.kind != POINT; }))
            return "";
        bool const nonunique = hash && r.chance(25), unique = !nonunique && r.chance(20);
        bool const thick = !hash && !unique && !userdef && r.chance(15), voluntary = !hash && r.chance(10);
        std::string s = std::string(userdef ? "userdef " : "") + (nonunique ? "nonunique " : unique ? "unique " : "") +
                        (thick ? "thick " : "") + (voluntary ? "voluntary " : "");
        s += std::string(r.chance(5) ? "inclusive " : "") + (hash ? "hash<" : "tree<");
        bool multi = false;
        std::set<std::string> used;
        unsigned n = 0, count = 1 + r.below(3);
        Kind last = INT;
        for (unsigned i = 0; i < count; i++) {
            GKey const& key = r.pick(ok);
            if ((multi && key.multi) || !used.insert(key.path).second)
                continue;
            multi = multi || key.multi;
            s += (n++ ? ", " : "") + key.path;
            last = key.kind;
            bool const text = isText(key.kind);
            s += !hash && r.chance(25) ? " " + one("desc asc") : "";
            s += text && r.chance(20) ? " " + one("ignore_case case_insensitive") : "";
            if (text && !userdef && !key.multi && r.chance(20))
                s += key.kind == CHARS || key.kind == STRING ? " collate latin" : " collate wide";
        }
        if (n == 1 && thick && (last == STRING || last == NSTRING) && c.has("--cpp"))
            c.mayFail.insert(SchemaCase::KeywordIndex);
        return s + "> " + name + (hash ? "[" + std::to_string(1 + r.below(1000)) + "]" : "") + ";";
    }

    // event -> "event" "<" ("new" | "delete" | "delete_all" | "checkpoint" | "update" | field "update") ">" name ";"
    std::string drawEvent(std::vector<GField> const& fields, bool& classUpdate, bool& fieldUpdate, bool bitmap) {
        static char const* const kinds[] = {"new", "delete", "delete_all", "checkpoint", "update"};
        std::string name;
        do
            name = r.chance(20) ? r.pick(kKeywords) : "ev" + std::to_string(events++);
        while (eventNames.count(name) || (sql() && kSql.count(name)));
        unsigned const k = r.below(7);
        if (k < 4 || (k == 4 && !fieldUpdate)) {
            eventNames.insert(name);
            classUpdate = classUpdate || k == 4;
            return std::string("event<") + kinds[k] + "> " + name + ";";
        }
        if (classUpdate || bitmap)
            return "";
        for (GField const& f : fields)
            if (f.kind <= VARBIN && !f.array && !f.vector && !f.optional && r.chance(50)) {
                fieldUpdate = true;
                eventNames.insert(name);
                // One update event per field: "@field" marks the field as taken.
                return eventNames.insert("@" + f.name).second ? "event<" + f.name + " update> " + name + ";" : "";
            }
        return "";
    }

    // class -> {prefix} "class" name "{" {member} "}" ";"
    std::string drawClass(GClass const& k) {
        std::ostringstream head, body;
        std::string const sep = r.chance(70) ? "\n  " : " ";
        std::vector<GField> fields;
        std::set<std::string> names, indexNames;
        head << (r.chance(20) ? "compact " : "");
        // The default persistence, which the option decides, may go unsaid.
        bool const byDefault = k.persistent == c.has("--persistent");
        head << (byDefault && r.chance(50) ? "" : k.persistent ? "persistent " : "transient ");
        head << (r.chance(15) ? one("atomic nonatomic") + " " : "");
        bool const distributed = autoOid && r.chance(20);
        head << (distributed ? one("distributed distrib") + " " : r.chance(10) ? "local " : "");
        head << (iot && (r.chance(60) || classes.front().name == k.name) ? one("uptable downtable") + " " : "");
        head << "class " << k.name << " {";
        bool const allPlain = r.chance(10) && !autoOid && !iot && !distributed && !k.autoid;
        unsigned const columns = r.chance(15) ? 1 + r.chance(50) : 0;  // list, sequences
        anyColumns = anyColumns || columns == 2;
        body << (columns ? sep + (columns == 2 ? "sequences;" : "list;") : "");
        body << (k.oid ? sep + (r.chance(10) ? "OID;" : "oid;") : "");
        body << (k.autoid ? sep + "autoid[" + std::to_string(1 + r.below(1000)) + "];" : "");
        body << (r.chance(3) ? sep + "history[5];" : "");
        body << times(1 + r.below(6), [&] {
            if (!allPlain && !r.chance(8))  // else a plain member, or one whose type a macro decides
                return sep + drawField(fields, true, names);
            fields.push_back(GField{freshName(names, allPlain), r.chance(50) ? INT : STRING});
            std::string const name = fields.back().name + ";";
            std::string const type = fields.back().kind == INT ? "signed<4> " : "string ", other = "char<2> ";
            if (allPlain)
                return sep + type + name;
            // The macro is on, or defined and then undefined, or never defined.
            bool const on = r.chance(50), ndef = r.chance(50), defined = on || r.chance(30);
            std::string const m = defined ? define("MON", "") : "MON" + std::to_string(++macros);
            prelude += defined && !on ? "#undef " + m + "\n" : "";
            return "\n#if" + std::string(ndef ? "ndef " : "def ") + m + "\n  " + (on != ndef ? type : other) + name +
                   "\n#else\n  " + (on != ndef ? other : type) + name + "\n#endif\n";
        });
        // An index named like an ordered sequence would define its search
        // function a second time, which the compiler refuses.
        for (GField const& f : fields)
            if (f.kind == SEQ)
                indexNames.insert(f.name);
        bool const bitmap = !allPlain && r.chance(8);
        if (bitmap)
            body << sep << "boolean updated_bitmap[" << (r.chance(50) ? "" : std::to_string(1 + r.below(8))) << "];";
        if (allPlain && r.chance(60))
            body << sep << (r.chance(50) ? "tree<*> " : "unique tree<*> ") << freshName(indexNames, true) << ";";
        auto member = [&](std::string const& m) { return m.empty() ? "" : sep + m; };
        body << times(r.below(4), [&] { return member(drawIndex(k, fields, indexNames)); });
        bool classUpdate = false, fieldUpdate = false;
        body << times(r.chance(30) ? 1 + r.below(2) : 0,
                      [&] { return member(drawEvent(fields, classUpdate, fieldUpdate, bitmap)); });
        if (!allPlain && r.chance(8))
            body << sep << "TTL_count " << 1 + r.below(1000) << ";";
        if (!allPlain && r.chance(8))
            body << sep << "TTL_clock_time " << 1 + r.below(99) << " " << one("sec ms us us") << ";";
        body << (r.chance(10) ? sep + (sep == " " ? "/* members end here */" : "// members end here") : "");
        return head.str() + body.str() + (sep == " " ? " };\n" : "\n};\n");
    }

    // Breaks one rule of the language, at the end of the text.
    void breakRule() {
        std::string const bad = "Bad" + std::to_string(c.seed % 97), first = classes.front().name;
        std::string anyEvent = "e; event<delete> e;";
        for (std::string const& e : eventNames)
            anyEvent = e[0] != '@' ? e + ";" : anyEvent;
        // What is broken, and the text that breaks it: whole lines, or else
        // the body of a class of its own.
        std::vector<std::pair<char const*, std::string>> const rules = {
            {"class and field update events", "signed<4> a; event<update> u" + bad + "; event<a update> v" + bad + ";"},
            {"patricia in a persistent class", "persistent class " + bad + " { char<4> a; patricia<a> p; };\n"},
            {"ref to a class without oid", oidType.empty() ? "oid; signed<4> a;" : "ref<" + bad + "> r;"},
            {"index named like an ordered sequence", "sequence<float asc> q; signed<4> a; tree<a> q;"},
            {"struct holds itself", "struct " + bad + " { signed<4> a; " + bad + " b; };\n"},
            {"sequence in a struct", "struct " + bad + " { sequence<signed<4>> q; };\n"},
            {"updated_bitmap of integers", "signed<4> a; signed<4> updated_bitmap[4];"}, {"unknown type", "mystery a;"},
            {"string in a direct struct", "direct struct " + bad + " { string s; };\n"},
            {"kdtree on an array", "signed<4> a[2]; signed<4> b; kdtree<a, b> k;"}, {"comment not closed", "/* open\n"},
            {"event of no field", "signed<4> a; event<b update> e" + bad + ";"}, {"integer of 3 bytes", "signed<3> a;"},
            {"two array keys", "signed<4> v[2]; signed<4> w[2]; tree<v, w> t;"}, {"numeric too wide", "numeric<20> a;"},
            {"class defined twice", "class " + first + " { signed<4> a; };\n"}, {"blob key", "blob b; tree<b> t;"},
            {"event name used twice", "signed<4> a; event<new> " + anyEvent}, {"blob in a vector", "vector<blob> vb;"},
            {"macro defined twice", "#define MDUP 1\n#define MDUP 2\n"}, {"key of no field", "signed<4> a; tree<b> t;"},
            {"include of a missing file", "#include \"missing.zyl\"\n"}, {"name ending in underscore", "signed<4> a_;"},
            {"unique then thick", "string s; unique thick tree<s> t;"}, {"initial value of binary", "binary<4> b = 1;"},
            {"voluntary hash", "signed<4> a; voluntary hash<a> h[5];"}, {"boolean key", "boolean b; tree<b> t;"},
            {"class not closed", "class " + bad + " { signed<4> a;\n"}, {"#else without #if", "#else\n"},
            {"trigram on an integer", "signed<4> a; trigram<a> t;"}, {"field defined twice", "signed<4> a; string a;"},
            {"sequence element too large", "sequence<char<40>> s;"}, {"reserved word as a name", "signed<4> update;"},
            {"asc in a hash key", "signed<4> a; hash<a asc> h[5];"}, {"rectangle too wide", "rect<signed<4>> r[17];"},
            {"hash without estimate", "signed<4> a; hash<a> h;"}, {"optional key", "optional signed<4> o; tree<o> t;"},
            {"TTL of zero", "signed<4> a; TTL_clock_time 0 us;"},
            {"enum element used twice",
             "enum " + bad + " { " + (enumElems.empty() ? "X" + bad + ", X" + bad : *enumElems.begin()) + " };\n"},
            {"distributed without auto_oid",
             autoOid ? "autoid_t<" + bad + "> a;" : "distributed class " + bad + " { signed<4> a; };\n"},
            {"uptable outside iot",
             (iot ? "downtable uptable class " : "uptable class ") + bad + " { signed<4> a; };\n"},
        };
        auto const& rule = r.pick(rules);
        c.expect = SchemaCase::Invalid;
        c.fault = rule.first;
        c.schema += rule.second.back() == '\n' ? rule.second : "class " + bad + " { " + rule.second + " };\n";
    }

    // Deletes, repeats or swaps a token of the text: the result may or may
    // not be a schema.
    void editText() {
        static std::regex const token("[[:alnum:]_<>]+|[^[:alnum:]_<>]");
        Words t(std::sregex_token_iterator(c.schema.begin(), c.schema.end(), token), {});
        size_t const at = r.below(static_cast<unsigned>(t.size()));
        unsigned const how = r.below(3);
        c.fault = how == 2 ? "tokens swapped at " + std::to_string(at)
                           : (how ? "token repeated: " : "token deleted: ") + t[at];
        if (how == 0)
            t.erase(t.begin() + static_cast<long>(at));
        else if (how == 1)
            t.insert(t.begin() + static_cast<long>(at), t[at]);
        else if (at + 1 < t.size())
            std::swap(t[at], t[at + 1]);
        c.schema = std::accumulate(t.begin(), t.end(), std::string());
        c.expect = SchemaCase::Either;
    }

    // schema -> "declare" "database" name ";" {statement}
    SchemaCase run() {
        drawOptions();
        std::ostringstream text;
        text << "// schema " << c.seed << "\ndeclare database g" << c.seed << ";\n";
        if ((autoOid = r.chance(20)))
            text << "declare " << (r.chance(80) ? "auto_oid" : one("AUTO_OID HA")) << "[" << 1 + r.below(5000) << "];\n";
        std::string late;  // statements after the classes
        if (r.chance(30)) {
            oidType = typeName();
            text << "declare " << (r.chance(10) ? "OID " : "oid ") << oidType << "[" << 1 + r.below(5000) << "];\n";
            // The struct of the oid, of fixed-size fields.
            (r.chance(50) ? late : prelude) +=
                "struct " + oidType + " { unsigned<4> k; " + (r.chance(50) ? "char<6> s; " : "") + "};\n";
        }
        if ((iot = r.chance(8))) {
            std::string const router = "router<" + std::to_string(2 + r.below(100)) + "> 7";
            text << "iot " << r.pick(Words{"server", "device", "device 12", router}) << ";\n";
        }
        std::ostringstream types;
        if (r.chance(15)) {  // an enum and a struct from an included file
            std::string const inc = "inc" + std::to_string(c.seed) + ".zyl";
            std::string const included = "/* included */\n" + drawEnum();
            c.includes.push_back({inc, included + drawStruct(false)});
            types << "#include " << (r.chance(50) ? "\"" + inc + "\"" : "<" + inc + ">") << "\n";
        }
        types << times(r.below(3), [&] { return drawEnum(); }) << times(r.below(3), [&] { return drawStruct(true); });
        types << times(r.below(4), [&] {
            std::string const note = r.chance(20) ? "/* a struct\n   of its own */\n" : "";
            return note + drawStruct(false);
        });
        // Classes are named first: references may point forward.
        for (unsigned i = 0, n = 1 + r.below(4); i < n; i++)  // a braced list draws in order
            classes.push_back(GClass{typeName(), r.chance(50), !oidType.empty() && r.chance(50), r.chance(25)});
        std::ostringstream body;
        for (GClass const& k : classes)
            body << drawClass(k);
        if (r.chance(10)) {
            body << "calculator { " << classes[0].name << "<" << 1 + r.below(100) << ">";
            if (classes.size() > 1)
                body << ", " << classes.back().name << "<" << 1 + r.below(100) << ">";
            body << " };\n";
        }
        c.schema = text.str() + prelude + types.str() + body.str() + late;

        if (r.chance(8))
            c.options.insert(c.options.end(), {"--hide", r.chance(70) || directs.empty() ? r.pick(classes).name
                                                                                          : r.pick(directs).name});
        else if (r.chance(3))
            c.options.push_back("--hide-all");
        std::pair<bool, SchemaCase::Known> const known[] = {
            {!directs.empty() && c.has("--prefix-names"), SchemaCase::DirectPrefix},
            {anyColumns && !anySequence && c.has("--cpp"), SchemaCase::ColumnsOnly},
            {c.has("--relative-class-codes"), SchemaCase::RelativeCodes},
            {functionLike && c.has("--cpp-runtime-header"), SchemaCase::PropertyName}};
        for (auto const& k : known)
            if (k.first)
                c.mayFail.insert(k.second);
        unsigned const fate = r.below(100);
        if (fate < 12)
            breakRule();
        else if (fate < 18)
            editText();
        return c;
    }
};

}  // namespace

SchemaCase generateSchema(std::uint64_t seed) { return Gen(seed).run(); }
