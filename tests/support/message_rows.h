// Diagnostics of the batch compiler that the manual's examples (doc/*.md,
// run through both entries) do not show: the other end of a bound, the
// other order of two words, the same message from another declaration,
// and schemas that are easy to refuse by mistake. The command-line tests
// and the tests of the run-time entry share them: both must give the same
// messages.
#pragma once

#include <vector>

struct MessageRow {
    char const* schema;            // the whole text, written to s.zyl
    char const* err;               // all of standard error of "zylcomp s.zyl"; empty when it is accepted
    char const* option = nullptr;  // one command-line option, if any

    // 255 when standard error holds an error, 0 after a complete compile.
    int status() const;
};

// The grammar's, ordered like the analyzer.
std::vector<MessageRow> const& grammarRows();
// The finishing passes', which come after the whole text is read and so
// carry the last line.
std::vector<MessageRow> const& finishRows();
// The dictionary's own refusals, which name no line.
std::vector<MessageRow> const& dictionaryRows();
