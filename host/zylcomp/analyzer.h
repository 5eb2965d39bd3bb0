// Analyzer: reads the schema text by recursive descent and fills the Schema
// it holds by value; doChecks then completes the model.
#pragma once

#include <cstdint>
#include <memory>

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
    // The files that DeclPlace::m_file numbers.
    mvector<mstring> const& placeFiles() const { return m_schema.v_placeFile; }

    // Fills the type set with the base types, before any text is read.
    void initBaseTypes();
    // Reads the whole schema text.
    void analyze();
    // The finishing passes, once the text is read.
    void doChecks();

    // The Java and C# bindings declare a type for the database (its list of
    // classes) beside those of the classes, structs and enums, each Java
    // one in a file of its own: refuses a type named like the database.
    void checkBindingNames();
    // With the C++ wrappers, the members of a class are its fields and
    // indexes: refuses those that the C++ text cannot declare.
    void checkCppNames();
    // Refuses a field whose functions would bear the name of one its struct
    // or class has of its own.
    void checkFieldFunctionNames(bool xmlAccess, bool jsonAccess);
    // With --prefix-names: refuses what the prefixed C text cannot declare.
    void checkPrefixedNames();

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
    // While a body is read, its fields' vector doubles its block instead of
    // growing by one per field; once the body is complete, this gives it the
    // exact block every other growth leaves (capacity equal to size).
    void fitFieldVector(Struct& s);
    // Before a body is read: its fields' vector takes over the block the
    // body before left behind, with the fields it already holds.
    void beginBody(Struct& s);
    // Whether a field of `s` is named `name`: what s->findField answers,
    // through a table of the names of the body being read, so that a field
    // statement does not compare its name with every field before it.
    bool fieldNameTaken(Struct* s, mstring const& name);
    // The place in v_field of the field of `s` named `name`, or -1.
    int fieldNamed(Struct* s, mstring const& name);
    // Enters the last field of `s` into the table, if the table follows s.
    void fieldNameAdded(Struct* s);
    void enterFieldName(Struct const& s, std::uint32_t place);
    void rebuildFieldNames(Struct const& s);

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

    // Finishing passes, in the order doChecks runs them.
    // System classes (sysclasses.cpp).
    void finishDistribClasses();
    void finishUpDownClasses();
    // Type resolution (finish.cpp).
    void finishStructFields();
    void struct_finishStructFields(Struct& s, bool isClass);
    Struct* findFieldType(mstring const& typeName, mstring const& fieldName);
    // Indexes (finish_index.cpp).
    void finishIndices();
    void addImplicitList(Class& c);
    Index::Segment constructIndexSegment(mstring const& indexName, bool desc, bool nocase, bool unique, Class& c,
                                         mstring const& fieldPath, mstring const& collation);
    bool checkSegment(Class const& c, Index& idx, Index::Segment const& s, int k);
    // Events (finish_events.cpp).
    void finishEvents();
    bool eventFieldIsBaseType(Event const& ev) const;
    // Schema-wide rules (finish.cpp).
    void checkObjid();
    void checkRefTo();

    // True once an error was reported: for a reporter that returns.
    bool failed() const;
    // m_parser->match of a fixed token.
    bool match(char const* token);

    // Reports of the grammar and the finishing passes: current file and
    // line (the end of the text, for the passes), no position.
    void error(char const* key);
    void error1(char const* key, mstring const& p1);
    void error2(char const* key, mstring const& p1, mstring const& p2);
    void error3(char const* key, mstring const& p1, mstring const& p2, mstring const& p3);
    void error4(char const* key, mstring const& p1, mstring const& p2, mstring const& p3, mstring const& p4);
    void warning(char const* key);
    // Where the parser stands now: the place of the declaration being read.
    DeclPlace here();
    // Reports made while it lives are about the declaration of `name`.
    DeclFocus focus(char const* kind, mstring const& name, DeclPlace const& at) {
        return DeclFocus(reporter(), m_schema.declaration(kind, name, at));
    }
    IErrReporter* reporter();
    // Reports at the place of a declaration, for checks made after it was
    // read; a place the compiler made itself stands for the current one.
    void errorAt(DeclPlace const& at, char const* key, mstring const& p1 = mstring(),
                 mstring const& p2 = mstring(), mstring const& p3 = mstring(), mstring const& p4 = mstring());

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
    // Direct structs entered into the type set: while there are none, no
    // field type can be one, and markDirect need not look its type up.
    int m_directTypes = 0;
    // The block of places the last body was read into, kept for the next
    // one: a body then grows its vector only when it outgrows them all.
    mvector<Field> m_spareFields;
    // The table behind fieldNameTaken: open addressing over the places of
    // m_namesOf's fields. A slot whose stamp is not m_nameStamp is free, so
    // starting afresh costs nothing. The table follows m_namesOf while it
    // holds all m_namesCount fields the vector has; any other change to the
    // vector (a system field, a field put in front) shows as another size,
    // and the table is built again from the fields.
    struct NameSlot {
        std::uint32_t stamp = 0;
        std::uint32_t hash = 0;
        std::uint32_t place = 0;
    };
    mvector<NameSlot> m_nameSlots;
    std::uint32_t m_nameStamp = 0;
    Struct const* m_namesOf = nullptr;
    std::uint32_t m_namesCount = 0;
    // Where the last name fieldNameTaken did not find would go, and its
    // hash: the field that takes the name enters there. -1 for none.
    int m_freeSlot = -1;
    std::uint32_t m_freeHash = 0;
    // Structs whose fields struct_finishStructFields is resolving: a struct
    // reached again through its own fields' types is left as it is.
    mvector<Struct*> m_finishing;
};

// Calls `visit` on every element of `set` as a T, in the set's order, while
// `visit` answers true. The cursor goes also when an error of the run-time
// entry is thrown through here.
template <class T, class Visit>
void forEachIn(ISet* set, Visit visit) {
    std::unique_ptr<ISet::Pos> pos(set->first());
    for (bool go = true; go && pos->valid(); pos->next())
        go = visit(*static_cast<T*>(pos->get().get()));
}
