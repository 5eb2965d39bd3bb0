// zylcomp: the command-line front end of the schema compiler.
#include <cstdio>
#include <string>
#include <vector>

#include "depfile.h"
#include "driver/job.h"
#include "foundation/ut.h"
#include "options.h"
#include "zyldict.h"

namespace {

std::vector<std::string> strings(mvector<mstring> const& v) {
    std::vector<std::string> out;
    for (unsigned i = 0; i < v.size(); i++)
        out.push_back(v[i].c_str());
    return out;
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

    Job job;
    job.inputFile = o.schemaFile.c_str();
    job.outputDir = o.outputDir.c_str();
    job.includeDir = o.includeDir.c_str();
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
    for (std::string const& name : o.hiddenClasses)
        job.hiddenClasses.push_back(name.c_str());

    // A failed compile ends the process inside run(): remove the rule of an
    // earlier compile first, so that no stale one is left behind.
    if (!o.depFile.empty())
        std::remove(o.depFile.c_str());
    job.run();
    if (!o.depFile.empty() && !writeDepfile(o.depFile, strings(job.filesWritten), strings(job.filesRead))) {
        std::fprintf(stderr, "zylcomp: cannot write the dependency file '%s'\n", o.depFile.c_str());
        return 1;
    }
    UT::finishComp(true);
    return 0;
}
