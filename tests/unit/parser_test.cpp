// The token reader: how lines are cut into tokens, and the readers of
// names, numbers and quoted texts with their messages and positions.
#include <gtest/gtest.h>

#include <string>

#include "support/parsed.h"

namespace {

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
