// Every message of the finishing passes and the system classes, as the
// command line prints it, and what a compile leaves in its directory. The
// rows live in support/message_rows.cpp, shared with the run-time entry's
// tests.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/message_rows.h"
#include "support/process.h"


TEST(FinishMessages, EachMessageAndWhatTheCompileLeaves) {
    for (MessageRow const& c : finishRows()) {
        SCOPED_TRACE(c.schema);
        TempDir dir;
        dir.write("s.zyl", c.schema);
        std::vector<std::string> argv = {cliPath()};
        if (c.option)
            argv.push_back(c.option);
        argv.push_back("s.zyl");
        ProcessResult r = runProgram(argv, dir.path());
        EXPECT_EQ(r.err, c.err);
        std::vector<std::string> files = dir.list();
        if (*c.err) {
            EXPECT_EQ(r.status, 255);
            EXPECT_EQ(r.out, "Error executing DDL compiler\n");
            EXPECT_EQ(files, std::vector<std::string>{"s.zyl"});
        } else {
            EXPECT_EQ(r.status, 0);
            // A collation asks for db_coll.c as well.
            ASSERT_GE(files.size(), 3u);
            EXPECT_EQ(files[0] + " " + files[1], "db.c db.h");
        }
    }
}
