// zylcomp --compare and zyl_dict_compare: what changed between an old
// schema and a new one, and whether old data can still be read as it is.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/dict_memory.h"
#include "support/process.h"
#include "zylcomp.h"

namespace {

struct Pair {
    char const* name;
    char const* oldText;
    char const* newText;
    char const* findings;  // standard output; the status is 1 when one is breaking, else 0
};

ProcessResult compare(TempDir const& dir, std::vector<std::string> const& extra = {}) {
    std::vector<std::string> argv = {cliPath()};
    argv.insert(argv.end(), extra.begin(), extra.end());
    argv.insert(argv.end(), {"--compare", "old.zyl", "new.zyl"});
    return runProgram(argv, dir.path());
}

#define D "declare database d;\n"
#define PA D "persistent class A {\n"  // a persistent class A whose members start on line 3
#define A1 "class A { signed<4> n; };\n"
#define N(line) "File new.zyl;  line " #line ": "
#define O(line) "File old.zyl;  line " #line ": "
#define SIZE(a, b) "fixed " #a " to " #b ", initial " #a " to " #b ", compact " #a " to " #b ", large " #a " to " #b "\n"

}  // namespace

// One pair of schemas for each kind of change, with every finding; a
// persistent field's type and key parts, a nested field and an index made
// unique are the manual's example (CompareCli.DocumentedExample).
TEST(CompareCli, EachKindOfChange) {
    Pair const cases[] = {
        {"ClassAddedFirst", D "class B { signed<4> n; };\n", D "class A { signed<4> m; };\nclass B { signed<4> n; };\n",
         N(2) "compatible: class A added\n" N(3) "breaking: class B moved from class code 1 to 2\n"},
        {"ClassRemovedPersistent", D A1 "persistent class B { signed<4> m; };\n", D A1, O(3) "breaking: class B removed\n"},
        {"ClassRemovedTransient", D A1 "class B { signed<4> m; };\n", D A1, O(3) "compatible: class B removed\n"},
        {"ClassRenamed", D "persistent class A { signed<4> n; };\n", D "persistent class B { signed<4> n; };\n",
         N(2) "breaking: class A looks renamed to B: the same layout\n"},
        {"Persistence", D "persistent " A1 "class B { signed<4> n; };\n", D A1 "persistent class B { signed<4> n; };\n",
         N(2) "breaking: class A became transient\n" N(3) "compatible: class B became persistent\n"},
        {"Compact", D "persistent class A { string s; };\n", D "persistent compact class A { string s; };\n",
         N(2) "breaking: class A became compact\n" N(2) "breaking: class A changed its object size: initial 4 to 2\n"},
        {"Distributed", D "declare auto_oid[10];\n" A1, D "declare auto_oid[10];\ndistributed " A1,
         N(3) "breaking: class A became distributed\n"
         N(3) "compatible: class A changed its object size: " SIZE(12, 20)
         N(3) "compatible: field auto_oid@ of class A changed its place: compact offset 4 to 12, large offset 4 to 12\n"
         N(3) "compatible: field n of class A changed its place: compact offset 0 to 8, large offset 0 to 8\n"
         N(3) "compatible: field timestamp@ of class A added\n"
         N(3) "compatible: index timestamp_idx@ of class A added\n"
         O(3) "compatible: index list_index_ of class A removed\n"
         "File new.zyl; compatible: class @sys_distribs_inmem added\n"},
        {"CollationKind", D "class A {\n  char<8> s;\n  tree<s collate c1> byS;\n};\n",
         D "class A {\n  nchar<8> s;\n  tree<s collate c1> byS;\n};\n",
         "File new.zyl; compatible: collation c1 changed from char to nchar keys\n"
         N(2) "compatible: class A changed its object size: " SIZE(8, 16)
         N(2) "compatible: class A changed its alignment: compact 1 to 2, large 1 to 2\n"
         N(3) "compatible: field s of class A changed type from char<8> to nchar<8>\n"
         N(3) "compatible: field s of class A changed its place: compact alignment 1 to 2, large alignment 1 to 2\n"
         N(4) "compatible: index byS of class A changed its key parts from <s char<8>> to <s nchar<8>>\n"},
        {"Collation", PA "  char<8> s;\n  tree<s collate c1> byS;\n};\n", PA "  char<8> s;\n  tree<s collate latin> byS;\n};\n",
         "File new.zyl; compatible: collation latin added\n"
         "File old.zyl; breaking: collation c1 removed\n"
         N(4) "breaking: key part s of index byS of class A changed collation from c1 to latin\n"},
        {"Local", D A1, D "local " A1, N(2) "breaking: class A became local\n"},
        {"FieldAddedRemoved", PA "  signed<4> a;\n  signed<4> b;\n};\n", PA "  signed<4> a;\n  signed<4> c;\n};\n",
         O(4) "breaking: field b of class A removed\n" N(4) "compatible: field c of class A added\n"},
        {"FieldArray", PA "  signed<4> v[2];\n};\n", PA "  signed<4> v[3];\n};\n",
         N(2) "breaking: class A changed its object size: " SIZE(8, 12)
         N(3) "breaking: field v of class A changed from an array of 2 to an array of 3\n"
         N(3) "breaking: field v of class A changed its place: compact size 8 to 12, large size 8 to 12\n"},
        {"FieldVector", PA "  signed<4> v;\n};\n", PA "  vector<signed<4>> v;\n};\n",
         N(2) "breaking: class A changed its object size: fixed 4 to 0, initial 4 to 6, large 4 to 6\n"
         N(2) "breaking: class A changed its alignment: compact 4 to 2\n"
         N(3) "breaking: field v of class A changed from a single value to a vector\n"
         N(3) "breaking: field v of class A changed its place: compact alignment 4 to 2, large size 4 to 6\n"
         O(2) "breaking: index list_index_ of class A removed\n"},
        {"FieldNullable", PA "  signed<4> n;\n};\n", PA "  nullable signed<4> n;\n};\n",
         N(2) "breaking: class A changed its object size: " SIZE(4, 5)
         N(3) "breaking: field n of class A became nullable\n" N(3) "compatible: field n_indicator of class A added\n"},
        {"FieldOptional", PA "  signed<4> n;\n};\n", PA "  optional signed<4> n;\n};\n",
         N(2) "breaking: class A changed its object size: fixed 4 to 0, compact 4 to 2\n"
         N(2) "breaking: class A changed its alignment: compact 4 to 2\n"
         N(3) "breaking: field n of class A became optional\n"
         N(3) "breaking: field n of class A changed its place: compact size 4 to 2, compact alignment 4 to 2\n"
         O(2) "breaking: index list_index_ of class A removed\n"},
        {"TransientFieldType", D "class A {\n  unsigned<4> qty;\n};\n", D "class A {\n  unsigned<8> qty;\n};\n",
         N(2) "compatible: class A changed its object size: " SIZE(4, 8)
         N(3) "compatible: field qty of class A changed type from unsigned<4> to unsigned<8>\n"},
        {"IndexAddedRemoved", PA "  signed<4> n;\n  tree<n> byN;\n};\n", PA "  signed<4> n;\n  tree<n> byM;\n};\n",
         N(4) "compatible: index byM of class A added\n" O(4) "breaking: index byN of class A removed\n"},
        {"IndexKind", D "class A {\n  signed<4> n;\n  tree<n> byN;\n};\n", D "class A {\n  signed<4> n;\n  hash<n> byN[10];\n};\n",
         N(4) "compatible: index byN of class A changed kind from tree to hash\n"
         N(4) "compatible: index byN of class A became unique\n"},
        {"IndexThick", PA "  signed<4> n;\n  tree<n> byN;\n};\n", PA "  signed<4> n;\n  thick tree<n> byN;\n};\n",
         N(4) "breaking: index byN of class A became thick\n"},
        {"IndexKeys", PA "  signed<4> n;\n  signed<4> m;\n  tree<n> byN;\n};\n",
         PA "  signed<4> n;\n  signed<4> m;\n  tree<n, m> byN;\n};\n",
         N(5) "breaking: index byN of class A changed its key parts from <n signed<4>> to <n signed<4>, m signed<4>>\n"},
        // The first of two key parts: not only the last one is compared.
        {"IndexOrder", PA "  signed<4> n;\n  signed<4> m;\n  tree<n, m> byN;\n};\n",
         PA "  signed<4> n;\n  signed<4> m;\n  tree<n desc, m> byN;\n};\n",
         N(5) "breaking: key part n of index byN of class A changed order from ascending to descending\n"},
        {"Events", D "class A {\n  signed<4> n;\n  event<new> born;\n};\n",
         D "class A {\n  signed<4> n;\n  event<n update> changed;\n};\n",
         N(2) "compatible: class A has a new event<n update>\n" O(2) "compatible: class A no longer has its event<new>\n"},
        {"Userdef", PA "  signed<4> n;\n  signed<4> m;\n  userdef tree<n> byN;\n  userdef tree<m> byM;\n};\n",
         PA "  signed<4> n;\n  signed<4> m;\n  userdef tree<m> byM;\n  userdef tree<n> byN;\n};\n",
         N(5) "breaking: index byM of class A moved from index number 1 to 0\n"
         N(5) "breaking: index byM of class A changed its user-defined index number from 1 to 0\n"
         N(6) "breaking: index byN of class A moved from index number 0 to 1\n"
         N(6) "breaking: index byN of class A changed its user-defined index number from 0 to 1\n"},
        {"AutoOid", D A1, D "declare auto_oid[100];\n" A1,
         "File new.zyl; breaking: the schema now declares auto_oid\n"
         N(3) "compatible: class A changed its object size: " SIZE(4, 12)
         N(3) "compatible: field auto_oid@ of class A added\n"},
        {"OidType", D "declare oid Id[10];\nstruct Id {\n  unsigned<4> v;\n};\nclass A {\n  oid;\n  signed<4> n;\n};\n",
         D "declare oid Id[10];\nstruct Id {\n  unsigned<8> v;\n};\nclass A {\n  oid;\n  signed<4> n;\n};\n",
         "File new.zyl; breaking: the oid type changed from 4 bytes (4 packed) to 8 bytes (8 packed)\n"
         N(6) "compatible: class A changed its object size: " SIZE(8, 12)
         N(8) "compatible: field n of class A changed its place: compact offset 4 to 8, large offset 4 to 8\n"},
    };
    for (Pair const& c : cases) {
        TempDir dir;
        dir.write("old.zyl", c.oldText);
        dir.write("new.zyl", c.newText);
        ProcessResult r = compare(dir);
        EXPECT_EQ(r.out, c.findings) << c.name;
        EXPECT_EQ(r.status, std::string(c.findings).find("breaking:") != std::string::npos ? 1 : 0) << c.name;
        // Nothing is written, whatever the outcome.
        EXPECT_EQ(dir.list(), (std::vector<std::string>{"new.zyl", "old.zyl"})) << c.name;
    }
}

// Texts that differ only in what the dictionary does not keep: comments,
// blank lines, the order of includes and macro spellings.
TEST(CompareCli, SameDictionaryReportsNothing) {
    TempDir dir;
    dir.write("old.zyl", "declare database d;\nstruct S {\n  char<8> c;\n};\nstruct T {\n  signed<2> t;\n};\n"
                         "persistent class A {\n  S s;\n  T t;\n  unsigned<4> n;\n  tree<n> byN;\n};\n");
    dir.write("new.zyl", "// the shop\n#define LEN 8\n#define COUNT unsigned<4>\ndeclare database d;\n\n"
                         "#include \"t.zyl\"\n/* a struct */\n#include \"s.zyl\"\npersistent class A {\n\n  S s;\n"
                         "  T t;\n  COUNT n; /* count */\n  tree<n> byN;\n};\n");
    dir.write("s.zyl", "struct S {\n  char<LEN> c; // name\n};\n");
    dir.write("t.zyl", "struct T {\n  signed<2> t;\n};\n");
    ProcessResult r = compare(dir);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.status, 0);
}

// The other options apply to both compiles: each finds its include in
// the directory -I names, and both classes are compact.
TEST(CompareCli, OptionsApplyToBoth) {
    TempDir dir;
    ASSERT_EQ(mkdir(dir.file("inc").c_str(), 0755), 0);
    dir.write("inc/types.zyl", "struct S {\n  signed<4> v;\n};\n");
    dir.write("old.zyl", "declare database d;\n#include \"types.zyl\"\nclass A {\n  S s;\n  string n;\n};\n");
    dir.write("new.zyl", "declare database d;\n#include \"types.zyl\"\ncompact class A {\n  S s;\n  string n;\n};\n");
    ProcessResult r = compare(dir, {"-I", "inc", "--compact"});
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.status, 0);
    r = compare(dir, {"-I", "inc"});
    EXPECT_EQ(r.out, "File new.zyl;  line 3: compatible: class A became compact\n"
                     "File new.zyl;  line 3: compatible: class A changed its object size: initial 8 to 6\n");
    EXPECT_EQ(r.status, 0);
}

// A refused schema, old or new, prints what a compile of it prints.
TEST(CompareCli, RefusedSchema) {
    char const* const good = "declare database d;\nclass A {\n  signed<4> n;\n};\n";
    char const* const bad = "declare database d;\nclass A {\n  signed<4> n\n};\n";
    for (bool badIsOld : {true, false}) {
        TempDir dir;
        dir.write("old.zyl", badIsOld ? bad : good);
        dir.write("new.zyl", badIsOld ? good : bad);
        ProcessResult r = compare(dir);
        EXPECT_EQ(r.err, std::string("File ") + (badIsOld ? "old" : "new") +
                             ".zyl;  line 4: error: expected ',' or ';'\n\n");
        EXPECT_EQ(r.out, "Error executing DDL compiler\n");
        EXPECT_EQ(r.status, 255);
    }
    TempDir dir;
    dir.write("new.zyl", good);
    ProcessResult r = compare(dir);
    EXPECT_EQ(r.err, "error: Cannot open \"old.zyl\"\n\n");
    EXPECT_EQ(r.status, 255);
}

TEST(CompareCli, Json) {
    TempDir dir;
    dir.write("old.zyl", "declare database d;\nstruct Addr {\n  char<20> city;\n};\n"
                         "persistent class P {\n  Addr addr;\n  signed<4> gone;\n};\n");
    dir.write("new.zyl", "declare database d;\n\nstruct Addr {\n  char<24> city;\n};\n"
                         "persistent class P {\n  Addr addr;\n};\n");
    ProcessResult r = compare(dir, {"--diagnostics-format", "json"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out,
              "{\"severity\":\"breaking\",\"message\":\"class P changed its alignment: compact 4 to 1, large 4 to 1\","
              "\"file\":\"new.zyl\",\"line\":6,\"column\":0,"
              "\"declaration\":{\"kind\":\"class\",\"name\":\"P\",\"file\":\"new.zyl\",\"line\":6,\"column\":0}}\n"
              "{\"severity\":\"breaking\",\"message\":\"field addr of class P changed its place: compact offset 4 to 0, "
              "compact size 20 to 24, large offset 4 to 0, large size 20 to 24\",\"file\":\"new.zyl\",\"line\":7,"
              "\"column\":0,\"declaration\":{\"kind\":\"field\",\"name\":\"P.addr\",\"file\":\"new.zyl\",\"line\":7,\"column\":0}}\n"
              "{\"severity\":\"breaking\",\"message\":\"field addr.city of class P changed type from char<20> to "
              "char<24>\",\"file\":\"new.zyl\",\"line\":4,\"column\":0,\"declaration\":{\"kind\":\"field\","
              "\"name\":\"P.addr.city\",\"file\":\"new.zyl\",\"line\":4,\"column\":0}}\n"
              "{\"severity\":\"breaking\",\"message\":\"field gone of class P removed\",\"file\":\"old.zyl\","
              "\"line\":7,\"column\":0,\"declaration\":{\"kind\":\"field\",\"name\":\"P.gone\",\"file\":\"old.zyl\","
              "\"line\":7,\"column\":0}}\n");
    // A change that no declaration holds names the file alone.
    dir.write("new.zyl", "declare database d;\ndeclare auto_oid[10];\nstruct Addr {\n  char<20> city;\n};\n"
                         "persistent class P {\n  Addr addr;\n  signed<4> gone;\n};\n");
    r = compare(dir, {"--diagnostics-format", "json"});
    EXPECT_EQ(r.out.substr(0, r.out.find('\n') + 1),
              "{\"severity\":\"breaking\",\"message\":\"the schema now declares auto_oid\",\"file\":\"new.zyl\","
              "\"line\":0,\"column\":0,\"declaration\":null}\n");
}

// The library function, which --compare calls (so an unchanged schema is in
// CompareCli.SameDictionaryReportsNothing): the fields of each finding, and
// offsets that only the run-time entry's parameters change.
TEST(CompareLibrary, TwoDictionaries) {
    struct Seen {
        std::vector<std::string> lines;
        int breaking = 0;
    };
    auto load = [](char const* text, bool wide) {
        zyl_dict_load_params_t p = {};
        p.wideOffsets = wide;
        zyl_dictionary_t* d = nullptr;
        size_t size = 0;
        EXPECT_EQ(zyl_db_load_dictionary(text, &p, &d, &size, nullptr, nullptr, nullptr, nullptr), 0);
        return d;
    };
    auto note = [](zyl_dict_change_t const* c, void* context) {
        Seen& s = *static_cast<Seen*>(context);
        s.breaking += c->kind == ZYL_CHANGE_BREAKING ? 1 : 0;
        s.lines.push_back(std::string(c->kind == ZYL_CHANGE_BREAKING ? "B " : "C ") + c->code + " " + c->subject +
                          " [" + c->class_name + "] [" + c->item + "] " + (c->in_old ? "old " : "new ") + "[" +
                          c->holder + "] " + std::to_string(c->decl_no) + ": " + c->message);
    };
    char const* const old = D "struct Addr {\n  unsigned<2> zip;\n  char<20> city;\n};\n"
                              "persistent class P {\n  Addr addr;\n  signed<4> gone;\n  tree<gone> byGone;\n};\n";
    zyl_dictionary_t *a = load(old, false), *b = load(old, true);
    zyl_dictionary_t* c = load(D "struct Addr {\n  unsigned<2> zip;\n  char<24> city;\n};\npersistent class P {\n  Addr addr;\n};\n",
                               false);
    ASSERT_TRUE(a && b && c);

    Seen wide;
    EXPECT_EQ(zyl_dict_compare(a, b, note, &wide), 1);
    EXPECT_EQ(wide.lines, (std::vector<std::string>{
                              "B schema-flags schema [] [] new [] -1: offsets changed from 4 to 8 bytes"}));

    Seen edited;
    int const n = zyl_dict_compare(a, c, note, &edited);
    EXPECT_EQ(n, edited.breaking);
    EXPECT_EQ(edited.lines,
              (std::vector<std::string>{
                  "B class-align class [P] [] new [] -1: class P changed its alignment: compact 4 to 2, large 4 to 2",
                  "B field-layout field [P] [addr] new [P] 0: field addr of class P changed its place: compact offset "
                  "4 to 0, compact size 22 to 26, large offset 4 to 0, large size 22 to 26",
                  "B field-type field [P] [addr.city] new [Addr] 1: field addr.city of class P changed type from "
                  "char<20> to char<24>",
                  "B field-removed field [P] [gone] old [P] 1: field gone of class P removed",
                  "C index-added index [P] [list_index_] new [] 0: index list_index_ of class P added",
                  "B index-removed index [P] [byGone] old [] 0: index byGone of class P removed"}));
    EXPECT_EQ(n, 5);
    // Without a callback only the count.
    EXPECT_EQ(zyl_dict_compare(a, c, nullptr, nullptr), n);
    EXPECT_EQ(zyl_dict_compare(nullptr, c, note, &edited), -1);
    EXPECT_EQ(zyl_dict_compare(a, nullptr, note, &edited), -1);
    for (zyl_dictionary_t* d : {a, b, c})
        zyl_dict_free(d, dictmem::forgetAndFree);
}

// The worked example of doc/compare.md prints what the chapter shows.
TEST(CompareCli, DocumentedExample) {
    std::string const doc = readFile(std::string(ZYLCOMP_TESTS_DIR) + "/../doc/compare.md");
    std::vector<std::string> schemas;
    for (size_t at = 0; (at = doc.find("```zyl\n", at)) != std::string::npos;) {
        at += 7;
        size_t const end = doc.find("```", at);
        ASSERT_NE(end, std::string::npos);
        schemas.push_back(doc.substr(at, end - at));
    }
    ASSERT_EQ(schemas.size(), 2u);
    size_t const from = doc.find("    File new.zyl;");
    ASSERT_NE(from, std::string::npos);
    std::string shown;
    for (size_t at = from; doc.compare(at, 4, "    ") == 0;) {
        size_t const end = doc.find('\n', at);
        shown += doc.substr(at + 4, end - at - 4) + "\n";
        at = end + 1;
    }
    TempDir dir;
    dir.write("old.zyl", schemas[0]);
    dir.write("new.zyl", schemas[1]);
    ProcessResult r = compare(dir);
    EXPECT_EQ(r.out, shown);
    EXPECT_EQ(r.status, 1);
}
