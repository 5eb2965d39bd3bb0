// The schema preprocessor: comments, directives, macros, includes, and the
// file and line that every message names.
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

#include "support/parsed.h"

namespace {

struct Reading : ParsedFile {
    using ParsedFile::ParsedFile;
    PreProcessor& pp() { return parser->pp(); }

    // The tokens up to the end or the first error, blank-separated; with
    // `where`, each as "text@file:line".
    std::string read(bool where = false) {
        std::string s;
        try {
            for (mstring t = parser->get(); !t.empty(); t = parser->get()) {
                s += (s.empty() ? "" : " ") + std::string(t.c_str());
                if (where)
                    s += "@" + std::string(pp().fileName().c_str()) + ":" + std::to_string(pp().lineNo());
            }
        } catch (CompilerError const& e) {
            error = e.m_msg.c_str();
            where_ = std::string(e.m_file.c_str()) + ":" + std::to_string(e.m_line);
            pos = e.m_pos;
        }
        return s;
    }

    std::string error, where_;  // the message and its "file:line"
    int pos = -1;
};

// main.zyl, and inc.zyl beside it, and what reading main.zyl gives.
// `tokens` come before the end or the error; no `error`: read to the end.
struct Case {
    char const *main, *tokens, *error = "";
    int line = 0;
    char const *inc = "", *file = "main.zyl";
};

// Open descriptors of this process; 0 where /proc is not there.
int openFiles() { return static_cast<int>(listDir("/proc/self/fd").size()); }

}  // namespace

TEST(PreProcessor, DirectivesMacrosCommentsAndIncludes) {
    char cwd[300];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    std::string const missing =
        "current directory is " + std::string(cwd) + ", cannot open include file \"nope.zyl\"";
    Case const cases[] = {
        // Directives. "# ifdef" has an empty word: unknown, it vanishes.
        {"# ifdef X\na\n#pragma once\n", "a"},
        {"#define X\n#ifdef X\na\n#else\nb\n#endif\n#ifdef Y\nc\n#else\nd\n#endif\n#ifndef Y\ne\n#endif\n", "a d e"},
        // A false branch defines nothing, undefines nothing, and a known
        // macro or an #else inside it does not revive it.
        {"#define K\n#ifdef NO\n#define D\n#undef K\n#ifdef K\nk\n#else\nelse\n#endif\n#endif\n"
         "#ifdef D\nd\n#endif\n#ifdef K\nk2\n#endif\n",
         "k2"},
        {"#ifdef X\n#else\n#else\n#endif\n", "", "#else without matching #if", 3},
        // Macros: the rest of the line, possibly empty, expanded again.
        {"#define T unsigned int4\n#define E\n#define A B[C]\n#define B x\n#define C 2\nT E a; A;\n",
         "unsigned int4 a ; x [ 2 ] ;"},
        {"#define N 4\nN;xN N1\n", "4 ; xN N1"},
        // A value knows no hex prefix: only the character behind "0" is
        // kept from starting an identifier.
        {"#define H 0X1f\nH\n", "0X1 f"},
        // Comments, which do not nest; "//" is cut before "/*" is looked at.
        {"a /* 1 */ b /* x\ny\nz */ c // d\ne\n", "a b c e"},
        {"/* a /* b */ c */\n/*/ d */ e\n", "c * / e"},
        {"/* a // */\nb */ c\n", "c"},
        // The text of a line.
        {"a\r\nb\r\nc", "a b c"},
        {"0X1f a0x1\n", "0x1f a0x1"},
        {"#define bc Q\n0abc\n", "0 a Q"},
        {"s \"a//b\";\n", "", "non-terminated string literal", 1},
        {"\"a\\\"\n", "", "non-terminated string literal", 1},
        // Includes: "name" and <name>; macros outlive their file.
        {"#include \"inc.zyl\"\n#include  <inc.zyl>\nN\n", "a a 5", "", 0, "#ifndef N\n#define N 5\n#endif\na\n"},
        {"a\n#include \"inc.zyl\"", "a b", "", 0, "b\n"},
        {"#ifdef NO\n#include \"missing.zyl\"\n#endif\nok\n", "ok"},
        {"#include \"inc.zyl\"\nnever\n", "x", "#endif without matching #if", 2, "x\n#endif\n", "inc.zyl"},
        // The condition opened in the include is still open at the end.
        {"#include \"inc.zyl\"\na\n", "b a", "no #endif for #if", 2, "#ifndef Y\nb\n"},
        // An #endif in an include closes the includer's #ifdef; a comment
        // open at the end of an include names the include.
        {"#define W\n#ifdef W\n#include \"inc.zyl\"\nafter\n", "inside after", "", 0, "inside\n#endif\n"},
        {"a\n#include \"inc.zyl\"\nnever\n", "a b", "comment is not closed with */", 3, "b\n/* open\nstill\n",
         "inc.zyl"},
        {"ok\n#include <inc.zyl\"\n", "ok", "incorrect #include syntax", 2},
        {"ok\n#include\n", "ok", "incorrect #include syntax", 2},
        {"a\n#include \"nope.zyl\"\n", "a", missing.c_str(), 2},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.main);
        TempDir dir;
        dir.write("main.zyl", c.main);
        dir.write("inc.zyl", c.inc);
        Reading r(dir.path(), "main.zyl");
        EXPECT_EQ(r.read(), c.tokens);
        EXPECT_EQ(r.error, c.error);
        if (*c.error) {
            EXPECT_EQ(r.where_, std::string(c.file) + ":" + std::to_string(c.line));
            EXPECT_EQ(r.pos, 0);  // the preprocessor has no column of its own
        } else {
            EXPECT_TRUE(r.pp().isEnd());
        }
    }
}

// Lines count through comments and blank lines; an include file is found
// through the include directory (a trailing separator dropped) and named
// without it; a long line comes in pieces, each counted as a line.
TEST(PreProcessor, FileAndLineOfEachToken) {
    TempDir dir;
    dir.write("main.zyl", "a /* one\ntwo\nthree */ b\n\n// only a comment\n#include \"inc.zyl\"\nc\n" +
                              std::string(6000, 'x') + "\nend\n");
    dir.write("inc.zyl", "x\ny\n");
    Reading r(dir.path() + "/", "main.zyl");
    std::string const tokens = r.read(true);
    EXPECT_EQ(r.error, "");
    EXPECT_EQ(tokens, "a@main.zyl:1 b@main.zyl:3 x@inc.zyl:1 y@inc.zyl:2 c@main.zyl:7 " + std::string(4999, 'x') +
                          "@main.zyl:8 " + std::string(1001, 'x') + "@main.zyl:9 end@main.zyl:10");
}

// Destroying the Parser after an error deep in the include stack closes
// every include file and leaves the caller's file to the caller.
TEST(PreProcessor, FileIncludingItself) {
    TempDir dir;
    dir.write("main.zyl", "#include \"self.zyl\"\n");
    dir.write("self.zyl", "#include \"self.zyl\"\n");
    int const before = openFiles();
    Reading r(dir.path(), "main.zyl");
    r.read();
    EXPECT_EQ(r.error + " " + r.where_, "recursion in #include self.zyl:1");
    int const deep = openFiles();
    r.parser.reset();
    if (before > 0) {
        EXPECT_EQ(deep, before + 102);  // main.zyl and 101 times self.zyl
        EXPECT_EQ(openFiles(), before + 1);
    }
}
