// The dictionary as the command line writes it: {db}.c of the schemas in
// tests/schemas/dict is built with tests/runtime/dictwalk.c, which reads the
// tables back as the runtime does and prints one line per record (a layout
// as size@offset/alignment). Whole walks are compared with the reviewed
// files of tests/golden/dict; after a reviewed change regenerate them with
//   ZYLCOMP_UPDATE_GOLDEN=1 build/tests/zylcomp_tests --gtest_filter='Dictionary*'
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/process.h"

namespace {

std::string const kSchemas = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/dict/";
std::string const kRuntime = std::string(ZYLCOMP_TESTS_DIR) + "/runtime";

// Compiles schema file `name`.zyl with `options` into `out`.
ProcessResult compile(TempDir const& out, std::string const& name, std::vector<std::string> options = {}) {
    std::vector<std::string> argv = {cliPath(), "-o", out.path()};
    argv.insert(argv.end(), options.begin(), options.end());
    argv.push_back(kSchemas + name + ".zyl");
    return runProgram(argv);
}

// The tests that build {db}.c with the walker.
class Dictionary : public ::testing::Test {
protected:
    void SetUp() override {
        if (::access(ZYLCOMP_TEST_CC, X_OK) != 0)
            GTEST_SKIP() << "no C compiler";
    }
};

// Builds {db}.c with the walker under -Wall -Werror and returns what the
// walker prints.
std::string walk(TempDir const& out, std::string const& db) {
    // The linker drops the access functions, which call the missing runtime.
    std::vector<std::string> argv = {ZYLCOMP_TEST_CC, "-std=c99", "-Wall", "-Werror", "-I" + kRuntime,
                                      "-DGET_DICTIONARY=" + db + "_get_dictionary", "-ffunction-sections",
                                      "-Wl,--gc-sections"};
    argv.insert(argv.end(), {kRuntime + "/dictwalk.c", db + ".c", "-o", "walk"});
    ProcessResult cc = runProgram(argv, out.path());
    EXPECT_EQ(cc.status, 0) << cc.err;
    ProcessResult run = runProgram({out.file("walk")}, out.path());
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
}

// Compiles and walks; the walker's lines by their first words ("field Item.id:").
std::string walked(std::string const& name, std::string const& db, std::vector<std::string> options = {}) {
    TempDir out;
    ProcessResult r = compile(out, name, options);
    EXPECT_EQ(r.status, 0) << r.err;
    return walk(out, db);
}

std::string line(std::string const& text, std::string const& start) {
    std::istringstream in(text);
    std::string l;
    while (std::getline(in, l))
        if (l.compare(0, start.size(), start) == 0)
            return l;
    return "(no line " + start + ")";
}

// Every expected line must stand in `text`, whole; a line is found by its
// words up to the colon, or by its first word.
void expectLines(std::string const& text, std::vector<std::string> const& lines) {
    for (std::string const& l : lines) {
        size_t colon = l.find(':');
        EXPECT_EQ(line(text, colon != std::string::npos ? l.substr(0, colon + 1) : l.substr(0, l.find(' ') + 1)), l);
    }
}

// `text` against tests/golden/dict/`name`, its banner's time masked.
void expectGolden(std::string text, std::string const& name) {
    std::string const golden = std::string(ZYLCOMP_TESTS_DIR) + "/golden/dict/" + name;
    size_t const at = text.find("\n * at ");
    if (at != std::string::npos)
        text.replace(at + 7, text.find('\n', at + 1) - at - 7, "TIME");
    if (std::getenv("ZYLCOMP_UPDATE_GOLDEN") != nullptr)
        std::ofstream(golden, std::ios::binary) << text;
    EXPECT_EQ(text, readFile(golden)) << name << " differs from its golden file";
}

}  // namespace

// basic.zyl: a dynamic class with events whose large format decides the
// init size, a compact fixed-size one with an implicit list; fields in name
// order, "order" and "no" keeping the declared place; initial values of an
// 8-byte field (low word, high word), an indicator and an enum (counted by
// place), arrays padded with 0.
TEST_F(Dictionary, RecordsOfScalarsArraysStructsEnumsAndInitialValues) {
    expectGolden(walked("basic", "basic", {"-c"}), "basic.walk");
}

// keys.zyl: an autoid, keys inside a vector of structs (counted from the
// element), bit, collated, trigram, spatial and user-defined keys, and a
// nullable key whose indicator stands two bytes behind it.
TEST_F(Dictionary, KeysOfEveryKind) { expectGolden(walked("keys", "keys", {"-c"}), "keys.walk"); }

// Declared order, 8-byte scalars on 8, enums of 4 bytes; then wide offsets
// with the largest size type.
TEST_F(Dictionary, DeclaredOrderAndWideOffsets) {
    expectGolden(walked("basic", "basic", {"--keep-field-order"}), "basic_kept.walk");
    std::string const wide = walked("basic", "basic", {"--wide-offsets", "--sizeof-size", "64"});
    expectLines(wide, {"dictionary version=8.1.1800 magic=9 flags=1 oid=0 auto_oid=0 same=1",
                       "sizes oid_est=0 ha_est=0 oid_sizeof=0 oid_layout=0 offs=8/4 size=64/8"});
}

// layout.zyl in both formats, then with wide offsets and inline functions
// (which leave out the name lists): dynamic, optional, vector and array
// fields (the heap sort's order where alignments are equal), a class
// without fields, and classes behind an oid of 25 bytes.
TEST_F(Dictionary, LayoutsOfBothFormats) {
    expectGolden(walked("layout", "layout", {"-c"}), "layout.walk");
    expectGolden(walked("layout", "layout", {"--wide-offsets"}), "layout_wide.walk");
}

// direct.zyl: direct structs held by value after other fields, two in a
// row, in an array and inside a struct; the C compiler places them, and
// every offset after one is its to work out.
TEST_F(Dictionary, DirectStructsWhereverHeld) { expectGolden(walked("direct", "direct", {"-c"}), "direct.walk"); }

// Prefixed names: enum constants and referred classes are still found by
// the names the schema wrote.
TEST_F(Dictionary, PrefixedNames) {
    expectLines(walked("basic", "basic", {"-c", "--prefix-names"}),
                {"struct basic_Item: flags=0x5 fields=10 c=46/4 u=46/4", "init_i: 1 1 1 7 2 -1 2 0"});
    TempDir out;
    ASSERT_EQ(compile(out, "oid", {"--prefix-names"}).status, 0);
    EXPECT_NE(readFile(out.file("oidy.c")).find("    {\"parent\", {7, 1, 12, 7, 1, 12}, 9, 0, 0, -1, 0, 1, "),
              std::string::npos);
}

TEST_F(Dictionary, DirectStructSizesAreLeftToTheCCompiler) {
    // The generated header declares D_d, { int4 a; char b[2]; }, which the C
    // compiler pads to 8 bytes, and makes D_d_aligned_to_1 a name of it,
    // since D is not packed.
    std::vector<std::vector<std::string>> const forms = {{}, {"--dynamic-dict"}};
    for (std::vector<std::string> const& options : forms) {
        TempDir out;
        ASSERT_EQ(compile(out, "small", options).status, 0);
        std::string const c = readFile(out.file("small.c"));
        if (options.empty())
            EXPECT_NE(c.find("    {\"d\", {structsz(D_d_aligned_to_1), 1, 18, structsz(D_d_aligned_to_1), 1, 24}, "
                             "50, 0, 0, 1, structsz(D_d_aligned_to_1), 65535, 0, 4, 4, 65535, 65535, 0, 0, 0 }"),
                      std::string::npos);
        else
            EXPECT_NE(c.find("    pfi->layout.c_size = fieldsz(D_d_aligned_to_1, a); pfi->layout.c_align  = 1; "
                             "pfi->layout.c_offset = fieldoffs(D_d_aligned_to_1, a);"),
                      std::string::npos);
        expectLines(walk(out, "small"),
                    {"struct D: flags=0x8 fields=2 c=8/1 u=8/1", "struct C: flags=0x1 fields=5 c=26/4 u=32/4",
                     "field D.b: c=2@4/1 u=2@4/1 type=7 flags=0x0 array=0 struct=-1 size=2 ref=65535 init=0 order=1 "
                     "no=0 event=65535 indicator=65535 precision=0 seq=0/0",
                     "field C.d: c=8@18/1 u=8@24/1 type=50 flags=0x0 array=0 struct=1 size=8 ref=65535 init=0 "
                     "order=4 no=4 event=65535 indicator=65535 precision=0 seq=0/0"});
    }
}

// The values of the field and struct records are the walker's and
// SchemaGen's to check; here the whole dynamic form: its frame and padding.
TEST(DictionaryText, TheSourceFile) {
    TempDir out;
    ASSERT_EQ(compile(out, "oid", {"--dynamic-dict"}).status, 0);
    expectGolden(readFile(out.file("oidy.c")), "oidy.c");
}

// Empty tables in both forms: no classes at all, and classes without fields
// whose only indexes are lists, which have no keys.
TEST_F(Dictionary, EmptyTables) {
    struct {
        char const* schema;
        char const* counts;
    } const cases[] = {
        {"", "counts classes=0 lists=0 autoids=0 histories=0 userdefs=0 max_indexes=0 structs=0 indexes=0 events=0 "
             "colls=0"},
        {"class A {};\nclass B { list; };\n",
         "counts classes=2 lists=2 autoids=0 histories=0 userdefs=0 max_indexes=1 structs=2 indexes=2 events=0 "
         "colls=0"},
    };
    for (auto const& c : cases) {
        for (char const* form : {"--compact", "--dynamic-dict"}) {
            TempDir out;
            out.write("e.zyl", std::string("declare database empty;\n") + c.schema);
            ASSERT_EQ(runProgram({cliPath(), form, "e.zyl"}, out.path()).status, 0);
            expectLines(walk(out, "empty"),
                        {c.counts, "class 0 -: indexes=0..0 list=0 autoid=0 fixed=0 autoid_offset=0 history=0/0/0 "
                                   "events=0..0 flags=0x0 struct=- init_size=0 auto_oid_offset=0"});
        }
    }
}

// Real values read back exactly, those strtod takes beyond the finite ones too.
TEST_F(Dictionary, RealInitialValues) {
    TempDir out;
    out.write("r.zyl", "declare database r;\nclass A { double a[5] = {inf, nan, 0.1, 3}; float f = 0.3; };\n");
    ASSERT_EQ(runProgram({cliPath(), "r.zyl"}, out.path()).status, 0);
    EXPECT_NE(readFile(out.file("r.c")).find("    /* A.a: */ (1e308*10), (0.0/0.0), 0.1, 3.0, 0.0, \n"
                                             "    /* A.f: */ 0.3, \n"),
              std::string::npos);
    expectLines(walk(out, "r"), {"init_d: inf nan 0.1 3 0 0.3"});
}

// The dump of tests/schemas/dict/small.zyl. After a reviewed change of the
// dump, regenerate the golden file from the source tree with:
//   build/zylcomp --xml-schema -o /tmp tests/schemas/dict/small.zyl && cp /tmp/small.xml tests/schemas/dict/
TEST(DictionaryText, SchemaDump) {
    TempDir out;
    ASSERT_EQ(compile(out, "small", {"--xml-schema"}).status, 0);
    EXPECT_EQ(readFile(out.file("small.xml")), readFile(kSchemas + "small.xml"))
        << "regenerate tests/schemas/dict/small.xml with the command above this test";
}
