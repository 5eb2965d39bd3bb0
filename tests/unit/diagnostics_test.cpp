// Message translation and the two reporters' exact behaviour.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "frontend/diagnostics.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

TEST(Diagnostics, MessageTableHasAllEntriesInOrder) {
    int n = 0;
    while (ZYL_MESSAGES[n] != nullptr)
        n++;
    EXPECT_EQ(n, 66);
    EXPECT_STREQ(ZYL_MESSAGES[0], "array size limits=array size must be between 1 and 65535");
    EXPECT_STREQ(ZYL_MESSAGES[4], "expected ,=expected \",\"");
    EXPECT_STREQ(ZYL_MESSAGES[65], "duplicate HA [estimation]=duplicate auto_oid [estimation]");
    for (int i = 0; i < n; i++)  // every entry splits into exactly key and message
        EXPECT_EQ(std::count(ZYL_MESSAGES[i], ZYL_MESSAGES[i] + std::strlen(ZYL_MESSAGES[i]), '='), 1) << i;
}

TEST(Diagnostics, TranslateError) {
    struct {
        char const* key;
        char const* p[4];
        char const* expected;
    } const cases[] = {
        // Table look-up with parameters.
        {"type #1 already defined", {"T", "", "", ""}, "type \"T\" was already defined"},
        {"expected ,", {"", "", "", ""}, "expected \",\""},
        // Empty parameters drop out and later ones move down.
        {"type #1 already defined", {"", "U", "", ""}, "type \"U\" was already defined"},
        // With no parameter at all the message stands as it is, "#1" and all.
        {"type #1 already defined", {"", "", "", ""}, "type \"#1\" was already defined"},
        // "#3" with two parameters vanishes.
        {"field #1 was not defined in struct #2 and referenced from index #3, #4",
         {"f", "S", "", ""},
         "field f was not defined in struct S and referenced from index "},
        {"optional field #1 used in index #2, #3",
         {"o", "C", "ix", ""},
         "optional fields cannot be used in indexes: optional field \"o\" used in index C, ix"},
        // Unknown keys pass through, with their parameters.
        {"Cannot open \"x.zyl\"", {"", "", "", ""}, "Cannot open \"x.zyl\""},
        {"no such key #2 and #1 and #9", {"A", "B", "", ""}, "no such key B and A and "},
        {"comment is not closed with */", {"", "", "", ""}, "comment is not closed with */"},
        // A "#" without a digit stays.
        {"a # b #x", {"p", "", "", ""}, "a # b #x"},
        {"trailing #", {"p", "", "", ""}, "trailing #"},
        // The key must match to the letter.
        {"expected ,  ", {"", "", "", ""}, "expected ,  "},
        // "HA" keys speak of auto_oid.
        {"HA estimated count value is not valid", {"", "", "", ""}, "auto_oid estimated count value is not valid"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(translateError(c.key, c.p[0], c.p[1], c.p[2], c.p[3]), c.expected) << c.key;
}

TEST(Diagnostics, ReplacedTableEntryTakesEffect) {
    char const* saved = ZYL_MESSAGES[25];
    ASSERT_STREQ(saved, "oid struct #1 was not defined=oid struct \"#1\" was not defined");
    ZYL_MESSAGES[25] = "oid struct #1 was not defined = struct d'oid \"#1\" inconnue ";
    EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "struct d'oid \"X\" inconnue");
    // An entry with an empty message falls back to the key.
    ZYL_MESSAGES[25] = "oid struct #1 was not defined=";
    EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "oid struct X was not defined");
    // An entry that does not split in two is skipped.
    ZYL_MESSAGES[25] = "oid struct #1 was not defined=a=b";
    EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "oid struct X was not defined");
    ZYL_MESSAGES[25] = saved;
}

namespace {

// Runs one reporter call in a child; errors end the child like a compile.
ProcessResult report(std::function<void(ErrReporter&)> const& call, char const* defaultFile = "") {
    return runInChild([&] {
        ErrReporter rep;
        rep.setDefaultFilename(defaultFile);
        call(rep);
    });
}

}  // namespace

TEST(Diagnostics, ErrReporterPrefixRules) {
    struct {
        char const* file;
        char const* defaultFile;
        int line;
        int pos;
        char const* expected;
    } const cases[] = {
        {"a.zyl", "", 3, 4, "File a.zyl;  line 3, position 5: error: unexpected token: \"x\"\n\n"},
        {"", "dflt.zyl", 3, 4, "File dflt.zyl;  line 3, position 5: error: unexpected token: \"x\"\n\n"},
        {"inc.zyl", "dflt.zyl", 7, 1, "File inc.zyl;  line 7, position 2: error: unexpected token: \"x\"\n\n"},
        {"a.zyl", "", 2, 0, "File a.zyl;  line 2: error: unexpected token: \"x\"\n\n"},
        {"a.zyl", "", 0, 0, "File a.zyl;  line 0: error: unexpected token: \"x\"\n\n"},
        {"a.zyl", "", -1, 5, "File a.zyl; error: unexpected token: \"x\"\n\n"},
        {"", "", 4, 2, " line 4, position 3: error: unexpected token: \"x\"\n\n"},
        {"", "", -3, 0, "error: unexpected token: \"x\"\n\n"},
    };
    for (auto const& c : cases) {
        ProcessResult r = report([&](ErrReporter& rep) { rep.err1("unexpected token #1", "x", c.file, c.line, c.pos); },
                                 c.defaultFile);
        EXPECT_EQ(r.err, c.expected) << c.file << " " << c.line << " " << c.pos;
        EXPECT_EQ(r.out, "Error executing DDL compiler\n");
        EXPECT_EQ(r.status, 255);
    }
}

TEST(Diagnostics, ErrReporterForms) {
    ProcessResult r = report([](ErrReporter& rep) { rep.err("class expected"); }, "s.zyl");
    EXPECT_EQ(r.err, "File s.zyl; error: \"class\" expected\n\n");
    r = report([](ErrReporter& rep) { rep.err2("element #1 of index #2, #3 is struct", "e", "C", "f", 1, 0); });
    EXPECT_EQ(r.err, "File f;  line 1: error: element \"e\" of index C,  is struct\n\n");  // "#3" vanishes
    r = report([](ErrReporter& rep) {
        rep.err3("element #1 of index #2, #3 is struct", "e", "C", "ix", "f", 1, 0);
    });
    EXPECT_EQ(r.err, "File f;  line 1: error: element \"e\" of index C, ix is struct\n\n");
    r = report([](ErrReporter& rep) {
        rep.err4("field #1 was not defined in struct #2 and referenced from index #3, #4", "a", "S", "C", "i", "f",
                 9, 0);
    });
    EXPECT_EQ(r.err, "File f;  line 9: error: field a was not defined in struct S and referenced from index C\n\n");
    r = report([](ErrReporter& rep) { rep.err("list already declared", "f", 2, 3); });
    EXPECT_EQ(r.err, "File f;  line 2, position 4: error: list was already declared\n\n");
}

TEST(Diagnostics, ErrReporterWarningsContinue) {
    ProcessResult r = report(
        [](ErrReporter& rep) {
            rep.warning("history already declared", "f.zyl", 5, 2);
            rep.warning("plain warning");
            rep.warning1("file #1 exists", "x_udf.c");
            EXPECT_FALSE(rep.wasError());
            std::printf("warnings=%d\n", rep.warningCount());
        },
        "dflt.zyl");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err,
              "File f.zyl;  line 5, position 3: warning: history was already declared\n\n"
              "File dflt.zyl; warning: plain warning\n\n"
              "warning: file x_udf.c exists\n");
    EXPECT_EQ(r.out, "warnings=3\n");
}

namespace {
struct Counter : IFinalCallback {
    int calls = 0;
    void execute() override {
        calls++;
        std::printf("final callback\n");
    }
};
}  // namespace

TEST(Diagnostics, ErrReporterRunsFinalCallbackBeforeClosingLine) {
    ProcessResult r = runInChild([] {
        ErrReporter rep;
        Counter cb;
        rep.setFinalCallback(&cb);
        rep.warning("w");  // warnings do not run it in the batch reporter
        rep.err("boom");
    });
    EXPECT_EQ(r.out, "final callback\nError executing DDL compiler\n");
    EXPECT_EQ(r.status, 255);
}

TEST(Diagnostics, PanicLabels) {
    ProcessResult r = runInChild([] { IErrReporter::panic("insufficient memory new", true); });
    EXPECT_EQ(r.err, "error: insufficient memory new\n");
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.status, 255);
    r = runInChild([] { IErrReporter::panic("illegal enum element size (3)", false); });
    EXPECT_EQ(r.err, "internal error: illegal enum element size (3)\n");
}

namespace {
struct Seen {
    int type;
    std::string msg, file;
    int line, pos;
};
void collect(int type, char const* msg, char const* file, int line, int pos, void* ctx) {
    static_cast<std::vector<Seen>*>(ctx)->push_back({type, msg, file, line, pos});
}
}  // namespace

TEST(Diagnostics, ErrReporterMemHandsOverAndThrows) {
    std::vector<Seen> seen;
    ErrReporterMem rep(collect, &seen);
    rep.setDefaultFilename("<memory buffer>");
    Counter cb;
    rep.setFinalCallback(&cb);

    rep.warning("w1");
    rep.warning("w2", "inc.zyl", 4, 2);
    rep.warning1("file #1 exists", "a");
    EXPECT_FALSE(rep.wasError());
    EXPECT_EQ(cb.calls, 3);  // warnings run the final callback here

    try {
        rep.err1("unexpected token #1", "}", "s.zyl", 12, 3);
        FAIL() << "err1 returned";
    } catch (CompilerError const& e) {
        EXPECT_EQ(e.m_type, CompilerErrorKind);
        EXPECT_EQ(e.m_msg, "unexpected token: \"}\"");
        EXPECT_EQ(e.m_file, "s.zyl");
        EXPECT_EQ(e.m_line, 12);
        EXPECT_EQ(e.m_pos, 3);
    }
    EXPECT_TRUE(rep.wasError());
    EXPECT_THROW(rep.err("class expected"), CompilerError);

    ASSERT_EQ(seen.size(), 5u);
    EXPECT_EQ(seen[0].type, 0);
    EXPECT_EQ(seen[0].file, "<memory buffer>");
    EXPECT_EQ(seen[0].line, 0);
    EXPECT_EQ(seen[1].file, "inc.zyl");  // no prefix and no default substitution
    EXPECT_EQ(seen[1].line, 4);
    EXPECT_EQ(seen[1].pos, 2);
    EXPECT_EQ(seen[2].msg, "file a exists");
    EXPECT_EQ(seen[3].type, 1);
    EXPECT_EQ(seen[3].msg, "unexpected token: \"}\"");
    EXPECT_EQ(seen[4].msg, "\"class\" expected");
    EXPECT_EQ(seen[4].file, "<memory buffer>");
}

TEST(Diagnostics, ErrReporterMemWithoutCallbacks) {
    ErrReporterMem rep(nullptr, nullptr);
    rep.warning("ignored");
    EXPECT_FALSE(rep.wasError());
    EXPECT_THROW(rep.err2("element #1 of index #2, #3 is struct", "a", "b", "", 0, 0), CompilerError);
}
