// Diagnostics of the batch compiler that the manual's examples (doc/*.md,
// run through both entries) do not show: the other end of a bound, the
// other order of two words, the same message from another declaration, and
// schemas that are easy to refuse by mistake. The command line and the
// run-time entry must give the same messages for them.
#pragma once

#include <vector>

struct MessageRow {
    char const* schema;            // the whole text, written to s.zyl
    char const* err;               // all of standard error of "zylcomp s.zyl"; empty when it is accepted
    char const* option = nullptr;  // one command-line option, if any
    int status() const;            // 255 when `err` holds an error, 0 after a complete compile
};

std::vector<MessageRow> const& grammarRows();     // the grammar's, ordered like the analyzer
std::vector<MessageRow> const& finishRows();      // the finishing passes', which name the last line
std::vector<MessageRow> const& dictionaryRows();  // the dictionary's own refusals, which name no line
