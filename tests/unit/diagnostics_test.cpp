// Message translation and the two reporters' exact behaviour.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "frontend/diagnostics.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

namespace {

// Runs reporter calls in a child; an error ends the child like a compile.
ProcessResult report(std::function<void(ErrReporter&)> const& call, char const* defaultFile = "") {
    return runInChild([&] {
        ErrReporter rep;
        rep.setDefaultFilename(defaultFile);
        call(rep);
    });
}

struct Counter : IFinalCallback {
    int calls = 0;
    void execute() override {
        calls++;
        std::printf("final callback\n");
    }
};

}  // namespace

// Look-up in the table, empty parameters dropping out, numbers beyond the
// parameters vanishing, unknown keys passing through.
TEST(Diagnostics, TranslateError) {
    for (int i = 0; ZYL_MESSAGES[i] != nullptr; i++)  // every entry splits into key and message
        EXPECT_EQ(std::count(ZYL_MESSAGES[i], ZYL_MESSAGES[i] + std::strlen(ZYL_MESSAGES[i]), '='), 1) << i;
    struct {
        char const* key;
        char const* p[4];
        char const* expected;
    } const cases[] = {
        {"type #1 already defined", {"T", "", "", ""}, "type \"T\" was already defined"},
        {"type #1 already defined", {"", "U", "", ""}, "type \"U\" was already defined"},
        // With no parameter at all the message stands as it is, "#1" and all.
        {"type #1 already defined", {"", "", "", ""}, "type \"#1\" was already defined"},
        {"field #1 was not defined in struct #2 and referenced from index #3, #4",
         {"f", "S", "", ""},
         "field f was not defined in struct S and referenced from index "},
        {"no such key #2 and #1 and #9", {"A", "B", "", ""}, "no such key B and A and "},
        {"a # b #x", {"p", "", "", ""}, "a # b #x"},
        {"expected ,  ", {"", "", "", ""}, "expected ,  "},  // the key must match to the letter
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
    // An empty message falls back to the key; an entry that does not split
    // in two is skipped.
    for (char const* entry : {"oid struct #1 was not defined=", "oid struct #1 was not defined=a=b"}) {
        ZYL_MESSAGES[25] = entry;
        EXPECT_EQ(translateError("oid struct #1 was not defined", "X", "", "", ""), "oid struct X was not defined");
    }
    ZYL_MESSAGES[25] = saved;
}

TEST(Diagnostics, ErrReporterPrefixRules) {
    struct {
        char const* file;
        char const* defaultFile;
        int line, pos;
        char const* prefix;
    } const cases[] = {
        {"a.zyl", "", 3, 4, "File a.zyl;  line 3, position 5: "},
        {"", "dflt.zyl", 3, 4, "File dflt.zyl;  line 3, position 5: "},
        {"inc.zyl", "dflt.zyl", 7, 1, "File inc.zyl;  line 7, position 2: "},
        {"a.zyl", "", 2, 0, "File a.zyl;  line 2: "},
        {"a.zyl", "", 0, 0, "File a.zyl;  line 0: "},
        {"a.zyl", "", -1, 5, "File a.zyl; "},
        {"", "", 4, 2, " line 4, position 3: "},
        {"", "", -3, 0, ""},
    };
    for (auto const& c : cases) {
        ProcessResult r = report([&](ErrReporter& rep) { rep.err1("unexpected token #1", "x", c.file, c.line, c.pos); },
                                 c.defaultFile);
        EXPECT_EQ(r.err, std::string(c.prefix) + "error: unexpected token: \"x\"\n\n");
        EXPECT_EQ(r.out, "Error executing DDL compiler\n");
        EXPECT_EQ(r.status, 255);
    }
    ProcessResult r = report([](ErrReporter& rep) { rep.err2("element #1 of index #2, #3 is struct", "e", "C", "f", 1, 0); });
    EXPECT_EQ(r.err, "File f;  line 1: error: element \"e\" of index C,  is struct\n\n");
}

// Warnings go on, each in its own form; the final callback runs before the
// closing line of an error, and not for a warning.
TEST(Diagnostics, ErrReporterWarningsAndFinalCallback) {
    ProcessResult r = report(
        [](ErrReporter& rep) {
            Counter cb;
            rep.setFinalCallback(&cb);
            rep.warning("history already declared", "f.zyl", 5, 2);
            rep.warning("plain warning");
            rep.warning1("file #1 exists", "x_udf.c");
            std::printf("warnings=%d\n", rep.warningCount());
            rep.err("boom");
        },
        "dflt.zyl");
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err,
              "File f.zyl;  line 5, position 3: warning: history was already declared\n\n"
              "File dflt.zyl; warning: plain warning\n\n"
              "warning: file x_udf.c exists\n"
              "File dflt.zyl; error: boom\n\n");
    EXPECT_EQ(r.out, "warnings=3\nfinal callback\nError executing DDL compiler\n");
}

// The run-time reporter hands every report to the callback as it is, runs
// the final callback for warnings too, and throws at an error.
TEST(Diagnostics, ErrReporterMem) {
    std::vector<std::string> seen;
    ErrReporterMem rep(
        [](int type, char const* msg, char const* file, int line, int pos, void* ctx) {
            static_cast<std::vector<std::string>*>(ctx)->push_back(std::to_string(type) + " " + msg + " " + file +
                                                                   ":" + std::to_string(line) + ":" +
                                                                   std::to_string(pos));
        },
        &seen);
    rep.setDefaultFilename("<memory buffer>");
    Counter cb;
    rep.setFinalCallback(&cb);
    rep.warning("w1");
    rep.warning("w2", "inc.zyl", 4, 2);
    EXPECT_FALSE(rep.wasError());
    EXPECT_EQ(cb.calls, 2);
    EXPECT_THROW(rep.err1("unexpected token #1", "}", "s.zyl", 12, 3), CompilerError);
    EXPECT_TRUE(rep.wasError());
    EXPECT_EQ(seen, (std::vector<std::string>{"0 w1 <memory buffer>:0:0", "0 w2 inc.zyl:4:2",
                                              "1 unexpected token: \"}\" s.zyl:12:3"}));
    ErrReporterMem silent(nullptr, nullptr);
    silent.warning("ignored");
    EXPECT_THROW(silent.err("class expected"), CompilerError);
}
