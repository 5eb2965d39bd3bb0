// Analyzer: reads the schema text by recursive descent and fills the Schema
// it holds by value; doChecks then completes the model.
#pragma once

#include <cstdint>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "frontend/diagnostics.h"
#include "host/zylcomp/schema.h"

class Parser;

// True when some class with m_persistent equal to `persistent` matches the
// mask: 0x800 a distributed class, 0x80 an uptable, 0x8000 a downtable.
bool findClassTypes(Schema& schema, int mask, bool persistent);

class Analyzer {
public:
    // Placement prefix of a class statement.
    enum mplacement { PLACEMENT_DEFAULT = 0, PLACEMENT_TRANSIENT = 1, PLACEMENT_PERSISTENT = 2 };
    // Atomicity prefix of a class statement.
    enum atomicity { ATOMICITY_DEFAULT = 0, ATOMICITY_ATOMIC = 1, ATOMICITY_NONATOMIC = 2 };

    Analyzer(Parser* parser, bool keepFieldOrder, bool wideOffsets, bool compactDefault, bool sqlReservedWords,
             bool persistentDefault, bool transientUnused, bool atomicDefault, int sizeofSize, int spareSize,
             mvector<mstring>* hiddenClasses, IOnDbNameFound* onDbName);
    Analyzer(Analyzer const&) = delete;
    Analyzer& operator=(Analyzer const&) = delete;

    Schema& schema() { return m_schema; }

    // Fills the type set with the base types, before any text is read.
    void initBaseTypes();
    // Reads the whole schema text.
    void analyze();
    // The finishing passes, once the text is read.
    void doChecks();

    bool isReservedWord(mstring const& word) const;
    // Reports "reserved word #1" when `word` is reserved.
    void checkIsNotReserved(mstring const& word);

private:
    // Top level (analyzer_decl.cpp).
    void do_declare();
    void do_struct();
    void do_enum();
    void do_calculator();
    void do_iot();
    void copyOidStruct();

    // Classes (analyzer_class.cpp).
    void do_class(bool compact, mplacement placement, bool local, bool distributed, atomicity atom,
                  TableIotType iotType);
    void addIotFields(Class& c);
    void addAutoid(Class& c);
    bool fitUpdatedBitmap(Class& c);

    // Fields (analyzer_field.cpp).
    void do_field(Struct* s);
    void readRefClass(Field& f);
    void readInitValues(Field& f);
    mstring getTypeName(int& precision);
    void add_indicators(Struct* s);
    void markDirect(Field& f, Struct* s);

    // Direct structures (analyzer_direct.cpp).
    void do_direct_struct(bool packed);
    void do_direct_field(Struct* s);

    // Indexes (analyzer_index.cpp).
    void do_index_declaration(Class& c, IndexType kind, bool unique, bool voluntary, bool userdef, bool thick,
                              bool inclusive);
    void do_indexFields(Index& idx, Class& c);

    // Events and time-to-live (analyzer_event.cpp).
    void do_event(Class& c);
    void do_ttl(Class& c);

    // Reports of the grammar: current file and line, no position.
    void error(char const* key);
    void error1(char const* key, mstring const& p1);
    void error2(char const* key, mstring const& p1, mstring const& p2);
    void warning(char const* key);

    Parser* m_parser;
    Schema m_schema;
    bool m_sqlReservedWords;
    bool m_compactDefault;
    IOnDbNameFound* m_onDbName;
    bool m_persistentDefault;
    bool m_transientUnused;  // kept from the job; nothing reads it
    bool m_atomicDefault;
    bool m_wideOffsets;
    int m_sizeofSize;
    int m_spareSize;  // kept from the job; nothing reads it
    bool m_defaultAlign8;  // 8-byte scalars aligned to 8
    bool m_keepFieldOrder;
    mvector<mstring>* m_hiddenClasses;  // the job's list, not a copy

    // Schema-wide field number of the next field statement.
    std::uint16_t m_fieldCounter = 1;
    // Some field is a sequence.
    bool m_usesSequences = false;
};
