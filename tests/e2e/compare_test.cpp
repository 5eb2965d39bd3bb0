// zylcomp --compare and zyl_dict_compare: what changed between an old
// schema and a new one, and whether old data can still be read as it is.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/dict_memory.h"
#include "support/process.h"
#include "zylcomp.h"

namespace {

ProcessResult compare(TempDir const& dir, std::vector<std::string> const& extra = {}) {
    std::vector<std::string> argv = {cliPath()};
    argv.insert(argv.end(), extra.begin(), extra.end());
    argv.insert(argv.end(), {"--compare", "old.zyl", "new.zyl"});
    return runProgram(argv, dir.path());
}

#define D "declare database d;\n"

}  // namespace

// Every case of tests/schemas/compare/changes.txt, one kind of change
// each, with the options and refusals; the status, the findings and what
// went to standard error are in tests/golden/compare/changes.out
// (ZYLCOMP_UPDATE_GOLDEN=1 rewrites it).
TEST(CompareCli, EachKindOfChange) {
    struct Case {
        std::string head;
        std::vector<std::pair<std::string, std::string>> files;
    };
    std::vector<Case> cases;
    std::istringstream in(readFile(std::string(ZYLCOMP_TESTS_DIR) + "/schemas/compare/changes.txt"));
    for (std::string line; std::getline(in, line);) {
        if (line.compare(0, 3, "== ") == 0)
            cases.push_back({line.substr(3), {}});
        else if (line.compare(0, 3, "-- ") == 0)
            cases.back().files.push_back({line.substr(3), ""});
        else if (!cases.empty() && !cases.back().files.empty())
            cases.back().files.back().second += line + "\n";
    }
    std::string report;
    for (Case const& c : cases) {
        TempDir dir;
        for (auto const& f : c.files) {
            if (f.first.find('/') != std::string::npos)
                mkdir(dir.file(f.first.substr(0, f.first.find('/'))).c_str(), 0755);
            dir.write(f.first, f.second);
        }
        std::istringstream words(c.head);
        std::vector<std::string> options{std::istream_iterator<std::string>(words), {}};
        std::vector<std::string> const before = dir.list();
        ProcessResult r = compare(dir, std::vector<std::string>(options.begin() + 1, options.end()));
        for (size_t at; (at = r.out.find(dir.path())) != std::string::npos;)
            r.out.replace(at, dir.path().size(), "DIR");  // a refusal names the current directory
        report += "== " + c.head + "\nstatus " + std::to_string(r.status) + "\n" + r.out +
                  (r.err.empty() ? "" : "-- standard error\n" + r.err);
        // Nothing is written, whatever the outcome.
        EXPECT_EQ(dir.list(), before) << c.head;
    }
    std::string const golden = std::string(ZYLCOMP_TESTS_DIR) + "/golden/compare/changes.out";
    if (std::getenv("ZYLCOMP_UPDATE_GOLDEN") != nullptr)
        std::ofstream(golden, std::ios::binary) << report;
    EXPECT_EQ(report, readFile(golden));
}

// The library function, which --compare calls (so an unchanged schema is in
// the SameDictionary case of EachKindOfChange): the fields of each finding, and
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
