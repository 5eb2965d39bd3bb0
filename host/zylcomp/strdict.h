// The dictionary's entries: the values of every record of zyldict.h,
// computed once from the finished, laid-out model, and ClassDictCreator,
// which numbers the structures in use and prints their field and structure
// tables as C text.
//
// The values are computed apart from their printing so that both forms of
// the dictionary come from the same code: the C text that generated sources
// compile, and the records the run-time entry builds in memory. Sizes and
// offsets stay FSize here: in the C text a direct struct leaves them to the
// C compiler; in memory they are numbers by construction.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "foundation/outstream.h"
#include "frontend/diagnostics.h"
#include "host/zylcomp/fsize.h"

class Schema;
class Struct;
class Class;
class Field;
class Index;
class Event;
class FldLayout;

// Ends the compile on an inconsistency of the model that the dictionary
// cannot record: "internal error: {msg}".
[[noreturn]] void dictPanic(mstring const& msg);

// The type code of a sequence of `element`s, or 0 for an element type no
// sequence can hold.
int sequenceTypeCode(Struct const& element);

// The text of a table of the C-source dictionary, built piece by piece:
// each << appends to one growing block, and no string is made for an entry
// as a whole (a large schema has a hundred thousand entries of dozens of
// pieces). A piece is copied straight in: the length of a literal is known
// where it is written, and numbers, plain sizes included, are written
// digit by digit into place, as n2s writes them.
class TableText {
public:
    TableText() = default;
    ~TableText() { delete[] m_buf; }
    TableText(TableText const&) = delete;
    TableText& operator=(TableText const&) = delete;

    TableText& operator<<(char const* s) {
        append(s, std::strlen(s));
        return *this;
    }
    TableText& operator<<(mstring const& s) { return *this << s.c_str(); }
    TableText& operator<<(FSize const& v) {
        // A plain number renders as its digits: no rendering is needed.
        if (!v.is_str())
            return *this << static_cast<long long>(v.m_num);
        return *this << static_cast<mstring const&>(v);
    }
    TableText& operator<<(long long v);
    TableText& operator<<(int v) { return *this << static_cast<long long>(v); }

    char const* c_str() const { return m_buf != nullptr ? m_buf : ""; }
    void clear() {
        m_len = 0;
        if (m_buf != nullptr)
            m_buf[0] = '\0';
    }

private:
    void append(char const* s, std::size_t n) {
        if (m_len + n >= m_cap)
            grow(n);
        std::memcpy(m_buf + m_len, s, n);
        m_len += n;
        m_buf[m_len] = '\0';
    }
    // Room for `n` more characters and the terminator, at least doubling.
    void grow(std::size_t n);

    char* m_buf = nullptr;
    std::size_t m_len = 0;
    std::size_t m_cap = 0;
};

// What Field::dict_info records, without building the record: the size
// is a number or the type's own size (no copy is made), and the type text
// a literal (no string is made). For the many callers that only want the
// code or the numeric size.
class DictType {
public:
    FSize size() const { return m_size != nullptr ? *m_size : FSize(m_num); }
    std::int32_t sizeNumber() const { return m_size != nullptr ? m_size->m_num : m_num; }

    int m_typeCode = 0;
    std::int32_t m_num = 0;
    FSize const* m_size = nullptr;  // the type's size, when it is that
    char const* m_typeText = "";
    int m_count = 0;
};

// The dictionary type of `f`, with the checks and faults of
// Field::dict_info, which is made from it.
DictType dictType(Field const& f, bool allowStruct);

// A field and its declared place in its structure.
class FieldRef {
public:
    Field const* m_field = nullptr;
    int m_place = 0;
};

// By field name: a structure's field table is in name order unless the
// declared order is kept.
bool ordered_before(FieldRef const& a, FieldRef const& b);

// zyl_dict_field_t
class DictFieldEntry {
public:
    char const* m_name = "";  // the field's own name: the model outlives the entry
    // The field's placements, compact and large (size, alignment, offset),
    // read where the layout pass left them rather than copied.
    FldLayout const* m_compact = nullptr;
    FldLayout const* m_large = nullptr;
    int m_type = 0;
    int m_flags = 0;
    int m_arraySize = 0;
    int m_structNum = -1;
    FSize m_fieldSize;
    int m_reftoClass = 0xFFFF;
    unsigned m_initIndex = 0;
    int m_orderNo = 0;
    int m_no = 0;
    int m_eventId = 0xFFFF;
    int m_indicator = 0xFFFF;
    int m_precision = 0;
    int m_seqOrder = 0;
    FSize m_seqElemSize;
};

// zyl_dict_class_info_t
class DictClassEntry {
public:
    int m_firstIndex = 0xFFFF;
    int m_lastIndex = 0xFFFE;
    int m_listIndex = 0xFFFF;
    int m_autoidIndex = 0xFFFF;
    FSize m_fixedSize;
    FSize m_autoidOffset;
    int m_historyIndex = 0xFFFF;
    int m_historyLength = 0;
    FSize m_historyOffset;
    int m_firstEvent = 0xFFFF;
    int m_lastEvent = 0xFFFE;
    int m_flags = 0;
    int m_structNo = -1;  // struct_ptr: v_all_struct + m_structNo
    FSize m_initSize;
    FSize m_autoOidOffset;
};

// zyl_dict_index_field_t
class DictKeyEntry {
public:
    FSize m_offset;
    FSize m_vectOffset;
    FSize m_indicatorOffset;
    FSize m_size;
    int m_type = 0;
    int m_flags = 0;
    int m_fldNo = 0;
    int m_collation = 0xFFFF;
    mstring m_path;  // the key's field path, for the reader of the C text; empty in memory
};

// zyl_dict_index_t, with its keys
class DictIndexEntry {
public:
    int m_classCode = 0;
    int m_implNo = 0;
    FSize m_vectOffset;
    std::uint32_t m_flags = 0;
    long long m_estimate = 0;
    int m_userdefId = 0xFFFF;
    mvector<DictKeyEntry> v_key;
};

// zyl_dict_event_t
class DictEventEntry {
public:
    int m_classCode = 0;
    int m_flags = 0;
    FSize m_offset;
    FSize m_size;
    int m_type = 0;
    int m_fldNo = 0;
};

// Class flags (ZYL_CLASS_...).
int GetClassFlags(Class const& c);
// The class record. `firstIndex` and `firstEvent` are the places of the
// class's first index and event in the schema-wide tables.
DictClassEntry dictClassEntry(Schema const& schema, Class const& c, int firstIndex, int firstEvent);
// The keys' paths are made only `withPaths`: only the C text shows them.
DictIndexEntry dictIndexEntry(Class const& c, Index const& index, bool withPaths);
DictEventEntry dictEventEntry(Class const& c, Event const& e);

// Numbers the structures the dictionary holds: the structs some class
// uses, in the order of the type set, then every class, in set order; a
// class's struct_ptr is v_all_struct + its number. Prints their field and
// structure tables, with the initial values they need.
class ClassDictCreator {
public:
    ClassDictCreator(Schema* schema, bool dynamicTables, IErrReporter* err, mstring const& dbName);
    virtual ~ClassDictCreator() = default;
    ClassDictCreator(ClassDictCreator const&) = delete;
    ClassDictCreator& operator=(ClassDictCreator const&) = delete;

    // Field tables, then the structure table. With dynamic tables each is
    // filled by statements at run time and reached through a pointer.
    void printAll(IOutStream& out, bool sortFields);
    void printAllFields(IOutStream& out, bool sortFields);
    void printAllUsedStructs(IOutStream& out);
    // The C name under which the structure table is reached.
    mstring getPtrToStructInfoVector() const;

    int structCount() const { return static_cast<int>(v_used.size()); }
    int fieldCount() const { return m_nFields; }
    // The initial values gathered by printAllFields.
    mvector<std::int32_t> const& intValues() const { return v_initI; }
    mvector<double> const& realValues() const { return v_initD; }

    // The fields of `s` in table order: by name when `sortFields`.
    static mvector<FieldRef> fieldList(Struct const& s, bool sortFields);
    // Field `i` of `list`, one of the fields of used structure `structNo`.
    // Its initial values are appended to the tables.
    DictFieldEntry fieldEntry(int structNo, mvector<FieldRef> const& list, int i);

    static int GetFieldFlags(Field const& f);
    static int GetStructFlags(Struct const& s);
    int GetSeqOrder(Field const& f);

protected:
    // Appends the initial values of `f`; 1 + the place of the first in its
    // table, or 0 when it has none. `real` tells which table took them.
    unsigned addInitialValues(Struct const& s, Field const& f, bool& real);
    // The value of enum constant `name`, also after it took the database prefix.
    bool enumValue(mstring const& name, long* value);
    // The code of class `name`, 0xFFFF when there is no such class.
    int classCode(mstring const& name) const;

    mvector<int> v_firstField;  // by structure number
    int m_nStructs = 0;
    int m_nFields = 0;
    bool m_dynamicTables;
    mvector<Struct*> v_used;
    mvector<Class*> v_usedClass;  // parallel to v_used; null for a struct
    Schema* m_schema;
    IErrReporter* m_err;
    mstring m_dbName;
    mvector<std::int32_t> v_initI;
    mvector<double> v_initD;

private:
    // Walks every field once: the C text of the initial value tables and
    // of the field entries, kept for the print functions.
    void collectFields(bool sortFields);
    void printInitTables(IOutStream& out) const;
    void printFieldTable(IOutStream& out) const;

    // Not mstrings: a table's text grows by a piece per field, and an
    // mstring would scan and copy all of it again for every piece.
    TableText m_intText;
    TableText m_realText;
    TableText m_fieldText;
};
