// Symbolic sizes (FSize): how they render, add up and round. The layout
// pass itself is checked on real schemas by the dictionary walks
// (Dictionary.* in tests/e2e/dictionary_test.cpp).
#include <gtest/gtest.h>

#include <string>

#include "host/zylcomp/genoutput.h"

namespace {

std::string str(FSize const& v) { return static_cast<mstring const&>(v).c_str(); }
FSize sz(int num, char const* expr = "") { return FSize(num, mstring(expr)); }

}  // namespace

TEST(FSize, RenderingAssignmentEqualityAddition) {
    struct { FSize v; char const* text; } const rows[] = {
        {sz(0), "0"}, {sz(12), "12"}, {sz(12, "x"), "12+x"}, {sz(0, "x"), "x"}, {sz(-4, "x"), "-4+x"}};
    for (auto const& r : rows)
        EXPECT_EQ(r.text, str(r.v));

    FSize v = sz(3, "x");
    v.m_saved = 7;
    v = 5;  // clears the text and the carried number
    EXPECT_EQ(0, v.m_saved);
    EXPECT_EQ("5", str(v));

    FSize b = sz(4, "x");
    b.m_saved = 9;  // equality ignores the carried number
    EXPECT_TRUE(b == sz(4, "x") && b != sz(4, "y") && b != sz(5, "x"));

    struct { FSize a, b; char const* sum; } const sums[] = {
        {sz(4, "x"), sz(2), "6+x"}, {sz(4), sz(0, "y"), "4+y"}, {sz(0, "x"), sz(1, "y"), "1+x+y"}};
    for (auto const& s : sums) {
        FSize a = s.a;
        a.m_saved = 3;
        a += s.b;
        EXPECT_EQ(s.sum, str(a));
        EXPECT_EQ(3, a.m_saved);
    }
}

TEST(FSize, AlignIntRoundsNumbersOnlyToTwoFourEight) {
    struct { int size, align, result; } const rows[] = {
        {0, 8, 0}, {1, 8, 8}, {8, 8, 8}, {9, 4, 12}, {3, 2, 4}, {4, 2, 4}, {5, 1, 5}, {5, 16, 5}, {5, 3, 5}, {-3, 4, -3}};
    for (auto const& r : rows) {
        FSize s(r.size);
        s.m_saved = 9;
        FSize byInt = GenOutput::alignInt(s, r.align);
        EXPECT_EQ(r.result, byInt.m_num) << r.size << "," << r.align;
        EXPECT_TRUE(byInt == GenOutput::alignInt(s, FSize(r.align)));
        bool rounded = r.size > 0 && (r.align == 2 || r.align == 4 || r.align == 8);
        EXPECT_EQ(rounded ? 0 : 9, byInt.m_saved) << r.size << "," << r.align;
    }
    FSize s = sz(4, "structsz(A_d_aligned_to_1)");
    s.m_saved = 6;
    FSize r = GenOutput::alignInt(s, 2);
    EXPECT_EQ("alignsz(4+structsz(A_d_aligned_to_1),2)", str(r));
    EXPECT_EQ(0, r.m_num);
    EXPECT_EQ(6, r.m_saved);
    EXPECT_EQ("alignsz(x,1)", str(GenOutput::alignInt(sz(0, "x"), sz(0, "1"))));
    EXPECT_EQ("8", str(GenOutput::alignInt(sz(6), sz(4, "y"))));  // a text alignment never wraps a number
}
