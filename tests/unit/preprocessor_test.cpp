// The schema preprocessor: comments, directives, macros, includes, and the
// file and line that every message names.
#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "frontend/diagnostics.h"
#include "frontend/parser.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

std::string const kFixtures = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/pp";

struct Report {
    bool raised = false;
    std::string message;
    std::string file;
    int line = -1;
    int pos = -1;
};

Report reportOf(CompilerError const& e) {
    Report r;
    r.raised = true;
    r.message = e.m_msg.c_str();
    r.file = e.m_file.c_str();
    r.line = e.m_line;
    r.pos = e.m_pos;
    return r;
}

// A schema file read through a Parser with the run-time reporter, which
// throws at the first error. The schema file stays open until the Parser is
// gone and is closed here, as the compile driver does it.
class Reading {
public:
    Reading(std::string const& dir, std::string const& name, std::string const& tempDir = "")
        : m_file(std::fopen((dir + "/" + name).c_str(), "r")), m_reporter(nullptr, nullptr) {
        m_parser.reset(new Parser(m_file, name.c_str(), &m_reporter, dir.c_str(), tempDir.c_str()));
    }
    ~Reading() {
        m_parser.reset();
        if (m_file)
            std::fclose(m_file);
    }
    bool opened() const { return m_file != nullptr; }
    Parser& parser() { return *m_parser; }
    PreProcessor& pp() { return m_parser->pp(); }

private:
    FILE* m_file;
    ErrReporterMem m_reporter;
    std::unique_ptr<Parser> m_parser;
};

struct Lines {
    std::vector<std::string> text;
    std::vector<int> lineNo;
    Report report;
};

Lines readLines(Reading& r) {
    Lines out;
    try {
        for (;;) {
            mstring line = r.pp().readLine();
            if (line.empty() && r.pp().isEnd())
                break;
            out.text.push_back(line.c_str());
            out.lineNo.push_back(r.pp().lineNo());
        }
    } catch (CompilerError const& e) {
        out.report = reportOf(e);
    }
    return out;
}

struct Token {
    std::string text;
    std::string file;
    int line;
};

struct Tokens {
    std::vector<Token> list;
    Report report;
    std::string joined() const {
        std::string s;
        for (Token const& t : list)
            s += (s.empty() ? "" : " ") + t.text;
        return s;
    }
};

Tokens readTokens(Reading& r) {
    Tokens out;
    try {
        for (;;) {
            mstring t = r.parser().get();
            if (t.empty())
                break;
            out.list.push_back({t.c_str(), r.pp().fileName().c_str(), r.pp().lineNo()});
        }
    } catch (CompilerError const& e) {
        out.report = reportOf(e);
    }
    return out;
}

struct File {
    std::string name;
    std::string text;
};

// One schema, the files it may include, and what reading it gives: the
// tokens before the end or the error, and the error with its file and line.
struct Case {
    std::string name;
    std::vector<File> files;  // the first one is read
    std::string tokens;
    std::string error;  // empty: read to the end without a report
    std::string errorFile;
    int errorLine;
};

std::string caseName(::testing::TestParamInfo<Case> const& info) { return info.param.name; }
void PrintTo(Case const& c, std::ostream* os) { *os << c.name; }

void checkCase(Case const& c) {
    TempDir dir;
    for (File const& f : c.files)
        dir.write(f.name, f.text);
    Reading r(dir.path(), c.files[0].name);
    ASSERT_TRUE(r.opened());
    Tokens t = readTokens(r);
    EXPECT_EQ(t.joined(), c.tokens);
    if (c.error.empty()) {
        EXPECT_FALSE(t.report.raised) << t.report.message;
        EXPECT_TRUE(r.pp().isEnd());
    } else {
        ASSERT_TRUE(t.report.raised) << "expected: " << c.error;
        EXPECT_EQ(t.report.message, c.error);
        EXPECT_EQ(t.report.file, c.errorFile);
        EXPECT_EQ(t.report.line, c.errorLine);
        // The preprocessor has no column of its own to name.
        EXPECT_EQ(t.report.pos, 0);
    }
}

Case ok(std::string name, std::string text, std::string tokens) {
    return {name, {{"main.zyl", text}}, tokens, "", "", 0};
}

Case fails(std::string name, std::string text, std::string tokens, std::string error, int line) {
    return {name, {{"main.zyl", text}}, tokens, error, "main.zyl", line};
}

// ---------------------------------------------------------------------------
// Directives

class PreProcessorDirectives : public ::testing::TestWithParam<Case> {};

TEST_P(PreProcessorDirectives, Read) { checkCase(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Table, PreProcessorDirectives,
    ::testing::Values(
        ok("blank_lines", "a\n\n   \n\t\nb\n", "a b"),
        // The blank ends the word at once: a directive with an empty word,
        // unknown, so it vanishes and opens no condition.
        ok("blank_after_hash", "# ifdef X\na\n", "a"),
        ok("hash_alone", "#\na\n", "a"),
        ok("unknown_directive_vanishes", "#pragma once\n#line 5\na\n", "a"),
        ok("directive_after_blanks", "   #define X 7\n  X\n", "7"),
        ok("ifdef_known", "#define X\n#ifdef X\nyes\n#else\nno\n#endif\n", "yes"),
        ok("ifdef_unknown", "#ifdef X\nyes\n#else\nno\n#endif\n", "no"),
        ok("ifndef_unknown", "#ifndef X\nyes\n#else\nno\n#endif\n", "yes"),
        ok("ifndef_known", "#define X\n#ifndef X\nyes\n#else\nno\n#endif\n", "no"),
        ok("nested_true", "#define A\n#define B\n#ifdef A\n#ifdef B\nab\n#endif\na\n#endif\n", "ab a"),
        ok("define_in_false_branch_not_entered", "#ifdef NO\n#define D\n#endif\n#ifdef D\nd\n#endif\nend\n",
           "end"),
        // A known macro does not revive a false branch, nor does its #else.
        ok("ifdef_in_false_branch_stays_false",
           "#define K\n#ifdef NO\n#ifdef K\nk\n#else\nelse\n#endif\n#endif\nend\n", "end"),
        ok("ifndef_in_false_branch_stays_false", "#ifdef NO\n#ifndef K\nk\n#else\nelse\n#endif\n#endif\nend\n",
           "end"),
        ok("undef_in_false_branch_not_done", "#define X\n#ifdef NO\n#undef X\n#endif\n#ifdef X\nx\n#endif\n", "x"),
        ok("redefine_after_undef", "#define X 1\n#undef X\n#ifdef X\nx\n#endif\n#define X 2\nX\n", "2"),
        ok("undef_unknown_is_no_fault", "#undef NOPE\na\n", "a"),
        ok("duplicate_define_in_false_branch_ignored", "#define X 1\n#ifdef NO\n#define X 2\n#endif\nX\n", "1"),
        ok("unknown_directive_in_false_branch", "#ifdef NO\n#pragma x\nb\n#endif\na\n", "a"),
        fails("else_twice", "#ifdef X\n#else\n#else\n#endif\n", "", "#else without matching #if", 3),
        fails("else_without_if", "a\n#else\n", "a", "#else without matching #if", 2),
        fails("else_extra_words", "#ifdef X\n#else X\n#endif\n", "", "extra words after #else", 2),
        fails("endif_without_if", "a\n#endif\n", "a", "#endif without matching #if", 2),
        fails("endif_twice", "#define X\n#ifdef X\nx\n#endif\n#endif\n", "x", "#endif without matching #if", 5),
        // Reported when the input ends, at the last line of the schema.
        fails("no_endif_false", "#ifdef X\na\nb\n", "", "no #endif for #if", 3),
        fails("no_endif_true", "#define X\n#ifdef X\na\n", "a", "no #endif for #if", 3),
        fails("no_endif_without_final_newline", "#ifndef X\na", "a", "no #endif for #if", 2),
        fails("define_twice", "#define X 1\n#define X 2\n", "", "macro \"X\" already defined", 2),
        fails("undef_extra_words", "#define X\n#undef X Y\n", "", "illegal #undef command - extra words", 2)),
    caseName);

// ---------------------------------------------------------------------------
// Macros

class PreProcessorMacros : public ::testing::TestWithParam<Case> {};

TEST_P(PreProcessorMacros, Read) { checkCase(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Table, PreProcessorMacros,
    ::testing::Values(
        ok("value_is_rest_of_line", "#define T unsigned int4\nT x;\n", "unsigned int4 x ;"),
        ok("empty_value_expands_to_nothing", "#define E\nint4 E a;\n", "int4 a ;"),
        ok("value_with_macros", "#define A B[C]\n#define B x\n#define C 2\nA;\n", "x [ 2 ] ;"),
        ok("defined_later_expands_later", "A\n#define A 1\nA\n", "A 1"),
        ok("identifier_glued_to_number", "#define N 4\nN;xN N1\n", "4 ; xN N1"),
        // A value knows no hex prefix: only the character behind "0" is
        // kept from starting an identifier.
        ok("value_keeps_hex_spelling", "#define H 0X1f\nH\n", "0X1 f"),
        fails("self_reference", "#define A A\nx A\n", "", "recursion in macro", 2),
        fails("mutual_reference", "#define A x B\n#define B A\nA\n", "", "recursion in macro", 3)),
    caseName);

// Expansion may go 20 levels below the line; the 21st is taken for a loop.
TEST(PreProcessorMacros, DepthLimit) {
    for (int chain : {21, 22}) {
        std::string text;
        for (int i = 0; i + 1 < chain; i++)
            text += "#define M" + std::to_string(i) + " M" + std::to_string(i + 1) + "\n";
        text += "#define M" + std::to_string(chain - 1) + " done\nM0\n";
        TempDir dir;
        dir.write("main.zyl", text);
        Reading r(dir.path(), "main.zyl");
        Tokens t = readTokens(r);
        if (chain == 21) {
            EXPECT_FALSE(t.report.raised) << t.report.message;
            EXPECT_EQ(t.joined(), "done");
        } else {
            EXPECT_TRUE(t.report.raised);
            EXPECT_EQ(t.report.message, "recursion in macro");
            EXPECT_EQ(t.report.line, chain + 1);
        }
    }
}

// ---------------------------------------------------------------------------
// Comments and the text of a line

class PreProcessorText : public ::testing::TestWithParam<Case> {};

TEST_P(PreProcessorText, Read) { checkCase(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Table, PreProcessorText,
    ::testing::Values(
        ok("comment_inline", "a /* x */ b\n", "a b"),
        ok("comment_two_on_a_line", "a /* 1 */ b /* 2 */ c\n", "a b c"),
        ok("comment_over_lines", "a /* x\ny\nz */ b\nc\n", "a b c"),
        // The first "*/" closes: the rest of the outer comment is text.
        ok("comments_do_not_nest", "/* a /* b */ c */\n", "c * /"),
        ok("slash_star_slash_is_no_close", "/*/ a */ b\n", "b"),
        ok("line_comment", "a // b c\nd\n", "a d"),
        // "//" is cut before comments are looked at, "*/" included.
        ok("line_comment_hides_comment_end", "/* a // */\nb */ c\n", "c"),
        ok("comment_in_directive", "#define X /* none */ 5\nX\n", "5"),
        ok("crlf_lines", "a\r\nb\r\n", "a b"),
        ok("hex_prefix_one_spelling", "0X1f\n", "0x1f"),
        ok("hex_stops_at_first_other", "0x1G\n", "0x1 G"),
        ok("digits_then_letters", "1a\n", "1 a"),
        ok("letter_behind_zero_is_no_identifier", "#define bc Q\n0abc\n", "0 a Q"),
        ok("zero_x_inside_identifier", "a0x1\n", "a0x1"),
        ok("no_final_newline", "a\nb", "a b"),
        fails("line_comment_in_string", "s \"a//b\";\n", "", "non-terminated string literal", 1),
        fails("unterminated_string", "a\n\"abc\n", "a", "non-terminated string literal", 2),
        fails("escaped_quote_is_no_end", "\"a\\\"\n", "", "non-terminated string literal", 1),
        fails("comment_open_at_end", "a\n/* open\nstill open\n", "a", "comment is not closed with */", 3)),
    caseName);

// The exact text handed to the token reader.
TEST(PreProcessorText, ExpandedLines) {
    struct Row {
        char const* in;
        char const* out;
    };
    Row const rows[] = {
        {"a", " a "},
        {"int4 a;", " int4   a ;"},
        {"x=0Xab;", " x =0xab;"},
        {"10x5", "10x5"},
        {"\"a b\" c", "\"a b\"  c "},
        {"\"a\\\"b\" c", "\"a\\\"b\"  c "},
        {"0\"s\"", "0\"s\""},
        {"E(1)", "  (1)"},  // E is defined empty
        {"", ""},
    };
    TempDir dir;
    dir.write("main.zyl", "#define E\n");
    Reading r(dir.path(), "main.zyl");
    r.pp().readLine();  // the #define
    for (Row const& row : rows)
        EXPECT_STREQ(r.pp().processLine(row.in).c_str(), row.out) << row.in;
}

TEST(PreProcessorText, LineNumbersThroughComments) {
    TempDir dir;
    dir.write("main.zyl", "a /* one\ntwo\nthree */ b\n\n// only a comment\nc\n");
    Reading r(dir.path(), "main.zyl");
    Tokens t = readTokens(r);
    ASSERT_FALSE(t.report.raised) << t.report.message;
    ASSERT_EQ(t.list.size(), 3u);
    EXPECT_EQ(t.list[0].line, 1);
    EXPECT_EQ(t.list[1].line, 3);
    EXPECT_EQ(t.list[2].line, 6);
}

TEST(PreProcessorText, BlankLinesAreOrdinaryLines) {
    TempDir dir;
    dir.write("main.zyl", "\n  \t\n#define X\nx\n");
    Reading r(dir.path(), "main.zyl");
    Lines l = readLines(r);
    ASSERT_FALSE(l.report.raised) << l.report.message;
    ASSERT_EQ(l.text.size(), 4u);
    EXPECT_EQ(l.text[0], "");
    EXPECT_EQ(l.text[1].find_first_not_of(" \t"), std::string::npos);
    EXPECT_EQ(l.text[2], "");  // a directive gives an empty line
    EXPECT_EQ(l.text[3], " x ");
    EXPECT_EQ(l.lineNo, (std::vector<int>{1, 2, 3, 4}));
    // The end stays the end.
    EXPECT_TRUE(r.pp().isEnd());
    EXPECT_TRUE(r.pp().readLine().empty());
}

// fgets reads a long line in pieces, and each piece counts as a line.
TEST(PreProcessorText, LongLineComesInPieces) {
    TempDir dir;
    dir.write("main.zyl", std::string(6000, 'x') + "\nend\n");
    Reading r(dir.path(), "main.zyl");
    Tokens t = readTokens(r);
    ASSERT_FALSE(t.report.raised) << t.report.message;
    ASSERT_EQ(t.list.size(), 3u);
    EXPECT_EQ(t.list[0].text, std::string(4999, 'x'));
    EXPECT_EQ(t.list[1].text, std::string(1001, 'x'));
    EXPECT_EQ(t.list[1].line, 2);
    EXPECT_EQ(t.list[2].text, "end");
    EXPECT_EQ(t.list[2].line, 3);
}

// ---------------------------------------------------------------------------
// Includes

class PreProcessorIncludes : public ::testing::TestWithParam<Case> {};

TEST_P(PreProcessorIncludes, Read) { checkCase(GetParam()); }

Case withInclude(std::string name, std::string text, std::string inc, std::string tokens, std::string error = "",
                 std::string errorFile = "", int errorLine = 0) {
    return {name, {{"main.zyl", text}, {"inc.zyl", inc}}, tokens, error, errorFile, errorLine};
}

INSTANTIATE_TEST_SUITE_P(
    Table, PreProcessorIncludes,
    ::testing::Values(
        withInclude("quotes", "#include \"inc.zyl\"\nb\n", "a\n", "a b"),
        withInclude("angle_brackets", "#include <inc.zyl>\nb\n", "a\n", "a b"),
        withInclude("blank_before_name", "#include  \t\"inc.zyl\"\nb\n", "a\n", "a b"),
        withInclude("macros_outlive_the_file", "#include \"inc.zyl\"\nN\n", "#define N 5\n", "5"),
        withInclude("include_as_last_line_without_newline", "a\n#include \"inc.zyl\"", "b\n", "a b"),
        withInclude("endif_in_include_closes_includer",
                    "#define X\n#ifdef X\n#include \"inc.zyl\"\nafter\n", "inside\n#endif\n", "inside after"),
        // Not opened at all: a false branch ignores #include.
        withInclude("include_in_false_branch", "#ifdef NO\n#include \"missing.zyl\"\n#endif\nok\n", "", "ok"),
        withInclude("error_in_include_names_it", "#include \"inc.zyl\"\nnever\n", "x\n#endif\n", "x",
                    "#endif without matching #if", "inc.zyl", 2),
        withInclude("error_after_include_names_includer", "a\n#include \"inc.zyl\"\nb\n#else\n", "x\ny\nz\n",
                    "a x y z b", "#else without matching #if", "main.zyl", 4),
        withInclude("comment_open_at_include_end", "a\n#include \"inc.zyl\"\nb\n", "x\n/* open\n", "a x",
                    "comment is not closed with */", "inc.zyl", 2),
        // The condition opened in the include is still open at the end of
        // the schema, which is where it is reported.
        withInclude("no_endif_after_include", "#include \"inc.zyl\"\na\n", "#ifndef Y\nb\n", "b a",
                    "no #endif for #if", "main.zyl", 2),
        withInclude("unterminated_string_in_include", "#include \"inc.zyl\"\n", "ok\n\"abc\n", "ok",
                    "non-terminated string literal", "inc.zyl", 2)),
    caseName);

TEST(PreProcessorIncludes, IncorrectSyntax) {
    char const* const lines[] = {
        "#include inc.zyl", "#include \"\"", "#include <>", "#include \"inc.zyl", "#include <inc.zyl\"",
        "#include \"inc.zyl>", "#include", "#include x",
    };
    for (char const* line : lines) {
        TempDir dir;
        dir.write("inc.zyl", "a\n");
        dir.write("main.zyl", std::string("ok\n") + line + "\n");
        Reading r(dir.path(), "main.zyl");
        Tokens t = readTokens(r);
        EXPECT_EQ(t.joined(), "ok") << line;
        EXPECT_TRUE(t.report.raised) << line;
        EXPECT_EQ(t.report.message, "incorrect #include syntax") << line;
        EXPECT_EQ(t.report.file, "main.zyl") << line;
        EXPECT_EQ(t.report.line, 2) << line;
    }
}

TEST(PreProcessorIncludes, MissingFileNamesCurrentDirectory) {
    TempDir dir;
    dir.write("main.zyl", "a\n#include \"nope.zyl\"\n");
    Reading r(dir.path(), "main.zyl");
    Tokens t = readTokens(r);
    char cwd[300];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    EXPECT_TRUE(t.report.raised);
    EXPECT_EQ(t.report.message,
              "current directory is " + std::string(cwd) + ", cannot open include file \"nope.zyl\"");
    EXPECT_EQ(t.report.file, "main.zyl");
    EXPECT_EQ(t.report.line, 2);
}

// The include directory is put in front of the name; the name alone is what
// messages show.
TEST(PreProcessorIncludes, FoundThroughIncludeDirectory) {
    TempDir dir;
    dir.write("inc.zyl", "x\ny\n");
    dir.write("main.zyl", "a\n#include \"inc.zyl\"\nb\n");
    Reading r(dir.path() + "/", "main.zyl");  // a trailing separator is dropped
    Tokens t = readTokens(r);
    ASSERT_FALSE(t.report.raised) << t.report.message;
    ASSERT_EQ(t.list.size(), 4u);
    struct {
        char const* text;
        char const* file;
        int line;
    } const expected[] = {{"a", "main.zyl", 1}, {"x", "inc.zyl", 1}, {"y", "inc.zyl", 2}, {"b", "main.zyl", 3}};
    for (int i = 0; i < 4; i++) {
        EXPECT_EQ(t.list[i].text, expected[i].text);
        EXPECT_EQ(t.list[i].file, expected[i].file) << i;
        EXPECT_EQ(t.list[i].line, expected[i].line) << i;
    }
}

// Each include file opened is recorded by the path it was opened by, in the
// order of opening, a file opened twice twice; a skipped #include opens
// nothing, and the schema itself is not among them.
TEST(PreProcessorIncludes, RecordsTheFilesItOpened) {
    TempDir dir;
    dir.write("main.zyl",
              "#include \"a.zyl\"\n#ifdef NO\n#include \"skipped.zyl\"\n#endif\n#include \"a.zyl\"\nend\n");
    dir.write("a.zyl", "#ifndef A\n#define A\n#include \"b.zyl\"\n#endif\n");
    dir.write("b.zyl", "b\n");
    Reading r(dir.path(), "main.zyl");
    EXPECT_EQ(r.pp().includedFiles().size(), 0u);
    Tokens t = readTokens(r);
    ASSERT_FALSE(t.report.raised) << t.report.message;
    EXPECT_EQ(t.joined(), "b end");
    std::vector<std::string> opened;
    for (unsigned i = 0; i < r.pp().includedFiles().size(); i++)
        opened.push_back(r.pp().includedFiles()[i].c_str());
    EXPECT_EQ(opened, (std::vector<std::string>{dir.file("a.zyl"), dir.file("b.zyl"), dir.file("a.zyl")}));
}

// A missing include file is not recorded.
TEST(PreProcessorIncludes, RecordsNoFileThatDidNotOpen) {
    TempDir dir;
    dir.write("main.zyl", "#include \"a.zyl\"\n#include \"nope.zyl\"\n");
    dir.write("a.zyl", "a\n");
    Reading r(dir.path(), "main.zyl");
    Tokens t = readTokens(r);
    ASSERT_TRUE(t.report.raised);
    ASSERT_EQ(r.pp().includedFiles().size(), 1u);
    EXPECT_EQ(r.pp().includedFiles()[0], dir.file("a.zyl").c_str());
}

// A chain main -> f1 -> f2 -> ... : an #include is refused once more than
// 100 files are below the current one. f101 is the last file that opens.
TEST(PreProcessorIncludes, NestingLimit) {
    for (int last : {101, 102}) {
        TempDir dir;
        dir.write("main.zyl", "#include \"f1.zyl\"\nlevel0\n");
        for (int i = 1; i <= last; i++) {
            std::string text = "level" + std::to_string(i) + "\n";
            if (i < last)
                text += "#include \"f" + std::to_string(i + 1) + ".zyl\"\n";
            dir.write("f" + std::to_string(i) + ".zyl", text);
        }
        Reading r(dir.path(), "main.zyl");
        Tokens t = readTokens(r);
        if (last == 101) {
            EXPECT_FALSE(t.report.raised) << t.report.message;
            ASSERT_EQ(t.list.size(), 102u);
            EXPECT_EQ(t.list[0].text, "level1");
            EXPECT_EQ(t.list[100].text, "level101");
            EXPECT_EQ(t.list[100].file, "f101.zyl");
            EXPECT_EQ(t.list[101].text, "level0");
            EXPECT_EQ(t.list[101].file, "main.zyl");
        } else {
            ASSERT_TRUE(t.report.raised);
            EXPECT_EQ(t.report.message, "recursion in #include");
            EXPECT_EQ(t.report.file, "f101.zyl");
            EXPECT_EQ(t.report.line, 2);
            EXPECT_EQ(t.list.size(), 101u);  // level1 .. level101
        }
    }
}

// Open descriptors of this process; -1 where /proc is not there.
int openFiles() {
    DIR* d = opendir("/proc/self/fd");
    if (d == nullptr)
        return -1;
    int n = 0;
    while (readdir(d) != nullptr)
        n++;
    closedir(d);
    return n;
}

// Destroying the Parser after an error deep in the include stack closes
// every include file, and leaves the caller's file to the caller.
TEST(PreProcessorIncludes, FileIncludingItself) {
    TempDir dir;
    dir.write("main.zyl", "#include \"self.zyl\"\n");
    dir.write("self.zyl", "#include \"self.zyl\"\n");
    int before = openFiles();
    {
        Reading r(dir.path(), "main.zyl");
        Tokens t = readTokens(r);
        EXPECT_TRUE(t.report.raised);
        EXPECT_EQ(t.report.message, "recursion in #include");
        EXPECT_EQ(t.report.file, "self.zyl");
        if (before >= 0) {
            EXPECT_EQ(openFiles(), before + 102);  // main.zyl and 101 times self.zyl
        }
    }
    if (before >= 0) {
        EXPECT_EQ(openFiles(), before);
    }
}

TEST(PreProcessorIncludes, CallerKeepsItsFile) {
    TempDir dir;
    dir.write("main.zyl", "#include \"inc.zyl\"\na\n");
    dir.write("inc.zyl", "b\n");
    FILE* f = std::fopen(dir.file("main.zyl").c_str(), "r");
    ASSERT_NE(f, nullptr);
    int fd = fileno(f);
    {
        ErrReporterMem reporter(nullptr, nullptr);
        Parser parser(f, "main.zyl", &reporter, dir.path().c_str(), "");
        while (!parser.get().empty()) {
        }
    }
    // Still open: the Parser did not close it.
    ASSERT_NE(fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(std::fseek(f, 0, SEEK_SET), 0);
    EXPECT_EQ(std::fgetc(f), '#');
    EXPECT_EQ(std::fclose(f), 0);
}

// The checked-in schemas of tests/schemas/pp.
TEST(PreProcessorIncludes, Fixtures) {
    {
        Reading r(kFixtures, "main.zyl");
        ASSERT_TRUE(r.opened());
        Tokens t = readTokens(r);
        EXPECT_FALSE(t.report.raised) << t.report.message;
        EXPECT_EQ(t.joined(), "struct point { int4 x ; int4 y ; char < 31 > name ; } ; seen");
    }
    {
        Reading r(kFixtures, "opens_if.zyl");
        Tokens t = readTokens(r);
        EXPECT_FALSE(t.report.raised) << t.report.message;
        EXPECT_EQ(t.joined(), "inside after");
    }
    {
        Reading r(kFixtures, "includes_open_comment.zyl");
        Tokens t = readTokens(r);
        EXPECT_EQ(t.joined(), "before first_line");
        EXPECT_EQ(t.report.message, "comment is not closed with */");
        EXPECT_EQ(t.report.file, "open_comment.zyl");
        EXPECT_EQ(t.report.line, 3);
    }
    {
        Reading r(kFixtures, "error_after_include.zyl");
        Tokens t = readTokens(r);
        EXPECT_EQ(t.joined(), "a");
        EXPECT_EQ(t.report.message, "#else without matching #if");
        EXPECT_EQ(t.report.file, "error_after_include.zyl");
        EXPECT_EQ(t.report.line, 3);
    }
}

// ---------------------------------------------------------------------------
// Messages as the batch compile prints them

ProcessResult batchRead(std::string const& dir, std::string const& name) {
    return runInChild([&] {
        FILE* f = std::fopen((dir + "/" + name).c_str(), "r");
        ErrReporter reporter;
        reporter.setDefaultFilename(name.c_str());
        Parser parser(f, name.c_str(), &reporter, dir.c_str(), "");
        while (!parser.get().empty()) {
        }
    });
}

TEST(PreProcessorMessages, BatchLineNamesIncludeFile) {
    ProcessResult r = batchRead(kFixtures, "includes_open_comment.zyl");
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err, "File open_comment.zyl;  line 3: error: comment is not closed with */\n\n");
    EXPECT_EQ(r.out, "Error executing DDL compiler\n");
}

TEST(PreProcessorMessages, BatchLineAfterIncludeNamesIncluder) {
    ProcessResult r = batchRead(kFixtures, "error_after_include.zyl");
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err, "File error_after_include.zyl;  line 3: error: #else without matching #if\n\n");
}

TEST(PreProcessorMessages, BatchReadToTheEnd) {
    ProcessResult r = batchRead(kFixtures, "main.zyl");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
}

// A reporter that returns, so that every path behind a report runs. The
// compiler's own reporters never return from an error; this one must still
// not make the reader crash, loop or leak.
class ReturningReporter : public IErrReporter {
public:
    void setFinalCallback(IFinalCallback*) override {}
    void err(mstring const& msg) override { add(msg, "", "", -1); }
    void err1(mstring const& msg, mstring const& p1, mstring const& file, int line, int) override {
        add(msg, p1, file, line);
    }
    void err2(mstring const& msg, mstring const& p1, mstring const&, mstring const& file, int line, int) override {
        add(msg, p1, file, line);
    }
    void err3(mstring const& msg, mstring const& p1, mstring const&, mstring const&, mstring const& file, int line,
              int) override {
        add(msg, p1, file, line);
    }
    void err4(mstring const& msg, mstring const& p1, mstring const&, mstring const&, mstring const&,
              mstring const& file, int line, int) override {
        add(msg, p1, file, line);
    }
    void err(mstring const& msg, mstring const& file, int line, int) override { add(msg, "", file, line); }
    void warning(mstring const&) override {}
    void warning1(mstring const&, mstring const&) override {}
    void warning(mstring const&, mstring const&, int, int) override {}
    bool wasError() const override { return !messages.empty(); }
    void setDefaultFilename(mstring const&) override {}

    std::vector<std::string> messages;

private:
    void add(mstring const& msg, mstring const& p1, mstring const& file, int line) {
        std::ostringstream s;
        s << file.c_str() << ":" << line << ": " << msg.c_str();
        if (!p1.empty())
            s << " [" << p1.c_str() << "]";
        messages.push_back(s.str());
    }
};

TEST(PreProcessorMessages, ReturningReporterReadsToTheEnd) {
    struct Row {
        char const* main;
        char const* inc;
        char const* first;
    };
    Row const rows[] = {
        {"#else\n#else\n#endif\n#endif\nz\n", "", "main.zyl:1: #else without matching #if"},
        {"#ifdef A\n#else x\n#else\nz\n", "", "main.zyl:2: extra words after #else"},
        {"#define A A\nA A\nz\n", "", "main.zyl:2: recursion in macro"},
        {"\"abc\nz \"q\\\n", "", "main.zyl:1: non-terminated string literal"},
        {"#include \"\"\n#include \"none.zyl\"\nz\n", "", "main.zyl:1: incorrect #include syntax"},
        {"#include \"inc.zyl\"\nz */ y\n", "x /* open\n", "inc.zyl:1: comment is not closed with */"},
        {"#include \"inc.zyl\"\nz\n", "#include \"inc.zyl\"\n", "inc.zyl:1: recursion in #include"},
        {"#ifdef A\n", "", "main.zyl:1: no #endif for #if"},
    };
    for (Row const& row : rows) {
        TempDir dir;
        dir.write("main.zyl", row.main);
        dir.write("inc.zyl", row.inc);
        FILE* f = std::fopen(dir.file("main.zyl").c_str(), "r");
        ASSERT_NE(f, nullptr);
        ReturningReporter reporter;
        {
            Parser parser(f, "main.zyl", &reporter, dir.path().c_str(), "");
            int guard = 0;
            while (!parser.get().empty() && guard < 10000)
                guard++;
            EXPECT_LT(guard, 10000) << row.main;
            EXPECT_TRUE(parser.pp().isEnd());
        }
        std::fclose(f);
        ASSERT_FALSE(reporter.messages.empty()) << row.main;
        EXPECT_EQ(reporter.messages[0], row.first);
    }
}

// ---------------------------------------------------------------------------
// No temporary files

// A large schema with macros, comments and conditions is read without a
// single file being made in the temporary directory.
TEST(PreProcessorTempFiles, HundredThousandLinesMakeNoFile) {
    TempDir dir;
    TempDir temp;
    int const lines = 100000;
    std::string text = "#define T int4\n#define N 16\n/* a schema\n   of many lines */\n";
    for (int i = 5; i <= lines; i++) {
        switch ((i - 5) % 4) {
        case 0:
            text += "#ifdef T\n";
            break;
        case 1:
            text += "    T f" + std::to_string(i) + "; /* field */\n";  // int4 f ;
            break;
        case 2:
            text += "    char<N> s" + std::to_string(i) + "[0X1f]; // text\n";  // char < 16 > s [ 0x1f ] ;
            break;
        default:
            text += "#endif\n";
            break;
        }
    }
    dir.write("big.zyl", text);
    Reading r(dir.path(), "big.zyl", temp.path());
    Tokens t = readTokens(r);
    ASSERT_FALSE(t.report.raised) << t.report.message << " at line " << t.report.line;
    ASSERT_EQ(t.list.size(), 24999u * 12u);
    EXPECT_EQ(t.list[3].text, "char");
    EXPECT_EQ(t.list[9].text, "0x1f");
    EXPECT_EQ(t.list.back().line, lines - 1);
    EXPECT_EQ(r.pp().lineNo(), lines);
    EXPECT_TRUE(temp.list().empty());
    EXPECT_EQ(dir.list(), std::vector<std::string>{"big.zyl"});
}

}  // namespace
