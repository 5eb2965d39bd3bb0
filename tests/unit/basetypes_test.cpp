// The base types the analyzer starts from, the reserved words, and the
// integer types of enums.
#include <gtest/gtest.h>

#include <string>

#include "host/zylcomp/analyzer.h"
#include "host/zylcomp/schema.h"
#include "support/process.h"

namespace {

// An analyzer that reads nothing: enough for the tables, which never touch
// the token reader.
struct Standalone {
    Standalone(bool keepFieldOrder, bool wideOffsets, bool sqlReservedWords)
        : analyzer(nullptr, keepFieldOrder, wideOffsets, false, sqlReservedWords, false, false, true, 8, 0, &hidden,
                   nullptr) {
        analyzer.initBaseTypes();
    }
    mvector<mstring> hidden;
    Analyzer analyzer;
};

}  // namespace

// A row or two for each combination of the layout flags: category, C type,
// dynamic, then compact size/large size and compact alignment/large
// alignment.
TEST(BaseTypes, KindsAndSizesFollowTheFlags) {
    struct {
        bool keepFieldOrder, wideOffsets;
        char const* name;
        char const* expected;
    } const cases[] = {
        {false, false, "$version", "7 int2 4/4 4/4"},
        {false, false, "string", "3  dynamic 2/4 2/4"},
        {false, true, "blob", "4  dynamic 12/12 8/8"},
        {false, true, "sequence", "14  8/8 8/8"},
        {true, false, "unsigned<8>", "1 uint8 8/8 8/8"},
        {true, false, "blob", "4  dynamic 8/8 4/4"},
    };
    for (auto const& c : cases) {
        Standalone s(c.keepFieldOrder, c.wideOffsets, false);
        Struct const* t = s.analyzer.schema().findType(c.name);
        ASSERT_NE(nullptr, t) << c.name;
        Layout2 const& l = t->m_layout;
        EXPECT_EQ(std::to_string(t->m_category) + " " + t->m_cType.c_str() + (t->m_isDynamic ? " dynamic " : " ") +
                      std::to_string(l.compact.m_size.m_num) + "/" + std::to_string(l.large.m_size.m_num) + " " +
                      std::to_string(l.compact.m_align.m_num) + "/" + std::to_string(l.large.m_align.m_num),
                  c.expected)
            << c.name << " " << c.keepFieldOrder << c.wideOffsets;
        EXPECT_EQ(t->m_hasBlobs, std::string(c.name) == "blob");
    }
    EXPECT_EQ(Standalone(false, false, false).analyzer.schema().m_types->size(), 23u);
}

// Two case-sensitive lists; SQL words only on request.
TEST(BaseTypes, ReservedWords) {
    struct {
        char const* word;
        bool withoutSql, withSql;
    } const cases[] = {
        {"select", false, true}, {"int", false, true},   {"atomic", false, true},    {"update", true, true},
        {"date", true, true},    {"Class", false, false}, {"OID", true, true},       {"HA", false, false},
        {"AUTO_OID", false, false},
    };
    Standalone plain(false, false, false);
    Standalone sql(false, false, true);
    for (auto const& c : cases) {
        EXPECT_EQ(c.withoutSql, plain.analyzer.isReservedWord(c.word)) << c.word;
        EXPECT_EQ(c.withSql, sql.analyzer.isReservedWord(c.word)) << c.word;
    }
}

TEST(BaseTypes, EnumOfAnotherSizeIsAnInternalFault) {
    ProcessResult r = runInChild([] { enum_int_type(3); });
    EXPECT_EQ(255, r.status);
    EXPECT_EQ("internal error: illegal enum element size (3)\n", r.err);
}
