// zylcomp: the command-line front end of the schema compiler.
#include <cstdio>
#include <string>
#include <vector>

#include "depfile.h"
#include "driver/job.h"
#include "foundation/ut.h"
#include "options.h"
#include "outdir.h"
#include "zyldict.h"
#include "zylcomp.h"

namespace {

std::vector<std::string> strings(mvector<mstring> const& v) {
    std::vector<std::string> out;
    for (unsigned i = 0; i < v.size(); i++)
        out.push_back(v[i].c_str());
    return out;
}

// Each report as the run-time entry hands it over.
void printReport(int type, char const* message, char const* file, int line, int pos, void*) {
    std::fprintf(stderr, "%s:%d:%d: %s: %s\n", file, line, pos, type == 1 ? "error" : "warning", message);
}

// The schema through the run-time entry, as an application would load it:
// the dictionary as JSON on standard output, and no file written.
int dumpDictionary(CliOptions const& o) {
    std::string text;
    FILE* f = std::fopen(o.schemaFile.c_str(), "rb");
    if (f == nullptr) {
        std::fprintf(stderr, "zylcomp: cannot open '%s'\n", o.schemaFile.c_str());
        return 1;
    }
    char buf[4096];
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;)
        text.append(buf, n);
    std::fclose(f);

    // As in a batch compile, #include looks beside the schema by default.
    // The run-time entry searches one directory, so -I replaces that one.
    std::string const includeDir =
        o.includeDirs.empty() ? Job::deriveIncludeDir(o.schemaFile.c_str()).c_str() : o.includeDirs[0];
    zyl_dict_load_params_t p = {};
    p.compiledFunctions = o.compiledFunctions;
    p.keepFieldOrder = o.keepFieldOrder;
    p.xmlSchema = o.xmlSchema;
    p.cppWrappers = o.cpp;
    p.csharpOutput = o.cs;
    p.javaOutput = o.java;
    p.cppRuntimeHeader = o.cppRuntimeHeader;
    p.outputDir = o.outputDir.empty() ? nullptr : o.outputDir.c_str();
    p.csharpNamespace = o.csNamespace.c_str();
    p.javaPackage = o.javaPackage.c_str();
    p.dynamicDictTables = o.dynamicDict;
    p.xmlAccess = o.xmlAccess;
    p.jsonAccess = o.jsonAccess;
    p.sqlReservedWords = o.sqlReservedWords;
    p.wideOffsets = o.wideOffsets;
    p.prefixNames = o.prefixNames;
    p.includeDir = includeDir.c_str();
    p.compactDefault = o.compact;
    p.persistentDefault = o.persistent;
    p.atomicDefault = o.atomic;
    for (std::string const& name : o.hiddenClasses)
        if (name.empty())
            p.hideAllClasses = 1;

    zyl_dictionary_t* dict = nullptr;
    size_t dictSize = 0;
    char dbName[256];
    size_t dbNameSize = sizeof dbName;
    int rc = zyl_db_load_dictionary(text.c_str(), &p, &dict, &dictSize, dbName, &dbNameSize, printReport, nullptr);
    if (rc == ZYL_DICT_LOAD_NO_TEMP_FILE)
        std::fprintf(stderr, "zylcomp: no temporary file for the schema text\n");
    if (rc != ZYL_DICT_LOAD_OK)
        return 1;
    int const written = zyl_dict_write_json(dict, stdout);
    zyl_dict_free(dict, nullptr);
    return written == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    CliOptions o = parseOptions(argc, argv);
    switch (o.action) {
    case CliOptions::UsageError:
        std::fprintf(stderr, "zylcomp: %s\n%s", o.error.c_str(), usageText());
        return 2;
    case CliOptions::Help:
        std::fputs(helpText(), stdout);
        return 0;
    case CliOptions::Version:
        std::printf("zylcomp %s\ndictionary format %d.%d build %d\n", ZYLCOMP_VERSION, ZYL_DICT_VERSION_MAJOR,
                    ZYL_DICT_VERSION_MINOR, ZYL_DICT_VERSION_BUILD);
        return 0;
    case CliOptions::Compile:
        break;
    }
    // Made before the compile, which opens its temporaries there at once.
    std::string error;
    if (!makeOutputDir(o.outputDir, error)) {
        std::fprintf(stderr, "zylcomp: %s\n", error.c_str());
        return 1;
    }
    if (o.dumpDictionary)
        return dumpDictionary(o);

    Job job;
    job.inputFile = o.schemaFile.c_str();
    job.outputDir = o.outputDir.c_str();
    for (std::string const& dir : o.includeDirs)
        job.includeDirs.push_back(dir.c_str());
    job.csharpNamespace = o.csNamespace.c_str();
    job.javaPackage = o.javaPackage.c_str();
    job.compiledFunctions = o.compiledFunctions;
    job.cppWrappers = o.cpp;
    job.csharpOutput = o.cs;
    job.javaOutput = o.java;
    job.cppRuntimeHeader = o.cppRuntimeHeader;
    job.xmlSchema = o.xmlSchema;
    job.xmlAccess = o.xmlAccess;
    job.jsonAccess = o.jsonAccess;
    job.keepFieldOrder = o.keepFieldOrder;
    job.wideOffsets = o.wideOffsets;
    job.dynamicDictTables = o.dynamicDict;
    job.compactDefault = o.compact;
    job.persistentDefault = o.persistent;
    job.atomicDefault = o.atomic;
    job.sqlReservedWords = o.sqlReservedWords;
    job.sizeofSize = o.sizeofSize;
    job.prefixNames = o.prefixNames;
    job.relativeClassCodes = o.relativeClassCodes;
    job.dllSpec = o.dllSpec;
    job.diagnosticsFormat = o.diagnosticsFormat == "gnu" ? 1 : o.diagnosticsFormat == "json" ? 2 : 0;
    for (std::string const& name : o.hiddenClasses)
        job.hiddenClasses.push_back(name.c_str());

    // A failed compile ends the process inside run(), which removes the
    // rule of an earlier compile, so that no stale one is left behind.
    job.depFile = o.depFile.c_str();
    unsigned const done = job.run();
    if (done != Job::Compiled) {
        std::fprintf(stderr, "zylcomp: the dependency file '%s' is %s\n%s", o.depFile.c_str(),
                     done == Job::DepFileIsInput ? "the schema or a file it includes" : "an output of the compile",
                     usageText());
        return 2;
    }
    keepOutputDir();
    // The rule's targets are the outputs a build can declare beforehand;
    // Ninja refuses a rule that names any other file as an output.
    if (!o.depFile.empty() && !writeDepfile(o.depFile, strings(job.buildTargets), strings(job.filesRead))) {
        std::fprintf(stderr, "zylcomp: cannot write the dependency file '%s'\n", o.depFile.c_str());
        return 1;
    }
    if (!o.quiet)
        UT::finishComp(true);
    return 0;
}
