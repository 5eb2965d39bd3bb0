// What the grammar builds in the model: field forms and numbers, enum
// sizes, indexes, implicit members, class prefixes and hidden classes, and
// the updated_bitmap size. Each schema runs through Parser and Analyzer
// with the run-time reporter, which throws.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

struct Options {
    bool keepFieldOrder = false, persistentDefault = false, atomicDefault = true, compactDefault = false;
    std::vector<std::string> hidden;
};

// The schema text in s.zyl, read by the grammar alone.
struct Compiled {
    explicit Compiled(std::string const& text, Options const& o = Options()) : reporter(nullptr, nullptr) {
        dir.write("s.zyl", text);
        for (std::string const& h : o.hidden)
            hidden.push_back(h.c_str());
        file = std::fopen(dir.file("s.zyl").c_str(), "r");
        parser.reset(new Parser(file, "s.zyl", &reporter, "", ""));
        analyzer.reset(new Analyzer(parser.get(), o.keepFieldOrder, false, o.compactDefault, false,
                                    o.persistentDefault, false, o.atomicDefault, 8, 0, &hidden, nullptr));
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
std::string words(std::initializer_list<std::pair<bool, char const*>> flags) {
    std::string s;
    for (auto const& f : flags)
        s += f.first ? f.second : "";
    return s;
}

std::string describe(Field const& f) {
    std::string s = str(f.m_typeName) +
                    words({{f.m_isNullable, " nullable"}, {f.m_isOptional, " optional"}, {f.m_isVector, " vector"},
                           {f.m_isRect, " rect"}, {f.m_isPoint, " point"}, {f.m_isBitmap, " bitmap"},
                           {f.m_isIndicator, " indicator"}, {f.m_isHidden, " hidden"}, {f.m_isDirect, " direct"}});
    if (f.m_isArray)
        s += " [" + num(f.m_arraySize) + "]";
    if (f.m_precision >= 0)
        s += " p" + num(f.m_precision);
    if (f.m_isSequence)
        s += " of " + str(f.m_elemTypeName) + " " + str(f.m_seqOrder);
    if (!f.m_refClassName.empty())
        s += " ->" + str(f.m_refClassName);
    for (unsigned i = 0; i < f.v_init.size(); i++)
        s += (i ? "," : " =") + str(f.v_init[static_cast<int>(i)]);
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
    std::string s = str(x.m_name) + " " + kinds[x.m_type] +
                    words({{x.m_unique, " unique"}, {x.m_voluntary, " voluntary"}, {x.m_userdef, " userdef"},
                           {x.m_thick, " thick"}, {x.m_inclusive, " inclusive"}}) +
                    (x.ecount ? " e" + num(x.ecount) : "") + " <";
    for (unsigned k = 0; k < x.v_fieldName.size(); k++) {
        int i = static_cast<int>(k);
        s += (k ? ", " : "") + str(x.v_fieldName[i]);
        // "*" has no per-key flags: they come when it is expanded.
        if (k < x.v_desc.size())
            s += words({{x.v_desc[i], " desc"}, {x.v_nocase[i], " nocase"}}) +
                 (x.v_collation[i].empty() ? "" : " collate " + str(x.v_collation[i]));
    }
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
        {"numeric<2> a;", "signed<1> p0"},
        {"numeric<9,3> a;", "signed<4> p3"},
        {"decimal<19,19> a;", "signed<8> p19"},
        {"nullable optional S a;", "S nullable optional"},
        {"vector<autoid_t><C> a;", "autoid_t vector ->C"},
        {"ref<C> a;", "ref ->C"},
        {"sequence<unsigned<4> desc> a;", "sequence of unsigned<4> ZYL_SEQ_DESC_ORDER"},
        {"rectangle<signed<4>> a[2];", "signed<4> rect [4]"},
        {"point<double> a[3];", "double point [3]"},
    };
    for (auto const& c : cases) {
        Compiled s(std::string("class C { ") + c.decl + " unsigned<1> z; };");
        ASSERT_EQ(s.error, "") << c.decl;
        EXPECT_EQ(describe(*s.cls("C").findField("a")), c.expected) << c.decl;
    }
}

// A name list shares one field number and position; indicators come after
// the body, take fresh numbers, and are "1" when their field has a value.
TEST(GrammarModel, NameListsNumberingAndIndicators) {
    Compiled s("struct S { unsigned<4> x; };\n"
               "class C { nullable unsigned<4> a[3] = {1,2,3}, b; unsigned<2> c; nullable char<4> d; };");
    ASSERT_EQ(s.error, "");
    EXPECT_EQ(s.type("S").v_field[0].m_fieldNo, 1);
    char const* const expected[] = {"a 2/0/4 unsigned<4> nullable [3] =1,2,3",
                                    "b 2/0/5 unsigned<4> nullable [3]",
                                    "c 3/2/-1 unsigned<2>",
                                    "d 4/3/6 char<4> nullable",
                                    "a_indicator 5/4/-1 boolean indicator =1",
                                    "b_indicator 6/5/-1 boolean indicator",
                                    "d_indicator 7/6/-1 boolean indicator"};
    Class const& c = s.cls("C");
    ASSERT_EQ(c.v_field.size(), 7u);
    for (int i = 0; i < 7; i++) {
        Field const& f = c.v_field[i];
        EXPECT_EQ(str(f.m_name) + " " + num(f.m_fieldNo) + "/" + num(f.m_position) + "/" + num(f.m_indicator) +
                      " " + describe(f),
                  expected[i]);
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

TEST(GrammarModel, IndexDeclarations) {
    struct {
        char const* decl;
        char const* expected;
    } const cases[] = {
        {"tree<a asc desc> t;", "t tree <a desc>"},
        {"hash<a> t[10];", "t hash unique e10 <a>"},
        {"nonunique hash<a case_insensitive> t[5];", "t hash e5 <a nocase>"},
        {"voluntary unique trigram<s> t;", "t trigram thick inclusive <s>"},
        {"tree<st.x.y desc> t;", "t tree <st.x.y desc>"},
        {"hash<s case_insensitive collate c1> t[3];", "t hash unique e3 <s nocase collate c1>"},
        {"inclusive unsigned<4> z; tree<a> a;", "a tree inclusive <a>"},
    };
    for (auto const& c : cases) {
        Compiled s(std::string("class C { autoid[5]; unsigned<4> a, b; string s; S st; rect<signed<4>> r[2]; ") +
                   c.decl + " };");
        ASSERT_EQ(s.error, "") << c.decl;
        ASSERT_EQ(s.cls("C").v_index.size(), 2u) << c.decl;
        EXPECT_EQ(describe(s.cls("C").v_index[1]), c.expected);
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
        {"class C { sequences; oid; signed<1> a; };", "a:signed<1>", "list_index_ tree unique <>"},
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
        Options o;
        o.keepFieldOrder = c.text[0] == 'K';
        Compiled s(c.text + (o.keepFieldOrder ? 2 : 0), o);
        ASSERT_EQ(s.error, "") << c.text;
        EXPECT_EQ(fieldList(s.cls("C")), c.fields) << c.text;
        EXPECT_EQ(indexList(s.cls("C")), c.indexes) << c.text;
    }
}

TEST(GrammarModel, ClassPrefixesAndHiddenClasses) {
    Options flipped;
    flipped.persistentDefault = flipped.compactDefault = true;
    flipped.atomicDefault = false;
    flipped.hidden = {"X", "C"};
    struct {
        char const* text;
        bool flipped;
        char const* expected;
    } const cases[] = {
        {"compact compact persistent nonatomic local local class C {};", false, " compact persistent local class"},
        {"declare auto_oid[5];\ndistrib compact distributed class C {};", false, " compact atomic distributed class"},
        {"transient atomic class C {};", true, " compact atomic noapi class"},
    };
    for (auto const& c : cases) {
        Compiled s(c.text, c.flipped ? flipped : Options());
        ASSERT_EQ(s.error, "") << c.text;
        Class const& k = s.cls("C");
        EXPECT_EQ(words({{k.m_compact, " compact"}, {k.m_persistent, " persistent"}, {k.m_atomic, " atomic"},
                         {k.m_local, " local"}, {k.m_distributed, " distributed"}, {k.m_noApi, " noapi"},
                         {k.m_isClass, " class"}}),
                  c.expected)
            << c.text;
    }

    // An empty entry hides everything; direct structs are hidden unless a
    // list names other types.
    struct {
        std::vector<std::string> hidden;
        char const* noApi;
    } const lists[] = {{{}, "DE"}, {{"C", "E"}, "CE"}, {{""}, "CBDE"}};
    for (auto const& l : lists) {
        Options o;
        o.hidden = l.hidden;
        Compiled s("class C {};\nclass B {};\ndirect struct D {};\ndirect struct E {};", o);
        ASSERT_EQ(s.error, "");
        EXPECT_EQ(words({{s.cls("C").m_noApi, "C"}, {s.cls("B").m_noApi, "B"}, {s.type("D").m_noApi, "D"},
                         {s.type("E").m_noApi, "E"}}),
                  l.noApi);
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

