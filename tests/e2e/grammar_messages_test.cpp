// Every message of the grammar, as the command line prints it: the schema
// is written to s.zyl in a fresh directory and compiled there. Ordered like
// the analyzer: top level, declare, struct, enum, calculator, iot, class
// body, fields, type names, direct structs, indexes, events, TTL.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"

namespace {

struct Case {
    char const* schema;
    char const* err;  // all of standard error
    int status;
    char const* option = nullptr;
};

#define E(line, msg) "File s.zyl;  line " #line ": error: " msg "\n\n"
#define EP(line, pos, msg) "File s.zyl;  line " #line ", position " #pos ": error: " msg "\n\n"
#define W(line, msg) "File s.zyl;  line " #line ": warning: " msg "\n\n"

Case const kCases[] = {
    // Class prefixes and the top level.
    {"distributed local class A {};", E(1, "'local' contradicts with 'distributed' keyword."), 255},
    {"local distrib class A {};", E(1, "'local' contradicts with 'distributed' keyword."), 255},
    {"uptable class A {};", E(1, "'uptable' can be declared only for IoT schema"), 255},
    {"downtable class A {};", E(1, "'downtable' can be declared only for IoT schema"), 255},
    {"iot server;\ndowntable uptable class A {};", E(2, "'uptable' contradicts with 'downtable' keyword."), 255},
    {"iot server;\nuptable downtable class A {};", E(2, "'downtable' contradicts with 'uptable' keyword."), 255},
    {"persistent transient class A {};", E(1, "expected 'class' keyword"), 255},
    {"atomic nonatomic class A {};", E(1, "expected 'class' keyword"), 255},
    {"compact struct S {};", E(1, "Invalid syntax"), 255},
    {"\n\nfoo;", E(3, "unexpected token: \"foo\""), 255},
    {"declare database;", EP(1, 22, "identifier expected, found \";\""), 255},
    {"declare database a;\ndeclare database b;", E(2, "database was already declared"), 255},
    {"declare oid K[5];\ndeclare oid K[5];", E(2, "oid was already declared"), 255},
    {"declare oid K[0];", E(1, "oid estimated count value is not valid"), 255},
    {"declare auto_oid[5];\ndeclare HA[5];", E(2, "duplicate auto_oid [estimation]"), 255},
    {"declare AUTO_OID[0];", E(1, "auto_oid estimated count value is not valid"), 255},
    {"declare table;", E(1, "invalid declare statement"), 255},
    {"packed struct S {};", E(1, "expected 'direct' keyword"), 255},
    {"packed direct class S {};", E(1, "expected 'struct' keyword"), 255},
    {"direct class S {};", E(1, "expected 'struct' keyword"), 255},
    {"iot router<1>;", E(1, "Router level must be in interval 2 - 65534"), 255},
    {"iot router<65535>;", E(1, "Router level must be in interval 2 - 65534"), 255},
    {"iot gateway;", E(1, "expected 'server', 'device' or 'router' keyword"), 255},
    {"iot device x;", E(1, "expected agent ID"), 255},
    // Reported at the end of the text.
    {"declare oid K[5];\nstruct T {};", E(2, "oid struct \"K\" was not defined"), 255},
    {"declare OID K[5];", W(1, "OID is deprecated, use oid instead") E(1, "oid struct \"K\" was not defined"), 255},
    // struct, enum, calculator
    {"struct float {};", E(1, "\"float\" is a reserved word"), 255},
    {"struct S_ {};", EP(1, 13, "identifiers cannot end with the underscore"), 255},
    {"struct S {};\nstruct S {};", E(2, "type \"S\" was already defined"), 255},
    {"enum E { A };\nenum E { B };", E(2, "type \"E\" was already defined"), 255},
    {"enum E { A, B };\nenum F { B };", E(2, "duplicate element name \"B\" in enum"), 255},
    {"enum E { A; };", E(1, "unexpected token: \";\""), 255},
    {"enum E { A = x };", EP(1, 22, "number expected, found x"), 255},
    {"class A { unsigned<4> a; };\ncalculator { A<1> };\ncalculator { A<1> };",
     E(3, "Each schema may have only one calculator.\n"), 255},
    {"calculator { A<1> };", E(1, "class A doesn't exiests"), 255},
    {"class A { unsigned<4> a; };\ncalculator { A<1>, A<2> };", E(2, "duplicate class A in calculator"), 255},
    {"class A { unsigned<4> a; };\ncalculator { A<1>; };", E(2, "unexpected token: \";\""), 255},
    {"calculator { };", E(1, "unexpected token: \";\""), 255},
    // Class head and body.
    {"struct S {};\nclass S {};", E(2, "type \"S\" was already defined"), 255},
    {"enum E { A };\nclass E {};", E(2, "type \"E\" was already defined"), 255},
    {"class A { unsigned<4> a; };\nclass A {};", E(2, "class \"A\" was already defined"), 255},
    {"distributed class A { unsigned<4> a; };", E(1, "Class A declared as distributed, but auto_oid undeclared"), 255},
    {"class A { thick userdef tree<a> t; };", E(1, "'thick' contradicts with 'userdef' keyword."), 255},
    {"class A { userdef thick tree<a> t; };", E(1, "'thick' contradicts with 'userdef' keyword."), 255},
    {"class A { nonunique unique tree<a> t; };", E(1, "'nonunique' keyword was already defined."), 255},
    {"class A { unique nonunique tree<a> t; };", E(1, "'unique' keyword was already defined."), 255},
    {"class A { unique thick tree<a> t; };", E(1, "'thick' contradicts with 'unique' keyword."), 255},
    {"persistent class A { unsigned<4> a; patricia<a> p; };",
     E(1, "Patricia index available only for transient classes."), 255},
    {"class A { unsigned<4> a; voluntary hash<a> h[5]; };", E(1, "Hash indeces can not be voluntary"), 255},
    {"class A { unique unsigned<4> a; };", E(1, "Invalid syntax"), 255},
    {"class A { list; sequences; };", E(1, "list was already declared"), 255},
    {"class A { oid; oid; };", E(1, "oid was already declared"), 255},
    {"class A { autoid[5]; autoid[5]; };", E(1, "autoid was already declared"), 255},
    {"class A { autoid[0]; };", E(1, "estimated count value is not valid for the autoid"), 255},
    {"class A { autoid[x]; };", EP(1, 26, "positive number expected, found x"), 255},
    {"class A {\n  boolean updated_bitmap[];\n};",
     E(3, "Only updated_bitmap field declared for class, please declare other class fields."), 255},
    {"class A { unsigned<4> a;", E(1, "identifier expected, found \"#1\""), 255},
    // Warnings leave the compile going.
    {"declare database db;\ndeclare OID K[10];\nstruct K { unsigned<4> k; };\nclass A { OID; unsigned<4> a; };",
     W(2, "OID is deprecated, use oid instead") W(4, "OID is deprecated, use oid instead"), 0},
    {"declare database db;\npersistent class A {\n  unsigned<4> a;\n  hash<a> h[10];\n};",
     W(4, "Tree declaration expected"), 0},
    {"declare database db;\nclass A {\n  unsigned<4> a;\n  history[5];\n};",
     W(4, "History is not currently supported"), 0},
    // Fields.
    {"struct S { sequence<unsigned<4>> s; };", E(1, "Sequence cannot be element of a struct"), 255},
    {"class A { sequence<numeric<5,2>> s; };", E(1, "Sequence element can not be of numeric type"), 255},
    {"class A { sequence<unsigned<4> up> s; };", E(1, "sequence specification error"), 255},
    {"class A { rect<signed<4>> r; };", E(1, "rectangle dimension must be specified"), 255},
    {"class A { rect<signed<4>> r[17]; };", E(1, "dimension size limits"), 255},
    {"class A { point<signed<4>> p; };", E(1, "point dimension must be specified"), 255},
    {"class A { point<signed<4>> p[9]; };", E(1, "dimension size limits"), 255},
    {"class A { point<signed<4>> p[1]; };", E(1, "dimension size limits"), 255},
    {"class A { unsigned<4> updated_bitmap[4]; };", E(1, "updated_bitmap - could be only of type boolean."), 255},
    {"class A { unsigned<4> a[0]; };", E(1, "array size must be between 1 and 65535"), 255},
    {"class A { unsigned<4> a[65536]; };", E(1, "array size must be between 1 and 65535"), 255},
    {"class A { unsigned<4> b; boolean updated_bitmap; };",
     E(1, "updated_bitmap - could be only of type bool and should be declared as array field."), 255},
    {"class A { unsigned<4> a;\n  unsigned<2> b, a; };", E(2, "field a already exists"), 255},
    {"class A { unsigned<4> a b; };", E(1, "expected ',' or ';'"), 255},
    {"class A { optional S s = 1; };", E(1, "cannot initialize optional field"), 255},
    {"class A { vector<signed<4>> v = 1; };", E(1, "cannot initialize vector"), 255},
    {"class A { unsigned<4> a = {1}; };", E(1, "initializer for scalar starts with '{'"), 255},
    {"class A { unsigned<4> a[3] = {1 2}; };", E(1, "expected \",\""), 255},
    {"class A { unsigned<4> a[3] = {}; };", E(1, "no initial values were specified for an array"), 255},
    {"class A { unsigned<4> a[2] = {1,2,3}; };", EP(1, 43, "expected \"}\""), 255},
    {"class A { unsigned<4> select; };", E(1, "\"select\" is a reserved word"), 255, "--sql-reserved-words"},
    // Type names.
    {"class A { numeric<20,2> n; };", E(1, "decimal width not be larger than 19"), 255},
    {"class A { decimal<5,6> n; };", E(1, "precision should be smaller than width"), 255},
    {"class A { signed<3> n; };", E(1, "illegal size: allowed sizes are 1,2,4,8"), 255},
    {"class A { unsigned<0> n; };", E(1, "illegal size: allowed sizes are 1,2,4,8"), 255},
    // Direct structs.
    {"struct D {};\ndirect struct D {};", E(2, "type \"D\" was already defined"), 255},
    {"direct struct D { rect<signed<4>> r[2]; };", E(1, "Rect field is not allowed in direct structure"), 255},
    {"direct struct D { optional signed<4> o; };", E(1, "Optional field is not allowed in direct structure"), 255},
    {"direct struct D { nullable signed<4> n; };", E(1, "Nullable field is not allowed in direct structure"), 255},
    {"direct struct D { vector<signed<4>> v; };", E(1, "Vector is not allowed in direct structure"), 255},
    {"direct struct D { signed<4> a[0]; };", E(1, "array size must be between 1 and 65535"), 255},
    {"packed direct struct D { signed<4> a, a; };", E(1, "field a already exists"), 255},
    {"direct struct D { signed<4> a, b[2]; };", E(1, "expected ',' or ';'"), 255},
    // Indexes.
    {"class A { unsigned<4> a; tree<a> t; tree<a> t; };", E(1, "index \"t\" was already defined"), 255},
    {"class A { unsigned<4> a; hash<a> h[0]; };",
     E(1, "estimated count value is not valid for the hash index h"), 255},
    {"class A { unsigned<4> a; hash<a> h; };", EP(1, 50, "expected \"[\""), 255},
    {"class A { unsigned<4> a; tree<* a> t; };", E(1, "'>' expected"), 255},
    {"class A { kdtree<s.x> k; };",
     E(1, "Fields of inner structs are not allowed as an element of R-Tree or KD-Tree indeces"), 255},
    {"class A { rtree<s.x> k; };",
     E(1, "Fields of inner structs are not allowed as an element of R-Tree or KD-Tree indeces"), 255},
    {"class A { userdef tree<a collate c> t; };", E(1, "unexpected \"collate\" for user-defined index"), 255},
    {"class A { rtree<r, s> q; };", E(1, "rtree index specification error"), 255},
    {"transient class A { patricia<a, b> p; };", E(1, "patricia index specification error"), 255},
    {"class A { hash<a asc> h[10]; };", E(1, "unexpected token: \"asc\""), 255},
    {"class A { tree<a desc collate> t; };", EP(1, 43, "identifier expected, found \">\""), 255},
    // Events and time-to-live.
    {"class A { event<class update> e; };", E(1, "field name expected, instead of \"class\""), 255},
    {"class A { event<a update> e1;\n event<a update> e2; };", E(2, "event on \"a\" update was already defined"), 255},
    {"class A { event<new> e; };\nclass B { event<delete> e; };", E(2, "event \"e\" was already defined"), 255},
    {"class A { TTL_clock_time 5 s; };", E(1, "invalid TTL_clock_time time unit (must be s, ms or us)"), 255},
    {"class A { TTL_clock_time 010 ms; };", E(1, "invalid TTL_clock_time value 010000"), 255},
    {"class A { TTL_clock_time 0 us; };", E(1, "invalid TTL_clock_time value 0"), 255},
    {"class A { TTL_count 5; TTL_count 6; };", E(1, "TTL_count already defined"), 255},
    // Accepted forms that are easy to break.
    {"declare database db;\nclass A { unsigned<4> a; unique hash<a> h[5]; nonunique hash<a> g[5]; };", "", 0},
    {"declare database db;\nclass A { sequence<numeric<5,0> asc> s; unsigned<4> select; };", "", 0},
    {"declare database db;\niot router<7> 12;\nuptable class A { unsigned<4> a; };", "", 0},
    {"declare database db;\nclass A { unsigned<4> a; inclusive unsigned<4> b; tree<a> t; };", "", 0},
};

#undef E
#undef EP
#undef W

}  // namespace

TEST(GrammarMessages, EachMessageWithFileLineAndPosition) {
    for (Case const& c : kCases) {
        SCOPED_TRACE(c.schema);
        TempDir dir;
        dir.write("s.zyl", c.schema);
        std::vector<std::string> argv = {cliPath()};
        if (c.option)
            argv.push_back(c.option);
        argv.push_back("s.zyl");
        ProcessResult r = runProgram(argv, dir.path());
        EXPECT_EQ(r.err, c.err);
        EXPECT_EQ(r.status, c.status);
        if (c.status == 0)
            EXPECT_EQ(r.out.rfind("Compiled successfully: ", 0), 0u) << r.out;
        else
            EXPECT_EQ(r.out, "Error executing DDL compiler\n");
    }
}

// The database name fixes what a failed compile removes: every file that
// compile could write (an existing skeleton is kept; its ".new" would go),
// and nothing at all while the name is not yet known.
TEST(GrammarMessages, DatabaseNameDecidesWhatAFailureRemoves) {
    char const* const stale[] = {"db.h", "db.c", "db.hpp", "db.xml", "db_udf.c", "other.h"};
    struct {
        char const* schema;
        std::vector<std::string> left;
    } const cases[] = {
        {"declare database db;\nclass A { unsigned<4> a, a; };", {"db_udf.c", "other.h", "s.zyl"}},
        {"class A { unsigned<4> a, a; };\ndeclare database db;",
         {"db.c", "db.h", "db.hpp", "db.xml", "db_udf.c", "other.h", "s.zyl"}},
        {"declare database other;\nclass A { unsigned<4> a, a; };",
         {"db.c", "db.h", "db.hpp", "db.xml", "db_udf.c", "s.zyl"}},
        {"declare database db;\ndeclare oid K[5];", {"db_udf.c", "other.h", "s.zyl"}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.schema);
        TempDir dir;
        for (char const* f : stale)
            dir.write(f, "stale");
        dir.write("s.zyl", c.schema);
        ProcessResult r = runProgram({cliPath(), "s.zyl"}, dir.path());
        EXPECT_EQ(r.status, 255);
        EXPECT_EQ(dir.list(), c.left);
    }
}

TEST(GrammarMessages, BundledExampleCompiles) {
    TempDir dir;
    ProcessResult r = runProgram({cliPath(), "-o", dir.path(), std::string(ZYLCOMP_TESTS_DIR) + "/../examples/shop.zyl"});
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.status, 0);
}
