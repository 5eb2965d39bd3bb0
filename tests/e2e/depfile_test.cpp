// --depfile: the make rule a complete compile leaves for build tools.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/process.h"

namespace {

void makeDirs(TempDir const& dir, std::vector<std::string> const& names) {
    for (std::string const& name : names)
        ASSERT_TRUE(std::filesystem::create_directory(dir.file(name))) << name;
}

using std::filesystem::exists;

}  // namespace

// Each file once, in the order first opened (one twice behind a guard), by
// the path it was opened by, with blanks, '#' and '$' written as make reads
// them; every included one also gets an empty rule.
TEST(Depfile, NestedIncludesByEscapedPaths) {
    TempDir dir;
    makeDirs(dir, {"my schemas", "my schemas/parts", "out dir"});
    dir.write("my schemas/main.zyl",
              "declare database m;\n#include \"types.zyl\"\n#include \"types.zyl\"\nclass C { Size n; Point p; };\n");
    dir.write("my schemas/types.zyl", "#ifndef TYPES\n#define TYPES\n#include \"parts/cost$#1.zyl\"\n#endif\n");
    dir.write("my schemas/parts/cost$#1.zyl", "#define Size unsigned<4>\nstruct Point { Size x; Size y; };\n");
    ProcessResult r =
        runProgram({cliPath(), "-o", "out dir", "--depfile=out dir/m.d", "my schemas/main.zyl"}, dir.path());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(readFile(dir.file("out dir/m.d")),
              "out\\ dir/m.h out\\ dir/m.c: \\\n"
              "  my\\ schemas/main.zyl \\\n"
              "  my\\ schemas/types.zyl \\\n"
              "  my\\ schemas/parts/cost$$\\#1.zyl\n"
              "\n"
              "my\\ schemas/types.zyl:\n"
              "\n"
              "my\\ schemas/parts/cost$$\\#1.zyl:\n");
}

// The targets are the files named after the database, in the order
// written: those a build can declare before the schema is read.
TEST(Depfile, TargetsAreTheFilesNamedAfterTheDatabase) {
    TempDir dir;
    makeDirs(dir, {"out"});
    dir.write("m.zyl", "declare database m;\nenum Color { RED, GREEN };\nclass Item { unsigned<4> n; Color c; };\n");
    ProcessResult r = runProgram(
        {cliPath(), "--cpp", "--cs", "--xml-schema", "--java", "-o", "out", "--depfile", "out/m.d", "m.zyl"}, dir.path());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(readFile(dir.file("out/m.d")), "out/m.h out/m.c out/m.hpp out/m.cs out/m.xml out/m.java: \\\n  m.zyl\n");
    // Java's files of the schema's types cannot be known beforehand.
    EXPECT_TRUE(exists(dir.file("out/Color.java")));

    // Neither are the skeletons, nor the ".new" written beside one.
    dir.write("u.zyl", "declare database u;\nclass A { char<8> s; userdef tree<s> byS; tree<s collate cs> byC; };\n");
    for (char const* written : {"out/u_udf.c", "out/u_udf.c.new"}) {
        r = runProgram({cliPath(), "-o", "out", "--depfile", "out/u.d", "u.zyl"}, dir.path());
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_TRUE(exists(dir.file(written))) << written;
        EXPECT_EQ(readFile(dir.file("out/u.d")), "out/u.h out/u.c: \\\n  u.zyl\n") << written;
    }
}

// #include searches the -I directories in order, then the schema's own.
TEST(Depfile, IncludeDirectoriesInOrder) {
    struct { std::vector<std::string> options; char const* opened; } const cases[] = {
        {{"-I", "first", "-I", "second"}, "first/t.zyl"},
        {{"--include-dir=empty", "-Isecond"}, "second/t.zyl"},
        {{"-I", "empty"}, "schema/t.zyl"},
    };
    TempDir dir;
    makeDirs(dir, {"schema", "first", "second", "empty"});
    dir.write("schema/main.zyl", "declare database m;\n#include \"t.zyl\"\nclass C { unsigned<4> n; };\n");
    for (char const* d : {"schema", "first", "second"})
        dir.write(std::string(d) + "/t.zyl", "\n");
    for (auto const& c : cases) {
        std::vector<std::string> argv = {cliPath(), "schema/main.zyl", "--depfile", "m.d"};  // options may follow
        argv.insert(argv.end(), c.options.begin(), c.options.end());
        ProcessResult r = runProgram(argv, dir.path());
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(readFile(dir.file("m.d")),
                  std::string("m.h m.c: \\\n  schema/main.zyl \\\n  ") + c.opened + "\n\n" + c.opened + ":\n")
            << c.opened;
    }
}

// The rule may not replace a file the compile reads or writes: such a
// command line is refused and changes no file (the manual shows the plain
// names). A failed compile writes no rule and removes an earlier one,
// whether it fails after an include, before the database name (which
// decides the outputs removed) or opening the schema, but leaves an input
// named as the rule alone. A rule that cannot be written fails the command
// (so a build tool runs it again); the generated files stay.
TEST(Depfile, NeverAFileTheCompileReadsOrWrites) {
    std::string const usage = "usage: zylcomp [OPTIONS] SCHEMA-FILE\nTry 'zylcomp --help' for the options.\n";
    std::string const earlier = "/* an earlier output */\n";
    std::string const undefined = "File s.zyl;  line 3: error: undefined type NoSuchType used in x\n\n";
    char const* const good = "declare database s;\n#include \"t.zyl\"\nclass C { unsigned<4> n; };\n";
    char const* const bad = "declare database s;\n#include \"t.zyl\"\nclass C { NoSuchType x; };\n";
    using Names = std::vector<std::string>;
    struct { char const* depfile; char const* schema; int status; std::string err; Names out; } const cases[] = {
        {"./s.zyl", good, 2, "zylcomp: the dependency file './s.zyl' is the schema or a file it includes\n" + usage,
         {"s.c", "s.d", "s.h"}},
        {"t.zyl", good, 2, "zylcomp: the dependency file 't.zyl' is the schema or a file it includes\n" + usage,
         {"s.c", "s.d", "s.h"}},
        {"out/../out/s.c", good, 2,
         "zylcomp: the dependency file 'out/../out/s.c' is an output of the compile\n" + usage, {"s.c", "s.d", "s.h"}},
        {"no/such/dir/s.d", good, 1, "zylcomp: cannot write the dependency file 'no/such/dir/s.d'\n",
         {"s.c", "s.d", "s.h"}},
        {"t.zyl", bad, 255, undefined, {"s.d"}},
        {"out/s.d", bad, 255, undefined, {}},
        {"out/s.d", "#include \"t.zyl\"\nnonsense\n", 255, "File s.zyl;  line 2: error: unexpected token: \"nonsense\"\n\n",
         {"s.c", "s.h"}},
        {"out/s.d", nullptr, 255, "error: Cannot open \"s.zyl\"\n\n", {"s.c", "s.h"}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(std::string(c.depfile) + " " + (c.schema ? c.schema : "(none)"));
        TempDir dir;
        makeDirs(dir, {"out"});
        if (c.schema != nullptr)
            dir.write("s.zyl", c.schema);
        dir.write("t.zyl", "#define T 1\n");
        for (char const* output : {"out/s.h", "out/s.c", "out/s.d"})
            dir.write(output, earlier);
        ProcessResult r = runProgram({cliPath(), "-o", "out", "--depfile", c.depfile, "s.zyl"}, dir.path());
        EXPECT_EQ(r.status, c.status);
        EXPECT_EQ(r.err, c.err);
        EXPECT_EQ(readFile(dir.file("s.zyl")), c.schema ? c.schema : "");
        EXPECT_EQ(readFile(dir.file("t.zyl")), "#define T 1\n");
        EXPECT_EQ(listDir(dir.file("out")), c.out);
        EXPECT_EQ(dir.list(), (c.schema ? Names{"out", "s.zyl", "t.zyl"} : Names{"out", "t.zyl"}));
        if (c.status == 255) {
            EXPECT_NE(r.out.find("Error executing DDL compiler\n"), std::string::npos);
        } else {
            EXPECT_EQ(r.out, "");
            for (char const* output : {"out/s.h", "out/s.c"})
                EXPECT_EQ(readFile(dir.file(output)) == earlier, c.status == 2) << output;
        }
    }
}
