// zylcomp: the command-line front end of the schema compiler.
#include <cstdio>

#include "driver/job.h"
#include "foundation/ut.h"
#include "options.h"

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
        std::printf("zylcomp %s\ndictionary format 8.1 build 1800\n", ZYLCOMP_VERSION);
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

    job.run();
    UT::finishComp(true);
    return 0;
}
