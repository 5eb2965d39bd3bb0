// The compile job's own rules, apart from the pipeline it drives.
#include <gtest/gtest.h>

#include "driver/job.h"

TEST(Job, IncludeDirectoryDerivation) {
    char const* const cases[][2] = {
        {"ab", ""},  // short paths never yield a directory
        {"/ab.zyl", ""},  // only a separator at index 0 or 1
        {"a/b.zyl", ""},
        {"ab/c.zyl", "ab"},  // index 2 is looked at
        {"dir\\sub\\s.zyl", "dir\\sub"},
        {"dir/sub/", "dir/sub"},  // a trailing separator: everything before it
    };
    for (auto const& c : cases)
        EXPECT_EQ(Job::deriveIncludeDir(c[0]), c[1]) << "'" << c[0] << "'";
}
