#include "driver/job.h"

#include <cstdio>
#include <cstring>

#include "driver/final_callback.h"
#include "foundation/outfile.h"
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

namespace {

// An output that could not be created ends the compile at once, as it
// always has, with nothing of this compile left.
[[noreturn]] void cannotOpen(FinalCallback* finalCallback, mstring const& path) {
    finalCallback->discard();
    IErrReporter::panic(mstring("Cannot open file ") + path, true);
}

bool namesOneOf(mstring const& path, mvector<mstring> const& files) {
    for (unsigned i = 0; i < files.size(); i++)
        if (OutFile::sameFile(path, files[i]))
            return true;
    return false;
}

}  // namespace

unsigned Job::run() {
    // The compile's strings come from a pool of its own (the few that the
    // job keeps afterwards, such as filesRead, keep their slab alive).
    strblocks::Scope strings;
    // A failed compile removes the dependency file, so it must not be the
    // schema, which is not even read then.
    if (!depFile.empty() && OutFile::sameFile(depFile, inputFile))
        return DepFileIsInput;
    // An interrupt takes the temporaries of the outputs with it.
    InterruptCleanup interrupts;

    FILE* f = std::fopen(inputFile.c_str(), "r");
    ErrReporter reporter;
    mstring localOutputDir = outputDir;
    FinalCallback* finalCallback = new FinalCallback(localOutputDir);
    finalCallback->setDepFile(depFile, inputFile);
    reporter.setFinalCallback(finalCallback);
    reporter.setFormat(static_cast<DiagnosticsFormat>(diagnosticsFormat));
    if (f == nullptr) {
        std::printf("Current directory is: %s\n", UT::currdir().c_str());
        reporter.err(mstring("Cannot open \"") + inputFile + "\"");
    }
    reporter.setDefaultFilename(inputFile);

    mstring localIncludeDir = includeDir;
    if (localIncludeDir.empty())
        localIncludeDir = deriveIncludeDir(inputFile);

    Parser* parser = new Parser(f, inputFile, &reporter, localIncludeDir, localOutputDir);
    finalCallback->setParser(parser);
    parser->pp().searchFirst(includeDirs);
    Analyzer* analyzer = new Analyzer(parser, keepFieldOrder, wideOffsets, compactDefault, sqlReservedWords,
                                      persistentDefault, transientUnused, atomicDefault, sizeofSize, spareSize,
                                      &hiddenClasses, finalCallback);
    analyzer->initBaseTypes();
    analyzer->analyze();
    analyzer->doChecks();
    if (javaOutput || csharpOutput)
        analyzer->checkBindingNames();
    if (cppWrappers)
        analyzer->checkCppNames();
    if (prefixNames)
        analyzer->checkPrefixedNames();
    analyzer->checkFieldFunctionNames(xmlAccess, jsonAccess);
    std::fclose(f);

    GenOutput* gen = createGenerator(analyzer->schema(), &reporter, localOutputDir);
    // Set first, so that a failure while the outputs open removes those open.
    finalCallback->setGenerator(gen);
    gen->init();
    if (!gen->unopenedFile().empty())
        cannotOpen(finalCallback, gen->unopenedFile());
    gen->run();
    if (!gen->unopenedFile().empty())
        cannotOpen(finalCallback, gen->unopenedFile());
    gen->close();
    gen->closeBindings();
    mstring failed;
    if (int error = gen->outputFiles().firstError(failed))
        reporter.err(mstring("cannot write output file \"") + failed + "\": " + std::strerror(error));

    filesRead = parser->pp().includedFiles();
    filesRead.insert(0, inputFile);
    filesWritten = gen->createdFiles();
    buildTargets = mvector<mstring>();
    mstring const& db = analyzer->schema().m_dbName;
    for (unsigned i = 0; i < filesWritten.size(); i++) {
        for (char const* suffix : {".h", ".c", ".hpp", ".cs", ".xml", ".java"}) {
            if (filesWritten[i] == UT::makefnm(localOutputDir, db + suffix)) {
                buildTargets.push_back(filesWritten[i]);
                break;
            }
        }
    }

    unsigned result = Compiled;
    if (!depFile.empty() && namesOneOf(depFile, filesRead))
        result = DepFileIsInput;
    else if (!depFile.empty() && namesOneOf(depFile, filesWritten))
        result = DepFileIsOutput;
    if (result == Compiled) {
        // All outputs are complete: now, and only now, they replace the
        // earlier ones. A failure here removes them all, as any failure does.
        if (int error = gen->outputFiles().commit(failed))
            reporter.err(mstring("cannot write output file \"") + failed + "\": " + std::strerror(error));
    } else {
        gen->outputFiles().discard();
    }
    // From here on the output is complete: a later failure must not remove it.
    reporter.setFinalCallback(nullptr);

    delete gen;
    delete analyzer;  // the schema lives inside the analyzer
    delete parser;
    delete finalCallback;
    return result;
}
