// The batch entry of the schema compiler: the front end fills a Job and
// calls run(). Every failure of the compile ends the process inside the
// reporter, so run() returns after a complete compile, or after one whose
// outputs it refused to put in place because of the dependency file.
#pragma once

#include "foundation/mstring.h"
#include "foundation/mvector.h"

class GenOutput;
class IErrReporter;
class Schema;

struct Job {
    bool compiledFunctions = false;
    bool keepFieldOrder = false;
    bool xmlSchema = false;
    bool cppWrappers = false;
    bool csharpOutput = false;
    bool javaOutput = false;
    bool cppRuntimeHeader = false;
    mstring inputFile;
    mstring outputDir;
    mstring includeDir;
    mstring csharpNamespace;
    mstring javaPackage;
    bool dynamicDictTables = false;
    bool compactDefault = false;
    bool xmlAccess = false;
    bool jsonAccess = false;
    bool sqlReservedWords = false;
    bool persistentDefault = false;
    bool transientUnused = false;
    bool atomicDefault = true;
    bool wideOffsets = false;
    int sizeofSize = 8;
    int spareSize = 0;
    mvector<mstring> hiddenClasses;
    bool prefixNames = false;
    bool relativeClassCodes = false;
    bool dllSpec = false;
    // Set by run() once the compile is complete, for build tools that track
    // dependencies: the files read (the schema, then every #include file in
    // the order it was opened) and the files written, in the order opened.
    mvector<mstring> filesRead;
    mvector<mstring> filesWritten;
    // The files among filesWritten that are named after the database alone
    // ({db}.h, {db}.c, and {db}.hpp, .cs, .xml, .java when asked for): a
    // build tool can name them before the schema is read, and every compile
    // rewrites them. A skeleton is not among them (it is written only when
    // none exists, and then belongs to a person), nor a Java file named
    // after a type of the schema.
    mvector<mstring> buildTargets;
    // Directories that #include searches, in this order, before includeDir
    // (or the schema's directory, when includeDir is empty).
    mvector<mstring> includeDirs;
    // How the reporter prints: 0 the classic form, 1 gcc's, 2 JSON lines
    // (the values of DiagnosticsFormat).
    int diagnosticsFormat = 0;
    // The dependency file a build tool reads, which the caller writes after
    // a complete compile; empty for none. A failed compile removes the one
    // of an earlier compile. It may not be the schema, a file it includes
    // or an output: run() then writes nothing and says so.
    mstring depFile;

    // What run() gives back when it returns.
    enum : unsigned {
        Compiled = 1,         // every output is in place
        DepFileIsInput = 2,   // depFile is the schema or a file it includes
        DepFileIsOutput = 3,  // depFile is one of the outputs
    };
    unsigned run();

    // The generator for `schema` with this job's switches; the caller owns it.
    GenOutput* createGenerator(Schema& schema, IErrReporter* reporter, mstring const& outputDir) const;

    // The directory that #include searches when none is given: everything
    // before the last separator of the schema path. Separators at index 0
    // and 1 are deliberately not looked at.
    static mstring deriveIncludeDir(mstring const& inputFile);
};
