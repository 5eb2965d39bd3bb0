// The access interface: the generated files of tests/schemas/api compile
// against the runtime declarations in tests/runtime, and their text is
// checked, whole against tests/golden/api (see its README) for the golden
// schemas, and by rule for what those do not hold.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "support/process.h"

namespace {

std::string const kSchemas = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/api/";
std::string const kRuntime = std::string("-I") + ZYLCOMP_TESTS_DIR + "/runtime";
std::string const kInclude = std::string("-I") + ZYLCOMP_TESTS_DIR + "/../include";

std::string masked(std::string const& text) {
    return std::regex_replace(text, std::regex(" \\* at [^\n]*\n"), " * at TIME\n");
}

// Compiles schema text (as s.zyl) or a schema file with the given options.
struct Compiled {
    Compiled(std::string const& schema, std::vector<std::string> const& flags, bool isFile = false) {
        std::vector<std::string> argv = {cliPath()};
        argv.insert(argv.end(), flags.begin(), flags.end());
        argv.push_back(isFile ? schema : (dir.write("s.zyl", schema), "s.zyl"));
        result = runProgram(argv, dir.path());
    }
    std::string text(std::string const& name) const { return masked(readFile(dir.file(name))); }

    TempDir dir;
    ProcessResult result;
};

bool contains(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

// A schema file of tests/schemas/api, or the text after "declare database
// db;", compiled with `flags`: its `file` holds each text, and none that
// begins with "!".
struct Rule {
    std::vector<std::string> flags;
    char const* file;
    std::string schema;
    std::vector<std::string> texts;
};

void expectRules(std::vector<Rule> const& rules) {
    for (Rule const& r : rules) {
        bool const isFile = r.schema.size() > 4 && r.schema.compare(r.schema.size() - 4, 4, ".zyl") == 0;
        Compiled out(isFile ? kSchemas + r.schema : "declare database db;\n" + r.schema, r.flags, isFile);
        ASSERT_EQ(out.result.status, 0) << out.result.err;
        std::string const text = out.text(r.file);
        for (std::string const& t : r.texts)
            EXPECT_EQ(contains(text, t.substr(t[0] == '!')), t[0] != '!') << r.schema << " " << r.file << "\n" << t;
    }
}

// Schemas refused under a flag whose text could not compile.
struct Refusal {
    char const* schema;
    char const* flag;
    char const* message;  // a part of the refusal
};

Refusal const kRefusals[] = {
    // The offsets of a direct struct's members name its type unprefixed.
    {"direct.zyl", "--prefix-names", "holds direct struct Dir"},
    {"vectors.zyl", "--prefix-names", "holds direct struct Dot"},
    {"keyword_names.zyl", "--prefix-names", "holds direct struct inline"},
    // A keyword index's wrappers would define search_all twice.
    {"keywords.zyl", "--cpp", "define search_all twice"},
    // Column members would name Sequence<> without its header.
    {"columns_only.zyl", "--cpp", "without its header"},
};

}  // namespace

TEST(ApiCompile, RefusedWhereTheTextCouldNotCompile) {
    for (Refusal const& r : kRefusals) {
        Compiled gen(kSchemas + r.schema, {r.flag}, true);
        EXPECT_EQ(gen.result.status, 255) << r.schema;
        EXPECT_TRUE(contains(gen.result.err, r.message)) << gen.result.err;
        EXPECT_EQ(gen.dir.list(), std::vector<std::string>()) << r.schema;
    }
}

// The api schemas and the examples hold what SchemaGen's random schemas may
// not reach (keyword names, skeletons, column classes, sequences of
// structs). Their files compile without a warning, which SchemaGen only
// counts: inline with XML and JSON, and compiled with the C++ wrappers.
TEST(ApiCompile, EverySchemaCompilesWithoutAWarning) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0 || ::access(ZYLCOMP_TEST_CXX, X_OK) != 0)
        GTEST_SKIP() << "no C or C++ compiler";
    std::vector<std::string> schemas;
    for (std::string dir : {kSchemas, std::string(ZYLCOMP_TESTS_DIR) + "/../examples/"})
        for (auto const& entry : std::filesystem::directory_iterator(dir))
            if (entry.path().extension() == ".zyl")
                schemas.push_back(entry.path().string());
    ASSERT_GE(schemas.size(), 20u);
    std::vector<std::string> const modes[] = {{"--xml-access", "--json-access"}, {"--cpp", "--cpp-runtime-header"}};
    auto clean = [](ProcessResult const& r) {
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_FALSE(contains(r.err, "warning:")) << r.err;
    };
    for (std::string const& schema : schemas) {
        for (std::vector<std::string> const& mode : modes) {
            SCOPED_TRACE(schema + " " + ::testing::PrintToString(mode));
            Compiled gen(schema, mode, true);
            bool refused = false;
            for (Refusal const& r : kRefusals)
                refused = refused || (mode[0] == r.flag && std::filesystem::path(schema).filename() == r.schema);
            if (refused)
                continue;  // checked above
            clean(gen.result);
            for (std::string const& name : gen.dir.list()) {
                std::string const ext = std::filesystem::path(name).extension().string();
                std::vector<std::string> argv = {ZYLCOMP_TEST_CC, "-std=c99", "-c", "-Wall", kRuntime, kInclude, name};
                if (ext == ".hpp")
                    argv = {ZYLCOMP_TEST_CXX, "-std=c++11", "-fsyntax-only", "-x", "c++", "-Wall", kRuntime, kInclude,
                            name};
                if (ext == ".c" || ext == ".hpp")
                    clean(runProgram(argv, gen.dir.path()));
            }
        }
    }
}

TEST(ApiGolden, SmallSchemas) {
    struct {
        char const* schema;
        std::vector<std::string> flags;
        std::vector<std::string> files;
    } const cases[] = {
        // A scalar class with a tree and a hash index and three events.
        {"events.zyl", {}, {"ev.h"}},
        // An oid, a string, a nullable and an array field; the C functions
        // inline (the oid ones stand in ko.c all the same), then the C++
        // wrappers.
        {"oid.zyl", {}, {"ko.h", "ko.c"}},
        {"oid.zyl", {"--cpp"}, {"ko.hpp"}},
        // A patricia and an R-tree index.
        {"geo.zyl", {}, {"geo.h"}},
        {"geo.zyl", {"--cpp"}, {"geo.hpp"}},
        // An array, a vector of strings and four kinds of sequence, inline
        // and through the C++ wrappers.
        {"series.zyl", {}, {"se.h"}},
        {"series.zyl", {"--cpp"}, {"se.hpp"}},
        // Index keys and events; C++ properties, and the empty class of a
        // hidden one.
        {"keys.zyl", {}, {"ks.h"}},
        {"keys.zyl", {"--cpp", "--cpp-runtime-header", "--hide", "A", "--hide", "C"}, {"ks.hpp"}},
        // Element, optional and spatial fields, and their C# and Java forms.
        {"elements.zyl", {}, {"el.h"}},
        {"elements.zyl", {"--cs", "--java"}, {"el.cs", "W.java"}},
        // The tables of user-defined indexes, collations and the calculator,
        // and the skeletons.
        {"userdef.zyl", {}, {"ud.c", "ud_udf.c", "ud_coll.c"}},
        // The C# and Java declarations: the lists of types, the enums, the
        // classes with their properties, indexes and events, and a struct.
        {"shop.zyl", {"--cs", "--java", "--cs-namespace", "NS", "--java-package", "com.x"},
         {"shop.cs", "shop.java", "Color.java", "Item.java", "Address.java"}},
    };
    bool update = std::getenv("ZYLCOMP_UPDATE_GOLDEN") != nullptr;
    for (auto const& c : cases) {
        Compiled out(kSchemas + c.schema, c.flags, true);
        ASSERT_EQ(out.result.status, 0) << out.result.err;
        for (std::string const& name : c.files) {
            std::string golden = std::string(ZYLCOMP_TESTS_DIR) + "/golden/api/" + name;
            if (update)
                std::ofstream(golden, std::ios::binary) << out.text(name);
            EXPECT_EQ(out.text(name), readFile(golden))
                << name << " differs from its golden file; if the change is meant, regenerate with "
                << "ZYLCOMP_UPDATE_GOLDEN=1 build/tests/zylcomp_tests --gtest_filter='ApiGolden.*'";
        }
    }
}

// What the golden files do not show, for want of a mode or of room.
TEST(ApiOutput, RulesTheGoldenFilesDoNotShow) {
    expectRules({
        // A bit-string key of a patricia index brings its bit count.
        {{}, "db.h", "transient class A { boolean bits[8]; patricia<bits> p; };",
         {"( zyl_trans_h t, /*INOUT*/ zyl_cursor_h c, ZYL_OPCODE op_, const char *bits_key_0, uint2 number_of_bits )",
          "  pa_->bit_len = number_of_bits; "}},
        // A bit array's field number is a constant of the prototypes, which
        // inline (ev.h) are not written.
        {{"-c"}, "db.h", "class A { list; unsigned<4> a; boolean updated_bitmap[]; };",
         {"#define A_updated_bitmap_field_index 2\nZYL_RET      A_updated_bitmap_get_fldname ",
          "( A *handle, uint2* index, char * dest, uint2 dest_size,  uint2 * len );"}},
        // C++ optional structs pass on their validity; relative codes reach sequences.
        {{"--cpp"}, "db.hpp", "struct P { signed<4> a; };\nclass A { list; optional P p; };",
         {"{ ZYL_RET ret_ = db::A_p_read_handle( this, &s ); set_valid(ret_==ZYL_S_OK); return ret_; ",
          "{ ZYL_RET ret_ = db::A_p_write_handle( this, &s ); s.set_valid(ret_==ZYL_S_OK); return ret_; "}},
        {{"--relative-class-codes"}, "se.h", "series.zyl",
         {"{ return zyl_w_seq_from_cursor_double( trans, iterator, cursor, dict.class_code_origin + 1, 8, 0);"}},
        // A hidden class keeps its handle type and code and loses its API
        // (ks.hpp shows its empty C++ class); relative codes change the
        // bodies, never the code macros.
        {{"--cpp", "--hide", "A", "--relative-class-codes"}, "ks.h", "keys.zyl",
         {"typedef struct A_           { ZYL_Hf h; }  A;\n#else\nclass A;\n#endif\n#define A_code            1\n",
          "#define B_code            2\n", "!A_new", "!A_v_", "!A_byVX", "!A_fixed_get"}},
        {{"--cpp", "--hide", "A", "--relative-class-codes"}, "ks.c", "keys.zyl",
         {"{ return zyl_w_obj_delete_all( t, dict.class_code_origin + 2 ); ", "! A_"}},
        // A hidden class keeps the places of its index and of the collation
        // only it uses, with null entries and no skeleton (ud.c: the tables).
        {{"--hide", "Item"}, "ud.c", "userdef.zyl",
         {"    fptrs[0].fcomp.vb      = (zyl_compare_userdef_vb_f)        0;\n",
          "    fptrs[1].comp = (zyl_compare_collation_f) 0;\n"}},
        {{"--hide", "Item"}, "ud_udf.c", "userdef.zyl", {"!Item_", "Doc_byKind_compare_ext"}},
        {{"--hide", "Item"}, "ud_coll.c", "userdef.zyl", {"!wide_", "plain_collation_hash"}},
        {{"--prefix-names"}, "ud.c", "userdef.zyl", {"    { \"ud_Item\", 1000, ud_Item_code },\n"}},
        // XML without JSON, JSON without XML; a hidden class keeps both, an
        // object holding a sequence has no XML form.
        {{"--xml-access"}, "xj.h", "xmljson.zyl",
         {"Item_xml_get", "Item_xml_put", "Item_xml_create", "Note_xml_schema", "!_json_"}},
        {{"--json-access"}, "xj.h", "xmljson.zyl", {"Note_json_get", "!_xml_"}},
        {{"--xml-access", "--json-access", "--hide", "Item", "-c"}, "xj.c", "xmljson.zyl",
         {"{ return zyl_w_xml_create_object( t, xml, (zyl_objhandle_h)handle, 1); \n}\n\n",
          "{ return zyl_w_json_get_object( (zyl_objhandle_h)handle,  stream_handle, o_stream, 1); \n}\n\n",
          "!Item_new"}},
        {{"--xml-access", "--cpp"}, "xj.hpp", "xmljson.zyl",
         {"inline  ZYL_RET Item:: xml_create( zyl_trans_h t, const char * xml)\n{ ZYL_RET ret_ = "
          "xj::Item_xml_create(t,xml,this); set_valid(ret_==ZYL_S_OK); return ret_; \n} \n\n"}},
        {{"--xml-access", "--json-access"}, "col.h", "columns.zyl", {"!Tick_xml_", "Tick_json_get", "!Stamp_xml_", "Stamp_json_get"}},
        // A direct struct's fixed functions come with its field functions,
        // which a list of hidden classes gives.
        {{}, "dr.h", "direct.zyl", {"typedef struct Dir_fixed_ {\n  int4 a;\n  char b[2];\n", "!Dir_fixed_get"}},
        {{"--hide", "Nothing"}, "dr.h", "direct.zyl", {"Dir_fixed_get", "Pk_fixed_put"}},
    });
}

TEST(ApiOutput, NoWayInWarningExactlyWhenItApplies) {
    std::string const warning = "warning: class A has no oid, autoid, list, or index defined\n";
    struct {
        char const* body;
        bool warns;
    } const cases[] = {
        {"class A { string s; };", true},
        {"class A { unsigned<4> n; };", false},  // fixed size: it gets the implicit list
        {"declare oid K[9];\nstruct K { unsigned<4> k; };\nclass A { oid; string s; };", false},
        {"class A { autoid[10]; string s; };", false},
        {"class A { list; string s; };", false},
        {"class A { string s; tree<s> byS; };", false},
    };
    for (auto const& c : cases) {
        Compiled out(std::string("declare database db;\n") + c.body, {});
        EXPECT_EQ(out.result.status, 0) << out.result.err;
        EXPECT_EQ(out.result.err, c.warns ? warning : "") << c.body;
    }
}

// A skeleton a person has filled in stays: the compile writes "{file}.new"
// beside it and warns, and the tables in {db}.c do not change.
TEST(ApiOutput, ExistingSkeletonsAreKept) {
    Compiled first(kSchemas + "userdef.zyl", {}, true);
    ASSERT_EQ(first.result.status, 0) << first.result.err;
    std::string const source = first.text("ud.c");
    std::vector<std::string> const skeletons = {"ud_udf.c", "ud_coll.c"};
    std::vector<std::string> generated;
    for (std::string const& name : skeletons) {
        generated.push_back(first.text(name));
        first.dir.write(name, "/* filled in */\n");
    }
    ProcessResult again = runProgram({cliPath(), kSchemas + "userdef.zyl"}, first.dir.path());
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(again.err, "warning: file ud_udf.c exists, generate ud_udf.c.new\n"
                         "warning: file ud_coll.c exists, generate ud_coll.c.new\n");
    for (size_t i = 0; i < skeletons.size(); i++) {
        EXPECT_EQ(readFile(first.dir.file(skeletons[i])), "/* filled in */\n");
        EXPECT_EQ(first.text(skeletons[i] + ".new"), generated[i]);
    }
    EXPECT_EQ(first.text("ud.c"), source);
}

// {s}_fixed_get reads every field, lets a null one pass and answers
// ZYL_S_NULL_VALUE; a failing read ends the chain. tests/runtime/fixedcheck.c
// stands in for the runtime and logs each call by field number. In
// fixed.zyl: Range.low 3, high 4, low_indicator 5; Item.a 6, r 7, b 8, c 9,
// d 10, b_indicator 11.
TEST(ApiOutput, FixedPartChainsEveryFieldAndPassesNulls) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0)
        GTEST_SKIP() << "no C compiler";
    Compiled gen(kSchemas + "fixed.zyl", {"--compiled-functions"}, true);
    ASSERT_EQ(gen.result.status, 0) << gen.result.err;
    ProcessResult cc = runProgram({ZYLCOMP_TEST_CC, "-std=c99", "-Wall", "-Werror", kRuntime, "-I.",
                                   "-ffunction-sections", "-Wl,--gc-sections",
                                   std::string(ZYLCOMP_TESTS_DIR) + "/runtime/fixedcheck.c", "fx.c", "-o", "check"},
                                  gen.dir.path());
    ASSERT_EQ(cc.status, 0) << cc.err;
    struct {
        std::vector<std::string> args;
        char const* out;
    } const cases[] = {
        // b is null: its value is not read, the fields behind it are.
        {{"get", "11", "0"},
         " get 6 get 7 get 5 get 3 get 4 get 5 get 11 get 9 get 10 get 11\n"
         "rc=3 a=106 r={103 104 1} b=0 c=jjj d=110 b_indicator=0\n"},
        // A null inside the nested struct passes out of it the same way.
        {{"get", "5", "0"},
         " get 6 get 7 get 5 get 4 get 5 get 11 get 8 get 9 get 10 get 11\n"
         "rc=3 a=106 r={0 104 0} b=108 c=jjj d=110 b_indicator=1\n"},
        // A failing read ends the chain with its code.
        {{"get", "0", "9"},
         " get 6 get 7 get 5 get 3 get 4 get 5 get 11 get 8 get 9\n"
         "rc=9 a=106 r={103 104 1} b=108 c=jjj d=0 b_indicator=0\n"},
        // Every field is written in order; a nullable one sets its indicator
        // first, and the indicator member, written last, has the final word.
        {{"put"}, " put 6=-1 put 7 put 5=1 put 3=-2 put 4=-3 put 5=0 put 11=1 put 8=-4 put 9=xyz put 10=-5 "
                  "put 11=1\nrc=0\n"},
    };
    for (auto const& c : cases) {
        std::vector<std::string> argv = {gen.dir.file("check")};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        ProcessResult run = runProgram(argv, gen.dir.path());
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, c.out) << ::testing::PrintToString(c.args);
    }
}

// A character, binary or struct element of a sequence holds at most 32
// bytes; a larger one ends the compile and leaves no file behind.
TEST(ApiOutput, SequenceElementSizeLimit) {
    std::string const refused = "File s.zyl; error: Size of sequence element is larger than ZYL_SEQ_MAX_CHAR_SIZE\n\n";
    for (char const* body : {"class A { list; sequence<char<32>> s; };", "class A { list; sequence<char<33>> s; };",
                             "struct P { char<30> a; unsigned<4> b; };\nclass A { list; sequence<P> s; };"}) {
        Compiled out(std::string("declare database db;\n") + body, {});
        bool const fits = contains(body, "<32>");
        EXPECT_EQ(out.result.err, fits ? "" : refused) << body;
        EXPECT_EQ(out.result.status, fits ? 0 : 255) << body;
        EXPECT_EQ(out.dir.list(), (fits ? std::vector<std::string>{"db.c", "db.h", "s.zyl"}
                                        : std::vector<std::string>{"s.zyl"}))
            << body;
    }
}
