// Analyzer: reads the schema text by recursive descent and fills the Schema
// it holds by value; doChecks then completes the model.
#pragma once

#include <cstdint>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "frontend/diagnostics.h"
#include "host/zylcomp/schema.h"

class Parser;

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
