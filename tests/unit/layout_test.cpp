// Symbolic sizes (FSize), and the layout pass on schemas built by hand, as
// the finishing passes would leave them. Expected placements are worked out
// from the layout rules; a layout prints as "field@offset:size/align ...
// =size/align".
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "foundation/sets.h"
#include "host/zylcomp/genoutput.h"
#include "support/parsed.h"

namespace {

std::string str(FSize const& v) { return static_cast<mstring const&>(v).c_str(); }
FSize sz(int num, char const* expr = "") { return FSize(num, mstring(expr)); }

std::string render(Layout const& l) {
    std::string out;
    for (unsigned i = 0; i < l.v_fld.size(); i++) {
        FldLayout const& f = l.v_fld[i];
        out += f.m_field->m_name.c_str() + ("@" + str(f.m_offset)) + ":" + str(f.m_size) + "/" + str(f.m_align) + " ";
    }
    return out + "=" + str(l.m_size) + "/" + str(l.m_align);
}

using Decls = std::vector<char const*>;

// An analyzer that reads nothing, with its base types and a generator, plus
// types a parsed schema would add: char<5> and
// struct P { signed<2> y; signed<4> x; }.
class Model {
public:
    explicit Model(bool keepFieldOrder = false, bool wideOffsets = false)
        : analyzer(newAnalyzer(nullptr, &hidden, keepFieldOrder, wideOffsets)),
          reporter(nullptr, nullptr),
          gen(schema(), false, keepFieldOrder, false, false, false, false, false, &reporter, "", "", "", false,
              false, false, false, wideOffsets, 8, 0, false, false, false) {
        addType(new Struct("char<5>", TC_CHARS, 5, 5, 1, 1, ""));
        addStruct("P", {"signed<2> y", "signed<4> x"});
    }

    Schema& schema() { return analyzer->schema(); }

    // The sets are keyed by name: everything is named before it enters.
    Struct* addType(Struct* t) {
        schema().m_types->add(HIComparable(t));
        return t;
    }

    Struct* addStruct(char const* name, Decls const& fields) {
        Struct* s = new Struct();
        s->m_name = name;
        s->m_category = TC_STRUCT;
        addFields(addType(s), fields);
        return s;
    }

    Struct* addRef(Struct const& oid) {
        Struct* ref = new Struct(oid);
        ref->m_name = "ref";
        ref->m_category = TC_OID_REF;
        return addType(ref);
    }

    Class* addClass(char const* name, Decls const& fields) {
        Class* c = new Class();
        c->m_name = name;
        c->m_isClass = true;
        schema().m_classes->add(HIComparable(c));
        addFields(c, fields);
        return c;
    }

    // "[optional|vector] {type} {name}[[n]]", resolved as the finishing
    // passes resolve it.
    void addFields(Struct* s, Decls const& fields) {
        for (char const* decl : fields) {
            std::istringstream in(decl);
            std::string type, name;
            Field f;
            in >> type;
            f.m_isOptional = type == "optional";
            f.m_isVector = type == "vector";
            if (f.m_isOptional || f.m_isVector)
                in >> type;
            in >> name;
            f.m_isArray = name.find('[') != std::string::npos;
            f.m_arraySize = f.m_isArray ? std::stoi(name.substr(name.find('[') + 1)) : 0;
            f.m_name = name.substr(0, name.find('[')).c_str();
            f.m_typeName = type.c_str();
            f.m_struct = schema().findType(f.m_typeName);
            ASSERT_NE(nullptr, f.m_struct) << decl;
            f.m_enum = schema().findEnum(f.m_typeName);
            f.m_containerStruct = s;
            f.m_position = static_cast<int>(s->v_field.size());
            s->v_field.push_back(f);
        }
    }

    Struct* find(char const* name) {
        Struct* s = schema().findClass(name);
        return s != nullptr ? s : schema().findType(name);
    }
    std::string compact(char const* name) { return render(find(name)->m_layout.compact); }
    std::string large(char const* name) { return render(find(name)->m_layout.large); }

    mvector<mstring> hidden;
    std::unique_ptr<Analyzer> analyzer;
    ErrReporterMem reporter;
    GenOutput gen;
};

struct ClassCase {
    char const* label;
    bool keepFieldOrder, wideOffsets;
    Decls fields;
    char const *compact, *large;  // large null: as compact
};

void PrintTo(ClassCase const& c, std::ostream* os) { *os << c.label; }

class LayoutOfClass : public ::testing::TestWithParam<ClassCase> {};

}  // namespace

TEST_P(LayoutOfClass, BothFormats) {
    ClassCase const& c = GetParam();
    Model m(c.keepFieldOrder, c.wideOffsets);
    Class* k = m.addClass("C", c.fields);
    m.gen.layout();
    EXPECT_EQ(c.compact, m.compact("C"));
    EXPECT_EQ(c.large ? c.large : c.compact, m.large("C"));
    for (unsigned i = 0; i < k->v_field.size(); i++) {
        EXPECT_EQ(&k->v_field[i], k->v_field[i].m_compactLayout->m_field);
        EXPECT_EQ(&k->v_field[i], k->v_field[i].m_largeLayout->m_field);
    }
}

// Where alignments are equal the order is the heap sort's, and the two
// formats may differ in it.
INSTANTIATE_TEST_SUITE_P(
    Rules, LayoutOfClass,
    ::testing::Values(
        ClassCase{"DynamicFields", false, false, {"string s", "signed<1> x", "double d", "blob bl", "sequence sq"},
                  "sq@0:4/4 d@4:8/4 bl@12:8/4 s@20:2/2 x@22:1/1 =23/4",
                  "s@0:4/4 d@4:8/4 bl@12:8/4 sq@20:4/4 x@24:1/1 =25/4"},
        ClassCase{"DynamicFieldsWide", false, true, {"string s", "signed<1> x", "double d", "blob bl", "sequence sq"},
                  "sq@0:8/8 d@8:8/8 bl@16:12/8 s@28:2/2 x@30:1/1 =31/8",
                  "sq@0:8/8 d@8:8/8 bl@16:12/8 s@28:4/4 x@32:1/1 =33/8"},
        ClassCase{"OptionalAndVector", false, false, {"signed<1> t", "optional signed<4> o", "vector signed<8> v"},
                  "o@0:2/2 v@2:4/2 t@6:1/1 =7/2", "o@0:4/4 v@4:6/4 t@10:1/1 =11/4"},
        ClassCase{"Arrays", false, false,
                  {"signed<4> i[3]", "boolean f[10]", "boolean g[8]", "char<5> n[3]", "string s[2]", "P p[2]"},
                  "i@0:12/4 p@12:16/4 s@28:4/2 g@32:1/1 n@33:15/1 f@48:2/1 =50/4",
                  "p@0:16/4 s@16:8/4 i@24:12/4 g@36:1/1 n@37:15/1 f@52:2/1 =54/4"},
        ClassCase{"NoFields", false, false, {}, "=0/1", nullptr}),
    [](::testing::TestParamInfo<ClassCase> const& info) { return std::string(info.param.label); });

TEST(Layout, OidStructAndClassesThatBeginWithTheOid) {
    Model m;
    Struct* ref = m.addRef(*m.addStruct("Id", {"signed<4> a", "char<5> b"}));
    m.schema().m_oidDeclared = true;
    m.addClass("WithOid", {"signed<1> t", "signed<4> u"})->m_hasOid = true;
    m.addClass("Empty", {})->m_hasOid = true;
    m.addClass("Refers", {"ref r"});
    m.gen.layout();
    EXPECT_EQ(9, m.schema().m_oidSize);
    EXPECT_EQ("=9/1", render(ref->m_layout.large));
    EXPECT_EQ("u@12:4/4 t@16:1/1 =17/4", m.compact("WithOid"));  // the oid takes 10 bytes
    EXPECT_EQ("=10/1", m.large("Empty"));
    EXPECT_EQ("r@0:9/1 =9/1", m.compact("Refers"));

    // Scalars of 2 bytes go to even places, larger ones to multiples of 4.
    struct { Decls fields; char const* result; } const oids[] = {
        {{"signed<1> a", "signed<2> b", "signed<8> c", "char<5> d"}, "17 =17/1"},
        {{"signed<1> a", "unsigned<4> b"}, "8 =8/1"},
        {{"P p"}, "Nested structure in oid"},
        {{"signed<4> a", "string s"}, "Variable-length field in oid"},
    };
    for (auto const& o : oids) {
        Struct oid;
        m.addFields(&oid, o.fields);
        try {
            int size = m.gen.oid_layout(oid);
            EXPECT_EQ(o.result, std::to_string(size) + " " + render(oid.m_layout.compact));
        } catch (CompilerError const& e) {
            EXPECT_EQ(o.result, std::string(e.m_msg.c_str()));
        }
    }
}

TEST(FSize, RenderingAssignmentEqualityAddition) {
    struct { FSize v; char const* text; } const rows[] = {
        {sz(0), "0"}, {sz(12), "12"}, {sz(12, "x"), "12+x"}, {sz(0, "x"), "x"}, {sz(-4, "x"), "-4+x"}};
    for (auto const& r : rows)
        EXPECT_EQ(r.text, str(r.v));

    FSize v = sz(3, "x");
    v.m_saved = 7;
    str(v);
    v = 5;  // clears the text and the carried number, not the scratch
    EXPECT_EQ(mstring("3+x"), v.m_text);
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
