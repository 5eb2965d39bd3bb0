// Every message of the finishing passes and the system classes, as the
// command line prints it, with what a compile leaves in its directory.
// Ordered like the passes: system classes, field types, indexes and their
// segments, events, oid, references. These errors come after the whole
// text is read, so they carry the last line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"

namespace {

struct Case {
    char const* schema;  // "declare database db;\n" goes in front
    char const* err;     // all of standard error
    char const* option = nullptr;
};

#define E(line, msg) "File s.zyl;  line " #line ": error: " msg "\n\n"

Case const kCases[] = {
    // System classes.
    {"iot server;\nclass A { unsigned<4> a; };", E(3, "IoT schema has no 'uptable' or 'downtable' classes")},
    // Field types.
    {"struct A { unsigned<4> x; A a; };", E(2, "struct A includes itself")},
    {"class A { unsigned<4> x; A a; };", E(2, "struct A includes itself")},
    {"class A { wstring w; };",
     E(2, "wide character type is not supported in this version of Quorabase. Please contact Tarnwell Support.")},
    {"class A { sequence<wchar> w; };",
     E(2, "wide character type is not supported in this version of Quorabase. Please contact Tarnwell Support.")},
    {"class A {\n  Missing m;\n};", E(4, "undefined type Missing used in m")},
    {"class A { sequence<Missing> q; };", E(2, "undefined type Missing used in q")},
    {"direct struct D { signed<4> x; };\ndirect struct E { D d; };",
     E(3, "No direct or normal structs can be included into direct struct")},
    {"struct S { signed<4> x; };\ndirect struct E { S s; };",
     E(3, "No direct or normal structs can be included into direct struct")},
    {"direct struct D { signed<4> x; };\nclass A { vector<D> v; };", E(3, "Direct struct can not be element of a vector")},
    {"direct struct D { string s; };", E(2, "Direct struct can't include dynamic or optional fields")},
    // Index limits.
    // One bit per field in a word of the target's size: 8 fields are too many for a 1-byte word.
    {"class A { signed<4> a, b, c, d, e, f, g, h; kdtree<a, b> k; };",
     E(2, "It is too many fields in class \"A\" for kd-tree index \"k\"."), "--sizeof-size=1"},
    {"class A { string s; trigram<s, s> t; };", E(2, "[A.t] Trigram index can be defined only for single field.")},
    // Segments.
    {"class A { unsigned<4> a; tree<b> t; };",
     E(2, "field b is not defined in struct A and referenced from index t, b")},
    {"struct S { signed<4> x; };\nclass A { S s; tree<s.y> t; };",
     E(3, "field y is not defined in struct S and referenced from index t, s.y")},
    {"class A { sequence<signed<4>> q; tree<q> t; };", E(2, "sequence field q used in index t, q")},
    {"class A { optional signed<4> o; tree<o> t; };",
     E(2, "optional fields cannot be used in indexes: optional field \"o\" used in index t, o")},
    {"class A { signed<4> a; tree<a.x> t; };", E(2, "not final element a of index t, a.x is not a struct")},
    {"struct S { signed<4> x; };\nclass A { S s; tree<s> t; };", E(3, "final element s of index t, s is struct")},
    {"class A { signed<4> a; tree<a collate c> t; };", E(2, "Wrong field type for collate c")},
    {"class A { char<4> a; nchar<4> b; tree<a collate c> t; tree<b collate c> u; };",
     E(2, "Incompatible field types for collation c")},
    {"struct S { signed<4> x[2]; };\nclass A { S s[2]; tree<s.x> t; };",
     E(3, "index t, s.x has more then 1 vector or array element")},
    {"class A { signed<4> a[3]; rtree<a> q; };",
     E(2, "[A.q] R-Tree can be defined only for array of rectangles or array of scalars with even length.")},
    {"class A { signed<4> a; rtree<a> q; };",
     E(2, "[A.q] R-Tree can be defined only for array of rectangles or array of scalars with even length.")},
    // The trigram check on a nested field prints the R-Tree text on purpose.
    {"struct S { string s; };\nclass A { S x; trigram<x.s> t; };",
     E(3, "[A.t] R-Tree can be defined only for single field.")},
    {"class A { signed<4> a; trigram<a> t; };",
     E(2, "[A.t] Trigram index can be defined only for character or string types.")},
    {"class A { char<8> a[2]; trigram<a> t; };",
     E(2, "[A.t] Trigram index can be defined only for character or string types.")},
    {"class A { boolean b; patricia<b> p; };",
     E(2, "field b: no index allowed on this type of field, only array/vectors of boolean indexes allowed")},
    {"class A { boolean flag; tree<flag> t; };", E(2, "field flag: only patricia index allowed on this type of field")},
    {"class A { boolean b[8]; hash<b> h[5]; };", E(2, "field b: only patricia index allowed on this type of field")},
    {"class A { signed<4> a[2]; kdtree<a> k; };",
     E(2, "[A.k] A vector or array can not be element of KD-Tree index.")},
    // Events.
    {"class A { signed<4> a; event<update> u; event<a update> v; };",
     E(2, "For class A declared both update class event and field update event(s)")},
    {"class A { signed<4> a; boolean updated_bitmap[]; event<a update> v; };",
     E(2, "For class A declared both update class event and field update event(s)")},
    {"class A { signed<4> a; event<b update> e; };", E(2, "field b is not defined in A, referenced from event e")},
    {"class A { vector<signed<4>> v; event<v update> e; };",
     E(2, "field v in A, referenced from event e must be of a base type: simple, string, chars, nstring or nchars")},
    {"class A { signed<4> a[2]; event<a update> e; };",
     E(2, "field a in A, referenced from event e must be of a base type: simple, string, chars, nstring or nchars")},
    {"struct S { signed<4> x; };\nclass A { S s; event<s update> e; };",
     E(3, "field s in A, referenced from event e must be of a base type: simple, string, chars, nstring or nchars")},
    // Oid and references.
    {"class A { oid; signed<4> a; };", E(2, "oid is not declared")},
    {"declare oid K[5];\nstruct K { string s; };", E(3, "oid type K cannot be dynamic")},
    {"class A { autoid_t<B> b; };", E(2, "A reference to undefined class \"B\" found.")},
    {"class B { signed<4> x; };\nclass A { autoid_t<B> b; };", E(3, "Class \"B\" has no autoid.")},
    {"declare oid K[5];\nstruct K { signed<4> k; };\nclass B { signed<4> x; };\nclass A { ref<B> b; };",
     E(5, "Class \"B\" has no oid.")},
};

// Schemas the passes accept, one per rule that is easy to get wrong.
char const* const kAccepted[] = {
    "class A { boolean b[8]; patricia<b> p; };",
    "class A { rect<signed<4>> r[2]; rtree<r> q; };",
    "class A { point<signed<4>> p[3]; rtree<p> q; };",
    "class A { vector<string> v; trigram<v> t; };",
    "class A { char<4> a; string b; tree<a collate c> t; tree<b collate c> u; };",
    "struct S { signed<4> x; };\nclass A { vector<S> v; tree<v.x> t; };",
    "class A { signed<4> a; boolean updated_bitmap[]; event<update> u; };",
    "class A { autoid[5]; signed<4> a; };\nclass B { autoid_t<A> a; };",
    "declare oid K[5];\nstruct K { signed<4> k; };\nclass B { oid; signed<4> x; };\nclass A { ref<B> b; };",
    "declare auto_oid[10];\npersistent distributed class A { signed<4> a; };\ntransient distrib class B { signed<4> b; };",
    "iot device;\nuptable class A { signed<4> a; };\npersistent downtable class B { signed<4> b; };",
    "class A { signed<4> a, b, c, d, e, f, g; kdtree<a, b> k; };",
};

#undef E

std::vector<std::string> compile(TempDir const& dir, std::string const& schema, char const* option,
                                 ProcessResult& r) {
    dir.write("db.h", "stale");
    dir.write("s.zyl", "declare database db;\n" + schema);
    std::vector<std::string> argv = {cliPath()};
    if (option)
        argv.push_back(option);
    argv.push_back("s.zyl");
    r = runProgram(argv, dir.path());
    return dir.list();
}

}  // namespace

// A failure removes even a stale output of the same database.
TEST(FinishMessages, EachMessageAndNothingLeftBehind) {
    for (Case const& c : kCases) {
        SCOPED_TRACE(c.schema);
        TempDir dir;
        ProcessResult r;
        std::vector<std::string> files = compile(dir, c.schema, c.option, r);
        EXPECT_EQ(r.err, c.err);
        EXPECT_EQ(r.status, 255);
        EXPECT_EQ(r.out, "Error executing DDL compiler\n");
        EXPECT_EQ(files, std::vector<std::string>{"s.zyl"});
    }
}

TEST(FinishMessages, AcceptedSchemasLeaveHeaderAndSource) {
    for (char const* schema : kAccepted) {
        SCOPED_TRACE(schema);
        TempDir dir;
        ProcessResult r;
        std::vector<std::string> files = compile(dir, schema, nullptr, r);
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(r.status, 0);
        // Skeletons may come too (a collation asks for db_coll.c).
        ASSERT_GE(files.size(), 3u);
        EXPECT_EQ(std::vector<std::string>(files.begin(), files.begin() + 2), (std::vector<std::string>{"db.c", "db.h"}));
        EXPECT_EQ(files.back(), "s.zyl");
        EXPECT_NE(readFile(dir.file("db.h")), "stale");
    }
}

// Without a database name nothing is known to remove.
TEST(FinishMessages, SchemaNameIsRequired) {
    TempDir dir;
    dir.write("s.zyl", "class A { signed<4> a; };");
    ProcessResult r = runProgram({cliPath(), "s.zyl"}, dir.path());
    EXPECT_EQ(r.err, "File s.zyl;  line 1: error: schema name is not defined\n\n");
    EXPECT_EQ(r.status, 255);
}

// A struct that holds itself through another one passes the finishing
// passes quietly; the layout pass then refuses it, without a line.
TEST(FinishMessages, IndirectSelfInclusionEndsInLayout) {
    TempDir dir;
    ProcessResult r;
    compile(dir, "struct A { B b; };\nstruct B { A a; };", nullptr, r);
    EXPECT_EQ(r.err, "File s.zyl; error: recursive definition of \"A\"\n\n");
    EXPECT_EQ(r.status, 255);
}
