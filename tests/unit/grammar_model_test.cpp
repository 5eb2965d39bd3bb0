// What the grammar builds in the model: fields, types, enums, indexes,
// implicit members, events and schema-level values. Each schema runs
// through Parser and Analyzer with the run-time reporter, which throws.
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

class Compiled : public IOnDbNameFound {
public:
    explicit Compiled(std::string const& text, Options const& o = Options()) : m_reporter(nullptr, nullptr) {
        m_dir.write("s.zyl", text);
        for (std::string const& h : o.hidden)
            m_hidden.push_back(h.c_str());
        m_file = std::fopen(m_dir.file("s.zyl").c_str(), "r");
        m_parser.reset(new Parser(m_file, "s.zyl", &m_reporter, "", ""));
        m_analyzer.reset(new Analyzer(m_parser.get(), o.keepFieldOrder, false, o.compactDefault, false,
                                      o.persistentDefault, false, o.atomicDefault, 8, 0, &m_hidden, this));
        m_analyzer->initBaseTypes();
        try {
            m_analyzer->analyze();
        } catch (CompilerError const& e) {
            error = e.m_msg.c_str();
        }
    }
    ~Compiled() override {
        m_analyzer.reset();
        m_parser.reset();
        std::fclose(m_file);
    }
    void dbnameFound(mstring const& name) override { dbNames.push_back(name.c_str()); }
    Schema& schema() { return m_analyzer->schema(); }
    Class& cls(char const* name) { return *schema().findClass(name); }
    Struct& type(char const* name) { return *schema().findType(name); }

    std::string error;
    std::vector<std::string> dbNames;

private:
    TempDir m_dir;
    mvector<mstring> m_hidden;
    FILE* m_file = nullptr;
    ErrReporterMem m_reporter;
    std::unique_ptr<Parser> m_parser;
    std::unique_ptr<Analyzer> m_analyzer;
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
        {"unsigned<4> a;", "unsigned<4>"},
        {"numeric<2> a;", "signed<1> p0"},
        {"decimal<4,2> a;", "signed<2> p2"},
        {"numeric<9,3> a;", "signed<4> p3"},
        {"decimal<19,19> a;", "signed<8> p19"},
        {"wstring a;", "wstring"},
        {"nullable optional S a;", "S nullable optional"},
        {"vector<autoid_t><C> a;", "autoid_t vector ->C"},
        {"ref<C> a;", "ref ->C"},
        {"sequence<unsigned<4> desc> a;", "sequence of unsigned<4> ZYL_SEQ_DESC_ORDER"},
        {"sequence<numeric<5,0>> a;", "sequence of signed<4> ZYL_SEQ_NO_ORDER"},
        {"rectangle<signed<4>> a[2];", "signed<4> rect [4]"},
        {"point<double> a[3];", "double point [3]"},
        {"unsigned<4> a = 5;", "unsigned<4> =5"},
        {"unsigned<4> a[4] = {1};", "unsigned<4> [4] =1,0,0,0"},
        {"signed<2> a[2] = {-1, 0x10};", "signed<2> [2] =-1,0x10"},
        {"D a;", "D direct"},
    };
    for (auto const& c : cases) {
        Compiled s(std::string("direct struct D { signed<4> x; };\nclass C { ") + c.decl + " unsigned<1> z; };");
        ASSERT_EQ(s.error, "") << c.decl;
        Field const* f = s.cls("C").findField("a");
        EXPECT_EQ(describe(*f), c.expected) << c.decl;
        EXPECT_EQ(f->m_containerStruct, &s.cls("C"));
        EXPECT_EQ(s.cls("C").m_hasDirect, f->m_isDirect) << c.decl;
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

// The implicit value counts positions, not values; the size follows the
// signed 16-bit limits, and is 4 under keepFieldOrder.
TEST(GrammarModel, EnumValuesAndSizes) {
    char const* const cases[][2] = {
        {"enum E { A, B = 10, C };", "A=0 B=10 C=2 uint1 1/1"},
        {"enum E { A = 255 };", "A=255 uint1 1/1"},
        {"enum E { A = 256 };", "A=256 uint2 2/2"},
        {"enum E { A = -1, B };", "A=-1 B=1 uint2 2/2"},
        {"enum E { A = -32768, B = 32767 };", "A=-32768 B=32767 uint2 2/2"},
        {"enum E { A = 40000 };", "A=40000 uint4 4/4"},
        {"enum E { A = -32769 };", "A=-32769 uint4 4/4"},
        {"enum E { A = 0x10, B = 010 };", "A=16 B=8 uint1 1/1"},
        {"enum E { A }; ", "A=0 uint4 4/4"},  // a trailing blank asks for keepFieldOrder
    };
    for (auto const& c : cases) {
        Options o;
        o.keepFieldOrder = std::string(c[0]).back() == ' ';
        Compiled s(c[0], o);
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
        {"tree<a> t;", "t tree <a>"},
        {"unique tree<a desc, b asc ignore_case> t;", "t tree unique <a desc, b nocase>"},
        {"tree<a asc desc> t;", "t tree <a desc>"},
        {"tree<a desc ascending> t;", "t tree <a>"},
        {"hash<a> t[10];", "t hash unique e10 <a>"},
        {"nonunique hash<a case_insensitive> t[5];", "t hash e5 <a nocase>"},
        {"voluntary thick inclusive tree<a> t;", "t tree voluntary thick inclusive <a>"},
        {"userdef nonunique tree<a> t;", "t tree userdef <a>"},
        {"voluntary unique trigram<s> t;", "t trigram thick inclusive <s>"},
        {"kdtree<a, b> t;", "t kdtree <a, b>"},
        {"rtree<r> t;", "t rtree <r>"},
        {"patricia<a> t;", "t patricia <a>"},
        {"tree<*> t;", "t tree <*>"},
        {"tree<st.x.y desc> t;", "t tree <st.x.y desc>"},
        {"hash<s case_insensitive collate c1> t[3];", "t hash unique e3 <s nocase collate c1>"},
        {"tree<autoid> t;", "t tree <autoid>"},
        {"inclusive unsigned<4> z; tree<a> a;", "a tree inclusive <a>"},
    };
    for (auto const& c : cases) {
        Compiled s(std::string("class C { autoid[5]; unsigned<4> a, b; string s; S st; rect<signed<4>> r[2]; ") +
                   c.decl + " };");
        ASSERT_EQ(s.error, "") << c.decl;
        Class& cls = s.cls("C");
        ASSERT_EQ(cls.v_index.size(), 2u) << c.decl;
        Index const& x = cls.v_index[1];
        EXPECT_EQ(describe(x), c.expected);
        EXPECT_TRUE(cls.indexNames.find(x.m_name));
        EXPECT_TRUE(x.m_code == -1 && x.m_userdefNo == -1 && x.m_vbased == -1 && x.v_segment.size() == 0);
    }

    // Collations come into being on first mention and remember whether
    // only trees and only classes without an API use them.
    Options o;
    o.hidden = {"H"};
    Compiled s("class C { string s; tree<s collate c1> t; hash<s collate c2> h[5]; };\n"
               "class H { string s; tree<s collate c1> t; tree<s collate c3> u; };", o);
    ASSERT_EQ(s.error, "");
    EXPECT_EQ(s.schema().m_collations->size(), 3u);
    char const* const names[] = {"c1", "c2", "c3"};
    bool const onlyNoApi[] = {false, false, true}, onlyTree[] = {true, false, true};
    for (int i = 0; i < 3; i++) {
        Collation const* coll = s.schema().findCollation(names[i]);
        EXPECT_EQ(coll->m_onlyNoApi, onlyNoApi[i]) << names[i];
        EXPECT_EQ(coll->m_onlyTree, onlyTree[i]) << names[i];
    }
}

TEST(GrammarModel, ImplicitMembers) {
    struct {
        char const* text;
        char const* fields;
        char const* indexes;
    } const cases[] = {
        {"class C { signed<1> a; autoid[50]; signed<1> b; };", "a:signed<1> autoid:$autoid b:signed<1>",
         "autoid hash unique e50 <autoid>"},
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
        {"iot device;\nuptable class C {};", "iot_object_id@! iot_timestamp@!", "iot_idx_ts@ tree <iot_timestamp@>"},
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

    Compiled s("class C { unsigned<4> a; autoid[50]; sequences; oid; TTL_clock_time 7 ms; };");
    Class const& c = s.cls("C");
    EXPECT_TRUE(c.m_hasAutoid && c.m_hasList && c.m_listSequences && c.m_hasOid);
    EXPECT_EQ(c.m_autoidEstimate, 50);
    EXPECT_EQ(c.findField("autoid")->m_position, 1);
    EXPECT_EQ(c.findField("autoid")->m_fieldNo, 0);
    EXPECT_EQ(describe(*c.findField("ttl_timestamp@")), "unsigned<8> hidden =7000");
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
        {"class C {};", false, " atomic class"},
        {"compact compact persistent nonatomic local local class C {};", false, " compact persistent local class"},
        {"declare auto_oid[5];\ndistrib compact distributed class C {};", false, " compact atomic distributed class"},
        {"iot device;\ndowntable class C {};", false, " atomic down class"},
        {"class C {};", true, " compact persistent noapi class"},
        {"transient atomic class C {};", true, " compact atomic noapi class"},
    };
    for (auto const& c : cases) {
        Compiled s(c.text, c.flipped ? flipped : Options());
        ASSERT_EQ(s.error, "") << c.text;
        Class const& k = s.cls("C");
        EXPECT_EQ(words({{k.m_compact, " compact"}, {k.m_persistent, " persistent"}, {k.m_atomic, " atomic"},
                         {k.m_local, " local"}, {k.m_distributed, " distributed"}, {k.m_iotType == IOT_UPTABLE, " up"},
                         {k.m_iotType == IOT_DOWNTABLE, " down"}, {k.m_noApi, " noapi"}, {k.m_isClass, " class"}}),
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
        {3, "[9]", "boolean bitmap [4]"},
        {39, "[4]", "boolean bitmap [4]"},  // (4 + 1) * 1 is not below 47 / 8
        {99, "[5]", "unsigned<1> bitmap [6]"},
        {299, "[]", "boolean bitmap [300]"},
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

TEST(GrammarModel, EventsDirectStructsAndClassTypes) {
    Compiled s("declare auto_oid[5];\niot server;\n"
               "packed direct struct D { signed<4> a, b; char<3> c[2]; };\ndirect struct E { D d; };\n"
               "persistent distributed class A { unsigned<4> a; D d; event<new> n; event<a update> u;\n"
               "  event<update> cu; event<delete_all> da; event<checkpoint> cp; event<delete> d; };\n"
               "transient uptable class B {};\ntransient downtable class C {};");
    ASSERT_EQ(s.error, "");
    std::string events;
    for (unsigned i = 0; i < s.cls("A").v_event.size(); i++) {
        Event const& e = s.cls("A").v_event[static_cast<int>(i)];
        events += str(e.m_name) + ":" + num(e.m_kind) + str(e.m_fieldName) + ":" + num(e.m_number) + " ";
    }
    EXPECT_EQ(events, "n:1:-1 u:2a:-1 cu:7:-1 da:4:-1 cp:5:-1 d:3:-1 ");
    EXPECT_TRUE(s.schema().m_eventNames.find("cu"));

    // Direct fields take no number: the first numbered field is A's "a".
    Struct const& d = s.type("D");
    EXPECT_TRUE(d.m_category == TC_DIRECT && d.m_isDirect && d.m_packed && !d.m_finished);
    EXPECT_TRUE(!s.type("E").m_packed && s.type("E").m_hasDirect && s.cls("A").m_hasDirect);
    EXPECT_EQ(fieldList(d), "a:signed<4> b:signed<4> c:char<3>");
    EXPECT_EQ(describe(d.v_field[2]), "char<3> [2]");
    EXPECT_EQ(d.v_field[2].m_fieldNo + d.v_field[2].m_position, 0);
    EXPECT_EQ(s.cls("A").findField("a")->m_fieldNo, 1);

    EXPECT_TRUE(findClassTypes(s.schema(), 0x800, true));
    EXPECT_FALSE(findClassTypes(s.schema(), 0x800, false));
    EXPECT_TRUE(findClassTypes(s.schema(), 0x80, false));
    EXPECT_FALSE(findClassTypes(s.schema(), 0x80 | 0x8000, true));
    EXPECT_TRUE(findClassTypes(s.schema(), 0x8000, false));
}

TEST(GrammarModel, DeclarationsAndSchemaValues) {
    Compiled s("declare database shop;\ndeclare oid K[10];\ndeclare auto_oid[7];\n"
               "struct K { unsigned<4> a; unsigned<2> b; };\niot router<7> 42;\n"
               "class A { char<10> a; char<10> b; binary<4> c; nchar<5> d; };\ncalculator { A<3> };");
    ASSERT_EQ(s.error, "");
    Schema& sc = s.schema();
    EXPECT_EQ(s.dbNames, std::vector<std::string>{"shop"});
    EXPECT_EQ(str(sc.m_dbName) + " " + str(sc.m_idType) + " " + num(sc.m_oidEstimate) + " " + num(sc.m_autoOid),
              "shop K 10 7");
    EXPECT_TRUE(sc.m_oidDeclared && (sc.m_schemaOptions & Schema::OPT_IOT) && sc.m_hasCalculator);
    EXPECT_EQ(num(sc.m_iotLevel) + " " + str(sc.m_agentId), "7 42");
    ASSERT_EQ(sc.v_calculator.size(), 1u);
    EXPECT_EQ(str(sc.v_calculator[0].m_className) + num(static_cast<int>(sc.v_calculator[0].m_count)), "A3");

    // "ref" becomes a copy of the oid type under its own name and category.
    EXPECT_EQ(s.type("ref").m_category, TC_OID_REF);
    EXPECT_EQ(fieldList(s.type("ref")), "a:unsigned<4> b:unsigned<2>");

    // Character and byte types are made once, on first use.
    EXPECT_EQ(sc.m_types->size(), 23u + 3u + 2u /* K and ref */);
    auto made = [&](char const* name) {
        Struct const& t = s.type(name);
        return num(t.m_category) + "/" + num(t.m_layout.compact.m_size.m_num) + "/" +
               num(t.m_layout.large.m_align.m_num);
    };
    EXPECT_EQ(made("char<10>") + " " + made("binary<4>") + " " + made("nchar<5>"), "2/10/1 15/4/1 9/10/2");

    char const* const iots[][2] = {
        {"iot server;", "1 1"}, {"iot device;", "65535 0"}, {"iot device 12;", "65535 12"}, {"iot router<2>;", "2 0"}};
    for (auto const& i : iots) {
        Compiled t(i[0]);
        ASSERT_EQ(t.error, "") << i[0];
        EXPECT_EQ(num(t.schema().m_iotLevel) + " " + str(t.schema().m_agentId), i[1]);
    }
}
