// The access interface through the command line: the generated files
// compile in every mode against the runtime declarations in tests/runtime,
// and their text is checked on small schemas of tests/schemas/api.
//
// Golden files: tests/golden/api/ holds generated files of the small
// schemas, with the banner's time line masked. After a deliberate change of
// the generated text, regenerate them with
//     ZYLCOMP_UPDATE_GOLDEN=1 build/tests/zylcomp_tests --gtest_filter='ApiGolden.*'
// and review the difference before committing it.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "support/process.h"

namespace {

std::string const kSchemas = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/api/";
std::string const kRuntime = std::string("-I") + ZYLCOMP_TESTS_DIR + "/runtime";
std::string const kInclude = std::string("-I") + ZYLCOMP_TESTS_DIR + "/../include";

struct Mode {
    std::vector<std::string> flags;
    // Null when both outputs compile; else a text the C compiler's errors hold.
    char const* cFailure;
};

Mode const kModes[] = {
    {{}, nullptr},
    {{"--compiled-functions"}, nullptr},
    {{"--cpp"}, nullptr},
    {{"--cpp", "--cpp-runtime-header"}, nullptr},
    {{"--prefix-names"}, nullptr},
    {{"--prefix-names", "--cpp"}, nullptr},
    {{"--dll-spec"}, nullptr},
    {{"--dll-spec", "--cpp"}, nullptr},
    {{"--hide", "Item"}, nullptr},
    // Relative class codes cannot compile as the system writes them. Out of
    // line the bodies add dict.class_code_origin, a member the dictionary
    // record does not have; inline they stand in {db}.h, where the record
    // `dict` of {db}.c is not declared at all.
    {{"--relative-class-codes", "--compiled-functions"}, "class_code_origin"},
    {{"--relative-class-codes"}, "undeclared"},
};

bool has(std::vector<std::string> const& v, char const* s) { return std::find(v.begin(), v.end(), s) != v.end(); }

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

// The lines of the "class {name} methods" section of a header.
std::vector<std::string> methods(std::string const& h, std::string const& name) {
    size_t at = h.find("/* class " + name + " methods");
    size_t end = std::min(h.find("/*-----", at), h.find("#ifdef __cplusplus", at));
    std::vector<std::string> lines;
    std::string section = at == std::string::npos ? "" : h.substr(at, end - at);
    for (size_t p = 0, q; p < section.size(); p = q + 1) {
        q = section.find('\n', p);
        lines.push_back(section.substr(p, q - p));
    }
    return lines;
}

bool contains(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

}  // namespace

TEST(ApiCompile, GeneratedFilesCompileInEveryMode) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0 || ::access(ZYLCOMP_TEST_CXX, X_OK) != 0)
        GTEST_SKIP() << "no C or C++ compiler";
    for (Mode const& mode : kModes) {
        SCOPED_TRACE(::testing::PrintToString(mode.flags));
        Compiled gen(kSchemas + "shop.zyl", mode.flags, true);
        ASSERT_EQ(gen.result.status, 0) << gen.result.err;
        std::string const& dir = gen.dir.path();

        std::vector<std::string> flags = {"-Wall", kRuntime, kInclude};
        if (has(mode.flags, "--dll-spec"))
            flags.push_back("-D__declspec(x)=");  // the export marks belong to another platform's compiler
        std::vector<std::string> cc = {ZYLCOMP_TEST_CC, "-std=c99", "-c", "shop.c"};
        cc.insert(cc.end(), flags.begin(), flags.end());
        ProcessResult c = runProgram(cc, dir);
        if (mode.cFailure == nullptr) {
            EXPECT_EQ(c.status, 0) << c.err;
        } else {
            EXPECT_NE(c.status, 0);
            EXPECT_NE(c.err.find(mode.cFailure), std::string::npos) << c.err;
        }
        if (has(mode.flags, "--cpp")) {
            std::vector<std::string> cxx = {ZYLCOMP_TEST_CXX, "-std=c++11", "-fsyntax-only", "-x", "c++", "shop.hpp"};
            cxx.insert(cxx.end(), flags.begin(), flags.end());
            ProcessResult cpp = runProgram(cxx, dir);
            EXPECT_EQ(cpp.status, 0) << cpp.err;
        }
    }
}

TEST(ApiGolden, SmallSchemas) {
    struct {
        char const* schema;
        std::vector<std::string> flags;
        std::vector<std::string> files;
    } const cases[] = {
        {"events.zyl", {}, {"ev.h"}},
        {"oid.zyl", {"--cpp"}, {"ko.h", "ko.hpp"}},
        // The C# and Java lists of types; the class declarations come later.
        {"shop.zyl", {"--cs", "--java", "--cs-namespace", "NS", "--java-package", "com.x"},
         {"shop.cs", "shop.java", "Color.java", "Address.java"}},
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
    } const cases[] = {
        {"event<new> e;", "{ return zyl_w_new_obj_noid( t, 4, 1, (zyl_objhandle_h)handle);",
         "{ return zyl_w_new_obj_noid_ev( t, 4, 1, (zyl_objhandle_h)handle, 0);"},
        {"event<delete> e;", "{ return zyl_w_obj_delete( (zyl_objhandle_h)handle); ",
         "{ return zyl_w_obj_delete_ev( (zyl_objhandle_h)handle, 0); "},
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

TEST(ApiOutput, PlacementRelativeCodesAndHiddenClasses) {
    std::string const schema = "declare database db;\npersistent class A { unsigned<4> v; };\n"
                               "transient class B { unsigned<4> v; };\n";
    Compiled plain(schema, {"--cpp"});
    std::string h = plain.text("db.h");
    for (char const* fn : {"A_set_allocation_block_size", "A_set_caching_priority"}) {
        EXPECT_TRUE(contains(h, fn)) << fn;
        EXPECT_FALSE(contains(h, std::string(fn).replace(0, 1, "B"))) << fn;
    }
    EXPECT_TRUE(contains(plain.text("db.c"), "{ return zyl_w_obj_delete_all( t, 1 ); "));
    // Only a persistent class normalizes handles for its user-defined indexes.
    Compiled userdef("declare database db;\npersistent class A { unsigned<4> v; userdef tree<v> byV; };\n"
                     "transient class B { unsigned<4> v; userdef tree<v> byV; };\n",
                     {});
    EXPECT_TRUE(contains(userdef.text("db.h"), "{ return zyl_w_normalize_handle((zyl_objhandle_h)handle ); "));
    EXPECT_FALSE(contains(userdef.text("db.h"), "B_normalize_handle"));

    // Relative codes change the bodies, never the code macros.
    Compiled relative(schema, {"--relative-class-codes"});
    h = relative.text("db.h");
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
