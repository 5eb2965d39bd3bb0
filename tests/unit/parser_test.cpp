// The token reader: how lines are cut into tokens, and the readers of
// names, numbers and quoted texts with their messages and positions.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
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

template <class F>
Report attempt(F const& body) {
    Report r;
    try {
        body();
    } catch (CompilerError const& e) {
        r.raised = true;
        r.message = e.m_msg.c_str();
        r.file = e.m_file.c_str();
        r.line = e.m_line;
        r.pos = e.m_pos;
    }
    return r;
}

// A schema text in a file of its own, read through a Parser with the
// run-time reporter, which throws at the first error. The file is closed
// here once the Parser is gone, as the compile driver does it.
class Schema {
public:
    explicit Schema(std::string const& text) : m_reporter(nullptr, nullptr) {
        m_dir.write("main.zyl", text);
        open(m_dir.path(), "main.zyl");
    }
    Schema(std::string const& dir, std::string const& name) : m_reporter(nullptr, nullptr) { open(dir, name); }
    ~Schema() {
        m_parser.reset();
        if (m_file)
            std::fclose(m_file);
    }
    Parser& parser() { return *m_parser; }

    // Every token up to the end of the input, blank-separated.
    std::string rest() {
        std::string s;
        for (mstring t = m_parser->get(); !t.empty(); t = m_parser->get())
            s += (s.empty() ? "" : " ") + std::string(t.c_str());
        return s;
    }

private:
    void open(std::string const& dir, std::string const& name) {
        m_file = std::fopen((dir + "/" + name).c_str(), "r");
        m_parser.reset(new Parser(m_file, name.c_str(), &m_reporter, dir.c_str(), ""));
    }

    TempDir m_dir;
    FILE* m_file = nullptr;
    ErrReporterMem m_reporter;
    std::unique_ptr<Parser> m_parser;
};

// ---------------------------------------------------------------------------
// get

struct TokenRow {
    char const* text;
    char const* tokens;
};

void PrintTo(TokenRow const& r, std::ostream* os) { *os << '"' << r.text << '"'; }

class ParserTokens : public ::testing::TestWithParam<TokenRow> {};

TEST_P(ParserTokens, Cut) {
    Schema s(GetParam().text);
    std::string tokens;
    Report r = attempt([&] { tokens = s.rest(); });
    EXPECT_FALSE(r.raised) << r.message;
    EXPECT_EQ(tokens, GetParam().tokens);
}

INSTANTIATE_TEST_SUITE_P(Table, ParserTokens,
                         ::testing::Values(TokenRow{"abc;", "abc ;"}, TokenRow{"a_1", "a_1"}, TokenRow{"1a", "1 a"},
                                           TokenRow{"_x9_y", "_x9_y"}, TokenRow{"0x", "0x"},
                                           TokenRow{"0x1G", "0x1 G"}, TokenRow{"0xABcd", "0xABcd"},
                                           TokenRow{"{}<>;,()[]:*.=", "{ } < > ; , ( ) [ ] : * . ="},
                                           TokenRow{"-5", "-5"}, TokenRow{"- 5", "- 5"}, TokenRow{"x-1", "x -1"},
                                           // A number may hold any number of points.
                                           TokenRow{"1.2.3", "1.2.3"}, TokenRow{"0.5", "0.5"},
                                           TokenRow{"1e5", "1 e5"}, TokenRow{"a.b", "a . b"},
                                           TokenRow{"017", "017"}, TokenRow{"09", "09"},
                                           // An unknown character standing alone passes as a token.
                                           TokenRow{"a @ b", "a @ b"}, TokenRow{"a @", "a @"},
                                           TokenRow{"a\n\n   b\n\t c", "a b c"}, TokenRow{"", ""},
                                           TokenRow{"\n\n", ""}));

struct ErrorRow {
    char const* text;
    char const* before;  // tokens read before the error
    char const* message;
    int pos;
};

void PrintTo(ErrorRow const& r, std::ostream* os) { *os << '"' << r.text << '"'; }

class ParserUnknownSymbol : public ::testing::TestWithParam<ErrorRow> {};

// The message names the character behind the unknown one, at its position
// in the preprocessed line.
TEST_P(ParserUnknownSymbol, Reported) {
    ErrorRow const& row = GetParam();
    Schema s(row.text);
    std::string before;
    Report r = attempt([&] {
        for (mstring t = s.parser().get(); !t.empty(); t = s.parser().get())
            before += (before.empty() ? "" : " ") + std::string(t.c_str());
    });
    ASSERT_TRUE(r.raised);
    EXPECT_EQ(before, row.before);
    EXPECT_EQ(r.message, row.message);
    EXPECT_EQ(r.file, "main.zyl");
    EXPECT_EQ(r.line, 1);
    EXPECT_EQ(r.pos, row.pos);
}

INSTANTIATE_TEST_SUITE_P(Table, ParserUnknownSymbol,
                         ::testing::Values(ErrorRow{"@;", "", "Unrecognized Symbol \";\"", 1},
                                           ErrorRow{"ab @1", "ab", "Unrecognized Symbol \"1\"", 6},
                                           // Strings are for getQuotedString only.
                                           ErrorRow{"\"s\"", "", "Unrecognized Symbol \"s\"", 1},
                                           ErrorRow{"x ?(", "x", "Unrecognized Symbol \"(\"", 5}));

TEST(ParserTokens, LinesAndFilesOfTokens) {
    Schema s(kFixtures, "main.zyl");
    mstring t;
    while ((t = s.parser().get()) != "char") {
        ASSERT_FALSE(t.empty());
    }
    EXPECT_EQ(std::string(s.parser().pp().fileName().c_str()), "main.zyl");
    EXPECT_EQ(s.parser().pp().lineNo(), 5);
}

// An error thrown out of get() leaves the reader usable, at the character
// it stopped at.
TEST(ParserTokens, ReadingGoesOnAfterAnError) {
    Schema s("@; a b\nc\n");
    Report r = attempt([&] { s.parser().get(); });
    EXPECT_TRUE(r.raised);
    EXPECT_EQ(s.rest(), "; a b c");
}

// ---------------------------------------------------------------------------
// takeBack and match

TEST(ParserTakeBack, LastPutBackComesFirst) {
    Schema s("c d");
    EXPECT_EQ(s.parser().get(), "c");
    s.parser().takeBack("a");
    s.parser().takeBack("b");
    EXPECT_EQ(s.parser().get(), "b");
    EXPECT_EQ(s.parser().get(), "a");
    EXPECT_EQ(s.parser().get(), "d");
    EXPECT_EQ(s.parser().get(), "");
    // Even at the end of the input.
    s.parser().takeBack("z");
    EXPECT_EQ(s.parser().get(), "z");
    EXPECT_EQ(s.parser().get(), "");
}

TEST(ParserTakeBack, NoLimit) {
    Schema s("end");
    for (int i = 0; i < 1000; i++)
        s.parser().takeBack(std::to_string(i).c_str());
    for (int i = 999; i >= 0; i--)
        ASSERT_EQ(s.parser().get(), std::to_string(i).c_str());
    EXPECT_EQ(s.parser().get(), "end");
}

TEST(ParserMatch, MatchesAndReports) {
    Schema s("a ;\ny");
    EXPECT_TRUE(s.parser().match("a"));
    EXPECT_TRUE(s.parser().match(";"));
    Report r = attempt([&] { s.parser().match("x"); });
    ASSERT_TRUE(r.raised);
    EXPECT_EQ(r.message, "expected \"x\"");
    EXPECT_EQ(r.line, 2);
    EXPECT_EQ(r.pos, 2);  // behind the y of " y "
}

// ---------------------------------------------------------------------------
// getName

struct NameRow {
    char const* text;
    char const* name;     // when it is accepted
    char const* message;  // when it is not
};

void PrintTo(NameRow const& r, std::ostream* os) { *os << '"' << r.text << '"'; }

class ParserGetName : public ::testing::TestWithParam<NameRow> {};

TEST_P(ParserGetName, Read) {
    NameRow const& row = GetParam();
    Schema s(row.text);
    mstring name;
    Report r = attempt([&] { name = s.parser().getName(); });
    if (row.message == nullptr) {
        EXPECT_FALSE(r.raised) << r.message;
        EXPECT_EQ(std::string(name.c_str()), row.name);
    } else {
        ASSERT_TRUE(r.raised);
        EXPECT_EQ(r.message, row.message);
        EXPECT_EQ(r.file, "main.zyl");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, ParserGetName,
    ::testing::Values(NameRow{"_name", "_name", nullptr}, NameRow{"a1_b2", "a1_b2", nullptr},
                      NameRow{"x;", "x", nullptr},
                      NameRow{"name_", nullptr, "identifiers cannot end with the underscore"},
                      NameRow{"_", nullptr, "identifiers cannot end with the underscore"},
                      NameRow{"1x", nullptr, "identifier expected, found \"1\""},
                      NameRow{"(", nullptr, "identifier expected, found \"(\""},
                      // With its only parameter empty the message keeps its "#1".
                      NameRow{"", nullptr, "identifier expected, found \"#1\""}));

// Only a token that was put back can hold other characters.
TEST(ParserGetName, PutBackTokenIsCheckedWhole) {
    Schema s("");
    s.parser().takeBack("a-b");
    Report r = attempt([&] { s.parser().getName(); });
    EXPECT_EQ(r.message, "identifier expected, found \"a-b\"");
}

TEST(ParserGetName, PositionIsBehindTheToken) {
    Schema s("x  name_ y");
    s.parser().get();
    Report r = attempt([&] { s.parser().getName(); });
    // The preprocessed line is " x    name_   y ": the token ends at 11.
    EXPECT_EQ(r.pos, 11);
}

// ---------------------------------------------------------------------------
// Numbers

struct NumRow {
    char const* text;
    long long value;      // when it is accepted
    char const* message;  // when it is not
    char const* next;     // the token read after it
};

void PrintTo(NumRow const& r, std::ostream* os) { *os << '"' << r.text << '"'; }

class ParserGetNum : public ::testing::TestWithParam<NumRow> {};

TEST_P(ParserGetNum, Read) {
    NumRow const& row = GetParam();
    Schema s(row.text);
    unsigned value = 12345;
    Report r = attempt([&] { value = s.parser().getNum(); });
    if (row.message == nullptr) {
        EXPECT_FALSE(r.raised) << r.message;
        EXPECT_EQ(value, static_cast<unsigned>(row.value));
        EXPECT_EQ(s.parser().get(), row.next);
    } else {
        ASSERT_TRUE(r.raised);
        EXPECT_EQ(r.message, row.message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, ParserGetNum,
    ::testing::Values(NumRow{"0x", 0, nullptr, ""}, NumRow{"0x1f", 31, nullptr, ""},
                      NumRow{"0X1F", 31, nullptr, ""}, NumRow{"0x1G", 1, nullptr, "G"},
                      NumRow{"017;", 15, nullptr, ";"}, NumRow{"0", 0, nullptr, ""}, NumRow{"42", 42, nullptr, ""},
                      NumRow{"4294967295", 4294967295LL, nullptr, ""},
                      NumRow{"09", 0, "not an octal number: 09", ""},
                      NumRow{"0.5", 0, "not an octal number: 0.5", ""},
                      NumRow{"-5", 0, "positive number expected, found -5", ""},
                      NumRow{"abc", 0, "positive number expected, found abc", ""},
                      NumRow{"1.5", 0, "positive number expected, found 1.5", ""},
                      NumRow{"", 0, "positive number expected, found #1", ""}));

TEST(ParserGetNum, HexFailureNeedsAPutBackToken) {
    // get() never cuts such a token; a put-back one can be anything.
    Schema s("");
    s.parser().takeBack("0xZZ");
    Report r = attempt([&] { s.parser().getNum(); });
    EXPECT_EQ(r.message, "not a hex number: \"0xZZ\"");
}

TEST(ParserGetNum, MessageNamesFileLineAndPosition) {
    Schema s(kFixtures, "includes_bad_octal.zyl");
    EXPECT_EQ(s.parser().get(), "ok");
    EXPECT_EQ(s.parser().getNum(), 1u);
    EXPECT_EQ(s.parser().get(), "value");
    Report r = attempt([&] { s.parser().getNum(); });
    EXPECT_EQ(r.message, "not an octal number: 09");
    EXPECT_EQ(r.file, "bad_octal.zyl");
    EXPECT_EQ(r.line, 2);
    EXPECT_EQ(r.pos, 10);  // " value  09": the token ends at 10
}

TEST(ParserGetNum, BatchMessageLine) {
    ProcessResult r = runInChild([] {
        FILE* f = std::fopen((kFixtures + "/includes_bad_octal.zyl").c_str(), "r");
        ErrReporter reporter;
        Parser parser(f, "includes_bad_octal.zyl", &reporter, kFixtures.c_str(), "");
        parser.get();
        parser.getNum();
        parser.get();
        parser.getNum();
    });
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err, "File bad_octal.zyl;  line 2, position 11: error: not an octal number: 09\n\n");
}

TEST(ParserGetNumEx, OptionalGivesTheTokenBack) {
    Schema s("abc -5 7 x");
    EXPECT_EQ(s.parser().getNumEx(true), 0u);
    EXPECT_EQ(s.parser().get(), "abc");
    // The value is strtol's, so that callers can see "0 or less".
    EXPECT_EQ(static_cast<int>(s.parser().getNumEx(true)), -5);
    EXPECT_EQ(s.parser().get(), "-5");
    EXPECT_EQ(s.parser().getNumEx(true), 7u);
    EXPECT_EQ(s.parser().get(), "x");
    EXPECT_EQ(s.parser().getNumEx(true), 0u);  // the end of the input
    EXPECT_EQ(s.parser().get(), "");
}

TEST(ParserGetNumEx, OptionalStillRefusesBadOctal) {
    Schema s("09");
    Report r = attempt([&] { s.parser().getNumEx(true); });
    EXPECT_EQ(r.message, "not an octal number: 09");
}

struct SignedRow {
    char const* text;
    int value;
    char const* message;
};

void PrintTo(SignedRow const& r, std::ostream* os) { *os << '"' << r.text << '"'; }

class ParserGetSigned : public ::testing::TestWithParam<SignedRow> {};

TEST_P(ParserGetSigned, Read) {
    SignedRow const& row = GetParam();
    Schema s(row.text);
    int value = 12345;
    Report r = attempt([&] { value = s.parser().getSigned(); });
    if (row.message == nullptr) {
        EXPECT_FALSE(r.raised) << r.message;
        EXPECT_EQ(value, row.value);
    } else {
        ASSERT_TRUE(r.raised);
        EXPECT_EQ(r.message, row.message);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ParserGetSigned,
                         ::testing::Values(SignedRow{"-12", -12, nullptr}, SignedRow{"7", 7, nullptr},
                                           SignedRow{"-0", 0, nullptr}, SignedRow{"0x10", 16, nullptr},
                                           SignedRow{"010", 8, nullptr},
                                           // Cut to 32 bits.
                                           SignedRow{"4294967297", 1, nullptr},
                                           SignedRow{"-", 0, "number expected, found -"},
                                           SignedRow{"x", 0, "number expected, found x"},
                                           SignedRow{"1.5", 0, "number expected, found 1.5"},
                                           SignedRow{"09", 0, "not an octal number: 09"}));

// ---------------------------------------------------------------------------
// getQuotedString

TEST(ParserGetQuotedString, KeepsQuotesAndBackslashes) {
    Schema s("  \"a \\\"b\\\" \\\\ c\" rest");
    EXPECT_EQ(std::string(s.parser().getQuotedString().c_str()), "\"a \\\"b\\\" \\\\ c\"");
    EXPECT_EQ(s.parser().get(), "rest");
}

TEST(ParserGetQuotedString, ReadsLinesAsNeeded) {
    Schema s("\n\n   \"x y\";\n");
    EXPECT_EQ(std::string(s.parser().getQuotedString().c_str()), "\"x y\"");
    EXPECT_EQ(s.parser().get(), ";");
    EXPECT_EQ(s.parser().get(), "");
}

TEST(ParserGetQuotedString, EmptyAtTheEndOfInput) {
    Schema s("\n");
    mstring q;
    Report r = attempt([&] { q = s.parser().getQuotedString(); });
    EXPECT_FALSE(r.raised);
    EXPECT_TRUE(q.empty());
}

TEST(ParserGetQuotedString, OpeningQuoteExpected) {
    Schema s("x");
    Report r = attempt([&] { s.parser().getQuotedString(); });
    EXPECT_EQ(r.message, "opening double quote is expected");
    EXPECT_EQ(r.pos, 1);  // " x ": at the x
}

// A macro value knows no strings, so it can carry an open quote past the
// preprocessor's own check.
TEST(ParserGetQuotedString, ClosingQuoteExpected) {
    Schema s("#define Q \"abc\nQ\n");
    Report r = attempt([&] { s.parser().getQuotedString(); });
    EXPECT_EQ(r.message, "closing double quote is expected");
    EXPECT_EQ(r.line, 2);
    EXPECT_EQ(r.pos, 8);  // the end of ` " abc  `
}

// ---------------------------------------------------------------------------
// canAppend

struct AppendRow {
    char const* token;
    char c;
    bool expected;
};

void PrintTo(AppendRow const& r, std::ostream* os) { *os << '"' << r.token << "\" + '" << r.c << "'"; }

class ParserCanAppend : public ::testing::TestWithParam<AppendRow> {};

TEST_P(ParserCanAppend, Rule) {
    AppendRow const& row = GetParam();
    Schema s("");
    EXPECT_EQ(s.parser().canAppend(row.token, row.c), row.expected) << row.token << " + " << row.c;
}

INSTANTIATE_TEST_SUITE_P(
    Table, ParserCanAppend,
    ::testing::Values(AppendRow{"a", '_', true}, AppendRow{"a", '9', true}, AppendRow{"_", 'x', true},
                      AppendRow{"a", '.', false}, AppendRow{"a", '-', false}, AppendRow{"0", 'x', true},
                      AppendRow{"0", 'X', true}, AppendRow{"0", '7', true}, AppendRow{"0", '9', true},
                      AppendRow{"0", '.', true}, AppendRow{"0", 'a', false}, AppendRow{"0x", 'f', true},
                      AppendRow{"0X", 'A', true}, AppendRow{"0x", 'G', false}, AppendRow{"0x1", '.', false},
                      AppendRow{"0x1", 'x', false}, AppendRow{"07", '8', true}, AppendRow{"07", 'x', false},
                      AppendRow{"5", '.', true}, AppendRow{"5", 'x', false}, AppendRow{"-", '5', true},
                      AppendRow{"-", '.', true}, AppendRow{"-", '-', false}, AppendRow{"{", '{', false},
                      AppendRow{"=", '=', false}, AppendRow{".", '5', false}, AppendRow{"*", '/', false}));

TEST(ParserCanAppend, UnknownFirstCharacterIsReported) {
    Schema s("");
    Report r = attempt([&] { s.parser().canAppend("@", 'x'); });
    EXPECT_EQ(r.message, "Unrecognized Symbol \"x\"");
}

}  // namespace
