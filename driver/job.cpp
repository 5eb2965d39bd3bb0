#include "driver/job.h"

#include <cstdio>

#include "driver/final_callback.h"
#include "foundation/ut.h"
#include "frontend/diagnostics.h"
#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "host/zylcomp/genoutput.h"

mstring Job::deriveIncludeDir(mstring const& inputFile) {
    mstring dir;
    int last = static_cast<int>(inputFile.length()) - 1;
    if (last <= 1)
        return dir;
    auto isSep = [](char c) { return c == '/' || c == '\\'; };
    int cut = -1;
    if (isSep(inputFile[last])) {
        cut = last;
    } else {
        for (int i = last - 1; i >= 2; i--) {
            if (isSep(inputFile[i])) {
                cut = i;
                break;
            }
        }
    }
    if (cut > 0)
        dir.set(inputFile.c_str(), static_cast<unsigned long>(cut));
    return dir;
}

GenOutput* Job::createGenerator(Schema& schema, IErrReporter* reporter, mstring const& outputDir) const {
    // The C++ wrappers call the C functions, so they need them compiled in {db}.c.
    return new GenOutput(schema, compiledFunctions || cppWrappers, keepFieldOrder, xmlSchema, cppWrappers,
                         csharpOutput, javaOutput, cppRuntimeHeader, reporter, outputDir, csharpNamespace,
                         javaPackage, dynamicDictTables, xmlAccess, jsonAccess, sqlReservedWords, wideOffsets,
                         sizeofSize, spareSize, prefixNames, relativeClassCodes, dllSpec);
}

unsigned Job::run() {
    // The compile's strings come from a pool of its own (the few that the
    // job keeps afterwards, such as filesRead, keep their slab alive).
    strblocks::Scope strings;
    FILE* f = std::fopen(inputFile.c_str(), "r");
    ErrReporter reporter;
    if (f == nullptr) {
        std::printf("Current directory is: %s\n", UT::currdir().c_str());
        reporter.err(mstring("Cannot open \"") + inputFile + "\"");
    }
    reporter.setDefaultFilename(inputFile);

    mstring localIncludeDir = includeDir;
    if (localIncludeDir.empty())
        localIncludeDir = deriveIncludeDir(inputFile);
    mstring localOutputDir = outputDir;

    FinalCallback* finalCallback = new FinalCallback(localOutputDir);
    reporter.setFinalCallback(finalCallback);

    Parser* parser = new Parser(f, inputFile, &reporter, localIncludeDir, localOutputDir);
    Analyzer* analyzer = new Analyzer(parser, keepFieldOrder, wideOffsets, compactDefault, sqlReservedWords,
                                      persistentDefault, transientUnused, atomicDefault, sizeofSize, spareSize,
                                      &hiddenClasses, finalCallback);
    analyzer->initBaseTypes();
    analyzer->analyze();
    analyzer->doChecks();
    std::fclose(f);

    GenOutput* gen = createGenerator(analyzer->schema(), &reporter, localOutputDir);
    gen->init();
    finalCallback->setGenerator(gen);
    gen->run();
    gen->close();
    // From here on the output is complete: a later failure must not remove it.
    reporter.setFinalCallback(nullptr);

    filesRead = parser->pp().includedFiles();
    filesRead.insert(0, inputFile);
    filesWritten = gen->createdFiles();

    delete gen;
    delete analyzer;  // the schema lives inside the analyzer
    delete parser;
    delete finalCallback;
    return 1;
}
