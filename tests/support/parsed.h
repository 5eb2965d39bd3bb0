// Schema text read as a compile reads it, for the unit tests of the front
// end and the passes behind it. The run-time reporter throws CompilerError
// at the first error.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "support/process.h"
#include "target/zylcomp/errreporter_mem.h"

// File `name` of `dir` read through a Parser that looks for includes in
// `dir`. The file is closed once the Parser is gone, as the driver does it.
struct ParsedFile {
    ParsedFile(std::string const& dir, std::string const& name, std::string const& tempDir = "");
    ~ParsedFile();
    // Every token up to the end of the input, blank-separated.
    std::string tokens();

    FILE* file;
    ErrReporterMem reporter;
    std::unique_ptr<Parser> parser;
};

// An analyzer with the defaults of a plain compile and its base types.
std::unique_ptr<Analyzer> newAnalyzer(Parser* parser, mvector<mstring>* hidden, bool keepFieldOrder = false,
                                      bool wideOffsets = false, bool sqlReservedWords = false);

// `text` written as `name` in a directory of its own, and read.
struct ParsedText {
    explicit ParsedText(std::string const& text, std::string const& name = "s.zyl");

    TempDir dir;
    std::unique_ptr<ParsedFile> in;
};

// "declare database {db};" and `text` through the grammar and, unless
// `grammarOnly`, the finishing passes; `error` holds the first error's
// message.
struct AnalyzedText : ParsedText {
    explicit AnalyzedText(std::string const& text, bool keepFieldOrder = false, bool grammarOnly = false,
                          char const* db = "db");

    Schema& schema() { return analyzer->schema(); }
    Class& cls(char const* name) { return *schema().findClass(name); }

    mvector<mstring> hidden;
    std::unique_ptr<Analyzer> analyzer;
    std::string error;
};
