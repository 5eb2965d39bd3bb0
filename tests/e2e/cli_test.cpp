// The command-line front end, run as a user runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "support/process.h"

TEST(Cli, MissingSchemaFile) {
    TempDir dir;
    ProcessResult r = runProgram({cliPath(), "nosuch.zyl"}, dir.path());
    std::string const cwd = std::filesystem::canonical(dir.path()).string();
    EXPECT_EQ(r.out, "Current directory is: " + cwd + "\nError executing DDL compiler\n");
    EXPECT_EQ(r.err, "error: Cannot open \"nosuch.zyl\"\n\n");
    EXPECT_EQ(r.status, 255);
    EXPECT_TRUE(dir.list().empty());
}

TEST(Cli, WrongCommandLines) {
    struct { std::vector<std::string> args; char const* firstLine; } const cases[] = {
        {{}, "zylcomp: no schema file given\n"},
        {{"a.zyl", "-o"}, "zylcomp: option -o needs a value\n"},
        {{"--sizeof-size", "x", "a.zyl"}, "zylcomp: option --sizeof-size needs a size in bytes from 1 to 64, not 'x'\n"},
    };
    for (auto const& c : cases) {
        std::vector<std::string> argv = {cliPath()};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        ProcessResult r = runProgram(argv);
        EXPECT_EQ(r.status, 2);
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, std::string(c.firstLine) +
                             "usage: zylcomp [OPTIONS] SCHEMA-FILE\nTry 'zylcomp --help' for the options.\n");
    }
}

// -o makes a missing directory with its parents. One that cannot be made
// fails with status 1, and leaves nothing: not the parents made on the way,
// nor a directory made for a compile that then failed. (The manual shows
// the whole path in the way.)
TEST(Cli, OutputDirectory) {
    std::string const good = "declare database m;\nclass C { unsigned<4> n; };\n";
    std::string const longName(300, 'x');
    struct {
        char const* name;
        std::string outputDir, schema;
        int status;
        std::string err;
        std::vector<std::string> listing;  // of the test's directory afterwards
    } const cases[] = {
        {"nested", "a/b/c", good, 0, "", {"a", "f", "m.zyl"}},
        {"a file in the way", "f/sub", good, 1,
         "zylcomp: cannot create the output directory 'f/sub': 'f' is in the way and is not a directory\n",
         {"f", "m.zyl"}},
        {"a name too long", "new/" + longName, good, 1,
         "zylcomp: cannot create the output directory 'new/" + longName + "': File name too long\n",
         {"f", "m.zyl"}},
        {"a failed compile", "new/dir", "declare database m;\nclass C { NoSuchType x; };\n", 255,
         "File m.zyl;  line 2: error: undefined type NoSuchType used in x\n\n", {"f", "m.zyl"}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        TempDir dir;
        dir.write("m.zyl", c.schema);
        dir.write("f", "a file\n");
        ProcessResult r = runProgram({cliPath(), "-o", c.outputDir, "m.zyl"}, dir.path());
        EXPECT_EQ(r.status, c.status);
        EXPECT_EQ(r.err, c.err);
        EXPECT_EQ(dir.list(), c.listing);
        EXPECT_EQ(readFile(dir.file("f")), "a file\n");
        if (c.status == 0) {
            EXPECT_EQ(listDir(dir.file(c.outputDir)), (std::vector<std::string>{"m.c", "m.h"}));
        } else if (c.status == 1) {
            EXPECT_EQ(r.out, "");
        }
    }
}

// -q: nothing at all after a complete compile; a failed one says what it
// always says.
TEST(Cli, Quiet) {
    TempDir dir;
    dir.write("good.zyl", "declare database g;\nclass C { unsigned<4> n; };\n");
    dir.write("bad.zyl", "declare database b;\nclass C { NoSuchType x; };\n");
    ProcessResult r = runProgram({cliPath(), "-q", "good.zyl"}, dir.path());
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out + r.err, "");
    EXPECT_NE(readFile(dir.file("g.h")), "");

    r = runProgram({cliPath(), "--quiet", "bad.zyl"}, dir.path());
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.out, "Error executing DDL compiler\n");
    EXPECT_EQ(r.err, "File bad.zyl;  line 2: error: undefined type NoSuchType used in x\n\n");
}

// Every spelling of an option in --help, short ones too, is in the README
// and the manual page, and every option of the README's table is in --help.
TEST(Cli, HelpManPageAndReadmeListTheSameOptions) {
    ProcessResult r = runProgram({cliPath(), "--help"});
    ASSERT_EQ(r.status, 0);
    std::string const man = readFile(std::string(ZYLCOMP_TESTS_DIR) + "/../doc/zylcomp.1.in");
    std::string const readme = readFile(std::string(ZYLCOMP_TESTS_DIR) + "/../README.md");
    std::set<std::string> help;
    std::regex const any("(^|[ ,])(--?[a-zA-Z][a-z-]*)");
    for (std::sregex_iterator it(r.out.begin(), r.out.end(), any), end; it != end; ++it)
        help.insert((*it)[2]);
    EXPECT_GE(help.size(), 38u);  // the regex found them all
    for (std::string const& name : help) {
        EXPECT_NE(readme.find("`" + name), std::string::npos) << name << " is not in README.md";
        EXPECT_NE(man.find(std::regex_replace(name, std::regex("-"), "\\-")), std::string::npos)
            << name << " is not in doc/zylcomp.1.in";
    }
    std::istringstream table(readme);
    std::regex const quoted("`(--?[a-zA-Z][a-z-]*)");
    for (std::string line; std::getline(table, line);)
        for (std::sregex_iterator it(line.begin(), line.end(), quoted), end; line[0] == '|' && it != end; ++it)
            EXPECT_TRUE(help.count((*it)[1].str())) << (*it)[1] << " of README.md is not in --help";
}

TEST(Cli, Version) {
    ProcessResult r = runProgram({cliPath(), "-V"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("dictionary format 8.1 build 1800"), std::string::npos);
}
