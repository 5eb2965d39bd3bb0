// The dictionary built in memory: the records of zyldict.h filled with
// numbers, for a running application that defines a database from schema
// text without a build step.
//
// Invariant: there is no C compiler behind this form, so every size,
// alignment and offset stays a number. The layout steps are overridden to
// that end (members of a direct struct get the alignment the C compiler
// would give them), and a symbolic value that still shows up is an
// internal fault. The values themselves come from the same functions as
// the C-source form, so the two agree.
#pragma once

#include <cstdint>
#include <string>

#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/strdict.h"
#include "zyldict.h"

// The alignment the C compiler gives a member of a direct struct, by type
// code; 0 where the member keeps its type's own alignment.
extern std::uint32_t const direct_field_alignment[51];

class MemoryGenDict : public GenOutput {
public:
    MemoryGenDict(Schema& schema, bool outOfLine, bool dictFlagA, bool genXmlSchema, bool genCpp, bool genCs,
                  bool genJava, bool cppProperties, IErrReporter* err, mstring const& outputDir,
                  mstring const& csNamespace, mstring const& javaPackage, bool dictFlagB, bool genXml, bool genJson,
                  bool jobFlag1, bool jobFlag2, int jobNum1, int jobNum2, bool usePrefix, bool classCodeOrigin,
                  bool dllSpec);
    ~MemoryGenDict() override = default;

    // Lays the schema out and builds the whole dictionary. Its memory comes
    // from zyl_sys_calloc and zyl_sys_malloc and belongs to the caller.
    zyl_dictionary_t* generate();
    void generate_collations(zyl_dictionary_t* dict);
    static int GetClassFlags(Class* c);

    using GenOutput::layout;
    bool layout(Struct& s, int startOffset, Class* owner) override;
    void layout(Layout& l, int startOffset, Struct* s) override;
    // Nothing is handed over to the C compiler here.
    void update_layout_strings(FldLayout&) override {}
    FSize getArraySize(FSize& elem, int n) override;

protected:
    // Every stream is a null stream: this form writes nothing.
    void createStreams(bool udf, bool coll) override;

private:
    // Where the next class, event, index and key record goes.
    struct Cursor {
        zyl_dict_class_info_t* classes = nullptr;
        char const** classNames = nullptr;
        zyl_dict_event_t* events = nullptr;
        zyl_dict_index_t* indexes = nullptr;
        zyl_dict_index_field_t* keys = nullptr;
        char const** indexNames = nullptr;
        int code = 1;
        int firstIndex = 0;
        int firstEvent = 0;
    };

    // True when placing the classes one by one, each just before its
    // records are made, reports the same first error as placing them all
    // first: no class placement can fail and no index record can.
    bool classesStreamable();
    void classRecord(zyl_dictionary_t* dict, Class& c, Cursor& at);
    void eventRecords(Class& c, Cursor& at);
    void indexRecords(Class& c, Cursor& at);
    // Once a class's records are made nothing reads the class's fields,
    // indexes, events or placements again: they go at once, while they are
    // still in the cache, and their memory serves the classes behind it.
    // The class itself, its name and code stay; the structs it holds keep
    // their placements.
    static void releaseClass(Class& c);

    mstring m_memOutputDir;
    // "{class}.{index}" is joined here: only the copy handed to the caller
    // needs a block of its own.
    std::string m_indexName;
};

// The field and structure tables, as records.
class MemoryClassDictCreator : public ClassDictCreator {
public:
    MemoryClassDictCreator(Schema* schema, IErrReporter* err, mstring const& dbName);

    // Fills v_all_struct, the field tables and the initial values of `dict`:
    // begin, then entry for every structure in order.
    void create(zyl_dictionary_t* dict, bool sortFields);
    // Allocates the structure and field tables.
    void begin(zyl_dictionary_t* dict);
    // The record of structure `n` and its fields; after the last structure,
    // the tables of initial values.
    void entry(zyl_dictionary_t* dict, unsigned n, bool sortFields);
    Class const* usedClass(unsigned n) const { return v_usedClass[static_cast<int>(n)]; }

private:
    zyl_dict_struct_t* m_structs = nullptr;
    zyl_dict_field_t* m_fields = nullptr;
};

// A number of the in-memory form: `v` must not be symbolic; `what` names
// the check in the fault otherwise.
std::int32_t memNumber(FSize const& v, char const* what);
// Memory of the runtime's allocators: zeroed tables and string copies.
// Running out of it ends the process, as everywhere in the compiler.
void* memTable(std::size_t count, std::size_t size);
char const* memString(mstring const& s);
char const* memString(char const* s);
