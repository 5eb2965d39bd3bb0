// The access interface compiles: tests/schemas/api/shop.zyl goes through the
// command line in each mode, and the generated {db}.c (with {db}.h) and
// {db}.hpp are compiled against the runtime declarations in tests/runtime.
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

#include "support/process.h"

namespace {

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

bool has(std::vector<std::string> const& v, char const* s) {
    for (std::string const& e : v)
        if (e == s)
            return true;
    return false;
}

}  // namespace

TEST(ApiCompile, GeneratedFilesCompileInEveryMode) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0 || ::access(ZYLCOMP_TEST_CXX, X_OK) != 0)
        GTEST_SKIP() << "no C or C++ compiler";
    for (Mode const& mode : kModes) {
        std::string label;
        for (std::string const& f : mode.flags)
            label += f + " ";
        SCOPED_TRACE(label);
        TempDir dir;
        std::vector<std::string> argv = {cliPath()};
        argv.insert(argv.end(), mode.flags.begin(), mode.flags.end());
        argv.push_back(std::string(ZYLCOMP_TESTS_DIR) + "/schemas/api/shop.zyl");
        ProcessResult gen = runProgram(argv, dir.path());
        ASSERT_EQ(gen.status, 0) << gen.err;

        // The export marks belong to another platform's compiler.
        std::string noDeclspec = has(mode.flags, "--dll-spec") ? "-D__declspec(x)=" : "-DZYL_NO_DLL_SPEC";
        ProcessResult c =
            runProgram({ZYLCOMP_TEST_CC, "-std=c99", "-Wall", noDeclspec, kRuntime, kInclude, "-c", "shop.c"},
                       dir.path());
        if (mode.cFailure == nullptr) {
            EXPECT_EQ(c.status, 0) << c.err;
        } else {
            EXPECT_NE(c.status, 0);
            EXPECT_NE(c.err.find(mode.cFailure), std::string::npos) << c.err;
        }
        if (has(mode.flags, "--cpp")) {
            ProcessResult cpp = runProgram({ZYLCOMP_TEST_CXX, "-std=c++11", "-fsyntax-only", "-Wall", noDeclspec,
                                            kRuntime, kInclude, "-x", "c++", "shop.hpp"},
                                           dir.path());
            EXPECT_EQ(cpp.status, 0) << cpp.err;
        }
    }
}
