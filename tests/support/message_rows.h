// The diagnostics of the batch compiler for schemas it refuses (and a few
// it accepts), as tables shared by the command-line tests and the tests of
// the run-time entry, which must refuse the same schemas with the same
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

// Every message of the grammar, ordered like the analyzer: top level,
// declare, struct, enum, calculator, iot, class body, fields, type names,
// direct structs, indexes, events, TTL.
std::vector<MessageRow> const& grammarRows();
// Every message of the finishing passes and the system classes, ordered
// like the passes. They come after the whole text is read, so they carry
// the last line.
std::vector<MessageRow> const& finishRows();
// The dictionary's own refusals, which name no line.
std::vector<MessageRow> const& dictionaryRows();
