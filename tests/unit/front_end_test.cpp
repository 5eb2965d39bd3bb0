// The schema's way in: the preprocessor (comments, directives, macros,
// includes, and the file and line that every message names, with the
// include directory a compile job derives from the schema's path), the
// token reader (how lines are cut into tokens, and the readers of names,
// numbers and quoted texts with their messages and positions), and message
// translation with the places the batch reporter names.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/job.h"
#include "frontend/diagnostics.h"
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

// The token reader's readers, one a row of Parser.ReadersAndTheirMessages.
enum Reader { Get, Name, Num, NumOpt, Signed, Quoted };

std::string readWith(Reader reader, Parser& p) {
    switch (reader) {
    case Name: return p.getName().c_str();
    case Num: return std::to_string(p.getNum());
    case NumOpt: return std::to_string(static_cast<int>(p.getNumEx(true)));
    case Signed: return std::to_string(p.getSigned());
    case Quoted: return p.getQuotedString().c_str();
    default: return "";
    }
}

}  // namespace

TEST(PreProcessor, DirectivesMacrosCommentsAndIncludes) {
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

// Each row reads once with one reader, then every token left:
// "value|rest", or "!message" with the position in the preprocessed line.
TEST(Parser, ReadersAndTheirMessages) {
    // `pos` is checked when not -1; `back` is a token put back before reading.
    struct { Reader reader; char const *text, *expected; int pos = -1; char const* back = nullptr; } const cases[] = {
        // How get() cuts tokens.
        {Get, "a_1 1a _x9_y", "|a_1 1 a _x9_y"},
        {Get, "0x 0x1G 0xABcd", "|0x 0x1 G 0xABcd"},
        {Get, "{}<>;,()[]:*.=", "|{ } < > ; , ( ) [ ] : * . ="},
        {Get, "x=5;", "|x = 5 ;"},
        {Get, "-5 - 5 x-1", "|-5 - 5 x -1"},
        // A number may hold any number of points.
        {Get, "1.2.3 1e5 a.b 017 09", "|1.2.3 1 e5 a . b 017 09"},
        // An unknown character standing alone passes as a token.
        {Get, "a @ b\n\n   c", "|a @ b c"},
        // The message names the character behind the unknown one.
        {Get, "@;", "!Unrecognized Symbol \";\"", 1},
        // getName
        {Name, "_name", "_name|"},
        {Name, "_ y", "!identifiers cannot end with the underscore", 2},
        {Name, "1x", "!identifier expected, found \"1\""},
        // Only a token that was put back can hold other characters.
        {Name, "", "!identifier expected, found \"a-b\"", -1, "a-b"},
        // getNum: hex, octal, decimal above zero.
        {Num, "0x", "0|"},
        {Num, "0XfF", "255|"},
        {Num, "017;", "15|;"},
        {Num, "4294967295", "4294967295|"},
        // 19 digits may overflow a long: strtol's clamp, not a wrapped value.
        {Num, "9223372036854775858", "4294967295|"},
        {Num, "-5", "!positive number expected, found -5"},
        {Num, "", "!positive number expected, found #1"},
        {Num, "", "!not a hex number: \"0xZZ\"", -1, "0xZZ"},
        // Optional: the token goes back, and the value is strtol's, so that
        // callers can see "0 or less".
        {NumOpt, "abc", "0|abc"},
        {NumOpt, "-5 7", "-5|-5 7"},
        {NumOpt, "", "0|"},
        {NumOpt, "09", "!not an octal number: 09"},
        // getSigned, cut to 32 bits.
        {Signed, "-12", "-12|"},
        {Signed, "0x10 010", "16|010"},
        {Signed, "4294967297", "1|"},
        // 19 digits may overflow a long: strtol saturates.
        {Signed, "9999999999999999999", "-1|"},
        {Signed, "-", "!number expected, found -"},
        // getQuotedString keeps both quotes and every backslash.
        {Quoted, "  \"a \\\"b\\\" \\\\ c\" rest", "\"a \\\"b\\\" \\\\ c\"|rest"},
        {Quoted, "\n", "|"},
        {Quoted, "x", "!opening double quote is expected", 1},
        // A macro value knows no strings, so it can carry an open quote
        // past the preprocessor's own check.
        {Quoted, "#define Q \"abc\nQ\n", "!closing double quote is expected", 8},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.text);
        ParsedText s(c.text, "main.zyl");
        if (c.back)
            s.in->parser->takeBack(c.back);
        std::string got;
        try {
            got = readWith(c.reader, *s.in->parser);
            got += "|" + s.in->tokens();
        } catch (CompilerError const& e) {
            got = "!" + std::string(e.m_msg.c_str());
            EXPECT_EQ(std::string(e.m_file.c_str()), "main.zyl");
            EXPECT_TRUE(c.pos == -1 || c.pos == e.m_pos) << e.m_pos;
        }
        EXPECT_EQ(got, c.expected);
    }
}

// The include directory of a schema named by a path.
TEST(Job, IncludeDirectoryDerivation) {
    char const* const cases[][2] = {
        {"ab", ""},  // short paths never yield a directory
        {"/ab.zyl", ""},  // only a separator at index 0 or 1
        {"a/b.zyl", ""},
        {"ab/c.zyl", "ab"},  // index 2 is looked at
        {"dir\\sub\\s.zyl", "dir\\sub"},
        {"dir/sub/", "dir/sub"},  // a trailing separator: everything before it
    };
    for (auto const& c : cases)
        EXPECT_EQ(Job::deriveIncludeDir(c[0]), c[1]) << "'" << c[0] << "'";
}

// Look-up in the table, empty parameters dropping out, numbers beyond the
// parameters vanishing, unknown keys passing through.
TEST(Diagnostics, TranslateError) {
    struct { char const *key, *p[4], *expected; } const cases[] = {
        // With no parameter at all the message stands as it is, "#1" and all.
        {"type #1 already defined", {"", "", "", ""}, "type \"#1\" was already defined"},
        {"field #1 was not defined in struct #2 and referenced from index #3, #4",
         {"f", "S", "", ""},
         "field f was not defined in struct S and referenced from index "},
        {"no such key #2 and #1 and #9", {"A", "B", "", ""}, "no such key B and A and "},
        {"expected ,  ", {"", "", "", ""}, "expected ,  "},  // the key must match to the letter
    };
    for (auto const& c : cases)
        EXPECT_EQ(translateError(c.key, c.p[0], c.p[1], c.p[2], c.p[3]), c.expected) << c.key;
}

TEST(Diagnostics, ReplacedTableEntryTakesEffect) {
    char const* saved = ZYL_MESSAGES[25];
    ASSERT_STREQ(saved, "oid struct #1 was not defined=oid struct \"#1\" was not defined");
    ZYL_MESSAGES[25] = "oid struct #1 was not defined = struct d'oid \"#1\" inconnue ";
    EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "struct d'oid \"X\" inconnue");
    // An empty message falls back to the key; an entry that does not split
    // in two is skipped.
    for (char const* entry : {"oid struct #1 was not defined=", "oid struct #1 was not defined=a=b"}) {
        ZYL_MESSAGES[25] = entry;
        EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "oid struct X was not defined");
    }
    ZYL_MESSAGES[25] = saved;
}

TEST(Diagnostics, ErrReporterPrefixRules) {
    struct { char const *file, *defaultFile; int line, pos; char const* prefix; } const cases[] = {
        {"", "dflt.zyl", 3, 4, "File dflt.zyl;  line 3, position 5: "},
        {"a.zyl", "", 0, 0, "File a.zyl;  line 0: "},
        {"a.zyl", "", -1, 5, "File a.zyl; "},
        {"", "", 4, 2, " line 4, position 3: "},
        {"", "", -3, 0, ""},
    };
    for (auto const& c : cases) {
        ProcessResult r = runInChild([&] {  // an error ends the child like a compile
            ErrReporter rep;
            rep.setDefaultFilename(c.defaultFile);
            rep.err1("unexpected token #1", "x", c.file, c.line, c.pos);
        });
        EXPECT_EQ(r.err, std::string(c.prefix) + "error: unexpected token: \"x\"\n\n");
        EXPECT_EQ(r.out, "Error executing DDL compiler\n");
        EXPECT_EQ(r.status, 255);
    }
}
