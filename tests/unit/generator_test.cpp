// The generator's own pieces: symbolic sizes (FSize), the names the
// sections share, and the dictionary entries of laid-out fields (type codes,
// and the key texts of the generated search functions). The layout pass
// itself is checked on real schemas by the dictionary walks (Dictionary.* in
// tests/e2e/dictionary_test.cpp).
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/strdict.h"
#include "zyldict.h"
#include "support/parsed.h"

namespace {

std::string str(FSize const& v) { return static_cast<mstring const&>(v).c_str(); }
FSize sz(int num, char const* expr = "") { return FSize(num, mstring(expr)); }

// A generator with the switches that name things.
std::unique_ptr<GenOutput> generator(Schema& s, bool outOfLine, bool usePrefix, bool dllSpec,
                                     IErrReporter* err = nullptr, std::string const& dir = "") {
    return std::unique_ptr<GenOutput>(new GenOutput(s, outOfLine, false, false, false, false, false, false, err,
                                                    dir.c_str(), "", "", false, false, false, false, false, 8, 0,
                                                    usePrefix, false, dllSpec));
}

// A schema run through the grammar, the finishing passes and layout.
struct Laid : AnalyzedText {
    explicit Laid(std::string const& text) : AnalyzedText(text, false, false, "t") {
        if (!error.empty())
            throw std::runtime_error(error);
        gen = generator(schema(), true, false, false, &in->reporter, dir.path());
        gen->layout();
        gen->calculateFormating();
    }
    Field& field(char const* c, char const* f) { return *cls(c).findField(f); }

    std::unique_ptr<GenOutput> gen;
};

char const* const kTypes = R"(
enum E2 { A2 = -1, B2 };
enum E4 { A4 = 70000 };
class K {
    signed<1> i1; signed<8> i8; float f; date dt; time tm; datetime dtm; autoid_t ai; boolean bits[12];
    nchar<3> nc; binary<4> bn; nstring ns; varbinary vb; E2 e2; E4 e4;
    sequence<unsigned<1>> q1; sequence<char<4>> qc; sequence<datetime> qdt;
    numeric<6> n6; decimal<9,3> d9;
    autoid[10];
};
)";

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
    EXPECT_EQ(6, r.m_saved);
    EXPECT_EQ("alignsz(x,1)", str(GenOutput::alignInt(sz(0, "x"), sz(0, "1"))));
    EXPECT_EQ("8", str(GenOutput::alignInt(sz(6), sz(4, "y"))));  // a text alignment never wraps a number
}

// A name that starts with the database name and an underscore, or with a
// longer word, keeps it; the export mark goes before a padded name.
TEST(GenFrame, PrefixedAndExportedNames) {
    Schema schema;
    schema.m_dbName = "shop";
    auto const plain = generator(schema, false, false, false), prefixed = generator(schema, false, true, true);
    char const* const names[][2] = {{"item", "shop_item"}, {"shop", "shop_shop"},         {"shopping", "shopping"},
                                    {"sho", "shop_sho"},   {"shop_item", "shop_item"}, {"Shopping", "shop_Shopping"}};
    for (auto const& n : names) {
        EXPECT_EQ(plain->nameWithPrefix(n[0]), n[0]);
        EXPECT_EQ(prefixed->nameWithPrefix(n[0]), n[1]);
    }
    EXPECT_EQ(plain->MF("shop_f", 8), "shop_f  ");
    EXPECT_EQ(prefixed->MF("shop_f", 0), "ZYL_DLL_SPEC shop_f");
    EXPECT_EQ(prefixed->MF("shop_f", 21), "ZYL_DLL_SPEC shop_f  ");
}

// The transaction, operation, handle and cursor parameters of a function
// step aside for key parameters of the same names.
TEST(GenFrame, FixedParameterNamesAvoidKeyNames) {
    struct { std::vector<char const*> keys; char const* chosen; } const cases[] = {
        {{}, "t oper handle c"},
        {{"t", "oper", "handle", "c", "hdl"}, "t_ op hdl_ c_"},
        {{"c", "c_", "csr", "csr_", "csr_0"}, "t oper handle csr_1"},
        {{"t", "t_", "tr", "trn", "trn_"}, "trn_0 oper handle c"},
    };
    for (auto const& c : cases) {
        StrParams p;
        for (char const* k : c.keys)
            p.v_names.push_back(k);
        p.setup();
        EXPECT_EQ(std::string(p.m_trans.c_str()) + " " + p.m_oper.c_str() + " " + p.m_handle.c_str() + " " +
                      p.m_cursor.c_str(),
                  c.chosen);
    }
}

TEST(DictionaryEntries, TypeCodesSizesAndTexts) {
    Laid m(kTypes);
    struct { char const* field; std::string expected; } const cases[] = {  // code size text count / init type
        {"i1", "4 1 i1 0 / 1"},     {"f", "10 4 flt 0 / 2"},      {"dt", "16 4 u4 0 / 1"},
        {"tm", "17 4 u4 0 / 1"},    {"dtm", "24 8 u8 0 / 1"},     {"ai", "13 8 i8 0 / 1"},
        {"bits", "23 1 ptr 12 / 3"}, {"nc", "19 6  0 / 0"},       {"bn", "25 4  0 / 0"},
        {"ns", "20 0  0 / 0"},      {"vb", "26 0  0 / 0"},
        // Enums of two and four bytes count as signed.
        {"e2", "5 2 i2 0 / 1"},     {"e4", "6 4 i4 0 / 1"},
        // The first and last codes of sequences, and the one of characters.
        {"q1", "30 4  0 / 0"},      {"qc", "40 4  0 / 0"},       {"qdt", "41 4  0 / 0"},
    };
    for (auto const& c : cases) {
        Field const& f = m.field("K", c.field);
        Field::DictInfo d = f.dict_info(true);
        EXPECT_EQ(std::to_string(d.m_typeCode) + " " + str(d.m_size) + " " + d.m_typeText.c_str() + " " +
                      std::to_string(d.m_count) + " / " + std::to_string(f.getInitializerType()),
                  c.expected)
            << c.field;
    }
    // Precision 0 is still a numeric field, not the integer it is stored in.
    for (auto const& [field, numeric] : {std::pair{"i8", false}, {"n6", true}, {"d9", true}})
        EXPECT_EQ((ClassDictCreator::GetFieldFlags(m.field("K", field)) & ZYL_FIELD_NUMERIC) != 0, numeric) << field;
}

TEST(DictionaryEntries, KeyTextsOfSearchFunctions) {
    Laid m("declare oid Id[10];\nstruct Id { signed<4> n; };\nstruct S { signed<2> y; };\n" +
           std::string("class K { oid; signed<4> n; boolean b[8]; char<5> c; string s; nstring ns; ref r; S st;\n"
                       "  double d; autoid[5]; tree<n, c, s, ns, r, st.y, d, autoid> t; patricia<b> p; };\n"));
    // The keys in order of their numbers: the bit key comes from the patricia index.
    mvector<Index::Segment> keys = m.cls("K").v_index[1].v_segment;
    ASSERT_EQ(keys.size(), 8u);
    keys.insert(1, m.cls("K").v_index[2].v_segment[0]);
    std::string const expected[] = {
        "int4 n_key_0|int4 *n_key_0|n_key_0|pa_->field_type = 6; pa_->v.i4 = n_key_0; ",
        "const char *b_key_1, uint2 number_of_bits|char *b_key_1, uint2 number_of_bits|b_key_1, number_of_bits|"
        "pa_->field_type = 23; pa_->ptr = b_key_1; pa_->v.ptr_size = number_of_bits; ",
        "const char *c_key_2, uint2 sizeof_c_key_2|char *c_key_2, uint2 sizeof_c_key_2|c_key_2, sizeof_c_key_2|"
        "pa_->field_type = 7; pa_->v.ptr_size = sizeof_c_key_2; pa_->ptr = c_key_2; ",
        "const char *s_key_3, uint2 sizeof_s_key_3|char *s_key_3, uint2 sizeof_s_key_3|s_key_3, sizeof_s_key_3|"
        "pa_->field_type = 8; pa_->v.ptr_size = sizeof_s_key_3; pa_->ptr = s_key_3; ",
        "const nchar_t *ns_key_4, uint2 sizeof_ns_key_4|nchar_t *ns_key_4, uint2 sizeof_ns_key_4|"
        "ns_key_4, sizeof_ns_key_4|pa_->field_type = 20; pa_->v.ptr_size = sizeof_ns_key_4; "
        "pa_->ptr = (const char*)ns_key_4; ",
        "const t_oid *r_key_5|t_oid *r_key_5|r_key_5|pa_->field_type = 9; pa_->v.ptr_size = sizeof(*r_key_5); "
        "pa_->ptr = (const char*)r_key_5; ",
        "int2 st_y_key_6|int2 *st_y_key_6|st_y_key_6|pa_->field_type = 5; pa_->v.i2 = st_y_key_6; ",
        "double d_key_7|double *d_key_7|d_key_7|pa_->field_type = 11; pa_->v.dbl = d_key_7; ",
        "autoid_t autoid_key_8|autoid_t *autoid_key_8|autoid_key_8|pa_->field_type = 14; "
        "pa_->v.i8 = autoid_key_8; ",
    };
    mvector<mstring> names;
    for (int k = 0; k < 9; k++) {
        mstring in, out, args, fill;
        keys[k].paramStrings(k, &m.schema(), names, in, out, args, fill);
        EXPECT_EQ(std::string(in.c_str()) + "|" + out.c_str() + "|" + args.c_str() + "|" + fill.c_str(),
                  expected[k]);
    }
    std::string all;
    for (unsigned i = 0; i < names.size(); i++)
        all += std::string(names[i].c_str()) + " ";
    EXPECT_EQ(all, "n_key_0 b_key_1 c_key_2 sizeof_c_key_2 s_key_3 sizeof_s_key_3 ns_key_4 sizeof_ns_key_4 "
                   "r_key_5 st_y_key_6 d_key_7 autoid_key_8 ");
}

