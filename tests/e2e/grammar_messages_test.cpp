// The messages the manual does not show (support/message_rows.cpp) as the
// command line prints them for s.zyl, and what the compile leaves.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/message_rows.h"
#include "support/process.h"

TEST(Messages, EachMessageWithFileLineAndPosition) {
    for (auto const* rows : {&grammarRows(), &finishRows(), &dictionaryRows()}) {
        for (MessageRow const& c : *rows) {
            SCOPED_TRACE(c.schema);
            TempDir dir;
            dir.write("s.zyl", c.schema);
            ProcessResult r = runProgram({cliPath(), c.option ? c.option : "--diagnostics-format=classic", "s.zyl"},
                                         dir.path());
            EXPECT_EQ(r.err, c.err);
            EXPECT_EQ(r.status, c.status());
            std::vector<std::string> const files = dir.list();
            if (c.status() == 0) {
                EXPECT_EQ(r.out.rfind("Compiled successfully: ", 0), 0u) << r.out;
                // A collation asks for db_coll.c as well.
                ASSERT_GE(files.size(), 3u);
                EXPECT_EQ(files[0] + " " + files[1], "db.c db.h");
            } else {
                EXPECT_EQ(r.out, "Error executing DDL compiler\n");
                // An error removes the outputs; a panic never puts this
                // compile's in place, and leaves no temporary of them.
                EXPECT_EQ(files, std::vector<std::string>{"s.zyl"});
            }
        }
    }
}

// The database name fixes what a failed compile removes: every file that
// compile could write (an existing skeleton is kept; its ".new" would go),
// and nothing at all while the name is not yet known.
TEST(Messages, DatabaseNameDecidesWhatAFailureRemoves) {
    char const* const stale[] = {"db.h", "db.c", "db.hpp", "db.xml", "db_udf.c", "other.h"};
    struct { char const* schema; std::vector<std::string> left; } const cases[] = {
        {"declare database db;\nclass A { unsigned<4> a, a; };", {"db_udf.c", "other.h", "s.zyl"}},
        {"class A { unsigned<4> a, a; };\ndeclare database db;",
         {"db.c", "db.h", "db.hpp", "db.xml", "db_udf.c", "other.h", "s.zyl"}},
        {"declare database other;\nclass A { unsigned<4> a, a; };",
         {"db.c", "db.h", "db.hpp", "db.xml", "db_udf.c", "s.zyl"}},
        {"declare database db;\ndeclare oid K[5];", {"db_udf.c", "other.h", "s.zyl"}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.schema);
        TempDir dir;
        for (char const* f : stale)
            dir.write(f, "stale");
        dir.write("s.zyl", c.schema);
        ProcessResult r = runProgram({cliPath(), "s.zyl"}, dir.path());
        EXPECT_EQ(r.status, 255);
        EXPECT_EQ(dir.list(), c.left);
    }
}
