#include "support/message_rows.h"

#include <cstring>

int MessageRow::status() const { return std::strstr(err, "error: ") != nullptr ? 255 : 0; }

#define E(line, msg) "File s.zyl;  line " #line ": error: " msg "\n\n"
#define EP(line, pos, msg) "File s.zyl;  line " #line ", position " #pos ": error: " msg "\n\n"
#define W(line, msg) "File s.zyl;  line " #line ": warning: " msg "\n\n"

std::vector<MessageRow> const& grammarRows() {
    static std::vector<MessageRow> const rows = {
    // Class prefixes and the top level.
    {"distributed local class A {};", E(1, "'local' contradicts with 'distributed' keyword.")},
    {"local distrib class A {};", E(1, "'local' contradicts with 'distributed' keyword.")},
    {"uptable class A {};", E(1, "'uptable' can be declared only for IoT schema")},
    {"downtable class A {};", E(1, "'downtable' can be declared only for IoT schema")},
    {"iot server;\ndowntable uptable class A {};", E(2, "'uptable' contradicts with 'downtable' keyword.")},
    {"iot server;\nuptable downtable class A {};", E(2, "'downtable' contradicts with 'uptable' keyword.")},
    {"persistent transient class A {};", E(1, "expected 'class' keyword")},
    {"atomic nonatomic class A {};", E(1, "expected 'class' keyword")},
    {"compact struct S {};", E(1, "Invalid syntax")},
    {"\n\nfoo;", E(3, "unexpected token: \"foo\"")},
    {"declare database;", EP(1, 22, "identifier expected, found \";\"")},
    {"declare database a;\ndeclare database b;", E(2, "database was already declared")},
    {"declare oid K[5];\ndeclare oid K[5];", E(2, "oid was already declared")},
    {"declare oid K[0];", E(1, "oid estimated count value is not valid")},
    {"declare auto_oid[5];\ndeclare HA[5];", E(2, "duplicate auto_oid [estimation]")},
    {"declare AUTO_OID[0];", E(1, "auto_oid estimated count value is not valid")},
    {"declare table;", E(1, "invalid declare statement")},
    {"packed struct S {};", E(1, "expected 'direct' keyword")},
    {"packed direct class S {};", E(1, "expected 'struct' keyword")},
    {"direct class S {};", E(1, "expected 'struct' keyword")},
    {"iot router<1>;", E(1, "Router level must be in interval 2 - 65534")},
    {"iot router<65535>;", E(1, "Router level must be in interval 2 - 65534")},
    {"iot gateway;", E(1, "expected 'server', 'device' or 'router' keyword")},
    {"iot device x;", E(1, "expected agent ID")},
    // Reported at the end of the text.
    {"declare oid K[5];\nstruct T {};", E(2, "oid struct \"K\" was not defined")},
    {"declare OID K[5];", W(1, "OID is deprecated, use oid instead") E(1, "oid struct \"K\" was not defined")},
    // struct, enum, calculator
    {"struct float {};", E(1, "\"float\" is a reserved word")},
    {"struct S_ {};", EP(1, 13, "identifiers cannot end with the underscore")},
    {"struct S {};\nstruct S {};", E(2, "type \"S\" was already defined")},
    {"enum E { A };\nenum E { B };", E(2, "type \"E\" was already defined")},
    {"enum E { A, B };\nenum F { B };", E(2, "duplicate element name \"B\" in enum")},
    {"enum E { A; };", E(1, "unexpected token: \";\"")},
    {"enum E { A = x };", EP(1, 22, "number expected, found x")},
    {"class A { unsigned<4> a; };\ncalculator { A<1> };\ncalculator { A<1> };",
     E(3, "Each schema may have only one calculator.\n")},
    {"calculator { A<1> };", E(1, "class A doesn't exiests")},
    {"class A { unsigned<4> a; };\ncalculator { A<1>, A<2> };", E(2, "duplicate class A in calculator")},
    {"class A { unsigned<4> a; };\ncalculator { A<1>; };", E(2, "unexpected token: \";\"")},
    {"calculator { };", E(1, "unexpected token: \";\"")},
    // Class head and body.
    {"struct S {};\nclass S {};", E(2, "type \"S\" was already defined")},
    {"class A { unsigned<4> a; };\nstruct A { unsigned<4> b; };", E(2, "class \"A\" was already defined")},
    {"class A { unsigned<4> a; };\nenum A { X };", E(2, "class \"A\" was already defined")},
    {"class A { unsigned<4> a; };\ndirect struct A { unsigned<4> b; };", E(2, "class \"A\" was already defined")},
    {"enum E { A };\nclass E {};", E(2, "type \"E\" was already defined")},
    {"class A { unsigned<4> a; };\nclass A {};", E(2, "class \"A\" was already defined")},
    {"distributed class A { unsigned<4> a; };", E(1, "Class A declared as distributed, but auto_oid undeclared")},
    {"class A { thick userdef tree<a> t; };", E(1, "'thick' contradicts with 'userdef' keyword.")},
    {"class A { userdef thick tree<a> t; };", E(1, "'thick' contradicts with 'userdef' keyword.")},
    {"class A { nonunique unique tree<a> t; };", E(1, "'nonunique' keyword was already defined.")},
    {"class A { unique nonunique tree<a> t; };", E(1, "'unique' keyword was already defined.")},
    {"class A { unique thick tree<a> t; };", E(1, "'thick' contradicts with 'unique' keyword.")},
    {"persistent class A { unsigned<4> a; patricia<a> p; };",
     E(1, "Patricia index available only for transient classes.")},
    {"class A { unsigned<4> a; voluntary hash<a> h[5]; };", E(1, "Hash indeces can not be voluntary")},
    {"class A { unique unsigned<4> a; };", E(1, "Invalid syntax")},
    {"class A { list; sequences; };", E(1, "list was already declared")},
    {"class A { oid; oid; };", E(1, "oid was already declared")},
    {"class A { autoid[5]; autoid[5]; };", E(1, "autoid was already declared")},
    {"class A { autoid[0]; };", E(1, "estimated count value is not valid for the autoid")},
    {"class A { autoid[x]; };", EP(1, 26, "positive number expected, found x")},
    {"class A {\n  boolean updated_bitmap[];\n};",
     E(3, "Only updated_bitmap field declared for class, please declare other class fields.")},
    {"class A { unsigned<4> a;", E(1, "identifier expected, found \"#1\"")},
    // Warnings leave the compile going.
    {"declare database db;\ndeclare OID K[10];\nstruct K { unsigned<4> k; };\nclass A { OID; unsigned<4> a; };",
     W(2, "OID is deprecated, use oid instead") W(4, "OID is deprecated, use oid instead")},
    {"declare database db;\npersistent class A {\n  unsigned<4> a;\n  hash<a> h[10];\n};",
     W(4, "Tree declaration expected")},
    {"declare database db;\nclass A {\n  unsigned<4> a;\n  history[5];\n};",
     W(4, "History is not currently supported")},
    // Fields.
    {"struct S { sequence<unsigned<4>> s; };", E(1, "Sequence cannot be element of a struct")},
    {"class A { sequence<numeric<5,2>> s; };", E(1, "Sequence element can not be of numeric type")},
    {"class A { sequence<unsigned<4> up> s; };", E(1, "sequence specification error")},
    {"class A { rect<signed<4>> r; };", E(1, "rectangle dimension must be specified")},
    {"class A { rect<signed<4>> r[17]; };", E(1, "dimension size limits")},
    {"class A { point<signed<4>> p; };", E(1, "point dimension must be specified")},
    {"class A { point<signed<4>> p[9]; };", E(1, "dimension size limits")},
    {"class A { point<signed<4>> p[1]; };", E(1, "dimension size limits")},
    {"class A { unsigned<4> updated_bitmap[4]; };", E(1, "updated_bitmap - could be only of type boolean.")},
    {"class A { unsigned<4> a[0]; };", E(1, "array size must be between 1 and 65535")},
    {"class A { unsigned<4> a[65536]; };", E(1, "array size must be between 1 and 65535")},
    {"class A { unsigned<4> b; boolean updated_bitmap; };",
     E(1, "updated_bitmap - could be only of type bool and should be declared as array field.")},
    {"class A { unsigned<4> a;\n  unsigned<2> b, a; };", E(2, "field a already exists")},
    // The size of a bitmap left without one comes from the class's fields.
    {"struct S {\n  signed<4> a;\n  boolean updated_bitmap[];\n};",
     E(3, "updated_bitmap without an array size can be declared only in a class")},
    {"class A {\n  signed<4> a;\n  boolean updated_bitmap[], y;\n};",
     E(3, "field y has no array size: only updated_bitmap may leave it out")},
    // A field named like a generated indicator, in either order.
    {"class A {\n  nullable signed<4> a_indicator;\n  nullable signed<4> a;\n};",
     E(2, "field a_indicator is named like the indicator of nullable field a")},
    {"struct S {\n  nullable signed<4> a;\n  boolean a_indicator;\n};",
     E(3, "field a_indicator is named like the indicator of nullable field a")},
    {"class A { unsigned<4> a b; };", E(1, "expected ',' or ';'")},
    {"class A { optional S s = 1; };", E(1, "cannot initialize optional field")},
    {"class A { vector<signed<4>> v = 1; };", E(1, "cannot initialize vector")},
    {"class A { unsigned<4> a = {1}; };", E(1, "initializer for scalar starts with '{'")},
    {"class A { unsigned<4> a[3] = {1 2}; };", E(1, "expected \",\"")},
    {"class A { unsigned<4> a[3] = {}; };", E(1, "no initial values were specified for an array")},
    {"class A { unsigned<4> a[2] = {1,2,3}; };", EP(1, 43, "expected \"}\"")},
    {"class A { unsigned<4> select; };", E(1, "\"select\" is a reserved word"), "--sql-reserved-words"},
    // Type names.
    {"class A { numeric<20,2> n; };", E(1, "decimal width not be larger than 19")},
    {"class A { decimal<5,6> n; };", E(1, "precision should be smaller than width")},
    {"class A { signed<3> n; };", E(1, "illegal size: allowed sizes are 1,2,4,8")},
    {"class A { unsigned<0> n; };", E(1, "illegal size: allowed sizes are 1,2,4,8")},
    // Direct structs.
    {"struct D {};\ndirect struct D {};", E(2, "type \"D\" was already defined")},
    {"direct struct D { rect<signed<4>> r[2]; };", E(1, "Rect field is not allowed in direct structure")},
    {"direct struct D { optional signed<4> o; };", E(1, "Optional field is not allowed in direct structure")},
    {"direct struct D { nullable signed<4> n; };", E(1, "Nullable field is not allowed in direct structure")},
    {"direct struct D { vector<signed<4>> v; };", E(1, "Vector is not allowed in direct structure")},
    {"direct struct D { signed<4> a[0]; };", E(1, "array size must be between 1 and 65535")},
    {"packed direct struct D { signed<4> a, a; };", E(1, "field a already exists")},
    {"direct struct D { signed<4> a, b[2]; };", E(1, "expected ',' or ';'")},
    // Indexes.
    {"class A { unsigned<4> a; tree<a> t; tree<a> t; };", E(1, "index \"t\" was already defined")},
    {"class A { unsigned<4> a; hash<a> h[0]; };",
     E(1, "estimated count value is not valid for the hash index h")},
    {"class A { unsigned<4> a; hash<a> h; };", EP(1, 50, "expected \"[\"")},
    {"class A { unsigned<4> a; tree<* a> t; };", E(1, "'>' expected")},
    {"class A { kdtree<s.x> k; };",
     E(1, "Fields of inner structs are not allowed as an element of R-Tree or KD-Tree indeces")},
    {"class A { rtree<s.x> k; };",
     E(1, "Fields of inner structs are not allowed as an element of R-Tree or KD-Tree indeces")},
    {"class A { userdef tree<a collate c> t; };", E(1, "unexpected \"collate\" for user-defined index")},
    {"class A { rtree<r, s> q; };", E(1, "rtree index specification error")},
    {"transient class A { patricia<a, b> p; };", E(1, "patricia index specification error")},
    {"class A { hash<a asc> h[10]; };", E(1, "unexpected token: \"asc\"")},
    {"class A { tree<a desc collate> t; };", EP(1, 43, "identifier expected, found \">\"")},
    // Events and time-to-live.
    {"class A { event<class update> e; };", E(1, "field name expected, instead of \"class\"")},
    {"class A { event<a update> e1;\n event<a update> e2; };", E(2, "event on \"a\" update was already defined")},
    {"class A { event<new> e; };\nclass B { event<delete> e; };", E(2, "event \"e\" was already defined")},
    {"class A { TTL_clock_time 5 s; };", E(1, "invalid TTL_clock_time time unit (must be s, ms or us)")},
    {"class A { TTL_clock_time 010 ms; };", E(1, "invalid TTL_clock_time value 010000")},
    {"class A { TTL_clock_time 0 us; };", E(1, "invalid TTL_clock_time value 0")},
    {"class A { TTL_count 5; TTL_count 6; };", E(1, "TTL_count already defined")},
    // Accepted forms that are easy to break.
    {"declare database db;\nclass A { unsigned<4> a; unique hash<a> h[5]; nonunique hash<a> g[5]; };", ""},
    {"declare database db;\nclass A { sequence<numeric<5,0> asc> s; unsigned<4> select; };", ""},
    {"declare database db;\niot router<7> 12;\nuptable class A { unsigned<4> a; };", ""},
    {"declare database db;\nclass A { unsigned<4> a; inclusive unsigned<4> b; tree<a> t; };", ""},
    };
    return rows;
}

#define DB "declare database db;\n"

std::vector<MessageRow> const& finishRows() {
    static std::vector<MessageRow> const rows = {
    // System classes.
    {DB "iot server;\nclass A { unsigned<4> a; };", E(3, "IoT schema has no 'uptable' or 'downtable' classes")},
    // Field types.
    {DB "struct A { unsigned<4> x; A a; };", E(2, "struct A includes itself")},
    {DB "class A { wstring w; };",
     E(2, "wide character type is not supported in this version of Quorabase. Please contact Tarnwell Support.")},
    {DB "class A { sequence<wchar> w; };",
     E(2, "wide character type is not supported in this version of Quorabase. Please contact Tarnwell Support.")},
    {DB "class A {\n  Missing m;\n};", E(4, "undefined type Missing used in m")},
    {DB "class A { sequence<Missing> q; };", E(2, "undefined type Missing used in q")},
    {DB "class A {\n  sequence<nchar<17>> q;\n  signed<4> a;\n};",
     E(3, "sequence q cannot hold elements of type nchar<17>: a sequence holds integers, floating point numbers, "
          "dates and times, char<n>, binary<n> or structs")},
    {DB "class A { sequence<string> s; };",
     E(2, "sequence s cannot hold elements of type string: a sequence holds integers, floating point numbers, "
          "dates and times, char<n>, binary<n> or structs")},
    {DB "direct struct D { signed<4> x; };\ndirect struct E { D d; };",
     E(3, "No direct or normal structs can be included into direct struct")},
    {DB "direct struct D { signed<4> x; };\nclass A { vector<D> v; };", E(3, "Direct struct can not be element of a vector")},
    {DB "direct struct D { string s; };", E(2, "Direct struct can't include dynamic or optional fields")},
    // Index limits. A kd-tree takes one bit per field in a word of the
    // target's size: 8 fields are too many for a 1-byte word.
    {DB "class A { signed<4> a, b, c, d, e, f, g, h; kdtree<a, b> k; };",
     E(2, "It is too many fields in class \"A\" for kd-tree index \"k\"."), "--sizeof-size=1"},
    {DB "class A { string s; trigram<s, s> t; };", E(2, "[A.t] Trigram index can be defined only for single field.")},
    // Both would define A_q_search; a unique hash index has none.
    {DB "class A {\n  sequence<signed<4> asc> q;\n  signed<4> a;\n  tree<a> q;\n};",
     E(5, "index q of class A is named like ordered sequence field q: both would define A_q_search")},
    {DB "class A {\n  sequence<signed<4> desc> q;\n  signed<4> a;\n  nonunique hash<a> q[10];\n};",
     E(5, "index q of class A is named like ordered sequence field q: both would define A_q_search")},
    // Segments.
    {DB "class A { unsigned<4> a; tree<b> t; };",
     E(2, "field b is not defined in struct A and referenced from index t, b")},
    {DB "class A { sequence<signed<4>> q; tree<q> t; };", E(2, "sequence field q used in index t, q")},
    {DB "class A { optional signed<4> o; tree<o> t; };",
     E(2, "optional fields cannot be used in indexes: optional field \"o\" used in index t, o")},
    {DB "class A { signed<4> a; tree<a.x> t; };", E(2, "not final element a of index t, a.x is not a struct")},
    {DB "struct S { signed<4> x; };\nclass A { S s; tree<s> t; };", E(3, "final element s of index t, s is struct")},
    {DB "class A { signed<4> a; tree<a collate c> t; };", E(2, "Wrong field type for collate c")},
    {DB "class A { char<4> a; nchar<4> b; tree<a collate c> t; tree<b collate c> u; };",
     E(2, "Incompatible field types for collation c")},
    {DB "struct S { signed<4> x[2]; };\nclass A { S s[2]; tree<s.x> t; };",
     E(3, "index t, s.x has more then 1 vector or array element")},
    {DB "class A {\n  blob b;\n  tree<b> t;\n};", E(4, "index t of class A: blob field b cannot be a key")},
    {DB "class A {\n  blob b;\n  tree<b collate c> t;\n};", E(4, "index t of class A: blob field b cannot be a key")},
    {DB "struct S { signed<4> x; signed<4> y; };\nclass A {\n  vector<S> v;\n  tree<v.x, v.y> t;\n};",
     E(5, "index t of class A: keys v.x and v.y both lie in a vector or array, only one key may")},
    {DB "class A { signed<4> v[2]; signed<4> w[2]; signed<4> a; tree<v, a, w> t; };",
     E(2, "index t of class A: keys v and w both lie in a vector or array, only one key may")},
    {DB "class A { signed<4> a[3]; rtree<a> q; };",
     E(2, "[A.q] R-Tree can be defined only for array of rectangles or array of scalars with even length.")},
    // The trigram check on a nested field prints the R-Tree text on purpose.
    {DB "struct S { string s; };\nclass A { S x; trigram<x.s> t; };",
     E(3, "[A.t] R-Tree can be defined only for single field.")},
    {DB "class A { signed<4> a; trigram<a> t; };",
     E(2, "[A.t] Trigram index can be defined only for character or string types.")},
    {DB "class A { char<8> a[2]; trigram<a> t; };",
     E(2, "[A.t] Trigram index can be defined only for character or string types.")},
    {DB "class A { boolean b; patricia<b> p; };",
     E(2, "field b: no index allowed on this type of field, only array/vectors of boolean indexes allowed")},
    {DB "class A { boolean flag; tree<flag> t; };", E(2, "field flag: only patricia index allowed on this type of field")},
    {DB "class A { signed<4> a[2]; kdtree<a> k; };",
     E(2, "[A.k] A vector or array can not be element of KD-Tree index.")},
    // Events.
    {DB "class A { signed<4> a; event<update> u; event<a update> v; };",
     E(2, "For class A declared both update class event and field update event(s)")},
    {DB "class A { signed<4> a; boolean updated_bitmap[]; event<a update> v; };",
     E(2, "For class A declared both update class event and field update event(s)")},
    {DB "class A { signed<4> a; event<b update> e; };", E(2, "field b is not defined in A, referenced from event e")},
    {DB "class A { vector<signed<4>> v; event<v update> e; };",
     E(2, "field v in A, referenced from event e must be of a base type: simple, string, chars, nstring or nchars")},
    {DB "struct S { signed<4> x; };\nclass A { S s; event<s update> e; };",
     E(3, "field s in A, referenced from event e must be of a base type: simple, string, chars, nstring or nchars")},
    // Oid and references.
    {DB "class A { oid; signed<4> a; };", E(2, "oid is not declared")},
    {DB "declare oid K[5];\nstruct K { string s; };", E(3, "oid type K cannot be dynamic")},
    {DB "class A { autoid_t<B> b; };", E(2, "A reference to undefined class \"B\" found.")},
    {DB "class B { signed<4> x; };\nclass A { autoid_t<B> b; };", E(3, "Class \"B\" has no autoid.")},
    {DB "declare oid K[5];\nstruct K { signed<4> k; };\nclass B { signed<4> x; };\nclass A { ref<B> b; };",
     E(5, "Class \"B\" has no oid.")},
    {"class A { signed<4> a; };", E(1, "schema name is not defined")},
    // Each Java class has a file of its own, the database's list of classes too.
    {DB "class A { signed<4> a; };\nclass db {\n  signed<4> b;\n};",
     E(3, "class db is named like the database: the Java and C# bindings would declare db twice"), "--java"},
    {"declare database switch;\nenum E { A };\nstruct switch { signed<4> a; };",
     E(3, "struct switch is named like the database: the Java and C# bindings would declare switch_ twice"), "--cs"},
    // A field's functions named like its class's own; the run-time entry,
    // which writes no functions, takes it (the option keeps it from there).
    {DB "class C {\n  string fixed;\n};", E(3, "field fixed of C would define C_fixed_get, the name of the fixed-part "
                                            "function of C"), "--compiled-functions"},
    {DB "class C { signed<4> a; signed<4> xml; };", E(2, "field xml of C would define C_xml_get, the name of the XML "
                                                      "access function of C"), "--xml-access"},
    // The C++ wrappers' members are the fields and indexes.
    {DB "enum E { A };\nclass C {\n  signed<4> E;\n  E e;\n};",
     E(4, "field E of C is named like the enum type of its later field e, which the C++ member would hide"), "--cpp"},
    {DB "class C { signed<4> a;\n  tree<a> C; };",
     E(3, "index C is named like its class: a C++ class has no member of its own name"), "--cpp"},
    {DB "class C {\n  string s;\n  thick tree<s> t;\n};", E(4, "index t is a thick tree over a string, whose C++ "
                                                        "wrappers would define search_all twice; compile it without --cpp"),
     "--cpp"},
    {DB "class C {\n  sequences;\n  signed<4> a;\n};", E(2, "class C declares sequences while no field of the schema "
                                                    "is a sequence: its C++ wrappers would name Sequence without its "
                                                    "header; compile it without --cpp"),
     "--cpp"},
    {DB "direct struct D { signed<4> x; };\nclass C {\n  D d;\n};",
     E(4, "field d holds direct struct D, whose offsets the C code would name without the prefix; compile it without "
          "--prefix-names"),
     "--prefix-names"},
    // Through another struct a struct holds itself quietly here; the layout
    // pass refuses it, without a line.
    {DB "struct A { B b; };\nstruct B { A a; };", "File s.zyl; error: recursive definition of \"A\"\n\n"},

    // Accepted.
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
    {DICT("blob b[2];"), "File s.zyl; error: Blob cannot be element of array\n\n"},
    {DICT("vector<blob> b;"), "File s.zyl; error: Blob cannot be element of vector\n\n"},
    {DICT("vector<sequence> q;"), "File s.zyl; error: Sequence cannot be element of vector\n\n"},
    {DICT("optional sequence q;"), "File s.zyl; error: sequence specification error\n\n"},
    {DICT("signed<4> a = x1;"), "File s.zyl; error: initial value for A.a is not integer: \"x1\"\n\n"},
    // Eight-byte values take no enum names.
    {DICT("signed<8> a = Red;"), "File s.zyl; error: initial value for A.a is not integer: \"Red\"\n\n"},
    {DICT("float a = abc;"), "File s.zyl; error: initial value for A.a is not double: \"abc\"\n\n"},
    {DICT("boolean a[2] = {1, 2};"), "File s.zyl; error: initial value for A.a is not boolean: \"2\"\n\n"},
    {DICT("string s = abc;"), "File s.zyl; error: Initializer is not allowed for this type of field: A.s\n\n"},
    {DICT("char<4> s = abc;"), "File s.zyl; error: Initializer is not allowed for this type of field: A.s\n\n"},
    };
    return rows;
}

#undef E
#undef EP
#undef W
#undef DB
#undef DICT
