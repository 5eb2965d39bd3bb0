// The compile job's own rules, apart from the pipeline it drives.
#include <gtest/gtest.h>

#include "driver/job.h"
#include "host/zylcomp/genoutput.h"
#include "support/process.h"

TEST(Job, IncludeDirectoryDerivation) {
    char const* const cases[][2] = {
        {"ab", ""},  // short paths never yield a directory
        {"/ab.zyl", ""},  // only a separator at index 0 or 1
        {"a/b.zyl", ""},
        {"ab/c.zyl", "ab"},  // index 2 is looked at
        {"dir/sub/s.zyl", "dir/sub"},
        {"dir\\sub\\s.zyl", "dir\\sub"},
        {"dir/sub/", "dir/sub"},  // a trailing separator: everything before it
    };
    for (auto const& c : cases)
        EXPECT_EQ(Job::deriveIncludeDir(c[0]), c[1]) << "'" << c[0] << "'";
}

// Every file a compile could write; an existing skeleton is kept, and the
// compile would write ".new" beside it.
TEST(Job, ListAllOutputs) {
    TempDir dir;
    std::string const expected[] = {"shop.h", "shop.c", "shop.hpp", "shop.xml", "shop_udf.c", "shop_coll.c"};
    for (bool exist : {false, true}) {
        if (exist) {
            dir.write("shop_udf.c", "/* mine */");
            dir.write("shop_coll.c", "/* mine */");
        }
        mvector<mstring> files = GenOutput::listAllOutputs("shop", dir.path().c_str());
        ASSERT_EQ(files.size(), 6u);
        for (int i = 0; i < 6; i++)
            EXPECT_EQ(files[i], (dir.file(expected[i]) + (exist && i >= 4 ? ".new" : "")).c_str()) << i;
    }
    EXPECT_EQ(GenOutput::listAllOutputs("shop", "")[0], "shop.h");
}
