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
    void generate_indexes(zyl_dictionary_t* dict, unsigned nFields, unsigned nIndexes);
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
    mstring m_memOutputDir;
};

// The field and structure tables, as records.
class MemoryClassDictCreator : public ClassDictCreator {
public:
    MemoryClassDictCreator(Schema* schema, IErrReporter* err, mstring const& dbName);

    // Fills v_all_struct, the field tables and the initial values of `dict`.
    void create(zyl_dictionary_t* dict, bool sortFields);
};

// A number of the in-memory form: `v` must not be symbolic; `what` names
// the check in the fault otherwise.
std::int32_t memNumber(FSize const& v, char const* what);
// Memory of the runtime's allocators: zeroed tables and string copies.
// Running out of it ends the process, as everywhere in the compiler.
void* memTable(std::size_t count, std::size_t size);
char const* memString(mstring const& s);
char const* memString(char const* s);
