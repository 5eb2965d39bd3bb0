// What the finishing passes build: resolved types and the flags that follow
// from them, index segments, codes and numbers, the implicit list, events,
// and the system classes. Each schema runs through Parser, Analyzer and
// doChecks with the run-time reporter, which throws.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

struct Finished {
    explicit Finished(std::string const& text, bool keepFieldOrder = false) : reporter(nullptr, nullptr) {
        dir.write("s.zyl", "declare database db;\n" + text);
        file = std::fopen(dir.file("s.zyl").c_str(), "r");
        parser.reset(new Parser(file, "s.zyl", &reporter, "", ""));
        analyzer.reset(new Analyzer(parser.get(), keepFieldOrder, false, false, false, false, false, true, 8, 0,
                                    &hidden, nullptr));
        analyzer->initBaseTypes();
        try {
            analyzer->analyze();
            analyzer->doChecks();
        } catch (CompilerError const& e) {
            error = e.m_msg.c_str();
        }
    }
    ~Finished() {
        analyzer.reset();
        parser.reset();
        std::fclose(file);
    }
    Schema& schema() { return analyzer->schema(); }
    Class& cls(char const* name) { return *schema().findClass(name); }
    Struct& type(char const* name) { return *schema().findType(name); }
    std::vector<Class*> classes() {
        std::vector<Class*> out;
        forEachIn<Class>(schema().m_classes, [&out](Class& c) { return out.push_back(&c), true; });
        return out;
    }

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
std::string flag(bool on, char const* word) { return on ? word : ""; }

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

// "name kind[ unique][ implicit] <keys>" per index; with `codes`, the code
// and any user-defined number follow the name.
std::string indexList(Class const& c, bool codes = false) {
    char const* kinds[] = {"tree", "hash", "kdtree", "rtree", "patricia", "trigram", "list"};
    std::string out;
    for (unsigned i = 0; i < c.v_index.size(); i++) {
        Index const& x = c.v_index[static_cast<int>(i)];
        out += (i ? "; " : "") + str(x.m_name) + (codes ? "#" + num(x.m_code) : "") +
               (codes && x.m_userdefNo >= 0 ? "/u" + num(x.m_userdefNo) : "") + " " + kinds[x.m_type] +
               flag(x.m_unique, " unique") + flag(x.m_implicitList, " implicit") + " <";
        for (unsigned k = 0; k < x.v_fieldName.size(); k++)
            out += (k ? "," : "") + str(x.v_fieldName[static_cast<int>(k)]);
        out += ">";
    }
    return out;
}

// Path through the looked-up structs ("!" marks a field now used by a
// unique index), then the segment's marks. Every step is marked indexed.
std::string describe(Index::Segment const& s) {
    std::string out;
    for (unsigned i = 0; i < s.v_fldEl.size(); i++) {
        Index::FldEl const& e = s.v_fldEl[static_cast<int>(i)];
        out += (i ? "/" : "") + str(e.m_struct->m_name) + "." + str(e.m_field->m_name) +
               flag(e.m_field->m_isUniqueIndexed, "!");
        EXPECT_TRUE(e.m_name == e.m_field->m_name && e.m_field->m_isIndexed);
    }
    if (s.m_isVector || s.m_isArray)
        out += std::string(s.m_isVector ? " vector" : " array") + "@" + num(s.m_elemPos) + ":" + num(s.m_elemCategory);
    return out + flag(s.m_isBinary, " binary") + flag(s.m_desc, " desc") +
           flag(s.m_nocase, " nocase") + (s.m_collationNo >= 0 ? " coll" + num(s.m_collationNo) : "");
}

}  // namespace

// Types named before their declaration are resolved too; a struct's flags
// come from its fields, whatever its constructor said.
TEST(FinishModel, ResolvedTypesAndWhatFollowsFromThem) {
    Finished s("enum E { X, Y };\n"
               "struct Outer { Inner in; unsigned<2> v = 3; };\n"
               "struct Inner { blob b; };\n"
               "struct Fixed { signed<4> a; E e; };\n"
               "direct struct Empty {};\n"
               "class C { Outer o; sequence<signed<4>> q; Fixed f; };\n"
               "class O { optional Fixed a_long_name; };\n");
    ASSERT_EQ(s.error, "");
    struct {
        char const* name;
        char const* flags;  // dynamic, blobs, sequences, init; then the longest field name
    } const cases[] = {
        {"Outer", "dynamic blobs init 2"}, {"Fixed", "1"}, {"Empty", "0"},
        {"C", "dynamic blobs seqs init 1"}, {"O", "dynamic 11"},
    };
    for (auto const& c : cases) {
        Struct const* t = s.schema().findType(c.name) ? s.schema().findType(c.name) : s.schema().findClass(c.name);
        EXPECT_EQ(flag(t->m_isDynamic, "dynamic ") + flag(t->m_hasBlobs, "blobs ") +
                      flag(t->m_hasSequences, "seqs ") + flag(t->m_hasInit, "init ") + num(t->m_maxFieldNameLen),
                  c.flags)
            << c.name;
        EXPECT_TRUE(t->m_finished) << c.name;
        for (unsigned i = 0; i < t->v_field.size(); i++) {
            Field const& f = t->v_field[static_cast<int>(i)];
            ASSERT_NE(f.m_struct, nullptr) << f.m_name.c_str();
            EXPECT_EQ(f.m_struct->m_name, f.m_typeName);
        }
    }
    EXPECT_EQ(s.type("Fixed").findField("e")->m_enum, s.schema().findEnum("E"));
    EXPECT_EQ(s.cls("C").findField("q")->m_elemStruct, &s.type("signed<4>"));
}

// Segments, then the key part the index is vector-based on (the last wins).
TEST(FinishModel, SegmentsOfKeyParts) {
    struct {
        char const* decl;
        char const* segments;  // one per key part, joined by " | "
    } const cases[] = {
        {"tree<a desc, s ignore_case> t;", "A.a desc | A.s nocase -1"},
        {"tree<a, va.x.y> t;", "A.a | A.va/In.x/X.y vector@0:0 1"},
        {"tree<b> t;", "A.b binary -1"},
        {"hash<s collate c> t[5];", "A.s! coll0 -1"},
    };
    for (auto const& c : cases) {
        Finished s(std::string("struct X { signed<2> y; };\nstruct In { X x; };\n"
                   "transient class A { signed<4> a; string s; vector<In> va; binary<4> b; ") + c.decl + " };");
        ASSERT_EQ(s.error, "") << c.decl;
        Index const& x = s.cls("A").v_index[0];
        std::string got;
        for (unsigned k = 0; k < x.v_segment.size(); k++)
            got += (k ? " | " : "") + describe(x.v_segment[static_cast<int>(k)]);
        EXPECT_EQ(got + " " + num(x.m_vbased), c.segments) << c.decl;
    }
}

// Codes run through all classes, implicit lists and system indexes
// included; user-defined indexes are numbered apart.
TEST(FinishModel, IndexCodesAndUserdefNumbers) {
    Finished s("class A { signed<4> a; userdef tree<a> u1; tree<a> t; };\n"
               "class B { signed<4> b; };\n"
               "class C { autoid[5]; signed<4> c; userdef tree<c> u2; hash<c> long_name[7]; };\n");
    ASSERT_EQ(s.error, "");
    EXPECT_EQ(indexList(s.cls("A"), true), "u1#0/u0 tree <a>; t#1 tree <a>");
    EXPECT_EQ(indexList(s.cls("B"), true), "list_index_#2 list unique implicit <>");
    EXPECT_EQ(indexList(s.cls("C"), true),
              "autoid#3 hash unique <autoid>; u2#4/u1 tree <c>; long_name#5 hash unique <c>");
    EXPECT_EQ(s.schema().m_userdefCount, 2);
    EXPECT_TRUE(s.cls("A").m_hasUserdef && !s.cls("B").m_hasUserdef && s.cls("C").m_hasUserdef);
    EXPECT_EQ(s.cls("C").m_maxIndexNameLen, 9);
}

// Collations are numbered in the order they were first named; the first
// key fixes what kind of text a collation compares.
TEST(FinishModel, CollationNumbersAndKinds) {
    Finished s("class A { char<4> a; string s; nstring n; tree<s collate latin> t; tree<n collate greek> g; };\n"
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
    struct {
        char const* cls;
        char const* indexes;
        bool keepFieldOrder = false;
    } const cases[] = {
        {"class A { signed<4> a; };", "list_index_ list unique implicit <>"},
        {"class A { signed<4> a; };", "list_index_ tree unique implicit <>", true},
        {"class A { oid; signed<4> a; };", ""},
        {"class A { signed<4> a; list; };", "list_index_ tree unique <>"},
        {"transient class A { signed<4> a; voluntary tree<a> t; };", "t tree <a>"},
        {"persistent class A { signed<4> a; voluntary tree<a> t; };", "t tree <a>; list_index_ list unique implicit <>"},
        {"persistent class A { signed<4> a; voluntary tree<a> t; tree<a> u; };", "t tree <a>; u tree <a>"},
    };
    for (auto const& c : cases) {
        Finished s(std::string("declare oid K[5];\nstruct K { signed<4> k; };\n") + c.cls, c.keepFieldOrder);
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
    Finished s("class A { signed<4> a; char<4> c; event<new> n; event<a update> ua; event<c update> uc; };\n"
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
    Finished s("declare auto_oid[10];\npersistent distributed class A { signed<4> a; };\n"
               "transient distrib class B { signed<4> b; };");
    ASSERT_EQ(s.error, "");
    std::vector<Class*> all = s.classes();
    ASSERT_EQ(all.size(), 4u);
    for (int i : {2, 3}) {
        Class const& c = *all[i];
        EXPECT_EQ(str(c.m_name), i == 2 ? "@sys_distribs_disk" : "@sys_distribs_inmem");
        EXPECT_EQ(fieldList(c), "auto_oid@:$auto_oid auto_oid timestamp class_code:unsigned<2>");
        EXPECT_EQ(indexList(c), "ts_idx tree <class_code,timestamp>; ao_idx hash unique <auto_oid,class_code>");
        EXPECT_EQ(c.m_persistent, i == 2);
        EXPECT_TRUE(c.m_local && c.m_isSystem && c.m_fixed && c.m_atomic && !c.m_isClass && !c.m_isDynamic);
        EXPECT_EQ(c.v_index[1].ecount * 10 + static_cast<int>(c.v_index[1].v_segment.size()), 10002);
    }
}

// Which IoT classes exist, and their fields and indexes at each level.
TEST(FinishModel, IoTSystemClasses) {
    struct {
        char const* iot;
        char const* tables;
        char const* classes;  // system classes, persistent ones marked "+"
        char const* ts;       // fields of @sys_iot_ts
        char const* del;      // fields and indexes of the first deletion class
    } const cases[] = {
        {"iot server;", "transient uptable class A { signed<4> a; };", "@sys_iot_ts @sys_iot_del_inmem",
         "type:unsigned<1>! src!=1 dbid!=1 dst! value!",
         "class_code:unsigned<2>! dst_agent_id! object_id! timestamp! / ts_idx tree <dst_agent_id,timestamp>"},
        {"iot router<7> 12;",
         "persistent uptable class A { signed<4> a; };\ntransient downtable class B { signed<4> b; };",
         "@sys_iot_ts+ @sys_iot_del_disk+ @sys_iot_del_inmem",
         "type:unsigned<1>! src!=12 dbid!=7 dst! value!",
         "class_code:unsigned<2>! src_agent_id! db_id! dst_agent_id! object_id! timestamp! / "
         "ts_idx tree <src_agent_id,db_id,dst_agent_id,timestamp>; id_idx hash unique <src_agent_id,db_id,object_id>"},
        {"declare auto_oid[5];\niot device;", "persistent downtable class B { signed<4> b; };",
         "@sys_iot_ts+ @sys_iot_del_disk+", "auto_oid@:$auto_oid! type:unsigned<1>! src!=0 dbid!=65535 dst! value!",
         "auto_oid@:$auto_oid! class_code:unsigned<2>! object_id! timestamp! / ts_idx tree <timestamp>"},
    };
    for (auto const& c : cases) {
        Finished s(std::string(c.iot) + "\n" + c.tables);
        ASSERT_EQ(s.error, "") << c.iot;
        std::string names;
        std::vector<Class*> del;
        for (Class* k : s.classes())
            if (k->m_isSystem) {
                names += (names.empty() ? "" : " ") + str(k->m_name) + flag(k->m_persistent, "+");
                if (str(k->m_name).find("@sys_iot_del") == 0)
                    del.push_back(k);
            }
        EXPECT_EQ(names, c.classes) << c.iot;
        EXPECT_EQ(fieldList(s.cls("@sys_iot_ts")), c.ts) << c.iot;
        EXPECT_EQ(indexList(s.cls("@sys_iot_ts")), "idx tree unique <type,dst,src,dbid>") << c.iot;
        EXPECT_EQ(fieldList(*del[0]) + " / " + indexList(*del[0]), c.del) << c.iot;
    }
}

