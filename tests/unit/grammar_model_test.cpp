// What the grammar builds in the model: the edges of field forms and enum
// sizes, implicit members, and the updated_bitmap size. Each schema runs through Parser and Analyzer
// with the run-time reporter, which throws.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

// The schema text in s.zyl, read by the grammar alone.
struct Compiled {
    explicit Compiled(std::string const& text, bool keepFieldOrder = false) : reporter(nullptr, nullptr) {
        dir.write("s.zyl", text);
        file = std::fopen(dir.file("s.zyl").c_str(), "r");
        parser.reset(new Parser(file, "s.zyl", &reporter, "", ""));
        analyzer.reset(new Analyzer(parser.get(), keepFieldOrder, false, false, false, false, false, true, 8, 0,
                                    &hidden, nullptr));
        analyzer->initBaseTypes();
        try {
            analyzer->analyze();
        } catch (CompilerError const& e) {
            error = e.m_msg.c_str();
        }
    }
    ~Compiled() {
        analyzer.reset();
        parser.reset();
        std::fclose(file);
    }
    Schema& schema() { return analyzer->schema(); }
    Class& cls(char const* name) { return *schema().findClass(name); }
    Struct& type(char const* name) { return *schema().findType(name); }

    std::string error;
    TempDir dir;
    mvector<mstring> hidden;
    FILE* file = nullptr;
    ErrReporterMem reporter;
    std::unique_ptr<Parser> parser;
    std::unique_ptr<Analyzer> analyzer;
};

std::string str(mstring const& s) { return s.c_str(); }
std::string num(int n) { return std::to_string(n); }

std::string describe(Field const& f) {
    std::string s = str(f.m_typeName) + (f.m_isRect ? " rect" : "") + (f.m_isPoint ? " point" : "") +
                    (f.m_isBitmap ? " bitmap" : "");
    if (f.m_isArray)
        s += " [" + num(f.m_arraySize) + "]";
    if (f.m_precision >= 0)
        s += " p" + num(f.m_precision);
    return s;
}

// Field names in order; the type follows unless it is unsigned<8>, "!"
// marks a hidden field.
std::string fieldList(Struct const& s) {
    std::string out;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        out += (i ? " " : "") + str(f.m_name) + (f.m_typeName == "unsigned<8>" ? "" : ":" + str(f.m_typeName)) +
               (f.m_isHidden ? "!" : "");
    }
    return out;
}

std::string describe(Index const& x) {
    char const* kinds[] = {"tree", "hash", "kdtree", "rtree", "patricia", "trigram", "list"};
    std::string s = str(x.m_name) + " " + kinds[x.m_type] + (x.m_unique ? " unique" : "") +
                    (x.ecount ? " e" + num(x.ecount) : "") + " <";
    for (unsigned k = 0; k < x.v_fieldName.size(); k++)
        s += (k ? ", " : "") + str(x.v_fieldName[static_cast<int>(k)]);
    return s + ">";
}

std::string indexList(Class const& c) {
    std::string out;
    for (unsigned i = 0; i < c.v_index.size(); i++)
        out += (i ? "; " : "") + describe(c.v_index[static_cast<int>(i)]);
    return out;
}

}  // namespace

TEST(GrammarModel, FieldForms) {
    struct {
        char const* decl;
        char const* expected;
    } const cases[] = {
        // The width's edges pick the integer: 2 / 4 / 9 / 10 digits.
        {"numeric<2> a;", "signed<1> p0"},
        {"numeric<4,3> a;", "signed<2> p3"},
        {"numeric<9,3> a;", "signed<4> p3"},
        {"decimal<10> a;", "signed<8> p0"},
        {"decimal<19,19> a;", "signed<8> p19"},
        {"char<10> a;", "char<10>"},
        {"rectangle<signed<4>> a[2];", "signed<4> rect [4]"},
        {"point<double> a[8];", "double point [8]"},
    };
    for (auto const& c : cases) {
        Compiled s(std::string("class C { ") + c.decl + " unsigned<1> z; };");
        ASSERT_EQ(s.error, "") << c.decl;
        EXPECT_EQ(describe(*s.cls("C").findField("a")), c.expected) << c.decl;
    }
}

// The size of an enum follows the signed 16-bit limits.
TEST(GrammarModel, EnumSizes) {
    char const* const cases[][2] = {
        {"enum E { A = 256 };", "A=256 uint2 2/2"},
        {"enum E { A = -32768, B = 32767 };", "A=-32768 B=32767 uint2 2/2"},
        {"enum E { A = 32768 };", "A=32768 uint4 4/4"},
        {"enum E { A = -32769 };", "A=-32769 uint4 4/4"},
    };
    for (auto const& c : cases) {
        Compiled s(c[0]);
        ASSERT_EQ(s.error, "") << c[0];
        Enum const* e = s.schema().findEnum("E");
        Struct const& t = s.type("E");
        std::string got;
        for (unsigned i = 0; i < e->v_elem.size(); i++)
            got += str(e->v_elem[static_cast<int>(i)].m_name) + "=" + num(e->v_elem[static_cast<int>(i)].m_value) + " ";
        got += str(e->m_intType) + " " + num(t.m_layout.compact.m_size.m_num) + "/" +
               num(t.m_layout.large.m_align.m_num);
        EXPECT_EQ(got, c[1]);
        EXPECT_TRUE(t.m_category == TC_SCALAR && t.m_cType == "E");
    }
}

TEST(GrammarModel, ImplicitMembers) {
    struct {
        char const* text;
        char const* fields;
        char const* indexes;
    } const cases[] = {
        {"K class C { signed<1> a; autoid[50]; signed<1> b; };", "autoid:$autoid a:signed<1> b:signed<1>",
         "autoid hash unique e50 <autoid>"},
        {"K declare auto_oid[9];\nclass C { signed<1> a; autoid[5]; };",
         "auto_oid@:$auto_oid autoid:$autoid a:signed<1>", "autoid hash unique e5 <autoid>"},
        {"declare auto_oid[9];\ndistributed class C { signed<1> a; };", "auto_oid@:$auto_oid timestamp@! a:signed<1>",
         "timestamp_idx@ tree <timestamp@>"},
        {"class C { signed<1> a; TTL_clock_time 5 sec; };", "a:signed<1> ttl_timestamp@!",
         "ttl_timestamp_idx@ tree <ttl_timestamp@>"},
        {"class C { TTL_count 0; };", "ttl_count@!", "ttl_count_idx@ tree unique <ttl_count@>"},
        {"iot server;\nuptable class C { signed<1> a; };",
         "iot_object_id@! agent_id iot_db_id@! iot_timestamp@! a:signed<1>",
         "iot_idx_id@ hash unique e1000 <agent_id, iot_db_id@, iot_object_id@>"},
        {"iot server;\ndowntable class C { signed<1> a; };", "iot_timestamp@! agent_id iot_object_id@! a:signed<1>",
         "iot_idx_ts@ tree <agent_id, iot_timestamp@>"},
        {"iot router<3>;\ndowntable class C {};", "src_agent_id dst_agent_id iot_object_id@! iot_db_id@! iot_timestamp@!",
         "iot_idx_id@ hash unique e1000 <src_agent_id, iot_db_id@, iot_object_id@>; "
         "iot_idx_ts@ tree <src_agent_id, iot_db_id@, dst_agent_id, iot_timestamp@>"},
        {"declare auto_oid[9];\niot device;\ndowntable class C {};",
         "auto_oid@:$auto_oid iot_src_id@! iot_db_id@! iot_object_id@! iot_timestamp@!",
         "iot_idx_id@ hash unique e1000 <iot_src_id@, iot_db_id@, iot_object_id@>"},
    };
    for (auto const& c : cases) {
        // A leading "K " asks for keepFieldOrder.
        bool const keep = c.text[0] == 'K';
        Compiled s(c.text + (keep ? 2 : 0), keep);
        ASSERT_EQ(s.error, "") << c.text;
        EXPECT_EQ(fieldList(s.cls("C")), c.fields) << c.text;
        EXPECT_EQ(indexList(s.cls("C")), c.indexes) << c.text;
    }
}

TEST(GrammarModel, UpdatedBitmapSize) {
    struct {
        int others;
        char const* decl;
        char const* expected;
    } const cases[] = {
        {1, "[]", "boolean bitmap [2]"},
        {39, "[4]", "boolean bitmap [4]"},  // (4 + 1) * 1 is not below 47 / 8
        {99, "[5]", "unsigned<1> bitmap [6]"},
        {299, "[5]", "unsigned<2> bitmap [6]"},
    };
    for (auto const& c : cases) {
        std::string text = "class C { boolean updated_bitmap" + std::string(c.decl) + ";";
        for (int i = 0; i < c.others; i++)
            text += "\n unsigned<1> f" + num(i) + ";";  // lines are read in 5000-byte pieces
        Compiled s(text + " };");
        ASSERT_EQ(s.error, "") << c.others << c.decl;
        EXPECT_EQ(describe(*s.cls("C").findField("updated_bitmap")), c.expected) << c.others << c.decl;
    }
}

