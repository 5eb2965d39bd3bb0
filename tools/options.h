// Command-line options of the zylcomp front end.
#pragma once

#include <string>
#include <vector>

struct CliOptions {
    enum Action { Compile, Help, Version, UsageError };

    Action action = Compile;
    std::string error;  // with UsageError: what was wrong

    std::string schemaFile;
    std::string outputDir;
    // Searched by #include in this order, before the schema's directory.
    std::vector<std::string> includeDirs;
    std::string csNamespace;
    std::string javaPackage;
    std::vector<std::string> hiddenClasses;
    bool compiledFunctions = false;
    bool cpp = false;
    bool cs = false;
    bool java = false;
    bool cppRuntimeHeader = false;
    bool xmlSchema = false;
    bool xmlAccess = false;
    bool jsonAccess = false;
    bool keepFieldOrder = false;
    bool wideOffsets = false;
    bool dynamicDict = false;
    bool compact = false;
    bool persistent = false;
    bool atomic = true;
    bool sqlReservedWords = false;
    int sizeofSize = 8;
    bool prefixNames = false;
    bool relativeClassCodes = false;
    bool dllSpec = false;
    std::string diagnosticsFormat = "classic";  // classic, gnu or json
    bool quiet = false;  // no closing line after a complete compile
    std::string depFile;  // empty: no dependency file
    // Compile through the run-time entry and print the dictionary as JSON
    // instead of writing files.
    bool dumpDictionary = false;
    // Compare the dictionary of this schema with that of compareWith (the
    // old schema) and write no files; empty: no comparison.
    std::string compareWith;
    // Findings as JSON objects, one a line, instead of classic lines.
    bool diagnosticsJson = false;
};

CliOptions parseOptions(int argc, char const* const* argv);
char const* usageText();
char const* helpText();
