// Every message of the finishing passes and the system classes, as the
// command line prints it, and what a compile leaves in its directory.
// Ordered like the passes: system classes, field types, indexes and their
// segments, events, oid, references; then schemas they accept. These
// errors come after the whole text is read, so they carry the last line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"

namespace {

struct Case {
    char const* schema;
    char const* err;  // all of standard error; empty for a compile that succeeds
    char const* option = nullptr;
};

#define DB "declare database db;\n"
#define E(line, msg) "File s.zyl;  line " #line ": error: " msg "\n\n"

Case const kCases[] = {
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
    {DB "direct struct D { signed<4> x; };\ndirect struct E { D d; };",
     E(3, "No direct or normal structs can be included into direct struct")},
    {DB "direct struct D { signed<4> x; };\nclass A { vector<D> v; };", E(3, "Direct struct can not be element of a vector")},
    {DB "direct struct D { string s; };", E(2, "Direct struct can't include dynamic or optional fields")},
    // Index limits. A kd-tree takes one bit per field in a word of the
    // target's size: 8 fields are too many for a 1-byte word.
    {DB "class A { signed<4> a, b, c, d, e, f, g, h; kdtree<a, b> k; };",
     E(2, "It is too many fields in class \"A\" for kd-tree index \"k\"."), "--sizeof-size=1"},
    {DB "class A { string s; trigram<s, s> t; };", E(2, "[A.t] Trigram index can be defined only for single field.")},
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
    // Through another struct a struct holds itself quietly here; the layout
    // pass refuses it, without a line.
    {DB "struct A { B b; };\nstruct B { A a; };", "File s.zyl; error: recursive definition of \"A\"\n\n"},

    // Accepted.
    {DB "class A { boolean b[8]; patricia<b> p; };", ""},
    {DB "class A { rect<signed<4>> r[2]; rtree<r> q; point<signed<4>> p[3]; rtree<p> s; };", ""},
    {DB "class A { vector<string> v; trigram<v> t; char<4> a; tree<a collate c> u; tree<v collate c> w; };", ""},
    {DB "class A { signed<4> a, b, c, d, e, f, g; kdtree<a, b> k; };", "", "--sizeof-size=1"},
    {DB "class A { signed<4> a; boolean updated_bitmap[]; event<update> u; };", ""},
    {DB "declare oid K[5];\nstruct K { signed<4> k; };\nclass B { oid; autoid[5]; signed<4> x; };\n"
        "class A { ref<B> b; autoid_t<B> c; };", ""},
    {DB "declare auto_oid[10];\npersistent distributed class A { signed<4> a; };\ndistrib class B { signed<4> b; };", ""},
    {DB "iot device;\nuptable class A { signed<4> a; };\npersistent downtable class B { signed<4> b; };", ""},
};

#undef DB
#undef E

}  // namespace

TEST(FinishMessages, EachMessageAndWhatTheCompileLeaves) {
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
        std::vector<std::string> files = dir.list();
        if (*c.err) {
            EXPECT_EQ(r.status, 255);
            EXPECT_EQ(r.out, "Error executing DDL compiler\n");
            EXPECT_EQ(files, std::vector<std::string>{"s.zyl"});
        } else {
            EXPECT_EQ(r.status, 0);
            // A collation asks for db_coll.c as well.
            ASSERT_GE(files.size(), 3u);
            EXPECT_EQ(files[0] + " " + files[1], "db.c db.h");
        }
    }
}
