// The C# and Java declarations: they compile with mcs and javac against
// tests/runtime/cs and tests/runtime/java, their types are those of the
// tables, and a failed compile leaves none of them behind.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/process.h"

namespace {

using Args = std::vector<std::string>;
std::string const kTests = ZYLCOMP_TESTS_DIR;

// A program on the PATH, or empty.
std::string tool(char const* name) {
    std::stringstream path(std::getenv("PATH") ? std::getenv("PATH") : "");
    for (std::string dir; std::getline(path, dir, ':');)
        if (!dir.empty() && ::access((dir + "/" + name).c_str(), X_OK) == 0)
            return dir + "/" + name;
    return "";
}

// The paths of the files of `dir` whose names end in `ext`.
Args files(std::string const& dir, char const* ext) {
    Args found;
    for (auto const& entry : std::filesystem::directory_iterator(dir))
        if (entry.path().extension() == ext)
            found.push_back(entry.path().string());
    std::sort(found.begin(), found.end());
    return found;
}

Args operator+(Args a, Args const& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

bool contains(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

}  // namespace

// The api schemas and the examples without package or namespace (SchemaGen
// always gives both) compile without a warning, which SchemaGen only counts.
TEST(BindingsCompile, EverySchemaWithoutPackageOrNamespace) {
    std::string const javac = tool("javac"), mcs = tool("mcs");
    if (javac.empty() || mcs.empty())
        GTEST_SKIP() << "javac or mcs is not installed (.ci/run installs mono-mcs)";
    Args const schemas = files(kTests + "/schemas/api", ".zyl") + files(kTests + "/../examples", ".zyl");
    ASSERT_GE(schemas.size(), 20u);
    TempDir root;
    // The declarations are compiled once.
    Args const decl = files(kTests + "/runtime/java/com/tarnwell/quorabase", ".java");
    ASSERT_EQ(runProgram(Args{javac, "-d", "decl"} + decl, root.path()).status, 0);
    std::string const csDecl = kTests + "/runtime/cs/Quorabase.cs";
    ASSERT_EQ(runProgram({mcs, "-target:library", "-out:decl/Quorabase.dll", csDecl}, root.path()).status, 0);
    for (size_t i = 0; i < schemas.size(); i++) {
        SCOPED_TRACE(schemas[i]);
        std::string const out = root.path() + "/" + std::to_string(i);
        std::filesystem::create_directories(out);
        ProcessResult r = runProgram({cliPath(), "--cs", "--java", schemas[i]}, out);
        ASSERT_EQ(r.status, 0) << r.err;
        ASSERT_EQ(files(out, ".cs").size(), 1u);
        ProcessResult j = runProgram(Args{javac, "-cp", "decl", "-d", "classes"} + files(out, ".java"), root.path());
        EXPECT_TRUE(j.status == 0 && !contains(j.err, "warning")) << j.err;
        ProcessResult c = runProgram(Args{mcs, "-target:library", "-out:t.dll", "-r:decl/Quorabase.dll"} +
                                         files(out, ".cs"),
                                     root.path());
        EXPECT_TRUE(c.status == 0 && !contains(c.out + c.err, "warning")) << c.out << c.err;
    }
}

// Field types as mapped (unsigned ones keep their size in Java), and enums,
// which in Java keep the declared order and carry no values: compared with
// the reviewed files of tests/golden/bindings, which a reviewed change
// regenerates with ZYLCOMP_UPDATE_GOLDEN=1 and --gtest_filter='BindingsText.*'.
TEST(BindingsText, MappedTypesAndEnums) {
    TempDir dir;
    dir.write("s.zyl", "declare database db;\nenum E { P };\nenum Falling { Z = 9, Y = 3, X = 1 };\n"
                       "enum One { Only = 4 };\nstruct S { double d; };\ntransient class A {\n  autoid[5];\n"
                       "  signed<1> i1; signed<8> i8; unsigned<1> u1; unsigned<8> u8; float f; boolean b;\n"
                       "  date d; datetime dt; numeric<12,2> n; autoid_t<A> ai; E e; vector<boolean> vb;\n"
                       "  unsigned<2> arr[3]; sequence<date desc> qd; sequence<datetime> qdt;\n"
                       "  sequence<char<6> asc> qc; sequence<S> qs;\n};\n");
    ProcessResult r = runProgram({cliPath(), "--cs", "--java", "s.zyl"}, dir.path());
    ASSERT_EQ(r.status, 0) << r.err;
    for (char const* name : {"db.cs", "A.java", "Falling.java", "One.java"}) {
        std::string const golden = kTests + "/golden/bindings/" + name;
        if (std::getenv("ZYLCOMP_UPDATE_GOLDEN") != nullptr)
            std::ofstream(golden, std::ios::binary) << readFile(dir.file(name));
        EXPECT_EQ(readFile(dir.file(name)), readFile(golden)) << name << " differs from its golden file";
    }
}

// A compile with every output that fails leaves none of its files, nor
// those of the same names an earlier compile wrote. The sequence element
// fails in the last class, when every file but the structs' exists; the
// initial value fails before any Java file, so an earlier compile's stay.
TEST(BindingsCleanup, FailedCompileRemovesEveryFile) {
    struct {
        char const* init[2];  // of field A.a, in the failing compile and in the good one
        char const* size[2];  // of the elements of Z.s
        char const* error;
        Args stale;  // what stays of the good compile after the failing one
    } const rows[] = {
        {{"", ""}, {"40", "8"}, "Size of sequence element is larger than ZYL_SEQ_MAX_CHAR_SIZE", {"s.zyl"}},
        {{" = 1.5", " = 1"},
         {"8", "8"},
         "initial value for A.a is not integer",
         {"A.java", "E.java", "Z.java", "lt.java", "s.zyl"}},
    };
    Args const argv = {cliPath(), "--cs", "--java", "--cpp", "--xml-schema", "s.zyl"};
    for (auto const& row : rows) {
        auto schema = [&](int good) {
            return std::string("declare database lt;\nenum E { X };\nclass A { list; unsigned<4> a") + row.init[good] +
                   "; };\nclass Z { list; sequence<char<" + row.size[good] + ">> s; };\n";
        };
        for (bool stale : {false, true}) {
            TempDir dir;
            if (stale) {
                dir.write("s.zyl", schema(1));
                ASSERT_EQ(runProgram(argv, dir.path()).status, 0);
                ASSERT_EQ(dir.list(), (Args{"A.java", "E.java", "Z.java", "lt.c", "lt.cs", "lt.h", "lt.hpp", "lt.java",
                                            "lt.xml", "s.zyl"}));
            }
            dir.write("s.zyl", schema(0));
            ProcessResult r = runProgram(argv, dir.path());
            EXPECT_TRUE(r.status != 0 && contains(r.err, row.error)) << r.err;
            EXPECT_EQ(dir.list(), stale ? row.stale : Args{"s.zyl"}) << row.error << (stale ? ", after a compile" : "");
        }
    }
}
