// The schema object model: the one in-memory description of a compiled
// schema.
//
// The analyzer fills it while it parses, the finishing passes complete it,
// the layout pass writes only the layout members, and the generators read
// it. Ownership runs through the Schema's sets alone: every Struct, Class,
// Enum and Collation is reference counted and released with its set; all
// pointers between model records (Field::m_struct, FldEl pointers, v_owner,
// ...) are borrowed and never freed.
#pragma once

#include <cstdint>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "foundation/sets.h"
#include "frontend/diagnostics.h"
#include "host/zylcomp/fsize.h"

class Struct;
class Class;
class Schema;
class Enum;
class Field;
class Schema;
class IOutStream;

// What kind of type a Struct is. Plain ints on purpose: dictionary code and
// generators compare and store them as numbers.
enum TypeCategory {
    TC_STRUCT = 0,     // declared struct, and every Class
    TC_SCALAR = 1,     // integers, float, double, boolean, date and time types, enums
    TC_CHARS = 2,      // char<n>
    TC_STRING = 3,
    TC_BLOB = 4,
    TC_OID_REF = 5,    // "ref", the oid structure
    TC_AUTOID = 6,     // "$autoid", type of the implicit autoid field
    TC_VERSION = 7,    // "$version"
    TC_AUTO_OID = 8,   // "$auto_oid", type of the implicit "auto_oid@" field
    TC_NCHARS = 9,     // nchar<n>
    TC_NSTRING = 10,
    TC_DIRECT = 11,    // direct struct
    TC_UNUSED = 13,    // no type of this version has it; counted as dynamic
    TC_SEQUENCE = 14,
    TC_BINARY = 15,    // binary<n>
    TC_VARBINARY = 16,
};

enum IndexType {
    IT_TREE = 0,
    IT_HASH = 1,
    IT_KDTREE = 2,
    IT_RTREE = 3,
    IT_PATRICIA = 4,
    IT_TRIGRAM = 5,
    IT_LIST = 6,
};

enum TableIotType {
    IOT_NONE = 0,
    IOT_UPTABLE = 1,
    IOT_DOWNTABLE = 2,
};

// Event::m_kind values. 6 is not used.
enum EventKind {
    EV_NEW = 1,
    EV_UPDATE = 2,  // a field's update
    EV_DELETE = 3,
    EV_DELETE_ALL = 4,
    EV_CHECKPOINT = 5,
    EV_CLASS_UPDATE = 7,
};

// What the event and place look-ups answer when nothing matches.
constexpr std::uint32_t NO_EVENT = 0xFFFFFFFFu;

// The integer type of an enum whose elements take `size` bytes: "uint1",
// "uint2" or "uint4". Any other size is an internal fault and ends the
// process.
mstring enum_int_type(int size);

// ---------------------------------------------------------------------------
// Layout data. Filled by the layout pass; the model only carries it.

// The placement of one field in one Layout.
class FldLayout {
public:
    // Hands the parts of the placement that only the C compiler can know
    // (members of a direct struct, a direct struct held by value) over to
    // text. Runs again on every placement pass; texts set by an earlier call
    // survive, and m_size.m_saved keeps the number of the first call.
    void update_strings();

    Field* m_field = nullptr;
    FSize m_size;
    FSize m_offset;
    FSize m_align;
    bool m_typeIsDirect = false;
    bool m_inDirect = false;
};

// The order sort_vector gives a Layout's fields: fields whose type is a
// direct struct last, and within each group falling numeric alignment.
bool ordered_before(FldLayout const& a, FldLayout const& b);

class Layout {
public:
    void dump(IOutStream& out, int indent) const;

    FSize m_size;
    FSize m_align;
    mvector<FldLayout> v_fld;
};

// The two object formats: compact first, large second.
class Layout2 {
public:
    void dump(IOutStream& out, int indent) const;

    Layout compact;
    Layout large;
};

// ---------------------------------------------------------------------------
// Value records, copied member by member into their vectors.

// Where a declaration stands in the schema text, so that a check made once
// the whole text is read can still name its line: the file is a number in
// the analyzer's list of file names, -1 for what the compiler made itself.
class DeclPlace {
public:
    int m_file = -1;
    int m_line = 0;
};

class Field {
public:
    // What the dictionary records of a field: its type code, its size (text
    // when a direct struct decides it), the short type text of generated
    // key parameters ("u1", "dbl"), and the element count of a bit array.
    class DictInfo {
    public:
        int m_typeCode = 0;
        FSize m_size;
        mstring m_typeText;
        int m_count = 0;
    };

    Field()
        : m_isBitmap(false),
          m_isVector(false),
          m_isIndexed(false),
          m_isUniqueIndexed(false),
          m_isHidden(false),
          m_isOptional(false),
          m_isArray(false),
          m_isNullable(false),
          m_isIndicator(false),
          m_isSequence(false),
          m_isRect(false),
          m_isPoint(false),
          m_isDirect(false) {}

    // Kinds of initial values, by type code.
    enum InitializerType { INIT_NONE = 0, INIT_INTEGER = 1, INIT_REAL = 2, INIT_BOOLEAN = 3 };

    // The field's dictionary type. Structs and blobs can stand in a record
    // but never in an index key: with `allowStruct` false they, and any type
    // the dictionary cannot hold, end the compile as an internal fault.
    DictInfo dict_info(bool allowStruct) const;
    // How the field's initial values go into the dictionary.
    int getInitializerType() const;
    void dump(IOutStream& out, int indent) const;

    mstring m_typeName;  // as written: "signed<4>", "ref", "char<8>", a struct name, "sequence"
    mstring m_name;
    // The flags take a bit each: a large schema holds fields by the hundred
    // thousand, and a byte each would add a word to every one of them.
    bool m_isBitmap : 1;  // the field named "updated_bitmap"
    bool m_isVector : 1;
    bool m_isIndexed : 1;
    bool m_isUniqueIndexed : 1;
    bool m_isHidden : 1;  // system field: no access functions
    bool m_isOptional : 1;
    bool m_isArray : 1;
    bool m_isNullable : 1;
    bool m_isIndicator : 1;  // the "_indicator" field of a nullable field
    bool m_isSequence : 1;
    bool m_isRect : 1;
    bool m_isPoint : 1;
    bool m_isDirect : 1;  // the type is a direct struct
    int m_arraySize = 0;  // a rectangle holds twice its dimension
    int m_indicator = -1;  // place in v_field of this field's indicator
    int m_fieldNo = 0;  // schema-wide number, from the analyzer's counter
    int m_position = 0;  // size of v_field when the field was added
    int m_precision = -1;  // digits behind the point; -1: not numeric, 0 is a real precision
    mvector<mstring> v_init;  // initial values as text, one per element
    Struct* m_struct = nullptr;  // resolved type
    FldLayout* m_compactLayout = nullptr;
    FldLayout* m_largeLayout = nullptr;
    Enum* m_enum = nullptr;
    mstring m_refClassName;  // C of ref<C> or autoid_t<C>
    Struct* m_containerStruct = nullptr;
    mstring m_elemTypeName;  // element type of a sequence
    Struct* m_elemStruct = nullptr;
    mstring m_seqOrder;  // "ZYL_SEQ_ASC_ORDER", "ZYL_SEQ_DESC_ORDER" or "ZYL_SEQ_NO_ORDER"
    DeclPlace m_place;
};

class Index {
public:
    // One step of a key part's path from the class down.
    class FldEl {
    public:
        void dump(IOutStream& out, int indent) const;

        mstring m_name;
        Struct* m_struct = nullptr;  // where the step was looked up
        Field* m_field = nullptr;    // points into that struct's v_field
    };

    // A resolved key part.
    class Segment {
    public:
        // The dictionary type of the key: that of the last field of the path.
        Field::DictInfo dict_info() const;
        // The texts of key `keyNo` in the generated search functions: the
        // formal parameters for a key passed in (`in`) and out (`out`), the
        // arguments that pass it on (`args`), and the statements that fill
        // one key descriptor `pa_` (`fill`). The parameter names go into
        // `names`. A key of a kind no function can take throws "illegal case".
        void paramStrings(int keyNo, Schema const* schema, mvector<mstring>& names, mstring& in, mstring& out,
                          mstring& args, mstring& fill) const;
        void dump(IOutStream& out, int indent) const;

        mvector<FldEl> v_fldEl;
        bool m_isVector = false;
        bool m_isArray = false;
        bool m_isBoolean = false;
        bool m_isBinary = false;
        int m_elemCategory = 0;  // TypeCategory of the vector or array element
        int m_elemPos = -1;      // the step of the path that is the vector or array
        bool m_desc = false;
        bool m_nocase = false;
        int m_collationNo = -1;
    };

    // Where a key stands in an object. Over a vector or array, m_vectOffset
    // is the vector's place in the object and m_offset the key's place in
    // one element; otherwise m_vectOffset is -1.
    class FieldLayout {
    public:
        FSize m_offset;
        FSize m_vectOffset;
    };

    // The placement of `segment` in objects of class `c`, in c's format.
    FieldLayout getFieldLayout(Segment const& segment, Class const* c) const;
    void dump(IOutStream& out, int indent) const;

    mstring m_name;
    mvector<mstring> v_fieldName;  // dotted paths as written, one per key part
    mvector<mstring> v_collation;  // per key part, empty for none
    mvector<bool> v_desc;
    mvector<bool> v_nocase;
    mvector<Segment> v_segment;    // built by finishIndices
    bool m_unique = false;
    bool m_thick = false;
    bool m_voluntary = false;
    bool m_inclusive = false;
    IndexType m_type = IT_TREE;
    bool m_userdef = false;
    int m_userdefNo = -1;
    int m_code = -1;  // schema-wide index number
    int ecount = 0;   // estimated number of entries
    int m_vbased = -1;  // key part that is a vector or array
    bool m_implicitList = false;
    bool m_hasBoolean = false;
    bool m_isSystem = false;
    DeclPlace m_place;
};

// An index the compiler builds for itself, from C strings.
class SysIndex : public Index {
public:
    SysIndex(char const* name, IndexType type, bool unique);
    // One key part, ascending, case-sensitive, without collation.
    void addField(char const* name);
};

class Event {
public:
    mstring m_name;
    int m_kind = 0;  // EventKind
    mstring m_fieldName;  // for field update events
    Field* m_field = nullptr;  // resolved by finishEvents
    int m_number = -1;  // given by finishEvents
    DeclPlace m_place;
};

// ---------------------------------------------------------------------------
// Reference-counted records, owned by the Schema's sets. Each orders by name.

class Enum : public IComparable {
public:
    class Elem {
    public:
        mstring m_name;
        std::int32_t m_value = 0;
    };

    Enum() = default;
    explicit Enum(mstring const& name) : m_name(name) {}
    bool less(IComparable const* other) const override;
    char const* keyName() const override { return m_name.c_str(); }

    mstring m_name;
    mvector<Elem> v_elem;
    mstring m_intType;  // enum_int_type of the size the values need
    DeclPlace m_place;
};

class Collation : public IComparable {
public:
    Collation() = default;
    explicit Collation(mstring const& name) : m_name(name) {}
    bool less(IComparable const* other) const override;
    char const* keyName() const override { return m_name.c_str(); }

    mstring m_name;
    int m_fieldKind = 0;  // 0 until first used; then 7, 19 or 21
    int m_number = -1;    // given by finishIndices, in set order from 0
    bool m_onlyNoApi = true;  // cleared when a class with an API uses it
    bool m_onlyTree = true;   // cleared when an index that is not a tree uses it
};

class Struct : public IComparable {
public:
    // A declared struct (category 0), or a look-up key.
    Struct() = default;
    // A base type or another type the compiler makes: born finished, with
    // the dynamic and blob flags of its category and its four layout
    // numbers. Throws the C string " illegal category " outside 1..16.
    Struct(mstring const& name, TypeCategory category, int compactSize, int largeSize, int compactAlign,
           int largeAlign, mstring const& cType);
    // Copies keep their own reference count: a copy starts unowned, and an
    // assigned struct stays owned by whoever holds it.
    Struct(Struct const& other);
    Struct& operator=(Struct const& other);

    bool less(IComparable const* other) const override;
    char const* keyName() const override { return m_name.c_str(); }

    Field* findField(mstring const& name);
    Field const* findField(mstring const& name) const;
    // The same for a C string, without a string made of it.
    Field* findField(char const* name);
    void dump(IOutStream& out, int indent) const;
    // Remembers a class that uses this struct, once.
    void addOwner(Class* owner);

    mstring m_name;
    TypeCategory m_category = TC_STRUCT;
    bool m_finished = false;
    bool m_isClass = false;
    bool m_isDynamic = true;  // recomputed by struct_finishStructFields
    bool m_hasBlobs = false;
    bool m_hasSequences = false;
    bool m_hasInit = false;
    mvector<Field> v_field;
    Layout2 m_layout;
    bool m_layoutBusy = false;
    bool m_layoutDone = false;
    int m_maxFieldNameLen = 0;
    int m_outputWidth = 0;  // name column width, set by calculateFormating
    mstring m_cType;  // C form of a base type
    mvector<Class*> v_owner;
    bool m_isDirect = false;
    bool m_hasDirect = false;
    bool m_noApi = false;
    bool m_packed = false;
    // Place among the structs of the dictionary, given when it is built;
    // -1 for a struct no class uses.
    int m_dictNo = -1;
    // Set on the type an enum declaration enters: only a type with this
    // flag can share its name with an enum, so only its fields need the
    // enum look-up.
    bool m_isEnum = false;
    // What later passes over every field would look for, noted while the
    // fields are at hand, so that those passes can leave out the structs
    // without any. A large schema's fields have long left the cache by then.
    bool m_hasRefNames = false;      // some field names a class in "<C>"; set by do_field
    bool m_hasStructFields = false;  // some field's type is a struct placed on its own; set by struct_finishStructFields
    bool m_hasUpdatedBitmap = false; // some field is named "updated_bitmap"; set by struct_finishStructFields
    DeclPlace m_place;
};

class Class : public Struct {
public:
    explicit Class(bool compact = false) : m_compact(compact) {}

    // True for a field some index starts with; an indicator answers for
    // the nullable field it belongs to.
    bool fieldIsIndexed(Field const& f) const;

    // m_number of the first event of the kind, or NO_EVENT.
    std::uint32_t getNewEvent() const;
    std::uint32_t getDeleteEvent() const;
    std::uint32_t getDeleteAllEvent() const;
    std::uint32_t getCheckpointEvent() const;
    std::uint32_t getClassUpdateEvent() const;
    // The update event of field `f`; only fields that stand directly in
    // this class (s is this class) can have one.
    std::uint32_t getUpdateEvent(Struct const& s, Field const& f) const;
    // Place in v_event of the event numbered `number`, or NO_EVENT.
    std::uint32_t getEventPos(int number) const;

    // Appends a field the compiler makes itself. No field number, no
    // duplicate test; `initial` null means no initial value.
    void addSysField(char const* name, char const* type, bool hidden, char const* initial);
    // Appends a copy, or takes the index over; finding duplicates is the
    // caller's job.
    void addIndex(Index const& index);
    void addIndex(Index&& index);
    void dump(IOutStream& out, int indent) const;

    int m_code = 0;  // class code, given by the layout pass
    bool m_hasOid = false;
    bool m_hasAutoid = false;
    bool m_compact;
    bool m_hasList = false;
    bool m_listSequences = false;  // the keyword was "sequences"
    mvector<Index> v_index;
    int m_maxIndexNameLen = 0;
    int m_autoidEstimate = 0;
    bool m_hasHistory = false;  // never set in this version
    int m_historyLength = 0;    // versions kept; the history statement drops its value in this version
    StringSet indexNames;
    mvector<Event> v_event;
    bool m_persistent = false;
    bool m_local = false;
    bool m_distributed = false;
    bool m_isSystem = false;
    bool m_atomic = true;
    TableIotType m_iotType = IOT_NONE;
    bool m_hasUserdef = false;
    bool m_hasCollate = false;
    bool m_fixed = false;  // set in every system class

private:
    std::uint32_t firstEventOfKind(int kind) const;
};

// The bookkeeping classes of distributed and IoT schemas. Their names begin
// with "@", which no schema text can write. The constructors of the three
// kinds live in sysclasses.cpp.
class SysClass : public Class {
public:
    explicit SysClass(bool compact = false);
};

// Replication bookkeeping: "@sys_distribs_disk" for persistent distributed
// classes, "@sys_distribs_inmem" for transient ones.
class SysDistribClass : public SysClass {
public:
    explicit SysDistribClass(bool disk);
};

// "@sys_iot_ts", one per IoT schema; its "src" and "dbid" start as the
// schema's agent id and iot level.
class SysIoTTsClass : public SysClass {
public:
    SysIoTTsClass(Schema const& schema, bool persistent);
};

// "@sys_iot_del_disk" or "@sys_iot_del_inmem", one per placement of the
// IoT tables; its fields depend on the schema's iot level.
class SysIoTDelClass : public SysClass {
public:
    SysIoTDelClass(Schema const& schema, bool persistent);
};

// ---------------------------------------------------------------------------

// One entry of the calculator statement: a class and its number.
class CalculatorEntry {
public:
    mstring m_className;
    unsigned m_count = 0;
};

// One per compile, held by value in the Analyzer.
class Schema {
public:
    // Schema option bits.
    static constexpr int OPT_WIDE_OFFSETS = 1;
    static constexpr int OPT_KEEP_FIELD_ORDER = 2;
    static constexpr int OPT_IOT = 4;

    Schema();
    ~Schema();
    Schema(Schema const&) = delete;
    Schema& operator=(Schema const&) = delete;

    // Types, classes and enums are three separate name spaces here; the
    // analyzer keeps class names apart from the others by hand.
    Struct* findType(mstring const& name) const;
    // findType(name), and findEnum(name) into *e, hashing the name once.
    Struct* findType(mstring const& name, Enum** e) const;
    Class* findClass(mstring const& name) const;
    Enum* findEnum(mstring const& name) const;
    Collation* findCollation(mstring const& name) const;
    // The value of enum constant `name` into *out. False, with *out left
    // alone, when no enum has it.
    bool enumNameToInteger(mstring const& name, long* out);
    // The whole model as indented mark-up, classes first, then every type.
    void dump(IOutStream& out, int indent) const;

    mstring m_dbName;
    mstring m_idType;  // type name of the oid struct
    int m_oidEstimate = 0;
    bool m_oidDeclared = false;
    int m_autoOid = 0;  // the auto_oid estimate; non-zero once declared
    int m_schemaOptions = 0;
    std::uint16_t m_iotLevel = 0;  // 1 server, 65535 device, 2..65534 router
    mstring m_agentId;
    ISet* m_types;
    ISet* m_classes;  // a class enters only after its closing ";"
    ISet* m_enums;
    ISet* m_collations;  // created on first mention in an index
    StringSet m_enumValueNames;
    StringSet m_eventNames;  // unique across classes
    Struct* m_oidStruct = nullptr;  // resolved by checkObjid
    int m_userdefCount = 0;
    int m_collationCount = 0;
    int m_oidSize = 0;  // bytes, set by the layout pass
    bool m_hasCalculator = false;
    mvector<CalculatorEntry> v_calculator;
    StringSet m_calculatorClassNames;
    // The files named by DeclPlace::m_file, each once.
    mvector<mstring> v_placeFile;
    // The declaration of `name` at `at`, for a report about it; the file
    // is empty for a place the compiler made itself.
    DiagDeclaration declaration(char const* kind, mstring const& name, DeclPlace const& at) const;
};
