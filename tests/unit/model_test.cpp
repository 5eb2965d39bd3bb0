// The model the grammar and the finishing passes build, where the
// dictionary and golden tests do not show it: reserved words, the edges of
// field forms and enum sizes, implicit members, the updated_bitmap size,
// duplicate field names, collation numbers, the implicit list, event
// numbers, and the system classes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/parsed.h"

namespace {

using Model = AnalyzedText;
bool const kGrammar = true;  // the grammar alone, without the finishing passes

std::vector<Class*> classes(Model& s) {
    std::vector<Class*> out;
    forEachIn<Class>(s.schema().m_classes, [&out](Class& c) { return out.push_back(&c), true; });
    return out;
}

std::string str(mstring const& s) { return s.c_str(); }
std::string num(int n) { return std::to_string(n); }
std::string flag(bool on, char const* word) { return on ? word : ""; }

std::string describe(Field const& f) {
    return str(f.m_typeName) + flag(f.m_isRect, " rect") + flag(f.m_isPoint, " point") + flag(f.m_isBitmap, " bitmap") +
           (f.m_isArray ? " [" + num(f.m_arraySize) + "]" : "") + (f.m_precision >= 0 ? " p" + num(f.m_precision) : "");
}

// Field names in order; the type follows unless it is unsigned<8>, "!"
// marks a hidden field, "=" an initial value.
std::string fieldList(Struct const& s) {
    std::string out;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        out += (i ? " " : "") + str(f.m_name) + (f.m_typeName == "unsigned<8>" ? "" : ":" + str(f.m_typeName)) +
               flag(f.m_isHidden, "!") + (f.v_init.size() ? "=" + str(f.v_init[0]) : "");
    }
    return out;
}

// "name kind[ unique][ implicit][ e<estimate>] <keys>" per index.
std::string indexList(Class const& c) {
    char const* kinds[] = {"tree", "hash", "kdtree", "rtree", "patricia", "trigram", "list"};
    std::string out;
    for (unsigned i = 0; i < c.v_index.size(); i++) {
        Index const& x = c.v_index[static_cast<int>(i)];
        out += (i ? "; " : "") + str(x.m_name) + " " + kinds[x.m_type] + flag(x.m_unique, " unique") +
               flag(x.m_implicitList, " implicit") + (x.ecount ? " e" + num(x.ecount) : "") + " <";
        for (unsigned k = 0; k < x.v_fieldName.size(); k++)
            out += (k ? ", " : "") + str(x.v_fieldName[static_cast<int>(k)]);
        out += ">";
    }
    return out;
}

}  // namespace

// The words refused as names: two case-sensitive lists, SQL words only on
// request.
TEST(GrammarModel, ReservedWords) {
    struct { char const* word; bool withoutSql, withSql; } const cases[] = {
        {"select", false, true}, {"update", true, true}, {"Class", false, false},
        {"OID", true, true},     {"HA", false, false},   {"AUTO_OID", false, false},
    };
    // Analyzers that read nothing: the tables never touch the token reader.
    mvector<mstring> hidden;
    auto const plain = newAnalyzer(nullptr, &hidden), sql = newAnalyzer(nullptr, &hidden, false, false, true);
    for (auto const& c : cases) {
        EXPECT_EQ(c.withoutSql, plain->isReservedWord(c.word)) << c.word;
        EXPECT_EQ(c.withSql, sql->isReservedWord(c.word)) << c.word;
    }
}

TEST(GrammarModel, FieldForms) {
    char const* const cases[][2] = {
        // The width's edges pick the integer: 2 / 4 / 9 / 10 digits.
        {"numeric<2> a;", "signed<1> p0"},      {"numeric<4,3> a;", "signed<2> p3"},
        {"numeric<9,3> a;", "signed<4> p3"},    {"decimal<10> a;", "signed<8> p0"},
        {"decimal<19,19> a;", "signed<8> p19"}, {"char<10> a;", "char<10>"},
        {"rectangle<signed<4>> a[2];", "signed<4> rect [4]"}, {"point<double> a[8];", "double point [8]"},
    };
    for (auto const& c : cases) {
        Model s(std::string("class C { ") + c[0] + " unsigned<1> z; };", false, kGrammar);
        ASSERT_EQ(s.error, "") << c[0];
        EXPECT_EQ(describe(*s.cls("C").findField("a")), c[1]) << c[0];
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
        Model s(c[0], false, kGrammar);
        ASSERT_EQ(s.error, "") << c[0];
        Enum const* e = s.schema().findEnum("E");
        Struct const& t = *s.schema().findType("E");
        std::string got;
        for (int i = 0; i < static_cast<int>(e->v_elem.size()); i++)
            got += str(e->v_elem[i].m_name) + "=" + num(e->v_elem[i].m_value) + " ";
        EXPECT_EQ(got + str(e->m_intType) + " " + num(t.m_layout.compact.m_size.m_num) + "/" +
                      num(t.m_layout.large.m_align.m_num), c[1]);
    }
}

TEST(GrammarModel, ImplicitMembers) {
    struct { char const *text, *fields, *indexes; } const cases[] = {
        {"K class C { signed<1> a; autoid[50]; signed<1> b; };", "autoid:$autoid a:signed<1> b:signed<1>",
         "autoid hash unique e50 <autoid>"},
        {"K declare auto_oid[9];\nclass C { signed<1> a; autoid[5]; };",
         "auto_oid@:$auto_oid autoid:$autoid a:signed<1>", "autoid hash unique e5 <autoid>"},
        {"declare auto_oid[9];\ndistributed class C { signed<1> a; };", "auto_oid@:$auto_oid timestamp@! a:signed<1>",
         "timestamp_idx@ tree <timestamp@>"},
        {"class C { signed<1> a; TTL_clock_time 5 sec; };", "a:signed<1> ttl_timestamp@!=5000000",
         "ttl_timestamp_idx@ tree <ttl_timestamp@>"},
        {"class C { TTL_count 0; };", "ttl_count@!=0", "ttl_count_idx@ tree unique <ttl_count@>"},
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
        Model s(c.text + (keep ? 2 : 0), keep, kGrammar);
        ASSERT_EQ(s.error, "") << c.text;
        EXPECT_EQ(fieldList(s.cls("C")), c.fields) << c.text;
        EXPECT_EQ(indexList(s.cls("C")), c.indexes) << c.text;
    }
}

TEST(GrammarModel, UpdatedBitmapSize) {
    struct { int others; char const *decl, *expected; } const cases[] = {
        {1, "[]", "boolean bitmap [2]"},
        {39, "[4]", "boolean bitmap [4]"},  // (4 + 1) * 1 is not below 47 / 8
        {40, "[4]", "unsigned<1> bitmap [5]"},  // 41 fields round up to 6 bytes
        {254, "[5]", "unsigned<1> bitmap [6]"},
        {255, "[5]", "unsigned<2> bitmap [6]"},  // the word widens at 256 fields
        {32766, "[5]", "unsigned<2> bitmap [6]"},
        {32767, "[5]", "unsigned<4> bitmap [6]"},  // and again at 32768
    };
    for (auto const& c : cases) {
        std::string text = "class C { boolean updated_bitmap" + std::string(c.decl) + ";";
        for (int i = 0; i < c.others; i++)
            text += "\n unsigned<1> f" + num(i) + ";";  // lines are read in 5000-byte pieces
        Model s(text + " };", false, kGrammar);
        ASSERT_EQ(s.error, "") << c.others << c.decl;
        EXPECT_EQ(describe(*s.cls("C").findField("updated_bitmap")), c.expected) << c.others << c.decl;
    }
}

TEST(FieldNames, LongBodiesFindEveryEarlierName) {
    for (int n : {1, 32, 33, 300}) {
        std::string body;
        for (int i = 0; i < n; i++)
            body += "unsigned<4> f" + num(i) + ";\n";
        for (int dup : {0, n - 1})
            for (char const* head : {"struct S { ", "class C { "})
                EXPECT_EQ(Model(head + body + "boolean f" + num(dup) + "; };").error,
                          "field f" + num(dup) + " already exists")
                    << head << n << " " << dup;
        EXPECT_EQ(Model("class C { " + body + "boolean g; };").error, "") << n;
    }
}

TEST(FieldNames, SystemFieldsBetweenStatements) {
    // autoid goes to the front when the field order is kept, behind
    // auto_oid@ when there is one; the names before and after it count.
    char const* const cases[][2] = {
        {"class C { signed<4> a; autoid[10]; signed<4> b; signed<2> a; };", "field a already exists"},
        {"declare auto_oid[100];\nclass C { signed<4> a; autoid[10]; signed<4> b; signed<2> b; };", "field b already exists"},
        {"class C { signed<4> a; autoid[10]; signed<4> b; };", ""},
        {"class C { signed<4> a; TTL_count 10; signed<4> a; };", "field a already exists"},
    };
    for (bool keep : {false, true})
        for (auto const& c : cases)
            EXPECT_EQ(Model(c[0], keep).error, c[1]) << keep << " " << c[0];
}

// Collations are numbered in the order they were first named; the first
// key fixes what kind of text a collation compares.
TEST(FinishModel, CollationNumbersAndKinds) {
    Model s("class A { char<4> a; string s; nstring n; tree<s collate latin> t; tree<n collate greek> g; };\n"
               "class B { char<4> b; hash<b collate latin> h[5]; };\nclass N { char<4> z; };");
    ASSERT_EQ(s.error, "");
    Collation const& latin = *s.schema().findCollation("latin");
    Collation const& greek = *s.schema().findCollation("greek");
    EXPECT_EQ(num(latin.m_number) + num(latin.m_fieldKind) + " " + num(greek.m_number) + num(greek.m_fieldKind) +
                  " " + num(s.schema().m_collationCount),
              "07 119 2");
    EXPECT_EQ(s.cls("A").v_index[1].v_segment[0].m_collationNo, 1);
    EXPECT_EQ(s.cls("B").v_index[0].v_segment[0].m_collationNo, 0);
    EXPECT_TRUE(s.cls("A").m_hasCollate && s.cls("B").m_hasCollate && !s.cls("N").m_hasCollate);
}

TEST(FinishModel, ImplicitList) {
    struct { char const *cls, *indexes; bool keepFieldOrder = false; } const cases[] = {
        {"class A { signed<4> a; };", "list_index_ list unique implicit <>"},
        {"class A { signed<4> a; };", "list_index_ tree unique implicit <>", true},
        {"class A { oid; signed<4> a; };", ""},
        {"class A { signed<4> a; list; };", "list_index_ tree unique <>"},
        {"transient class A { signed<4> a; voluntary tree<a> t; };", "t tree <a>"},
        {"persistent class A { signed<4> a; voluntary tree<a> t; };", "t tree <a>; list_index_ list unique implicit <>"},
        {"persistent class A { signed<4> a; voluntary tree<a> t; tree<a> u; };", "t tree <a>; u tree <a>"},
    };
    for (auto const& c : cases) {
        Model s(std::string("declare oid K[5];\nstruct K { signed<4> k; };\n") + c.cls, c.keepFieldOrder);
        ASSERT_EQ(s.error, "") << c.cls;
        Class const& a = s.cls("A");
        EXPECT_EQ(indexList(a), c.indexes) << c.cls;
        EXPECT_EQ(a.m_hasList, std::string(c.indexes).find("list_index_") != std::string::npos) << c.cls;
        EXPECT_EQ(a.indexNames.v_strings.size(), a.v_index.size()) << c.cls;
    }
}

// Numbers run through all classes; the implicit update event follows its
// class's own events.
TEST(FinishModel, EventNumbersAndFields) {
    Model s("class A { signed<4> a; char<4> c; event<new> n; event<a update> ua; event<c update> uc; };\n"
               "class B { signed<4> b; boolean updated_bitmap[]; event<delete> d; };\n"
               "class C { signed<4> x; boolean updated_bitmap[]; event<update> u; event<checkpoint> k; };\n");
    ASSERT_EQ(s.error, "");
    std::string got;
    for (char const* name : {"A", "B", "C"})
        for (unsigned i = 0; i < s.cls(name).v_event.size(); i++) {
            Event const& e = s.cls(name).v_event[static_cast<int>(i)];
            got += str(e.m_name) + "#" + num(e.m_number) + ":" + num(e.m_kind) +
                   (e.m_field ? "(" + str(e.m_field->m_name) + ")" : "") + " ";
            EXPECT_TRUE(!e.m_field || e.m_field == s.cls(name).findField(e.m_fieldName));
        }
    EXPECT_EQ(got, "n#0:1 ua#1:2(a) uc#2:2(c) d#3:3 implUpdateBEvent#4:7(updated_bitmap) "
                   "u#5:7(updated_bitmap) k#6:5 ");
    EXPECT_EQ(s.cls("A").getUpdateEvent(s.cls("A"), *s.cls("A").findField("c")), 2u);
}

TEST(FinishModel, DistributedSystemClasses) {
    Model s("declare auto_oid[10];\npersistent distributed class A { signed<4> a; };\n"
               "transient distrib class B { signed<4> b; };");
    ASSERT_EQ(s.error, "");
    std::vector<Class*> all = classes(s);
    ASSERT_EQ(all.size(), 4u);
    for (int i : {2, 3}) {
        Class const& c = *all[i];
        EXPECT_EQ(str(c.m_name), i == 2 ? "@sys_distribs_disk" : "@sys_distribs_inmem");
        EXPECT_EQ(fieldList(c), "auto_oid@:$auto_oid auto_oid timestamp class_code:unsigned<2>");
        EXPECT_EQ(indexList(c), "ts_idx tree <class_code, timestamp>; ao_idx hash unique e1000 <auto_oid, class_code>");
        EXPECT_EQ(c.m_persistent, i == 2);
        EXPECT_TRUE(c.m_local && c.m_isSystem && c.m_fixed && c.m_atomic && !c.m_isClass && !c.m_isDynamic);
    }
}

// Which IoT classes exist, and their fields and indexes at each level.
TEST(FinishModel, IoTSystemClasses) {
    // The system classes, persistent ones marked "+"; the fields of
    // @sys_iot_ts; the fields and indexes of the first deletion class.
    struct { char const *iot, *tables, *classes, *ts, *del; } const cases[] = {
        {"iot server;", "transient uptable class A { signed<4> a; };", "@sys_iot_ts @sys_iot_del_inmem",
         "type:unsigned<1>! src!=1 dbid!=1 dst! value!",
         "class_code:unsigned<2>! dst_agent_id! object_id! timestamp! / ts_idx tree <dst_agent_id, timestamp>"},
        {"iot router<7> 12;",
         "persistent uptable class A { signed<4> a; };\ntransient downtable class B { signed<4> b; };",
         "@sys_iot_ts+ @sys_iot_del_disk+ @sys_iot_del_inmem",
         "type:unsigned<1>! src!=12 dbid!=7 dst! value!",
         "class_code:unsigned<2>! src_agent_id! db_id! dst_agent_id! object_id! timestamp! / "
         "ts_idx tree <src_agent_id, db_id, dst_agent_id, timestamp>; id_idx hash unique e1000 <src_agent_id, db_id, object_id>"},
        {"declare auto_oid[5];\niot device;", "persistent downtable class B { signed<4> b; };",
         "@sys_iot_ts+ @sys_iot_del_disk+", "auto_oid@:$auto_oid! type:unsigned<1>! src!=0 dbid!=65535 dst! value!",
         "auto_oid@:$auto_oid! class_code:unsigned<2>! object_id! timestamp! / ts_idx tree <timestamp>"},
    };
    for (auto const& c : cases) {
        Model s(std::string(c.iot) + "\n" + c.tables);
        ASSERT_EQ(s.error, "") << c.iot;
        std::string names;
        std::vector<Class*> del;
        for (Class* k : classes(s))
            if (k->m_isSystem) {
                names += (names.empty() ? "" : " ") + str(k->m_name) + flag(k->m_persistent, "+");
                if (str(k->m_name).find("@sys_iot_del") == 0)
                    del.push_back(k);
            }
        EXPECT_EQ(names, c.classes) << c.iot;
        EXPECT_EQ(fieldList(s.cls("@sys_iot_ts")), c.ts) << c.iot;
        EXPECT_EQ(indexList(s.cls("@sys_iot_ts")), "idx tree unique <type, dst, src, dbid>") << c.iot;
        EXPECT_EQ(fieldList(*del[0]) + " / " + indexList(*del[0]), c.del) << c.iot;
    }
}
