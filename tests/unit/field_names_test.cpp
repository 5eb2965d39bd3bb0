// A field statement refuses a name its body already has, however the body
// came to hold it: a long body, a further name of the same statement, a
// system field put in front, or the body before (which must not count).
#include <gtest/gtest.h>

#include <string>

#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

// Reads `text` and runs the finishing passes; the first error's text, or
// "" when there is none.
std::string compile(std::string const& text, bool keepFieldOrder = false) {
    TempDir dir;
    dir.write("s.zyl", text);
    FILE* file = std::fopen(dir.file("s.zyl").c_str(), "r");
    EXPECT_NE(file, nullptr);
    if (file == nullptr)
        return "no file";
    ErrReporterMem reporter(nullptr, nullptr);
    std::string error;
    {
        Parser parser(file, "s.zyl", &reporter, "", "");
        Analyzer analyzer(&parser, keepFieldOrder, false, false, false, false, false, true, 8, 0, nullptr, nullptr);
        analyzer.initBaseTypes();
        try {
            analyzer.analyze();
            analyzer.doChecks();
        } catch (CompilerError const& e) {
            error = e.m_msg.c_str();
        }
    }
    std::fclose(file);
    return error;
}

std::string fields(int n) {
    std::string body;
    for (int i = 0; i < n; i++)
        body += "unsigned<4> f" + std::to_string(i) + ";\n";
    return body;
}

}  // namespace

TEST(FieldNames, LongBodiesFindEveryEarlierName) {
    for (int n : {1, 32, 33, 300}) {
        for (int dup : {0, n - 1}) {
            std::string const again = "boolean f" + std::to_string(dup) + "; ";
            EXPECT_EQ(compile("declare database d;\nstruct S { " + fields(n) + again + "};"),
                      "field f" + std::to_string(dup) + " already exists")
                << n << " " << dup;
            EXPECT_EQ(compile("declare database d;\nclass C { " + fields(n) + again + "};"),
                      "field f" + std::to_string(dup) + " already exists")
                << n << " " << dup;
        }
        EXPECT_EQ(compile("declare database d;\nclass C { " + fields(n) + "boolean g; };"), "") << n;
    }
}

TEST(FieldNames, FurtherNamesOfOneStatement) {
    EXPECT_EQ(compile("declare database d;\nclass C { signed<4> a, b, c, b; };"), "field b already exists");
    EXPECT_EQ(compile("declare database d;\nclass C { signed<4> a, b, c; signed<2> d, e; };"), "");
}

TEST(FieldNames, SystemFieldsBetweenStatements) {
    // autoid goes to the front when the field order is kept, behind
    // auto_oid@ when there is one; the names before and after it count.
    for (bool keep : {false, true}) {
        EXPECT_EQ(compile("declare database d;\nclass C { signed<4> a; autoid[10]; signed<4> b; signed<2> a; };", keep),
                  "field a already exists")
            << keep;
        EXPECT_EQ(compile("declare database d;\ndeclare auto_oid[100];\n"
                          "class C { signed<4> a; autoid[10]; signed<4> b; signed<2> b; };",
                          keep),
                  "field b already exists")
            << keep;
        EXPECT_EQ(compile("declare database d;\nclass C { signed<4> a; autoid[10]; signed<4> b; };", keep), "") << keep;
    }
    EXPECT_EQ(compile("declare database d;\nclass C { signed<4> a; TTL_count 10; signed<4> a; };"),
              "field a already exists");
}

TEST(FieldNames, EachBodyStartsEmpty) {
    EXPECT_EQ(compile("declare database d;\nstruct S { signed<4> a; signed<4> b; };\n"
                      "struct T { signed<4> a; signed<4> b; };\n"
                      "class C { signed<4> a; S b; };\nclass D { T a; signed<4> b; };"),
              "");
}
