// The access interface: the generated files of tests/schemas/api compile
// against the runtime declarations in tests/runtime, and their text is
// checked, whole against tests/golden/api (see its README) for the golden
// schemas, and by rule for what those do not hold.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
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
        argv.push_back(isFile ? schema : dir.write("s.zyl", schema));
        result = runProgram(argv, dir.path());
    }
    std::string text(std::string const& name) const { return masked(readFile(dir.file(name))); }

    TempDir dir;
    ProcessResult result;
};

// The lines of the "class {name} methods" section of a header, without the
// fixed-part functions that follow the last section.
std::vector<std::string> methods(std::string const& h, std::string const& name) {
    size_t at = h.find("/* class " + name + " methods");
    size_t end = std::min({h.find("/*-----", at), h.find("#ifdef __cplusplus", at),
                           h.rfind('\n', h.find(" " + name + "_fixed_get ", at)) + 1});
    std::vector<std::string> lines;
    std::string section = at == std::string::npos ? "" : h.substr(at, end - at);
    for (size_t p = 0, q; p < section.size(); p = q + 1) {
        q = section.find('\n', p);
        lines.push_back(section.substr(p, q - p));
    }
    while (!lines.empty() && lines.back().empty())
        lines.pop_back();
    return lines;
}

bool contains(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

// Each text must stand in `text`; one beginning with "!" must not.
void expectTexts(std::string const& text, std::vector<std::string> const& texts, std::string const& where) {
    for (std::string const& t : texts) {
        if (t[0] == '!')
            EXPECT_FALSE(contains(text, t.substr(1))) << where << "\n" << t;
        else
            EXPECT_TRUE(contains(text, t)) << where << "\n" << t;
    }
}

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
        expectTexts(out.text(r.file), r.texts, r.schema + " " + r.file);
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
        // inline, then the C++ wrappers.
        {"oid.zyl", {}, {"ko.h"}},
        {"oid.zyl", {"--cpp"}, {"ko.hpp"}},
        // A patricia and an R-tree index.
        {"geo.zyl", {}, {"geo.h"}},
        {"geo.zyl", {"--cpp"}, {"geo.hpp"}},
        // An array, a vector of strings and an ordered sequence, inline and
        // through the C++ wrappers.
        {"series.zyl", {}, {"se.h"}},
        {"series.zyl", {"--cpp"}, {"se.hpp"}},
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
    // The oid functions stand in {db}.c whatever the mode.
    Compiled inl(kSchemas + "oid.zyl", {}, true);
    EXPECT_TRUE(contains(inl.text("ko.c"), "ZYL_RET  ko_delete_object( zyl_trans_h t, const ko_oid * oid )\n"
                                           "{ return zyl_w_obj_del_byoid( t, oid ); \n}\n\n"));
}

// Rules of the field and index functions that the golden files do not show.
TEST(ApiOutput, RulesOfTheFieldAndIndexFunctions) {
    expectRules({
        // {ix} is 1 for an indexed field's indicator and a struct that an
        // index reaches into.
        {{}, "db.h", "class A { nullable unsigned<4> v; tree<v> byV; };",
         {"{ return zyl_w_bit_put( (zyl_objhandle_h) handle, 4, 2, 1, (uint1) value);"}},
        {{}, "db.h", "struct P { signed<2> x; }; class A { P p; tree<p.x> byX; };",
         {"{ return zyl_w_struct_put2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, 0, 0, 2, 1);"}},
        // A class update event switches every put; its handler, unlike a
        // checkpoint's (and a field update's, in ev.h), has no handling order.
        {{}, "db.h", "class A { unsigned<4> v; string s; event<update> e; };",
         {"{ return zyl_w_b4_put_ev2( (zyl_objhandle_h) handle, 4, 0, 1, 0, (uint4) value, 0);",
          "{ return zyl_w_string_put_ev2( (zyl_objhandle_h) handle, 0, 4, 2, src, len, 0, 0);", "!when"}},
        {{}, "db.h", "persistent class A { unsigned<4> v; event<checkpoint> e; };",
         {"e_handler handler, void * param, ZYL_HANDLING_ORDER when )\n{ return zyl_ev_h_register( t, "
          "(zyl_generic_ev_handler)handler, 0, param, (uint2)(when==ZYL_BEFORE_UPDATE) );"}},
        // Key fields named t and c move the transaction and the cursor.
        {{}, "db.h", "class A { signed<4> t; signed<4> c; tree<t, c> byTC; };",
         {"( zyl_trans_h t_, /*INOUT*/ zyl_cursor_h c_, ZYL_OPCODE op_, int4 t_key_0, int4 c_key_1 )",
          "{ return zyl_pattern_next(t_, c_ , allocated_pattern,  0);",
          "( zyl_trans_h t, /*OUT*/ zyl_cursor_h c, A * handle)"}},
        {{}, "db.h", "class A { signed<4> c; unique hash<c> h[10]; };",
         {"( zyl_trans_h t, zyl_cursor_h c_, int4 c_key_0, /*OUT*/ int *result_ )",
          "  return zyl_w_cursor_compare( t, c_, a_, result_);"}},
        // A bit-string key of a patricia index brings its bit count.
        {{}, "db.h", "transient class A { boolean bits[8]; patricia<bits> p; };",
         {"( zyl_trans_h t, /*INOUT*/ zyl_cursor_h c, ZYL_OPCODE op_, const char *bits_key_0, uint2 number_of_bits )",
          "  pa_->bit_len = number_of_bits; "}},
        // Property members and the constructor that points them at the object.
        {{"--cpp", "--cpp-runtime-header"}, "db.hpp",
         "struct P { signed<2> x; }; class A { unsigned<4> v; string s; P p; };",
         {"  A() {\n    v.handle_ = this;\n    s.handle_ = this;\n  }\n\n", "    operator  uint4() const {\n",
          "    operator std::string() const {\n"}},
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

TEST(ApiOutput, DeclaringAnEventSwitchesOnlyTheCall) {
    std::string const head = "declare database db;\npersistent class A { unsigned<4> v; ";
    std::vector<std::string> const plain = methods(Compiled(head + "};", {}).text("db.h"), "A");
    struct {
        char const* event;
        char const* plainCall;
        char const* eventCall;
    } const cases[] = {  // ev.h shows the new and delete events
        {"event<delete_all> e;", "{ return zyl_w_obj_delete_all( t, 1 ); ",
         "{ return zyl_w_obj_delete_all_ev( t, 1, 0); "},
        {"event<checkpoint> e;", "{ return zyl_w_obj_checkpoint( (zyl_objhandle_h)handle );",
         "{ return zyl_w_obj_checkpoint_ev( (zyl_objhandle_h)handle,0 );"},
    };
    for (auto const& c : cases) {
        std::vector<std::string> with = methods(Compiled(head + c.event + " };", {}).text("db.h"), "A");
        ASSERT_EQ(with.size(), plain.size()) << c.event;
        std::vector<std::pair<std::string, std::string>> changed;
        for (size_t i = 0; i < with.size(); i++)
            if (with[i] != plain[i])
                changed.push_back({plain[i], with[i]});
        EXPECT_EQ(changed, (std::vector<std::pair<std::string, std::string>>{{c.plainCall, c.eventCall}}));
    }
}

// ko.h shows what only a persistent class gets; here the user-defined
// index's handles, relative codes and hidden classes.
TEST(ApiOutput, PersistentUserdefRelativeCodesAndHiddenClasses) {
    std::string const schema = "declare database db;\npersistent class A { unsigned<4> v; };\n"
                               "transient class B { unsigned<4> v; };\n";
    // Only a persistent class normalizes handles for its user-defined indexes.
    Compiled userdef("declare database db;\npersistent class A { unsigned<4> v; userdef tree<v> byV; };\n"
                     "transient class B { unsigned<4> v; userdef tree<v> byV; };\n",
                     {});
    EXPECT_TRUE(contains(userdef.text("db.h"), "{ return zyl_w_normalize_handle((zyl_objhandle_h)handle ); "));
    EXPECT_FALSE(contains(userdef.text("db.h"), "B_normalize_handle"));

    // Relative codes change the bodies, never the code macros.
    std::string h = Compiled(schema, {"--relative-class-codes"}).text("db.h");
    EXPECT_TRUE(contains(h, "{ return zyl_w_obj_delete_all( t, dict.class_code_origin + 1 ); "));
    EXPECT_TRUE(contains(h, "{ return zyl_w_obj_delete_all( t, dict.class_code_origin + 2 ); "));
    EXPECT_TRUE(std::regex_search(h, std::regex("#define A_code +1\n#ifndef ZYL_CPP_INTERFACE\n")));
    EXPECT_TRUE(std::regex_search(h, std::regex("#define B_code +2\n")));

    // A hidden class keeps its handle type and code, and loses its API.
    Compiled hidden(schema, {"--cpp", "--hide", "A"});
    h = hidden.text("db.h");
    EXPECT_TRUE(std::regex_search(h, std::regex("typedef struct A_ +\\{ ZYL_Hf h; \\}  A;\n")));
    EXPECT_TRUE(contains(h, "class A;\n"));
    EXPECT_TRUE(std::regex_search(h, std::regex("#define A_code +1\n")));
    EXPECT_FALSE(std::regex_search(h, std::regex("A_[a-z_]+ +\\(")));
    EXPECT_TRUE(contains(h, "B_new"));
    EXPECT_TRUE(contains(hidden.text("db.hpp"), "class A : public ZylBase_\n{\n  public:\n\n};\n"));
    EXPECT_FALSE(contains(hidden.text("db.hpp"), "A::"));
}

// Texts of the user-defined, collation, calculator, XML/JSON and fixed
// sections.
TEST(ApiOutput, SectionsOfUserFunctionsAccessAndFixedParts) {
    expectRules({
        // Table entries point at the user's functions; only hash indexes and
        // collations a hash index uses hash. Skeletons return 0.
        {{}, "ud.c", "userdef.zyl",
         {"  static zyl_userdef_funcs_t  fptrs[3];\n",
          "    fptrs[0].fcomp_ext.vb  = (zyl_compare_extkey_userdef_vb_f) Item_byName_compare_ext;\n"
          "    fptrs[0].fhash.vb      = (zyl_hash_userdef_vb_f)           0;\n",
          "    fptrs[1].fhash_ext.u   = (zyl_hash_extkey_userdef_f)       Doc_byCode_hash_ext;\n",
          "    fptrs[0].hash = (zyl_hash_collation_f)    plain_collation_hash;\n"
          "    fptrs[1].comp = (zyl_compare_collation_f) wide_collation_compare;\n"
          "    fptrs[1].hash = (zyl_hash_collation_f)    0;\n",
          "    { \"Item\", 1000, Item_code },\n    { \"Doc\", 20, Doc_code },\n  };\n\n"
          "  calc.classes = calc_classes;\n  calc.nclasses = 2;\n  return &calc;\n"}},
        {{}, "ud_udf.c", "userdef.zyl",
         {"/*\n\n* API for the user-defined index \"byCode\"\n\n*/\n\nint Doc_byCode_compare_obj ( Doc * obj1, uint2 "
          "index1, Doc * obj2, uint2 index2 )\n{\n/* object-to-object user-defined compare function */\n\n  return "
          "0;\n}\n\n",
          "!Doc_byKind_hash"}},
        {{}, "ud_coll.c", "userdef.zyl",
         {"int wide_collation_compare ( const nchar_t * str1, uint2 len1, const nchar_t * str2, uint2 len2 )\n"}},
        // A hidden class keeps the places of its index and of the collation
        // only it uses, with null entries and no skeleton.
        {{"--hide", "Item"}, "ud.c", "userdef.zyl",
         {"    fptrs[0].fcomp.vb      = (zyl_compare_userdef_vb_f)        0;\n",
          "    fptrs[1].comp = (zyl_compare_collation_f) 0;\n"}},
        {{"--hide", "Item"}, "ud_udf.c", "userdef.zyl", {"!Item_", "Doc_byKind_compare_ext"}},
        {{"--hide", "Item"}, "ud_coll.c", "userdef.zyl", {"!wide_", "plain_collation_hash"}},
        {{"--prefix-names"}, "ud.c", "userdef.zyl", {"    { \"ud_Item\", 1000, ud_Item_code },\n"}},
        {{}, "shop.c", "shop.zyl", {"{\n  return (zyl_calculator_h)NULLPTR;\n}\n\n", "!get_udfs"}},
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

// Rules of vector, array, optional, spatial and sequence fields that the
// golden files do not show.
TEST(ApiOutput, RulesOfElementOptionalSpatialAndSequenceFields) {
    expectRules({
        // Bits of an array are put without the "2", those of a vector with it.
        {{}, "db.h", "class A { list; boolean b[10]; vector<boolean> v; };",
         {"{ return zyl_w_va_bit_e_put( (zyl_objhandle_h)handle, 6, 4, 1, index, value, 0);",
          "{ return zyl_w_va_bit_e_putrange( (zyl_objhandle_h)handle, 6, 4, 1, start_index, num, src, 0);",
          "{ return zyl_w_va_bit_e_get2( (zyl_objhandle_h)handle, 6, 4, 1, index, result);",
          "{ return zyl_w_v_bit_e_put2( (zyl_objhandle_h)handle, 0, 0, 2, index, (uint1) value, 0);",
          "{ return zyl_w_v_bit_e_putrange2( (zyl_objhandle_h)handle, 0, 0, 2, start_index, num, src, 0);",
          "!zyl_w_va_bit_e_put2", "!A_v_get_fldname"}},
        // A bit array names fields; its field number is a constant of the
        // prototypes, so inline, where no prototypes are written, it is absent.
        {{"-c"}, "db.h", "class A { list; unsigned<4> a; boolean updated_bitmap[]; };",
         {"#define A_updated_bitmap_field_index 2\nZYL_RET      A_updated_bitmap_get_fldname ",
          "( A *handle, uint2* index, char * dest, uint2 dest_size,  uint2 * len );"}},
        {{}, "db.h", "class A { list; unsigned<4> a; boolean updated_bitmap[]; };",
         {"  uint1 fsz = A_updated_bitmap_length;\n", "  pos = (*index)&(0xfff8); \n",
          "    if ((rc = A_updated_bitmap_get_range(handle,pos,nel,fld_data)) != ZYL_S_OK){\n",
          "            *index = pos+i*8+j+1;\n            return zyl_get_fieldname_by_fldno((zyl_objhandle_h)handle,"
          "(uint2)(*index-1),dest,dest_size,len);\n",
          "  return ZYL_S_NOTFOUND;\n}\n\n", "!A_updated_bitmap_field_index"}},
        // A vector's length is read first; a nullable one asks its indicator even there.
        {{}, "db.h", "class A { list; nullable vector<unsigned<2>> v; };",
         {"( A *handle, /*OUT*/ uint2 *result )\n{ uint1 indicator; ZYL_RET rc = "
          "A_v_indicator_get(handle, &indicator); if (rc != ZYL_S_OK) return rc; else if (!indicator) return "
          "ZYL_S_NULL_VALUE; return zyl_w_vector_size_get2( (zyl_objhandle_h)handle, 0, 0, 1, result);",
          "{ ZYL_RET rc = A_v_indicator_put(handle, 1); if (rc != ZYL_S_OK) return rc; return "
          "zyl_w_v_simple_size_put2( (zyl_objhandle_h)handle, 0, 0, 1, size, 2);"}},
        // Enum elements pass through an integer of their size, floats as bytes.
        {{}, "db.h", "enum E { X, Y };\nclass A { list; E e[2]; float f[2]; };",
         {"{{ uint1 temp; ZYL_RET rc = zyl_w_va_simple_e_get2( (zyl_objhandle_h)handle, 8, 8, 1, index, 1, &temp);\n"
          "  *result = (E) temp; return rc; }",
          "{{ uint1 temp = (uint1) value; \n  return zyl_w_va_simple_e_put2( (zyl_objhandle_h)handle, 8, 8, 1, "
          "index, 1, temp, 0); }",
          "{ return zyl_w_va_chars_e_put2( (zyl_objhandle_h)handle, 0, 0, 2, index, (char*)&value, sizeof(value), "
          "4, 0);"}},
        // References travel as characters; an index into a vector's structs sets {ix}.
        {{}, "db.h", "declare oid K[9];\nstruct K { unsigned<4> k; };\nclass A { oid; vector<ref> r; };",
         {"{ return zyl_w_v_chars_e_get2( (zyl_objhandle_h)handle, 4, 4, 2, index, (char*)result, sizeof(*result), 4);",
          "( A *handle, uint2 index, const db_oid * src)"}},
        {{}, "db.h", "struct P { signed<4> a; };\nclass A { vector<P> v; tree<v.a> t; };",
         {"{ return zyl_w_v_struct_e_get2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, index, 0, 0, 2);",
          "{ return zyl_w_v_struct_e_put2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, index, 0, 0, 2, 1);",
          "{ return zyl_w_v_struct_e_erase2( (zyl_objhandle_h)handle, 0, 0, 2, index, 1);"}},
        // Wide characters carry their encoding in C#; an array its dimension.
        {{"--cs", "--java"}, "db.cs", "struct P { nchar<4> n[2]; vector<string> v; };\nclass A { list; P p; };",
         {"\t[Encoding(\"UTF-16\")]\n\t[Dimension(2)]\n\tpublic string[] n;\n\tpublic string[] v;\n"}},
        {{"--cs", "--java"}, "P.java", "struct P { nchar<4> n[2]; vector<string> v; };\nclass A { list; P p; };",
         {"\t@Encoding(\"UTF-16\")\n\t@Dimension(2)\n\tpublic String[] n;\n\tpublic String[] v;\n"}},
        // Writing an optional struct creates it by its number in the dictionary.
        {{}, "db.h", "struct P { signed<4> a; };\nclass A { list; string s; optional P p; };",
         {"{ return zyl_w_optional_get2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, 0, 0, 3); ",
          "{ return zyl_w_optional_put2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, 0, 0, 0, 3, 0); ",
          "{ return zyl_w_optional_erase2( (zyl_objhandle_h)handle, 0, 0, 3, 0); "}},
        {{"--cpp"}, "db.hpp", "struct P { signed<4> a; };\nclass A { list; optional P p; };",
         {"{ ZYL_RET ret_ = db::A_p_read_handle( this, &s ); set_valid(ret_==ZYL_S_OK); return ret_; ",
          "{ ZYL_RET ret_ = db::A_p_write_handle( this, &s ); s.set_valid(ret_==ZYL_S_OK); return ret_; "}},
        {{}, "db.h", "class A { list; optional unsigned<4> o; };", {"!A_o_"}},
        // Points and rectangles: the family by coordinate size, the location rule of the field API.
        {{}, "db.h", "class A { list; rect<signed<2>> r[2]; point<double> p[3]; };",
         {"#define A_r_length 4\n", "{ return zyl_w_rect_b2_get( (zyl_objhandle_h)handle, 24, 1, dest);",
          "{ return zyl_w_point_b8_put( (zyl_objhandle_h)handle, 0, 2, src, 0);"}},
        {{}, "db.h", "class A { list; string s; rect<signed<2>> r[2]; };",
         {"{ return zyl_w_rect_b2_get2( (zyl_objhandle_h)handle, 4, 0, 2, dest);"}},
        // Unordered sequences cannot be searched or joined; ordered ones pass their order.
        {{}, "db.h", "class A { list; sequence<signed<4>> s; };",
         {"{ return zyl_w_seq_first_int4( (zyl_objhandle_h)handle, 0, 0, val);", "!A_s_search", "!A_s_join"}},
        {{}, "db.h", "class A { list; sequence<unsigned<8> desc> s; sequence<date> d; };",
         {"iterator, low, low_boundary, high, high_boundary, ZYL_SEQ_DESC_ORDER);",
          "{ return zyl_w_seq_join_uint8( (zyl_objhandle_h)handle, 4, 4, result, join_with, ZYL_SEQ_DESC_ORDER);",
          "( A *handle, /*OUT*/ zyl_date* val)\n{ return zyl_w_seq_first_uint4("}},
        // Character elements: a C type of the field's own, Char<n> in C++, the size last.
        {{"--cpp"}, "db.h", "class A { list; sequence<binary<8> asc> s; };",
         {"typedef struct { char body[8]; } A_s_fixed;\n", "( A *handle, /*OUT*/ A_s_fixed* val);"}},
        {{"--cpp"}, "db.c", "class A { list; sequence<binary<8> asc> s; };",
         {"{ return zyl_w_seq_search_char( (zyl_objhandle_h)handle, 0, 0, iterator, &low, low_boundary, &high, "
          "high_boundary, 8, ZYL_SEQ_ASC_ORDER);",
          "{ return zyl_w_seq_from_cursor_char( trans, iterator, cursor, 1, 0, 0, 8);"}},
        {{"--cpp"}, "db.hpp", "class A { list; sequence<binary<8> asc> s; };",
         {"  ZYL_RET s_append(Char<8> const* vals, zyl_size_t n_items, zyl_bitmap_word_t const* null_bitmap = NULL);",
          "{ ZYL_RET ret_ = db::A_s_search(this, seq.iter, *(db::A_s_fixed*)&low, low_boundary, "
          "*(db::A_s_fixed*)&high, high_boundary); return ret_; ",
          "  static Sequence<Char<8>> s_from_cursor(zyl_trans_h trans, zyl_cursor_h cursor);",
          "{ Sequence<Char<8>> resSeq; ZYL_CPP_CHECK(db::A_s_iterator(this, resSeq.iter)); return resSeq; }"}},
        {{"--relative-class-codes"}, "db.h", "class A { list; sequence<float> s; };",
         {"{ return zyl_w_seq_from_cursor_float( trans, iterator, cursor, dict.class_code_origin + 1, 0, 0);"}},
    });
}

// A character, binary or struct element of a sequence holds at most 32
// bytes; a larger one ends the compile and leaves no file behind.
TEST(ApiOutput, SequenceElementSizeLimit) {
    std::string const refused = "File s.zyl; error: Size of sequence element is larger than ZYL_SEQ_MAX_CHAR_SIZE\n\n";
    struct {
        char const* body;
        char const* err;
    } const cases[] = {
        {"class A { list; sequence<char<32>> s; };", ""},
        {"class A { list; sequence<char<33>> s; };", refused.c_str()},
        {"struct P { char<30> a; unsigned<4> b; };\nclass A { list; sequence<P> s; };", refused.c_str()},
    };
    for (auto const& c : cases) {
        TempDir dir;
        dir.write("s.zyl", std::string("declare database db;\n") + c.body);
        ProcessResult r = runProgram({cliPath(), "s.zyl"}, dir.path());
        EXPECT_EQ(r.err, c.err) << c.body;
        EXPECT_EQ(r.status, *c.err == '\0' ? 0 : 255) << c.body;
        EXPECT_EQ(dir.list(), (*c.err == '\0' ? std::vector<std::string>{"db.c", "db.h", "s.zyl"}
                                              : std::vector<std::string>{"s.zyl"}))
            << c.body;
    }
}
