// The manual in doc/ keeps up with the compiler: every word of the schema
// language is in the language reference (Cli.HelpManPageAndReadmeListTheSameOptions
// checks the options), and the tour's program compiles against the
// generated code.
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

#include "support/process.h"

namespace {

std::string const kRoot = std::string(ZYLCOMP_TESTS_DIR) + "/../";

// The words no schema may use as a name, and the other words the grammar
// reads in their places.
char const* const kWords[] = {
    "class", "signed", "unsigned", "char", "binary", "OID", "oid", "compact", "struct", "list", "sequences",
    "autoid", "hash", "tree", "double", "float", "string", "declare", "database", "voluntary", "optional", "date",
    "time", "datetime", "vector", "history", "unique", "nonunique", "ascending", "asc", "descending", "desc",
    "case_insensitive", "ignore_case", "ref", "event", "new", "delete", "delete_all", "checkpoint", "update",
    "uptable", "downtable", "iot", "calculator", "nchar", "nstring", "direct", "packed", "persistent", "transient",
    "local", "distributed", "distrib", "userdef", "collate",
    // read by the grammar
    "sequence", "rect", "rectangle", "point", "patricia", "kdtree", "rtree", "trigram", "inclusive", "thick",
    "nullable", "atomic", "nonatomic", "TTL_count", "TTL_clock_time", "sec", "ms", "us", "server", "device",
    "router", "auto_oid", "AUTO_OID", "HA", "autoid_t", "numeric", "decimal", "boolean", "blob", "varbinary",
    "updated_bitmap"};

TEST(DocReference, EveryWordOfTheLanguageIsInTheReference) {
    std::string const doc = readFile(kRoot + "doc/language.md");
    for (char const* word : kWords)
        EXPECT_NE(doc.find("`" + std::string(word) + "`"), std::string::npos) << word;
}

TEST(DocTour, ProgramCompiles) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0)
        GTEST_SKIP() << "no C compiler";
    TempDir dir;
    ProcessResult gen = runProgram({cliPath(), "-q", "-o", dir.path(), kRoot + "examples/tour/hotel.zyl"});
    ASSERT_EQ(gen.status, 0) << gen.err;
    EXPECT_EQ(gen.err, "");
    ProcessResult cc = runProgram({ZYLCOMP_TEST_CC, "-std=c99", "-Wall", "-Werror", "-c", "-I" + dir.path(),
                                   std::string("-I") + ZYLCOMP_TESTS_DIR + "/runtime", "-I" + kRoot + "include",
                                   kRoot + "examples/tour/main.c", "hotel.c"},
                                  dir.path());
    EXPECT_EQ(cc.status, 0) << cc.err;
}

}  // namespace
