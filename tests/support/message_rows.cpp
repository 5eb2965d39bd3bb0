#include "support/message_rows.h"

#include <cstring>

int MessageRow::status() const { return std::strstr(err, "error: ") != nullptr ? 255 : 0; }

#define E(line, msg) "File s.zyl;  line " #line ": error: " msg "\n\n"
#define EP(line, pos, msg) "File s.zyl;  line " #line ", position " #pos ": error: " msg "\n\n"
#define W(line, msg) "File s.zyl;  line " #line ": warning: " msg "\n\n"

std::vector<MessageRow> const& grammarRows() {
    static std::vector<MessageRow> const rows = {
    // Class prefixes, the top level, declare and iot.
    {"local distrib class A {};", E(1, "'local' contradicts with 'distributed' keyword.")},
    {"atomic nonatomic class A {};", E(1, "expected 'class' keyword")},
    {"declare database;", EP(1, 22, "identifier expected, found \";\"")},
    {"packed direct class S {};", E(1, "expected 'struct' keyword")},
    {"iot router<65535>;", E(1, "Router level must be in interval 2 - 65534")},
    {"declare OID K[5];", W(1, "OID is deprecated, use oid instead") E(1, "oid struct \"K\" was not defined")},
    // struct, enum, calculator
    {"enum E { A };\nenum E { B };", E(2, "type \"E\" was already defined")},
    {"enum E { A; };", E(1, "unexpected token: \";\"")},
    {"class A { unsigned<4> a; };\ncalculator { A<1> };\ncalculator { A<1> };",
     E(3, "Each schema may have only one calculator.\n")},
    {"class A { unsigned<4> a; };\ncalculator { A<1>; };", E(2, "unexpected token: \";\"")},
    {"calculator { };", E(1, "unexpected token: \";\"")},
    // Class head and body.
    {"struct S {};\nclass S {};", E(2, "type \"S\" was already defined")},
    {"class A { unsigned<4> a; };\nstruct A { unsigned<4> b; };", E(2, "class \"A\" was already defined")},
    {"class A { unsigned<4> a; };\nenum A { X };", E(2, "class \"A\" was already defined")},
    {"class A { unsigned<4> a; };\ndirect struct A { unsigned<4> b; };", E(2, "class \"A\" was already defined")},
    {"enum E { A };\nclass E {};", E(2, "type \"E\" was already defined")},
    {"class A { userdef thick tree<a> t; };", E(1, "'thick' contradicts with 'userdef' keyword.")},
    {"class A { unique unsigned<4> a; };", E(1, "Invalid syntax")},
    {"class A { oid; oid; };", E(1, "oid was already declared")},
    // Fields.
    {"class A { rect<signed<4>> r[17]; };", E(1, "dimension size limits")},
    {"class A { point<signed<4>> p[1]; };", E(1, "dimension size limits")},
    {"class A { unsigned<4> a[65536]; };", E(1, "array size must be between 1 and 65535")},
    // A field named like a generated indicator, in the other order.
    {"struct S {\n  nullable signed<4> a;\n  boolean a_indicator;\n};",
     E(3, "field a_indicator is named like the indicator of nullable field a")},
    // Type names.
    {"class A { unsigned<0> n; };", E(1, "illegal size: allowed sizes are 1,2,4,8")},
    // Direct structs.
    {"struct D {};\ndirect struct D {};", E(2, "type \"D\" was already defined")},
    {"direct struct D { signed<4> a[0]; };", E(1, "array size must be between 1 and 65535")},
    {"packed direct struct D { signed<4> a, a; };", E(1, "field a already exists")},
    {"direct struct D { signed<4> a, b[2]; };", E(1, "expected ',' or ';'")},
    // Indexes.
    {"class A { rtree<s.x> k; };",
     E(1, "Fields of inner structs are not allowed as an element of R-Tree or KD-Tree indeces")},
    {"class A { hash<a asc> h[10]; };", E(1, "unexpected token: \"asc\"")},
    {"class A { tree<a desc collate> t; };", EP(1, 43, "identifier expected, found \">\"")},
    // Events and time-to-live.
    {"class A { TTL_clock_time 0 us; };", E(1, "invalid TTL_clock_time value 0")},
    // Accepted forms that are easy to break.
    {"declare database db;\nclass A { unsigned<4> a; unique hash<a> h[5]; nonunique hash<a> g[5]; };", ""},
    {"declare database db;\nclass A { sequence<numeric<5,0> asc> s; unsigned<4> select; };", ""},
    {"declare database db;\nclass A { unsigned<4> a; inclusive unsigned<4> b; tree<a> t; };", ""},
    };
    return rows;
}

#define DB "declare database db;\n"

std::vector<MessageRow> const& finishRows() {
    static std::vector<MessageRow> const rows = {
    // Field types.
    {DB "class A { sequence<wchar> w; };",
     E(2, "wide character type is not supported in this version of Quorabase. Please contact Tarnwell Support.")},
    {DB "class A { sequence<Missing> q; };", E(2, "undefined type Missing used in q")},
    {DB "class A {\n  sequence<nchar<17>> q;\n  signed<4> a;\n};",
     E(3, "sequence q cannot hold elements of type nchar<17>: a sequence holds integers, floating point numbers, "
          "dates and times, char<n>, binary<n> or structs")},
    // Both would define A_q_search; a unique hash index has none.
    {DB "class A {\n  sequence<signed<4> desc> q;\n  signed<4> a;\n  nonunique hash<a> q[10];\n};",
     E(5, "index q of class A is named like ordered sequence field q: both would define A_q_search")},
    // Segments.
    {DB "class A {\n  blob b;\n  tree<b collate c> t;\n};", E(4, "index t of class A: blob field b cannot be a key")},
    {DB "struct S { signed<4> x; signed<4> y; };\nclass A {\n  vector<S> v;\n  tree<v.x, v.y> t;\n};",
     E(5, "index t of class A: keys v.x and v.y both lie in a vector or array, only one key may")},
    {DB "class A { char<8> a[2]; trigram<a> t; };",
     E(2, "[A.t] Trigram index can be defined only for character or string types.")},
    // Events.
    {DB "class A { signed<4> a; boolean updated_bitmap[]; event<a update> v; };",
     E(2, "For class A declared both update class event and field update event(s)")},
    {DB "struct S { signed<4> x; };\nclass A { S s; event<s update> e; };",
     E(3, "field s in A, referenced from event e must be of a base type: simple, string, chars, nstring or nchars")},
    // Each Java class has a file of its own, the database's list of classes too.
    {"declare database switch;\nenum E { A };\nstruct switch { signed<4> a; };",
     E(3, "struct switch is named like the database: the Java and C# bindings would declare switch_ twice"), "--cs"},
    // A field's functions named like its class's own; the run-time entry,
    // which writes no functions, takes it (the option keeps it from there).
    {DB "class C { signed<4> a; signed<4> xml; };", E(2, "field xml of C would define C_xml_get, the name of the XML "
                                                      "access function of C"), "--xml-access"},
    // Accepted. A kd-tree takes one bit per field in a word of the target's
    // size: 7 fields fit a 1-byte word.
    {DB "class A { boolean b[8]; patricia<b> p; };", ""},
    {DB "class A { rect<signed<4>> r[2]; rtree<r> q; point<signed<4>> p[3]; rtree<p> s; };", ""},
    {DB "class A { vector<string> v; trigram<v> t; char<4> a; tree<a collate c> u; tree<v collate c> w; };", ""},
    {DB "class A { signed<4> a, b, c, d, e, f, g; kdtree<a, b> k; };", "", "--sizeof-size=1"},
    {DB "class A { signed<4> a; boolean updated_bitmap[]; event<update> u; };", ""},
    {DB "struct S { signed<4> x; signed<4> y; };\nclass A { vector<S> v; signed<4> a; tree<a, v.x> t; };", ""},
    {DB "class db { signed<4> a; };", ""},
    {DB "class A { sequence<signed<4>> q; signed<4> a; tree<a> q; };", ""},
    {DB "class A { sequence<signed<4> desc> q; signed<4> a; hash<a> q[10]; };", ""},
    {DB "declare oid K[5];\nstruct K { signed<4> k; };\nclass B { oid; autoid[5]; signed<4> x; };\n"
        "class A { ref<B> b; autoid_t<B> c; };", ""},
    {DB "declare auto_oid[10];\npersistent distributed class A { signed<4> a; };\ndistrib class B { signed<4> b; };", ""},
    {DB "iot device;\nuptable class A { signed<4> a; };\npersistent downtable class B { signed<4> b; };", ""},
    };
    return rows;
}

// A body of class A beside an enum and a struct.
#define DICT(body) "declare database m;\nenum E { Red };\nstruct S { signed<4> a; signed<4> b; };\nclass A { " body " };\n"

std::vector<MessageRow> const& dictionaryRows() {
    static std::vector<MessageRow> const rows = {
    // Eight-byte values take no enum names.
    {DICT("signed<8> a = Red;"), "File s.zyl; error: initial value for A.a is not integer: \"Red\"\n\n"},
    {DICT("float a = abc;"), "File s.zyl; error: initial value for A.a is not double: \"abc\"\n\n"},
    {DICT("boolean a[2] = {1, 2};"), "File s.zyl; error: initial value for A.a is not boolean: \"2\"\n\n"},
    {DICT("char<4> s = abc;"), "File s.zyl; error: Initializer is not allowed for this type of field: A.s\n\n"},
    };
    return rows;
}
