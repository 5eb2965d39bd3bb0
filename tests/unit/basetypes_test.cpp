// The base types the analyzer starts from, the reserved words, and the
// integer types of enums.
#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "foundation/sets.h"
#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "host/zylcomp/schema.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

struct Flags {
    bool keepFieldOrder;
    bool wideOffsets;
    bool sqlReservedWords;
};

// An analyzer that reads nothing: enough for the tables, which never touch
// the token reader.
class Standalone {
public:
    explicit Standalone(Flags f)
        : analyzer(nullptr, f.keepFieldOrder, f.wideOffsets, false, f.sqlReservedWords, false, false, true, 8, 0,
                   &hidden, nullptr) {}
    mvector<mstring> hidden;
    Analyzer analyzer;
};

// The type set in walking order.
mvector<Struct*> typesInOrder(Schema& schema) {
    mvector<Struct*> out;
    ISet::Pos* pos = schema.m_types->first();
    for (; pos->valid(); pos->next())
        out.push_back(static_cast<Struct*>(pos->get().get()));
    delete pos;
    return out;
}

}  // namespace

// ---------------------------------------------------------------------------
// Base types

TEST(BaseTypes, NamesCategoriesAndCTypesInOrder) {
    struct {
        char const* name;
        int category;
        char const* cType;
        bool dynamic;
    } const expected[] = {
        {"signed<1>", 1, "int1", false},      {"signed<2>", 1, "int2", false},
        {"signed<4>", 1, "int4", false},      {"signed<8>", 1, "zyl_int8", false},
        {"autoid_t", 1, "autoid_t", false},   {"$autoid", 6, "autoid_t", false},
        {"$auto_oid", 8, "zyl_int8", false},  {"$version", 7, "int2", false},
        {"float", 1, "float", false},         {"double", 1, "double", false},
        {"unsigned<1>", 1, "uint1", false},   {"unsigned<2>", 1, "uint2", false},
        {"unsigned<4>", 1, "uint4", false},   {"boolean", 1, "uint1", false},
        {"unsigned<8>", 1, "uint8", false},   {"datetime", 1, "zyl_datetime", false},
        {"date", 1, "zyl_date", false},       {"time", 1, "zyl_time", false},
        {"string", 3, "", true},              {"varbinary", 16, "", true},
        {"nstring", 10, "", true},            {"blob", 4, "", true},
        {"sequence", 14, "", false},
    };
    Standalone s({false, false, false});
    s.analyzer.initBaseTypes();
    mvector<Struct*> types = typesInOrder(s.analyzer.schema());
    ASSERT_EQ(23u, types.size());
    for (unsigned i = 0; i < types.size(); i++) {
        Struct const* t = types[i];
        EXPECT_EQ(mstring(expected[i].name), t->m_name) << i;
        EXPECT_EQ(expected[i].category, static_cast<int>(t->m_category)) << expected[i].name;
        EXPECT_EQ(mstring(expected[i].cType), t->m_cType) << expected[i].name;
        EXPECT_EQ(expected[i].dynamic, t->m_isDynamic) << expected[i].name;
        EXPECT_EQ(i == 21, t->m_hasBlobs) << expected[i].name;  // only blob
        EXPECT_TRUE(t->m_finished) << expected[i].name;
        EXPECT_FALSE(t->m_isClass) << expected[i].name;
        EXPECT_EQ(t, s.analyzer.schema().findType(expected[i].name));
    }
}

// Sizes and alignments of both layouts: compact size, large size, compact
// alignment, large alignment.
struct SizeRow {
    char const* name;
    int cs, ls, ca, la;
};

struct SizeCase {
    char const* label;
    Flags flags;
    std::vector<SizeRow> rows;
};

void PrintTo(SizeCase const& c, std::ostream* os) { *os << c.label; }

class BaseTypesSizes : public ::testing::TestWithParam<SizeCase> {};

TEST_P(BaseTypesSizes, FollowTheFlags) {
    SizeCase const& c = GetParam();
    Standalone s(c.flags);
    s.analyzer.initBaseTypes();
    for (SizeRow const& r : c.rows) {
        Struct const* t = s.analyzer.schema().findType(r.name);
        ASSERT_NE(nullptr, t) << r.name;
        EXPECT_EQ(r.cs, t->m_layout.compact.m_size.m_num) << c.label << " " << r.name;
        EXPECT_EQ(r.ls, t->m_layout.large.m_size.m_num) << c.label << " " << r.name;
        EXPECT_EQ(r.ca, t->m_layout.compact.m_align.m_num) << c.label << " " << r.name;
        EXPECT_EQ(r.la, t->m_layout.large.m_align.m_num) << c.label << " " << r.name;
        EXPECT_TRUE(t->m_layout.large.m_size.m_expr.empty()) << r.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    FlagCombinations, BaseTypesSizes,
    ::testing::Values(
        SizeCase{"default",
                 {false, false, false},
                 {{"signed<1>", 1, 1, 1, 1},
                  {"signed<2>", 2, 2, 2, 2},
                  {"signed<4>", 4, 4, 4, 4},
                  {"signed<8>", 8, 8, 4, 4},
                  {"autoid_t", 8, 8, 4, 4},
                  {"$autoid", 8, 8, 4, 4},
                  {"$auto_oid", 8, 8, 4, 4},
                  {"$version", 4, 4, 4, 4},
                  {"double", 8, 8, 4, 4},
                  {"unsigned<8>", 8, 8, 4, 4},
                  {"datetime", 8, 8, 4, 4},
                  {"date", 4, 4, 4, 4},
                  {"boolean", 1, 1, 1, 1},
                  {"string", 2, 4, 2, 4},
                  {"varbinary", 2, 4, 2, 4},
                  {"nstring", 2, 4, 2, 4},
                  {"blob", 8, 8, 4, 4},
                  {"sequence", 4, 4, 4, 4}}},
        SizeCase{"wideOffsets",
                 {false, true, false},
                 {{"signed<4>", 4, 4, 4, 4},
                  {"signed<8>", 8, 8, 8, 8},
                  {"$auto_oid", 8, 8, 8, 8},
                  {"double", 8, 8, 8, 8},
                  {"datetime", 8, 8, 8, 8},
                  {"$version", 4, 4, 4, 4},
                  {"string", 2, 4, 2, 4},
                  {"blob", 12, 12, 8, 8},
                  {"sequence", 8, 8, 8, 8}}},
        SizeCase{"keepFieldOrder",
                 {true, false, false},
                 {{"signed<8>", 8, 8, 8, 8},
                  {"autoid_t", 8, 8, 8, 8},
                  {"double", 8, 8, 8, 8},
                  {"unsigned<8>", 8, 8, 8, 8},
                  {"float", 4, 4, 4, 4},
                  {"blob", 8, 8, 4, 4},
                  {"sequence", 4, 4, 4, 4}}}),
    [](::testing::TestParamInfo<SizeCase> const& info) { return std::string(info.param.label); });

TEST(BaseTypes, SchemaOptionsMirrorTheTwoLayoutFlags) {
    struct {
        bool keepFieldOrder, wideOffsets;
        int options;
    } const cases[] = {
        {false, false, 0},
        {false, true, 1},
        {true, false, 2},
        {true, true, 3},
    };
    for (auto const& c : cases) {
        Standalone s({c.keepFieldOrder, c.wideOffsets, false});
        EXPECT_EQ(c.options, s.analyzer.schema().m_schemaOptions) << c.keepFieldOrder << c.wideOffsets;
        EXPECT_EQ(mstring("0"), s.analyzer.schema().m_agentId);
    }
}

// ---------------------------------------------------------------------------
// Reserved words

TEST(ReservedWords, TwoListsCaseSensitive) {
    struct {
        char const* word;
        bool withoutSql;
        bool withSql;
    } const cases[] = {
        {"class", true, true},
        {"Class", false, false},
        {"OID", true, true},
        {"oid", true, true},
        {"HA", false, false},
        {"AUTO_OID", false, false},
        {"auto_oid", false, false},
        {"update", true, true},
        {"date", true, true},
        {"collate", true, true},  // last of the first list
        {"select", false, true},
        {"int", false, true},
        {"index", false, true},
        {"atomic", false, true},
        {"nonatomic", false, true},
        {"add", false, true},             // first of the second list
        {"TTL_clock_time", false, true},  // last of the second list
        {"ttl_count", false, false},
        {"string", true, true},  // in both lists
        {"blob", false, true},
        {"sequence", false, false},
        {"kdtree", false, false},
        {"", false, false},
        {"classes", false, false},
    };
    Standalone plain({false, false, false});
    Standalone sql({false, false, true});
    for (auto const& c : cases) {
        EXPECT_EQ(c.withoutSql, plain.analyzer.isReservedWord(c.word)) << '"' << c.word << '"';
        EXPECT_EQ(c.withSql, sql.analyzer.isReservedWord(c.word)) << '"' << c.word << '"';
    }
}

namespace {

struct Report {
    int count = 0;
    int type = -1;
    std::string message;
    std::string file;
    int pos = -1;
    std::string schemaPath;  // the file that was read
};

void collect(int type, char const* message, char const* file, int, int pos, void* context) {
    Report* r = static_cast<Report*>(context);
    r->count++;
    r->type = type;
    r->message = message;
    r->file = file;
    r->pos = pos;
}

// Reads the one word of a schema file and asks the analyzer about it.
Report checkWord(char const* word, bool sqlReservedWords) {
    TempDir dir;
    std::string path = dir.write("w.zyl", std::string(word) + "\n");
    FILE* f = std::fopen(path.c_str(), "r");
    Report report;
    report.schemaPath = path;
    ErrReporterMem reporter(collect, &report);
    {
        Parser parser(f, path.c_str(), &reporter, dir.path().c_str(), dir.path().c_str());
        mvector<mstring> hidden;
        Analyzer analyzer(&parser, false, false, false, sqlReservedWords, false, false, true, 8, 0, &hidden,
                          nullptr);
        mstring token = parser.get();
        EXPECT_EQ(mstring(word), token);
        try {
            analyzer.checkIsNotReserved(token);
        } catch (CompilerError const& e) {
            EXPECT_EQ(report.message, std::string(e.m_msg.c_str()));
        }
    }
    std::fclose(f);
    return report;
}

}  // namespace

TEST(ReservedWords, CheckIsNotReservedReportsThroughThePreprocessor) {
    Report r = checkWord("update", false);
    EXPECT_EQ(1, r.count);
    EXPECT_EQ(1, r.type);
    EXPECT_EQ("\"update\" is a reserved word", r.message);
    EXPECT_EQ(r.schemaPath, r.file);
    EXPECT_EQ(0, r.pos);

    r = checkWord("select", true);
    EXPECT_EQ(1, r.count);
    EXPECT_EQ("\"select\" is a reserved word", r.message);
}

TEST(ReservedWords, CheckIsNotReservedIsSilentForOtherWords) {
    for (char const* word : {"select", "Update", "HA", "my_field"})
        EXPECT_EQ(0, checkWord(word, false).count) << word;
}

// ---------------------------------------------------------------------------
// Enum integer types

TEST(BaseTypesEnumIntType, SizesOneTwoFour) {
    EXPECT_EQ(mstring("uint1"), enum_int_type(1));
    EXPECT_EQ(mstring("uint2"), enum_int_type(2));
    EXPECT_EQ(mstring("uint4"), enum_int_type(4));
}

TEST(BaseTypesEnumIntType, OtherSizesAreAnInternalFault) {
    for (int size : {0, 3, 8}) {
        ProcessResult r = runInChild([size] { enum_int_type(size); });
        EXPECT_EQ(255, r.status) << size;
        EXPECT_EQ("internal error: illegal enum element size (" + std::to_string(size) + ")\n", r.err);
        EXPECT_EQ("", r.out);
    }
}
