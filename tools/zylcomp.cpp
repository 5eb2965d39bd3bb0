// zylcomp: the command-line front end of the schema compiler.
#include <cstdio>
#include <string>
#include <vector>

#include "depfile.h"
#include "driver/job.h"
#include "foundation/ut.h"
#include "findings.h"
#include "options.h"
#include "outdir.h"
#include "target/zylcomp/decl_places.h"
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

bool readText(std::string const& path, std::string& text) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr)
        return false;
    char buf[4096];
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;)
        text.append(buf, n);
    std::fclose(f);
    return true;
}

// The switches of a compile from memory; `includeDir` must outlive them.
zyl_dict_load_params_t loadParams(CliOptions const& o, std::string const& includeDir) {
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
    return p;
}

// As in a batch compile, #include looks beside the schema by default.
std::string includeDirFor(CliOptions const& o, std::string const& schemaFile) {
    // The run-time entry searches one directory, so -I replaces that one.
    return o.includeDirs.empty() ? Job::deriveIncludeDir(schemaFile.c_str()).c_str() : o.includeDirs[0];
}

// The schema through the run-time entry, as an application would load it:
// the dictionary as JSON on standard output, and no file written.
int dumpDictionary(CliOptions const& o) {
    std::string text;
    if (!readText(o.schemaFile, text)) {
        std::fprintf(stderr, "zylcomp: cannot open '%s'\n", o.schemaFile.c_str());
        return 1;
    }
    std::string const includeDir = includeDirFor(o, o.schemaFile);
    zyl_dict_load_params_t const p = loadParams(o, includeDir);

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

// ---------------------------------------------------------------------------
// --compare

// One compiled schema: its dictionary and where its declarations stand.
struct Compiled {
    std::string path;
    zyl_dictionary_t* dict = nullptr;
    DeclPlaces places;

    Compiled() = default;
    Compiled(Compiled const&) = delete;
    Compiled& operator=(Compiled const&) = delete;
    ~Compiled() { zyl_dict_free(dict, nullptr); }

    // The file a place names: the schema text itself is the schema file.
    std::string fileOf(DeclPlaces::Place const& p) const {
        std::string const& f = places.files[static_cast<size_t>(p.file)];
        return f == "<membuf>" ? path : f;
    }
};

// A report of the run-time entry, printed as a batch compile prints it.
struct Reports {
    std::string const* path;
};

void printAsCompile(int type, char const* message, char const* file, int line, int pos, void* context) {
    std::string const& path = *static_cast<Reports*>(context)->path;
    std::string const name = file;
    // The run-time entry places a report without a line in its default file.
    bool const placed = name != "<memory buffer>";
    std::fflush(stdout);
    std::fprintf(stderr, "File %s; ", name.empty() || name == "<membuf>" || !placed ? path.c_str() : file);
    if (placed) {
        std::fprintf(stderr, " line %d", line);
        if (pos >= 1)
            std::fprintf(stderr, ", position %d: ", pos + 1);
        else
            std::fprintf(stderr, ": ");
    }
    std::fprintf(stderr, "%s: %s\n\n", type == 1 ? "error" : "warning", message);
}

// False, after the diagnostic, when the schema cannot be read or is refused.
bool compileForCompare(CliOptions const& o, std::string const& path, Compiled& out) {
    out.path = path;
    std::string text;
    if (!readText(path, text)) {
        std::printf("Current directory is: %s\n", UT::currdir().c_str());
        std::fflush(stdout);
        std::fprintf(stderr, "error: Cannot open \"%s\"\n\n", path.c_str());
        return false;
    }
    std::string const includeDir = includeDirFor(o, path);
    zyl_dict_load_params_t const p = loadParams(o, includeDir);
    Reports reports{&path};
    int const rc = loadDictionaryWithPlaces(text.c_str(), &p, &out.dict, printAsCompile, &reports, &out.places);
    if (rc == ZYL_DICT_LOAD_NO_TEMP_FILE)
        std::fprintf(stderr, "File %s; error: no temporary file for the schema text\n\n", path.c_str());
    return rc == ZYL_DICT_LOAD_OK;
}

void collectFinding(zyl_dict_change_t const* c, void* context) {
    Finding f;
    f.breaking = c->kind == ZYL_CHANGE_BREAKING;
    f.code = c->code;
    f.subject = c->subject;
    f.className = c->class_name;
    f.item = c->item;
    f.message = c->message;
    f.inOld = c->in_old != 0;
    f.holder = c->holder;
    f.declNo = c->decl_no;
    static_cast<std::vector<Finding>*>(context)->push_back(f);
}

// Where the declaration a finding is about stands: a field or an index
// the compiler made itself points at its class.
void placeFinding(Finding& f, Compiled const& oldSchema, Compiled const& newSchema) {
    Compiled const& in = f.inOld ? oldSchema : newSchema;
    DeclPlaces::Place const* p = nullptr;
    if (f.subject == "field")
        p = in.places.field(f.holder, f.declNo);
    else if (f.subject == "index")
        p = in.places.index(f.className, f.declNo);
    if (p == nullptr && !f.className.empty())
        p = in.places.holder(f.className);
    f.file = in.path;
    if (p != nullptr) {
        f.file = in.fileOf(*p);
        f.line = p->line;
    }
    f.declaration = f.className;
    if (!f.item.empty())
        f.declaration += (f.declaration.empty() ? "" : ".") + f.item;
}

int compareSchemas(CliOptions const& o) {
    Compiled oldSchema, newSchema;
    if (!compileForCompare(o, o.compareWith, oldSchema) || !compileForCompare(o, o.schemaFile, newSchema)) {
        UT::finishComp(false);
        return 255;
    }
    std::vector<Finding> findings;
    int const breaking = zyl_dict_compare(oldSchema.dict, newSchema.dict, collectFinding, &findings);
    for (Finding& f : findings)
        placeFinding(f, oldSchema, newSchema);
    printFindings(findings, o.diagnosticsJson, stdout);
    return breaking > 0 ? 1 : 0;
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
    if (!o.compareWith.empty())
        return compareSchemas(o);
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
