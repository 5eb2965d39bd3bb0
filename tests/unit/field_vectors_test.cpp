// The fields' vector of a struct or class read from schema text: however
// the analyzer collected the body, the finished record holds its fields in
// order, in a block of exactly their number.
#include <gtest/gtest.h>

#include <string>

#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

TEST(FieldVectors, EndExactlySizedAndInOrder) {
    std::string body;
    for (int i = 0; i < 37; i++)
        body += "unsigned<4> f" + std::to_string(i) + "; ";
    TempDir dir;
    dir.write("s.zyl", "declare database d;\nstruct S { " + body + "};\nclass C { " + body +
                           "nullable signed<2> n; autoid[10]; };");
    FILE* file = std::fopen(dir.file("s.zyl").c_str(), "r");
    ASSERT_NE(file, nullptr);
    ErrReporterMem reporter(nullptr, nullptr);
    {
        Parser parser(file, "s.zyl", &reporter, "", "");
        Analyzer analyzer(&parser, false, false, false, false, false, false, true, 8, 0, nullptr, nullptr);
        analyzer.initBaseTypes();
        std::string error;
        try {
            analyzer.analyze();
        } catch (CompilerError const& e) {
            error = e.m_msg.c_str();
        }
        ASSERT_EQ(error, "");

        Struct const& s = *analyzer.schema().findType("S");
        Class const& c = *analyzer.schema().findClass("C");
        EXPECT_EQ(s.v_field.size(), 37u);
        EXPECT_EQ(s.v_field.capacity(), s.v_field.size());
        EXPECT_EQ(c.v_field.size(), 40u);  // the 37, n, autoid and n's indicator
        EXPECT_EQ(c.v_field.capacity(), c.v_field.size());
        for (int i = 0; i < 37; i++) {
            std::string const name = "f" + std::to_string(i);
            EXPECT_EQ(std::string(s.v_field[i].m_name.c_str()), name);
            EXPECT_EQ(std::string(c.v_field[i].m_name.c_str()), name);
            EXPECT_EQ(c.v_field[i].m_position, i);
        }
        EXPECT_EQ(std::string(c.v_field[37].m_name.c_str()), "n");
        EXPECT_EQ(std::string(c.v_field[38].m_name.c_str()), "autoid");
        EXPECT_EQ(std::string(c.v_field[39].m_name.c_str()), "n_indicator");
        EXPECT_EQ(c.v_field[37].m_indicator, 39);
    }
    std::fclose(file);
}
