// The compile job's own rules, apart from the pipeline it drives.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/final_callback.h"
#include "driver/job.h"
#include "host/zylcomp/genoutput.h"
#include "support/process.h"

TEST(Job, IncludeDirectoryDerivation) {
    struct {
        char const* path;
        char const* expected;
    } const cases[] = {
        {"", ""},
        {"a", ""},
        {"ab", ""},
        {"/a", ""},               // short paths never yield a directory
        {"a/", ""},
        {"/ab.zyl", ""},          // only separator at index 0
        {"a/b.zyl", ""},          // only separator at index 1
        {"a\\b.zyl", ""},
        {"ab/c.zyl", "ab"},       // index 2 is looked at
        {"dir/sub/s.zyl", "dir/sub"},
        {"dir\\sub\\s.zyl", "dir\\sub"},
        {"dir/sub/", "dir/sub"},  // a trailing separator: everything before it
        {"dir/", "dir"},
        {"abc", ""},
        {"/abs/dir/s.zyl", "/abs/dir"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(Job::deriveIncludeDir(c.path), c.expected) << "'" << c.path << "'";
}

TEST(Job, DefaultsMatchTheClassDefaults) {
    Job job;
    EXPECT_TRUE(job.atomicDefault);
    EXPECT_EQ(job.sizeofSize, 8);
    EXPECT_FALSE(job.cppWrappers);
    EXPECT_EQ(job.hiddenClasses.size(), 0u);
}

TEST(Job, ListAllOutputs) {
    TempDir dir;
    mvector<mstring> files = GenOutput::listAllOutputs("shop", dir.path().c_str());
    char const* plain[] = {"shop.h", "shop.c", "shop.hpp", "shop.xml", "shop_udf.c", "shop_coll.c"};
    ASSERT_EQ(files.size(), 6u);
    for (int i = 0; i < 6; i++)
        EXPECT_EQ(files[i], (dir.path() + "/" + plain[i]).c_str());

    // Existing skeletons are kept; the compile would write ".new" beside them.
    dir.write("shop_udf.c", "/* mine */");
    dir.write("shop_coll.c", "/* mine */");
    files = GenOutput::listAllOutputs("shop", dir.path().c_str());
    EXPECT_EQ(files[4], (dir.path() + "/shop_udf.c.new").c_str());
    EXPECT_EQ(files[5], (dir.path() + "/shop_coll.c.new").c_str());

    files = GenOutput::listAllOutputs("shop", "");
    EXPECT_EQ(files[0], "shop.h");
}

TEST(Job, FinalCallbackRemovesTheDatabaseFiles) {
    TempDir dir;
    for (char const* f : {"db.h", "db.c", "db.hpp", "db.xml", "other.h"})
        dir.write(f, "x");
    FinalCallback cb(dir.path().c_str());
    cb.execute();  // before the name is known nothing is removed
    EXPECT_EQ(dir.list().size(), 5u);
    cb.dbnameFound("");
    EXPECT_EQ(cb.files().size(), 0u);
    cb.dbnameFound("db");
    EXPECT_EQ(cb.files().size(), 6u);
    cb.execute();  // missing files are no fault
    EXPECT_EQ(dir.list(), std::vector<std::string>{"other.h"});
}

namespace {

std::vector<std::string> strings(mvector<mstring> const& v) {
    std::vector<std::string> out;
    for (unsigned i = 0; i < v.size(); i++)
        out.push_back(v[i].c_str());
    return out;
}

}  // namespace

// After a complete compile the job names what it read and what it wrote,
// for the front end's dependency file.
TEST(Job, RecordsTheFilesItReadAndWrote) {
    TempDir dir;
    std::string schema = dir.write("s.zyl", "declare database s;\n#include \"t.zyl\"\nclass C { T t; };\n");
    dir.write("t.zyl", "#define T unsigned<4>\n");
    Job job;
    job.inputFile = schema.c_str();
    job.outputDir = dir.path().c_str();
    job.cppWrappers = true;
    EXPECT_EQ(job.run(), 1u);
    EXPECT_EQ(strings(job.filesRead), (std::vector<std::string>{schema, dir.file("t.zyl")}));
    EXPECT_EQ(strings(job.filesWritten),
              (std::vector<std::string>{dir.file("s.h"), dir.file("s.c"), dir.file("s.hpp")}));
}
