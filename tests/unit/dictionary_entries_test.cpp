// Dictionary entries on laid-out models: type codes and the key texts of
// the generated search functions.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/strdict.h"
#include "zyldict.h"
#include "support/parsed.h"

namespace {

// A schema run through the grammar, the finishing passes and layout.
struct Laid : AnalyzedText {
    explicit Laid(std::string const& text) : AnalyzedText(text, false, false, "t") {
        if (!error.empty())
            throw std::runtime_error(error);
        gen.reset(new GenOutput(schema(), true, false, false, false, false, false, false, &in->reporter,
                                dir.path().c_str(), "", "", false, false, false, false, false, 8, 0, false, false,
                                false));
        gen->layout();
        gen->calculateFormating();
    }
    Field& field(char const* c, char const* f) { return *cls(c).findField(f); }

    std::unique_ptr<GenOutput> gen;
};

std::string str(FSize const& v) { return static_cast<mstring const&>(v).c_str(); }

char const* const kTypes = R"(
enum E2 { A2 = -1, B2 };
enum E4 { A4 = 70000 };
class K {
    signed<1> i1; signed<8> i8; float f; date dt; time tm; datetime dtm; autoid_t ai; boolean bits[12];
    nchar<3> nc; binary<4> bn; nstring ns; varbinary vb; blob bl; E2 e2; E4 e4;
    sequence<unsigned<1>> q1; sequence<char<4>> qc; sequence<datetime> qdt;
    numeric<6> n6; decimal<9,3> d9;
    autoid[10];
};
)";

}  // namespace

TEST(DictionaryEntries, TypeCodesSizesAndTexts) {
    Laid m(kTypes);
    struct { char const* field; std::string expected; } const cases[] = {  // code size text count / init type
        {"i1", "4 1 i1 0 / 1"},     {"i8", "13 8 i8 0 / 1"},     {"f", "10 4 flt 0 / 2"},
        {"dt", "16 4 u4 0 / 1"},    {"tm", "17 4 u4 0 / 1"},     {"dtm", "24 8 u8 0 / 1"},
        {"ai", "13 8 i8 0 / 1"},    {"bits", "23 1 ptr 12 / 3"}, {"nc", "19 6  0 / 0"},
        {"bn", "25 4  0 / 0"},      {"ns", "20 0  0 / 0"},       {"vb", "26 0  0 / 0"},
        {"bl", "51 0  0 / 0"},
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

