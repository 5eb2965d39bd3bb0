// Message translation and the places the batch reporter names.
#include <gtest/gtest.h>

#include <string>

#include "frontend/diagnostics.h"
#include "support/process.h"

// Look-up in the table, empty parameters dropping out, numbers beyond the
// parameters vanishing, unknown keys passing through.
TEST(Diagnostics, TranslateError) {
    struct { char const *key, *p[4], *expected; } const cases[] = {
        // With no parameter at all the message stands as it is, "#1" and all.
        {"type #1 already defined", {"", "", "", ""}, "type \"#1\" was already defined"},
        {"field #1 was not defined in struct #2 and referenced from index #3, #4",
         {"f", "S", "", ""},
         "field f was not defined in struct S and referenced from index "},
        {"no such key #2 and #1 and #9", {"A", "B", "", ""}, "no such key B and A and "},
        {"expected ,  ", {"", "", "", ""}, "expected ,  "},  // the key must match to the letter
    };
    for (auto const& c : cases)
        EXPECT_EQ(translateError(c.key, c.p[0], c.p[1], c.p[2], c.p[3]), c.expected) << c.key;
}

TEST(Diagnostics, ReplacedTableEntryTakesEffect) {
    char const* saved = ZYL_MESSAGES[25];
    ASSERT_STREQ(saved, "oid struct #1 was not defined=oid struct \"#1\" was not defined");
    ZYL_MESSAGES[25] = "oid struct #1 was not defined = struct d'oid \"#1\" inconnue ";
    EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "struct d'oid \"X\" inconnue");
    // An empty message falls back to the key; an entry that does not split
    // in two is skipped.
    for (char const* entry : {"oid struct #1 was not defined=", "oid struct #1 was not defined=a=b"}) {
        ZYL_MESSAGES[25] = entry;
        EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "oid struct X was not defined");
    }
    ZYL_MESSAGES[25] = saved;
}

TEST(Diagnostics, ErrReporterPrefixRules) {
    struct { char const *file, *defaultFile; int line, pos; char const* prefix; } const cases[] = {
        {"", "dflt.zyl", 3, 4, "File dflt.zyl;  line 3, position 5: "},
        {"a.zyl", "", 0, 0, "File a.zyl;  line 0: "},
        {"a.zyl", "", -1, 5, "File a.zyl; "},
        {"", "", 4, 2, " line 4, position 3: "},
        {"", "", -3, 0, ""},
    };
    for (auto const& c : cases) {
        ProcessResult r = runInChild([&] {  // an error ends the child like a compile
            ErrReporter rep;
            rep.setDefaultFilename(c.defaultFile);
            rep.err1("unexpected token #1", "x", c.file, c.line, c.pos);
        });
        EXPECT_EQ(r.err, std::string(c.prefix) + "error: unexpected token: \"x\"\n\n");
        EXPECT_EQ(r.out, "Error executing DDL compiler\n");
        EXPECT_EQ(r.status, 255);
    }
}
