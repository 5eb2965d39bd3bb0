// The run-time entry: zyl_db_load_dictionary compiles schema text from a
// buffer into a dictionary in memory, inside a running application.
//
// It must never end its host process and never let an exception out: a
// refused schema, and every internal fault the compiler meets on the way,
// end in return code 1005 with the message handed to the caller's
// function. Only exhausted memory still ends the process. It writes no
// files: the text goes through an anonymous temporary file, because the
// preprocessor reads files only, and every output stream is a null stream.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>

#include "driver/final_callback.h"
#include "frontend/parser.h"
#include "host/zylcomp/analyzer.h"
#include "target/zylcomp/decl_places.h"
#include "target/zylcomp/errreporter_mem.h"
#include "target/zylcomp/gendict.h"
#include "target/zylcomp/ledger.h"
#include "zylcomp.h"

namespace {

// While a call runs, a panic on its thread becomes its reporter's fault,
// thrown as CompilerError. A report function that loads another dictionary
// installs its own, and the guard gives the outer one back afterwards.
void throwFault(void* reporter, mstring const& msg, bool) { static_cast<ErrReporterMem*>(reporter)->fault(msg); }

class FaultGuard {
public:
    explicit FaultGuard(ErrReporterMem* reporter) : m_previous(IErrReporter::setPanicHook({throwFault, reporter})) {}
    ~FaultGuard() { IErrReporter::setPanicHook(m_previous); }
    FaultGuard(FaultGuard const&) = delete;
    FaultGuard& operator=(FaultGuard const&) = delete;

private:
    IErrReporter::PanicHook m_previous;
};

// An exception that is no CompilerError has not reached the caller yet.
// Whatever the caller's function throws in turn stays here too.
void reportFault(ErrReporterMem& reporter, mstring const& msg) {
    try {
        reporter.fault(msg);
    } catch (...) {
    }
}

mstring text(char const* s, char const* absent) { return mstring(s != nullptr ? s : absent); }

// The stages of one compile, made in this order and destroyed in reverse.
struct Compile {
    std::unique_ptr<Parser> parser;
    std::unique_ptr<Analyzer> analyzer;
    std::unique_ptr<MemoryGenDict> gen;
};

DeclPlaces::Place placeOf(DeclPlace const& at) {
    DeclPlaces::Place p;
    p.file = at.m_file;
    p.line = at.m_line;
    return p;
}

// Taken before the dictionary is built: building it releases each class's
// fields and indexes as soon as their records are made.
void notePlaces(Analyzer const& analyzer, Schema& schema, DeclPlaces& places) {
    for (unsigned i = 0; i < analyzer.placeFiles().size(); i++)
        places.files.push_back(analyzer.placeFiles()[i].c_str());
    auto note = [&places](Struct const& s) {
        DeclPlaces::Holder& h = places.holders[s.m_name.c_str()];
        h.self = placeOf(s.m_place);
        h.fields.reserve(s.v_field.size());
        for (unsigned i = 0; i < s.v_field.size(); i++)
            h.fields.push_back(placeOf(s.v_field[i].m_place));
        return &h;
    };
    forEachIn<Struct>(schema.m_types, [&note](Struct& s) {
        if ((s.m_category == TC_STRUCT || s.m_category == TC_DIRECT) && s.v_field.size() > 0)
            note(s);
        return true;
    });
    forEachIn<Class>(schema.m_classes, [&note](Class& c) {
        DeclPlaces::Holder* h = note(c);
        h->indexes.reserve(c.v_index.size());
        for (unsigned i = 0; i < c.v_index.size(); i++)
            h->indexes.push_back(placeOf(c.v_index[i].m_place));
        return true;
    });
}

zyl_dictionary_t* compile(Compile& run, FILE* f, zyl_dict_load_params_t const& p, ErrReporterMem* reporter,
                          mstring const& outputDir, mstring const& includeDir,
                          mvector<mstring>* hidden, DeclPlaces* places) {
    run.parser.reset(new Parser(f, "<membuf>", reporter, includeDir, outputDir));
    if (p.hideAllClasses)
        hidden->push_back("");
    // The Analyzer sets the schema's option bits and the 8-byte alignment
    // from keepFieldOrder and wideOffsets itself. It is not told the
    // database name: this entry writes no files, so the final callback has
    // none to remove, and the caller's own {db}.h and {db}.c in the output
    // directory (by default the current one) must survive a refused schema.
    run.analyzer.reset(new Analyzer(run.parser.get(), p.keepFieldOrder != 0, p.wideOffsets != 0,
                                    p.compactDefault != 0, p.sqlReservedWords != 0, p.persistentDefault != 0,
                                    p.transientUnused != 0, p.atomicDefault != 0, 8, p.spareSize, hidden,
                                    nullptr));
    run.analyzer->initBaseTypes();
    run.analyzer->analyze();
    run.analyzer->doChecks();
    if (places != nullptr)
        notePlaces(*run.analyzer, run.analyzer->schema(), *places);
    // Unlike the batch job, cppWrappers does not force out-of-line functions.
    run.gen.reset(new MemoryGenDict(
        run.analyzer->schema(), p.compiledFunctions != 0, p.keepFieldOrder != 0, p.xmlSchema != 0,
        p.cppWrappers != 0, p.csharpOutput != 0, p.javaOutput != 0, p.cppRuntimeHeader != 0, reporter, outputDir,
        text(p.csharpNamespace, ""), text(p.javaPackage, ""), p.dynamicDictTables != 0, p.xmlAccess != 0,
        p.jsonAccess != 0, p.sqlReservedWords != 0, p.wideOffsets != 0, 8, p.spareSize, p.prefixNames != 0, false,
        false));
    run.gen->init();
    return run.gen->generate();
}

// The name goes out only with room to spare: a buffer of exactly the
// name's length and its NUL gets nothing.
void giveName(mstring const& name, char* dbName, size_t* dbNameSize) {
    if (dbNameSize == nullptr)
        return;
    if (!name.empty()) {
        size_t len = std::strlen(name.c_str()) + 1;
        if (len < *dbNameSize && dbName != nullptr)
            std::memcpy(dbName, name.c_str(), len);
        else
            len = 0;
        *dbNameSize = len;
    } else if (*dbNameSize > 1 && dbName != nullptr) {
        dbName[0] = '\0';
        *dbNameSize = 1;
    } else {
        *dbNameSize = 0;
    }
}

}  // namespace

namespace {

int load(const char* schema, const zyl_dict_load_params_t* params, zyl_dictionary_t** dict, size_t* dictSize,
         char* dbName, size_t* dbNameSize, zyl_dict_error_callback_t callback, void* context, DeclPlaces* places) {
    FILE* f = std::tmpfile();
    if (f == nullptr)
        return ZYL_DICT_LOAD_NO_TEMP_FILE;
    // Every string of this call comes from its own pool: calls on other
    // threads run beside it without sharing anything.
    strblocks::Scope strings;
    Ledger ledger;
    if (schema != nullptr)
        std::fputs(schema, f);
    std::rewind(f);

    zyl_dict_load_params_t const none = {};
    zyl_dict_load_params_t const& p = params != nullptr ? *params : none;
    mstring const outputDir = text(p.outputDir, ".");
    mstring const includeDir = text(p.includeDir, ".");
    mvector<mstring> hidden;

    int rc = ZYL_DICT_LOAD_REFUSED;
    {
        ErrReporterMem reporter(callback, context);
        FinalCallback finalCallback(outputDir);
        reporter.setFinalCallback(&finalCallback);
        reporter.setDefaultFilename("<memory buffer>");
        FaultGuard guard(&reporter);
        try {
            Compile run;
            zyl_dictionary_t* result = compile(run, f, p, &reporter, outputDir, includeDir, &hidden, places);
            if (dict != nullptr)
                *dict = result;
            if (dictSize != nullptr)
                *dictSize = sizeof(zyl_dictionary_t);
            giveName(run.analyzer->schema().m_dbName, dbName, dbNameSize);
            ledger.keep();
            rc = ZYL_DICT_LOAD_OK;
        } catch (CompilerError const&) {
            // The caller's function has had the message.
        } catch (char const* what) {
            reportFault(reporter, what);
        } catch (std::exception const& e) {
            reportFault(reporter, e.what());
        } catch (...) {
            reportFault(reporter, "unknown internal fault");
        }
    }
    std::fclose(f);
    if (rc != ZYL_DICT_LOAD_OK)
        ledger.freeAll();
    return rc;
}

}  // namespace

extern "C" int zyl_db_load_dictionary(const char* schema, const zyl_dict_load_params_t* params,
                                      zyl_dictionary_t** dict, size_t* dictSize, char* dbName, size_t* dbNameSize,
                                      zyl_dict_error_callback_t callback, void* context) {
    return load(schema, params, dict, dictSize, dbName, dbNameSize, callback, context, nullptr);
}

int loadDictionaryWithPlaces(const char* schema, const zyl_dict_load_params_t* params, zyl_dictionary_t** dict,
                             zyl_dict_error_callback_t callback, void* context, DeclPlaces* places) {
    return load(schema, params, dict, nullptr, nullptr, nullptr, callback, context, places);
}

DeclPlaces::Place const* DeclPlaces::holder(std::string const& name) const {
    auto it = holders.find(name);
    return it == holders.end() || it->second.self.file < 0 ? nullptr : &it->second.self;
}

DeclPlaces::Place const* DeclPlaces::field(std::string const& name, int n) const {
    auto it = holders.find(name);
    if (it == holders.end() || n < 0 || static_cast<size_t>(n) >= it->second.fields.size())
        return nullptr;
    return it->second.fields[n].file < 0 ? nullptr : &it->second.fields[n];
}

DeclPlaces::Place const* DeclPlaces::index(std::string const& name, int n) const {
    auto it = holders.find(name);
    if (it == holders.end() || n < 0 || static_cast<size_t>(n) >= it->second.indexes.size())
        return nullptr;
    return it->second.indexes[n].file < 0 ? nullptr : &it->second.indexes[n];
}
