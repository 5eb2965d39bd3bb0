// The reserved words the analyzer refuses as names.
#include <gtest/gtest.h>

#include <string>

#include "host/zylcomp/analyzer.h"
#include "host/zylcomp/schema.h"

namespace {

// An analyzer that reads nothing: enough for the tables, which never touch
// the token reader.
struct Standalone {
    explicit Standalone(bool sqlReservedWords)
        : analyzer(nullptr, false, false, false, sqlReservedWords, false, false, true, 8, 0, &hidden,
                   nullptr) {
        analyzer.initBaseTypes();
    }
    mvector<mstring> hidden;
    Analyzer analyzer;
};

}  // namespace

// Two case-sensitive lists; SQL words only on request.
TEST(BaseTypes, ReservedWords) {
    struct {
        char const* word;
        bool withoutSql, withSql;
    } const cases[] = {
        {"select", false, true}, {"update", true, true}, {"Class", false, false},
        {"OID", true, true},     {"HA", false, false},   {"AUTO_OID", false, false},
    };
    Standalone plain(false);
    Standalone sql(true);
    for (auto const& c : cases) {
        EXPECT_EQ(c.withoutSql, plain.analyzer.isReservedWord(c.word)) << c.word;
        EXPECT_EQ(c.withSql, sql.analyzer.isReservedWord(c.word)) << c.word;
    }
}
