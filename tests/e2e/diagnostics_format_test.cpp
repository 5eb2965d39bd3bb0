// --diagnostics-format gnu and json: one report from each stage of a
// compile, pointing at the declaration at fault, in an included file too.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "support/process.h"

namespace {

struct FormatRow {
    char const *schema, *include;  // s.zyl, and an included "a<tab>b.zyl" if any
    char const *gnu, *json;        // all of standard error with --diagnostics-format gnu, json
    int status;
    bool fullDisk = false;  // the outputs cannot be written
};

#define DB "declare database d;\n"
using Names = std::vector<std::string>;

FormatRow const kRows[] = {
    // Reading: the place of the preprocessor, without a column.
    {DB "/* open\nclass A { signed<4> a; };\n", nullptr,
     "s.zyl:3: error: comment is not closed with */\nclass A { signed<4> a; };\n",
     R"({"severity":"error","message":"comment is not closed with */","file":"s.zyl","line":3,"column":0,)"
     R"("declaration":null})" "\n",
     255},
    // Grammar, inside an included file: the reader's position as column,
    // here one past the end of the line. JSON writes the tab as \t.
    {DB "#include \"a\tb.zyl\"\n", "struct S_ {}\n;\n",
     "a\tb.zyl:1:13: error: identifiers cannot end with the underscore\nstruct S_ {}\n            ^\n",
     R"({"severity":"error","message":"identifiers cannot end with the underscore","file":"a\tb.zyl","line":1,)"
     R"("column":13,"declaration":null})" "\n",
     255},
    // Finishing: the field whose type is unknown, not the end of the text.
    {DB "class A {\n  signed<4> a;\n\tdobule b;\n  tree<a> t;\n};\n", nullptr,
     "s.zyl:4:9: error: undefined type dobule used in b\n\tdobule b;\n\t       ^\n",
     R"({"severity":"error","message":"undefined type dobule used in b","file":"s.zyl","line":4,"column":9,)"
     R"("declaration":{"kind":"field","name":"b","file":"s.zyl","line":4,"column":9}})" "\n",
     255},
    // Finishing: an index over a missing field, declared in an included file.
    {DB "#include \"a\tb.zyl\"\n", "struct P { signed<4> x; };\nclass B {\n  P p;\n  tree<p.y> byY;\n};\n",
     "a\tb.zyl:4:13: error: field y is not defined in struct P and referenced from index byY, p.y\n"
     "  tree<p.y> byY;\n            ^\n",
     R"({"severity":"error","message":"field y is not defined in struct P and referenced from index byY, p.y",)"
     R"("file":"a\tb.zyl","line":4,"column":13,"declaration":{"kind":"index","name":"byY","file":"a\tb.zyl",)"
     R"("line":4,"column":13}})" "\n",
     255},
    // Finishing: an event on a missing field.
    {DB "class A {\n  signed<4> a;\n  event<b update> onB;\n};\n", nullptr,
     "s.zyl:4:19: error: field b is not defined in A, referenced from event onB\n  event<b update> onB;\n"
     "                  ^\n",
     R"({"severity":"error","message":"field b is not defined in A, referenced from event onB","file":"s.zyl",)"
     R"("line":4,"column":19,"declaration":{"kind":"event","name":"onB","file":"s.zyl","line":4,"column":19}})" "\n",
     255},
    // Layout: the struct that holds itself through another.
    {DB "struct P { Q q; };\nstruct Q { P p; };\nclass A { P p; };\n", nullptr,
     "s.zyl:2:8: error: recursive definition of \"P\"\nstruct P { Q q; };\n       ^\n",
     R"({"severity":"error","message":"recursive definition of \"P\"","file":"s.zyl","line":2,"column":8,)"
     R"("declaration":{"kind":"struct","name":"P","file":"s.zyl","line":2,"column":8}})" "\n",
     255},
    // Generation: a warning at its class, then a complete compile.
    {DB "class A {\n  vector<signed<4>> v;\n};\n", nullptr,
     "s.zyl:2:7: warning: class A has no oid, autoid, list, or index defined\nclass A {\n      ^\n",
     R"({"severity":"warning","message":"class A has no oid, autoid, list, or index defined","file":"s.zyl",)"
     R"("line":2,"column":7,"declaration":{"kind":"class","name":"A","file":"s.zyl","line":2,"column":7}})" "\n",
     0},
    // Generation: an output that cannot be written has no place.
    {DB "class A { signed<4> a; tree<a> t; };\n", nullptr,
     "s.zyl: error: cannot write output file \"d.h\": File too large\n",
     R"({"severity":"error","message":"cannot write output file \"d.h\": File too large","file":"s.zyl",)"
     R"("line":0,"column":0,"declaration":null})" "\n",
     255, true},
};

}  // namespace

TEST(DiagnosticsFormat, EachStageInGnuAndJson) {
    auto const fullDisk = [] {
        signal(SIGXFSZ, SIG_IGN);
        rlimit const small = {1024, 1024};
        setrlimit(RLIMIT_FSIZE, &small);
    };
    for (FormatRow const& row : kRows) {
        for (bool json : {false, true}) {
            SCOPED_TRACE(std::string(row.schema) + (json ? " json" : " gnu"));
            TempDir dir;
            dir.write("s.zyl", row.schema);
            if (row.include != nullptr)
                dir.write("a\tb.zyl", row.include);
            ProcessResult r = runProgram({cliPath(), "--diagnostics-format", json ? "json" : "gnu", "s.zyl"}, dir.path(),
                                         row.fullDisk ? std::function<void()>(fullDisk) : nullptr);
            EXPECT_EQ(r.err, json ? row.json : row.gnu);
            EXPECT_EQ(r.status, row.status);
            // A refused compile leaves what it was given, nothing more.
            if (row.status != 0) {
                EXPECT_EQ(dir.list(), (row.include ? Names{"a\tb.zyl", "s.zyl"} : Names{"s.zyl"}));
            }
        }
    }
}
