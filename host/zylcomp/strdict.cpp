// Field and index entries of the dictionary, and the field and structure
// tables: what a field's type is to the runtime (dict_info), how its initial
// values are read, where an index key stands in an object, the text of one
// key of the generated search functions, and ClassDictCreator.
#include "host/zylcomp/strdict.h"

#include <cassert>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "foundation/sets.h"
#include "foundation/ut.h"
#include "host/zylcomp/schema.h"
#include "zyldict.h"

void dictPanic(mstring const& msg) { IErrReporter::panic(msg, false); }

TableText& TableText::operator<<(long long v) {
    // Most values of the tables are single digits: flags, counts, zeros.
    if (v >= 0 && v <= 9) {
        char const digit = static_cast<char>('0' + v);
        append(&digit, 1);
        return *this;
    }
    char buf[24];
    char const* p = UT::decimal(v, buf);
    // decimal writes backwards from the terminator at the buffer's end.
    append(p, static_cast<std::size_t>(buf + sizeof buf - 1 - p));
    return *this;
}

void TableText::grow(std::size_t n) {
    std::size_t cap = m_cap * 2;
    if (cap < m_len + n + 1)
        cap = m_len + n + 1;
    if (cap < 4096)
        cap = 4096;
    char* block = new char[cap];
    if (m_len > 0)
        std::memcpy(block, m_buf, m_len);
    block[m_len] = '\0';
    delete[] m_buf;
    m_buf = block;
    m_cap = cap;
}

namespace {

mstring txt(FSize const& v) { return static_cast<mstring const&>(v); }

// The C types of category 1 that the dictionary knows, in the order they
// are tried; an enum is what matches none of them.
struct ScalarCode {
    char const* cType;
    int code;
    char const* text;
    int size;
};

ScalarCode const kScalars[] = {
    {"uint1", ZYL_FT_UINT1, "u1", 1},      {"uint2", ZYL_FT_UINT2, "u2", 2},
    {"uint4", ZYL_FT_UINT4, "u4", 4},      {"int1", ZYL_FT_INT1, "i1", 1},
    {"int2", ZYL_FT_INT2, "i2", 2},        {"int4", ZYL_FT_INT4, "i4", 4},
    {"int8", ZYL_FT_INT8, "i8", 8},        {"zyl_int8", ZYL_FT_INT8, "i8", 8},
    {"uint8", ZYL_FT_UINT8, "u8", 8},      {"float", ZYL_FT_FLOAT, "flt", 4},
    {"double", ZYL_FT_DOUBLE, "dbl", 8},   {"zyl_date", ZYL_FT_DATE, "u4", 4},
    {"zyl_datetime", ZYL_FT_DATETIME, "u8", 8}, {"zyl_time", ZYL_FT_TIME, "u4", 4},
    {"autoid_t", ZYL_FT_INT8, "i8", 8},
};

// Element types a sequence can hold, by C type.
struct SeqCode {
    char const* cType;
    int code;
};

SeqCode const kSeqElements[] = {
    {"uint1", ZYL_FT_SEQ_UINT1},       {"uint2", ZYL_FT_SEQ_UINT2},     {"uint4", ZYL_FT_SEQ_UINT4},
    {"zyl_date", ZYL_FT_SEQ_UINT4},    {"zyl_time", ZYL_FT_SEQ_UINT4},  {"uint8", ZYL_FT_SEQ_UINT8},
    {"int1", ZYL_FT_SEQ_INT1},         {"int2", ZYL_FT_SEQ_INT2},       {"int4", ZYL_FT_SEQ_INT4},
    {"int8", ZYL_FT_SEQ_INT8},         {"zyl_int8", ZYL_FT_SEQ_INT8},   {"float", ZYL_FT_SEQ_FLOAT},
    {"double", ZYL_FT_SEQ_DOUBLE},     {"zyl_datetime", ZYL_FT_SEQ_DATETIME},
};

DictType info(int code, FSize const& size, char const* text) {
    DictType d;
    d.m_typeCode = code;
    d.m_size = &size;
    d.m_typeText = text;
    return d;
}

DictType info(int code, int size, char const* text) {
    DictType d;
    d.m_typeCode = code;
    d.m_num = size;
    d.m_typeText = text;
    return d;
}

}  // namespace

// ---------------------------------------------------------------------------
// Field types

int sequenceTypeCode(Struct const& e) {
    // Fixed-size byte strings, structs among them, share one code.
    if (e.m_category == TC_STRUCT || e.m_category == TC_CHARS || e.m_category == TC_BINARY)
        return ZYL_FT_SEQ_CHARS;
    int code = 0;
    for (SeqCode const& s : kSeqElements)
        if (e.m_cType == s.cType)
            code = s.code;
    return code;
}

Field::DictInfo Field::dict_info(bool allowStruct) const {
    DictType const d = dictType(*this, allowStruct);
    DictInfo info;
    info.m_typeCode = d.m_typeCode;
    info.m_size = d.size();
    info.m_typeText = d.m_typeText;
    info.m_count = d.m_count;
    return info;
}

DictType dictType(Field const& f, bool allowStruct) {
    Struct const& t = *f.m_struct;
    switch (t.m_category) {
    case TC_STRUCT:
        if (!allowStruct)
            break;
        return info(ZYL_FT_STRUCT, 0, "");
    case TC_SCALAR: {
        if (t.m_cType == "uint1" && t.m_name == "boolean") {
            DictType d = info(ZYL_FT_BOOLEAN, 1, "ptr");
            d.m_count = f.m_arraySize > 0 ? f.m_arraySize : 1;
            return d;
        }
        for (ScalarCode const& s : kScalars)
            if (t.m_cType == s.cType)
                return info(s.code, s.size, s.text);
        // Not a C type the dictionary knows: an enum, recorded by its width.
        // Enums of two and four bytes count as signed, whatever their values.
        if (f.m_enum != nullptr) {
            switch (t.m_layout.large.m_size.m_num) {
            case 1:
                return info(ZYL_FT_UINT1, 1, "u1");
            case 2:
                return info(ZYL_FT_INT2, 2, "i2");
            case 4:
                return info(ZYL_FT_INT4, 4, "i4");
            default:
                break;
            }
        }
        dictPanic("unknown simple type");
    }
    case TC_CHARS:
        return info(ZYL_FT_CHARS, t.m_layout.compact.m_size, "");
    case TC_STRING:
        return info(ZYL_FT_STRING, 0, "");
    case TC_BLOB:
        if (!allowStruct)
            break;
        return info(ZYL_FT_BLOB, 0, "");
    case TC_OID_REF:
        return info(ZYL_FT_OID_REF, 0, "");
    case TC_AUTOID:
        return info(ZYL_FT_AUTOID, 8, "i8");
    case TC_VERSION:
        return info(ZYL_FT_VERSION, 2, "u2");
    case TC_AUTO_OID:
        return info(ZYL_FT_AUTO_OID, 8, "i8");
    case TC_NCHARS:
        return info(ZYL_FT_NCHARS, t.m_layout.compact.m_size, "");
    case TC_NSTRING:
        return info(ZYL_FT_NSTRING, 0, "");
    case TC_DIRECT:
        return info(ZYL_FT_STRUCT, t.m_layout.compact.m_size, "");
    case TC_SEQUENCE: {
        Struct const& e = *f.m_elemStruct;
        int const code = sequenceTypeCode(e);
        if (code == 0)
            dictPanic("Wrong sequence element type " + e.m_name +
                      ": sequences can be defined only singined/unsigned integer, floatig point, date/time, "
                      "character and fixed size struct type.");
        return info(code, t.m_layout.large.m_size, "");
    }
    case TC_BINARY:
        return info(ZYL_FT_BINARY, t.m_layout.compact.m_size, "");
    case TC_VARBINARY:
        return info(ZYL_FT_VARBINARY, 0, "");
    default:
        break;
    }
    dictPanic("illegal index field type");
}

int Field::getInitializerType() const {
    switch (dictType(*this, true).m_typeCode) {
    case ZYL_FT_UINT1:
    case ZYL_FT_UINT2:
    case ZYL_FT_UINT4:
    case ZYL_FT_INT1:
    case ZYL_FT_INT2:
    case ZYL_FT_INT4:
    case ZYL_FT_UINT8:
    case ZYL_FT_INT8:
    case ZYL_FT_DATE:
    case ZYL_FT_TIME:
    case ZYL_FT_DATETIME:
        return INIT_INTEGER;
    case ZYL_FT_FLOAT:
    case ZYL_FT_DOUBLE:
        return INIT_REAL;
    case ZYL_FT_BOOLEAN:
        return INIT_BOOLEAN;
    default:
        // Strings, characters and the rest keep no initial value here.
        return INIT_NONE;
    }
}

// ---------------------------------------------------------------------------
// Index keys

Field::DictInfo Index::Segment::dict_info() const {
    return v_fldEl[static_cast<int>(v_fldEl.size()) - 1].m_field->dict_info(false);
}

// Offsets add up along the path. Once the path has entered a vector or an
// array, the rest counts from the start of one element; a second vector
// or array further down has no place in a dictionary key.
Index::FieldLayout Index::getFieldLayout(Segment const& segment, Class const* c) const {
    FSize before;
    FSize after;
    bool crossed = false;
    int const last = static_cast<int>(segment.v_fldEl.size()) - 1;
    for (int i = 0; i <= last; i++) {
        Field const& f = *segment.v_fldEl[i].m_field;
        FldLayout const* fl = c->m_compact ? f.m_compactLayout : f.m_largeLayout;
        assert(fl != nullptr);  // placed by the layout pass
        if (!crossed) {
            before += fl->m_offset;
            crossed = f.m_isVector || f.m_isArray;
            continue;
        }
        after += fl->m_offset;
        if (i == last)
            break;
        if (f.m_isVector || f.m_isArray)
            dictPanic("10004");
    }
    FieldLayout result;
    if (crossed) {
        result.m_vectOffset = before;
        result.m_offset = after;
    } else {
        result.m_vectOffset = -1;
        result.m_offset = before;
    }
    return result;
}

void Index::Segment::paramStrings(int keyNo, Schema const* schema, mvector<mstring>& names, mstring& in,
                                  mstring& out, mstring& args, mstring& fill) const {
    Field const& f = *v_fldEl[static_cast<int>(v_fldEl.size()) - 1].m_field;
    Struct const& t = *f.m_struct;
    mstring path;
    for (unsigned i = 0; i < v_fldEl.size(); i++) {
        if (i > 0)
            path += "_";
        path += v_fldEl[i].m_name;
    }
    mstring const k = path + "_key_" + UT::n2s(keyNo);
    mstring const s = "sizeof_" + k;
    names.push_back(k);

    switch (t.m_category) {
    case TC_SCALAR:
    case TC_AUTOID:
    case TC_VERSION:
    case TC_AUTO_OID: {
        Field::DictInfo const d = dict_info();
        mstring const code = "pa_->field_type = " + UT::n2s(d.m_typeCode) + "; ";
        if (t.m_name == "boolean") {
            // Bits, not bytes: the key is a bit string of the given length.
            in = "const char *" + k + ", uint2 number_of_bits";
            out = "char *" + k + ", uint2 number_of_bits";
            args = k + ", number_of_bits";
            fill = code + "pa_->ptr = " + k + "; pa_->v.ptr_size = number_of_bits; ";
        } else {
            in = t.m_cType + " " + k;
            out = t.m_cType + " *" + k;
            args = k;
            fill = code + "pa_->v." + d.m_typeText + " = " + k + "; ";
        }
        return;
    }
    case TC_CHARS:
    case TC_STRING:
    case TC_BINARY:
    case TC_VARBINARY:
        names.push_back(s);
        in = "const char *" + k + ", uint2 " + s;
        out = "char *" + k + ", uint2 " + s;
        args = k + ", " + s;
        fill = "pa_->field_type = " + UT::n2s(dict_info().m_typeCode) + "; pa_->v.ptr_size = " + s +
               "; pa_->ptr = " + k + "; ";
        return;
    case TC_OID_REF:
        in = "const " + schema->m_dbName + "_oid *" + k;
        out = schema->m_dbName + "_oid *" + k;
        args = k;
        fill = "pa_->field_type = " + UT::n2s(dict_info().m_typeCode) + "; pa_->v.ptr_size = sizeof(*" + k +
               "); pa_->ptr = (const char*)" + k + "; ";
        return;
    case TC_NCHARS:
    case TC_NSTRING:
        names.push_back(s);
        in = "const nchar_t *" + k + ", uint2 " + s;
        out = "nchar_t *" + k + ", uint2 " + s;
        args = k + ", " + s;
        fill = "pa_->field_type = " + UT::n2s(dict_info().m_typeCode) + "; pa_->v.ptr_size = " + s +
               "; pa_->ptr = (const char*)" + k + "; ";
        return;
    default:
        throw "illegal case";
    }
}

// ---------------------------------------------------------------------------
// ClassDictCreator: numbering

namespace {

// operator< of the two names, as strcmp decides it (bytes unsigned), but
// compared in place: a sort makes several comparisons per field, mostly of
// short names that differ within a few bytes.
inline bool nameBefore(FieldRef const& a, FieldRef const& b) {
    auto const* x = reinterpret_cast<unsigned char const*>(a.m_field->m_name.c_str());
    auto const* y = reinterpret_cast<unsigned char const*>(b.m_field->m_name.c_str());
    while (*x == *y && *x != '\0') {
        x++;
        y++;
    }
    return *x < *y;
}

}  // namespace

bool ordered_before(FieldRef const& a, FieldRef const& b) { return nameBefore(a, b); }

ClassDictCreator::ClassDictCreator(Schema* schema, bool dynamicTables, IErrReporter* err, mstring const& dbName)
    : m_dynamicTables(dynamicTables), m_schema(schema), m_err(err), m_dbName(dbName) {
    // Numbers belong to one dictionary: a struct numbered by an earlier
    // one starts afresh.
    for (ISet* set : {schema->m_types, schema->m_classes}) {
        std::unique_ptr<ISet::Pos> pos(set->first());
        for (; pos->valid(); pos->next())
            static_cast<Struct*>(pos->get().get())->m_dictNo = -1;
    }
    // A struct belongs to the dictionary when some class holds it; structs
    // and classes share one numbering. `visit` sees them in that order.
    auto walk = [schema](auto visit) {
        std::unique_ptr<ISet::Pos> pos(schema->m_types->first());
        for (; pos->valid(); pos->next()) {
            Struct* s = static_cast<Struct*>(pos->get().get());
            if (s->v_owner.size() > 0)
                visit(s, static_cast<Class*>(nullptr));
        }
        pos.reset(schema->m_classes->first());
        for (; pos->valid(); pos->next()) {
            Class* c = static_cast<Class*>(pos->get().get());
            visit(c, c);
        }
    };
    // Counted first, so that the three vectors are sized once instead of
    // growing by one element for each of thousands of structures. A
    // structure met again (-2 marks it) is used twice and numbered once.
    unsigned used = 0, numbered = 0;
    walk([&used, &numbered](Struct* s, Class*) {
        used++;
        if (s->m_dictNo == -1) {
            s->m_dictNo = -2;
            numbered++;
        }
    });
    v_used.resize(used);
    v_usedClass.resize(used);
    v_firstField.resize(numbered);
    unsigned n = 0;
    walk([this, &n](Struct* s, Class* c) {
        v_used[static_cast<int>(n)] = s;
        v_usedClass[static_cast<int>(n)] = c;
        n++;
        if (s->m_dictNo >= 0)
            return;
        v_firstField[m_nStructs] = m_nFields;
        s->m_dictNo = m_nStructs++;
        m_nFields += static_cast<int>(s->v_field.size());
    });
}

mstring ClassDictCreator::getPtrToStructInfoVector() const {
    return m_dynamicTables ? "v_struct_info_ptr" : "v_struct_info";
}

int ClassDictCreator::classCode(mstring const& name) const {
    // Class names may carry the database prefix by now; a reference still
    // holds the name as written.
    mstring const prefixed = m_dbName + "_" + name;
    std::unique_ptr<ISet::Pos> pos(m_schema->m_classes->first());
    for (; pos->valid(); pos->next()) {
        Class const* c = static_cast<Class const*>(pos->get().get());
        if (c->m_name == name || c->m_name == prefixed)
            return c->m_code;
    }
    return 0xFFFF;
}

// ---------------------------------------------------------------------------
// Field entries

int ClassDictCreator::GetFieldFlags(Field const& f) {
    int flags = 0;
    if (f.m_isVector)
        flags |= ZYL_FIELD_VECTOR;
    if (f.m_isArray)
        flags |= ZYL_FIELD_ARRAY;
    if (f.m_isOptional)
        flags |= ZYL_FIELD_OPTIONAL;
    if (f.m_isIndexed)
        flags |= ZYL_FIELD_INDEXED;
    if (f.m_isHidden)
        flags |= ZYL_FIELD_HIDDEN;
    if (f.m_isNullable)
        flags |= ZYL_FIELD_NULLABLE;
    if (f.m_isIndicator)
        flags |= ZYL_FIELD_INDICATOR;
    if (f.m_precision >= 0)
        flags |= ZYL_FIELD_NUMERIC;
    return flags;
}

int ClassDictCreator::GetStructFlags(Struct const& s) {
    int flags = 0;
    if (s.m_isDynamic)
        flags |= ZYL_STRUCT_DYNAMIC;
    if (s.m_hasBlobs)
        flags |= ZYL_STRUCT_HAS_BLOBS;
    if (s.m_hasInit)
        flags |= ZYL_STRUCT_HAS_INIT;
    if (s.m_isDirect)
        flags |= ZYL_STRUCT_DIRECT;
    if (s.m_packed)
        flags |= ZYL_STRUCT_PACKED;
    if (s.m_hasSequences)
        flags |= ZYL_STRUCT_HAS_SEQUENCES;
    return flags;
}

int ClassDictCreator::GetSeqOrder(Field const& f) {
    if (f.m_seqOrder.empty() || f.m_seqOrder == "ZYL_SEQ_NO_ORDER")
        return ZYL_DICT_SEQ_NONE;
    if (f.m_seqOrder == "ZYL_SEQ_ASC_ORDER")
        return ZYL_DICT_SEQ_ASC;
    if (f.m_seqOrder == "ZYL_SEQ_DESC_ORDER")
        return ZYL_DICT_SEQ_DESC;
    m_err->err("Field " + f.m_name + " invalid sequence order " + f.m_seqOrder);
    return ZYL_DICT_SEQ_NONE;
}

mvector<FieldRef> ClassDictCreator::fieldList(Struct const& s, bool sortFields) {
    // Sized once: the vector ends as a push_back per field would leave it.
    mvector<FieldRef> list;
    list.resize(s.v_field.size());
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        list[static_cast<int>(i)].m_field = &s.v_field[i];
        list[static_cast<int>(i)].m_place = static_cast<int>(i);
    }
    if (sortFields)
        sort_vector(list, [](FieldRef const& a, FieldRef const& b) { return nameBefore(a, b); });
    return list;
}

bool ClassDictCreator::enumValue(mstring const& name, long* value) {
    if (m_schema->enumNameToInteger(name, value))
        return true;
    if (!m_schema->m_enumValueNames.find(name))
        return false;
    // A declared constant that the walk missed has taken the database
    // prefix by now; the initial value still holds the name as written.
    mstring const prefixed = m_dbName + "_" + name;
    std::unique_ptr<ISet::Pos> pos(m_schema->m_enums->first());
    for (; pos->valid(); pos->next()) {
        Enum const* e = static_cast<Enum const*>(pos->get().get());
        for (unsigned i = 0; i < e->v_elem.size(); i++) {
            if (e->v_elem[i].m_name == prefixed) {
                *value = e->v_elem[i].m_value;
                return true;
            }
        }
    }
    return false;
}

unsigned ClassDictCreator::addInitialValues(Struct const& s, Field const& f, bool& real) {
    real = false;
    if (f.v_init.size() == 0)
        return 0;
    mstring const where = s.m_name + "." + f.m_name;
    auto refuse = [this, &where](char const* kind, mstring const& value) {
        m_err->err("initial value for " + where + " is not " + kind + ": \"" + value + "\"");
    };
    switch (f.getInitializerType()) {
    case Field::INIT_INTEGER: {
        unsigned const first = v_initI.size();
        bool const wide = dictType(f, true).sizeNumber() > 4;
        for (unsigned i = 0; i < f.v_init.size(); i++) {
            char const* text = f.v_init[i].c_str();
            if (wide) {
                long long v = 0;
                if (!UT::CVT::s2i8(text, &v))
                    refuse("integer", f.v_init[i]);
                // Two 32-bit entries, low word first.
                unsigned long long const u = static_cast<unsigned long long>(v);
                v_initI.push_back(static_cast<std::int32_t>(static_cast<std::uint32_t>(u & 0xFFFFFFFFu)));
                v_initI.push_back(static_cast<std::int32_t>(static_cast<std::uint32_t>(u >> 32)));
            } else {
                long v = 0;
                if (!UT::CVT::s2int(text, &v) && !enumValue(f.v_init[i], &v))
                    refuse("integer", f.v_init[i]);
                v_initI.push_back(static_cast<std::int32_t>(v));
            }
        }
        return first + 1;
    }
    case Field::INIT_REAL: {
        unsigned const first = v_initD.size();
        for (unsigned i = 0; i < f.v_init.size(); i++) {
            double v = 0;
            if (!UT::CVT::s2dbl(f.v_init[i].c_str(), &v))
                refuse("double", f.v_init[i]);
            v_initD.push_back(v);
        }
        real = true;
        return first + 1;
    }
    case Field::INIT_BOOLEAN: {
        unsigned const first = v_initI.size();
        for (unsigned i = 0; i < f.v_init.size(); i++) {
            mstring const& v = f.v_init[i];
            if (v == "TRUE" || v == "true" || v == "1")
                v_initI.push_back(1);
            else if (v == "FALSE" || v == "false" || v == "0")
                v_initI.push_back(0);
            else
                refuse("boolean", v);
        }
        return first + 1;
    }
    default:
        m_err->err("Initializer is not allowed for this type of field: " + where);
        return 0;
    }
}

DictFieldEntry ClassDictCreator::fieldEntry(int structNo, mvector<FieldRef> const& list, int i) {
    Struct const& s = *v_used[structNo];
    Class const* owner = v_usedClass[structNo];
    FieldRef const& ref = list[i];
    Field const& f = *ref.m_field;
    Struct const& t = *f.m_struct;

    if (t.m_category == TC_BLOB && f.m_isArray)
        m_err->err("Blob cannot be element of array");
    if (t.m_category == TC_BLOB && f.m_isVector)
        m_err->err("Blob cannot be element of vector");
    // The bare type "sequence" reaches here only through vector<...> or
    // optional: a sequence field proper always names its element type.
    if (t.m_category == TC_SEQUENCE && f.m_elemStruct == nullptr)
        m_err->err(f.m_isVector ? "Sequence cannot be element of vector" : "sequence specification error");

    DictFieldEntry e;
    e.m_name = f.m_name.c_str();
    e.m_compact = f.m_compactLayout;
    e.m_large = f.m_largeLayout;
    assert(e.m_compact != nullptr && e.m_large != nullptr);  // placed by the layout pass

    DictType const d = dictType(f, true);
    e.m_type = d.m_typeCode;
    e.m_fieldSize = d.size();
    e.m_flags = GetFieldFlags(f);
    e.m_arraySize = f.m_arraySize;
    if (t.m_category == TC_STRUCT || t.m_category == TC_DIRECT) {
        if (t.m_dictNo < 0)
            dictPanic("struct numbering (2)");
        e.m_structNum = t.m_dictNo;
    }
    if (!f.m_refClassName.empty())
        e.m_reftoClass = classCode(f.m_refClassName);
    bool real = false;
    e.m_initIndex = addInitialValues(s, f, real);
    e.m_orderNo = ref.m_place;
    e.m_no = f.m_position;
    if (owner != nullptr)
        e.m_eventId = static_cast<int>(owner->getUpdateEvent(s, f) & 0xFFFFu);
    if (f.m_isNullable) {
        for (unsigned j = 0; j < list.size(); j++)
            if (list[j].m_field->m_isIndicator && list[j].m_field->m_position == f.m_indicator)
                e.m_indicator = static_cast<int>(j);
    }
    e.m_precision = f.m_precision >= 0 ? f.m_precision : 0;
    e.m_seqOrder = GetSeqOrder(f);
    if (t.m_category == TC_SEQUENCE && f.m_elemStruct != nullptr)
        e.m_seqElemSize = f.m_elemStruct->m_layout.large.m_size;
    return e;
}

// ---------------------------------------------------------------------------
// Field and structure tables as C text

namespace {

// A real value as a C literal that reads back as the same double. The
// values strtod accepts beyond the finite ones become constant expressions.
mstring realLiteral(double v) {
    if (std::isnan(v))
        return "(0.0/0.0)";
    if (std::isinf(v))
        return v > 0 ? "(1e308*10)" : "(-1e308*10)";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.15g", v);
    if (std::strtod(buf, nullptr) != v)
        std::snprintf(buf, sizeof buf, "%.17g", v);
    mstring text = buf;
    // A whole number still has to read as a double.
    bool plain = true;
    for (char const* p = buf; *p != '\0' && plain; p++)
        if (*p == '.' || *p == 'e' || *p == 'E')
            plain = false;
    if (plain)
        text += ".0";
    return text;
}

}  // namespace

void ClassDictCreator::collectFields(bool sortFields) {
    m_intText.clear();
    m_realText.clear();
    m_fieldText.clear();
    int written = 0;
    // In the initialiser a comma stands between entries, none after the
    // last; a struct's comment waits for its first entry.
    mstring pending;
    for (unsigned n = 0; n < v_used.size(); n++) {
        Struct const& s = *v_used[n];
        pending += "    /* " + s.m_name + " */\n";
        if (m_dynamicTables) {
            m_fieldText << pending;
            pending = mstring();
        }
        mvector<FieldRef> const list = fieldList(s, sortFields);
        for (unsigned i = 0; i < list.size(); i++) {
            Field const& f = *list[i].m_field;
            unsigned const intsBefore = v_initI.size();
            unsigned const realsBefore = v_initD.size();
            DictFieldEntry const e = fieldEntry(static_cast<int>(n), list, static_cast<int>(i));

            if (v_initI.size() > intsBefore) {
                m_intText << "    /* " << s.m_name << "." << f.m_name << ": */ ";
                for (unsigned k = intsBefore; k < v_initI.size(); k++)
                    m_intText << static_cast<int>(v_initI[k]) << ", ";
                m_intText << "\n";
            }
            if (v_initD.size() > realsBefore) {
                m_realText << "    /* " << s.m_name << "." << f.m_name << ": */ ";
                for (unsigned k = realsBefore; k < v_initD.size(); k++)
                    m_realText << realLiteral(v_initD[k]) << ", ";
                m_realText << "\n";
            }

            long long const init = e.m_initIndex;
            FldLayout const& c = *e.m_compact;
            FldLayout const& u = *e.m_large;
            if (m_dynamicTables) {
                m_fieldText << "    pfi->name = \"" << e.m_name << "\";\n";
                m_fieldText << "    pfi->layout.c_size = " << c.m_size << "; pfi->layout.c_align  = " << c.m_align
                            << "; pfi->layout.c_offset = " << c.m_offset << "; pfi->layout.u_size = " << u.m_size
                            << "; pfi->layout.u_align  = " << u.m_align << "; pfi->layout.u_offset = " << u.m_offset
                            << "; \n";
                m_fieldText << "    pfi->field_el_type = " << e.m_type << ";pfi->flags = " << e.m_flags
                            << ";pfi->array_size = " << e.m_arraySize << ";pfi->struct_num = " << e.m_structNum
                            << ";pfi->field_size = " << e.m_fieldSize << ";pfi->refto_class= " << e.m_reftoClass
                            << ";pfi->init_index = " << init << ";pfi->order_no   = " << e.m_orderNo << "; /* "
                            << f.m_typeName << " */pfi->no   = " << e.m_no << ";pfi->event_id  = " << e.m_eventId
                            << ";pfi->indicator  = " << e.m_indicator << ";pfi->precision  = " << e.m_precision
                            << ";pfi->seq_order  = " << e.m_seqOrder << ";pfi->seq_elem_size = " << e.m_seqElemSize
                            << ";\n";
                m_fieldText << "    pfi++;\n";
            } else {
                if (written > 0)
                    m_fieldText << ",\n";
                m_fieldText << pending;
                pending = mstring();
                m_fieldText << "    {\"" << e.m_name << "\", {" << c.m_size << ", " << c.m_align << ", "
                            << c.m_offset << ", " << u.m_size << ", " << u.m_align << ", " << u.m_offset << "}, "
                            << e.m_type << ", " << e.m_flags << ", " << e.m_arraySize << ", " << e.m_structNum << ", "
                            << e.m_fieldSize << ", " << e.m_reftoClass << ", " << init << ", " << e.m_orderNo << ", "
                            << e.m_no << ", " << e.m_eventId << ", " << e.m_indicator << ", " << e.m_precision << ", "
                            << e.m_seqOrder << ", " << e.m_seqElemSize << " }";
            }
            written++;
        }
    }
    if (written > 0 && !m_dynamicTables)
        m_fieldText << "\n";
    m_fieldText << pending;
}

void ClassDictCreator::printInitTables(IOutStream& out) const {
    // One 0 more than the values, so that neither array is ever empty.
    out << "    static const int4 init_i_values[" << static_cast<long>(v_initI.size() + 1) << "] = { \n"
        << m_intText.c_str() << "\n    0 };\n\n";
    out << "    static const double init_d_values[" << static_cast<long>(v_initD.size() + 1) << "] = { \n"
        << m_realText.c_str() << "\n    0 };\n\n";
}

void ClassDictCreator::printFieldTable(IOutStream& out) const {
    // Without structures nothing would refer to the table, and a table
    // nothing refers to does not compile warning-free.
    if (!m_dynamicTables && v_used.size() == 0)
        return;
    // The fill cursors are declared only where there is something to fill:
    // an unused variable would not compile warning-free either.
    if (m_dynamicTables) {
        out << "    static zyl_dict_field_t v_field_info[" << m_nFields << "];\n";
        if (m_nFields > 0)
            out << "    zyl_dict_field_t * pfi = &  v_field_info[0];\n";
    } else
        out << "    static const zyl_dict_field_t v_field_info[" << m_nFields << "] = { \n";
    out << m_fieldText.c_str();
    if (!m_dynamicTables)
        out << "    };\n";
}

void ClassDictCreator::printAllFields(IOutStream& out, bool sortFields) {
    collectFields(sortFields);
    printInitTables(out);
    printFieldTable(out);
}

void ClassDictCreator::printAllUsedStructs(IOutStream& out) {
    if (m_dynamicTables) {
        out << "    static zyl_dict_struct_t v_struct_info[" << structCount() << "];\n";
        if (structCount() > 0)
            out << "    zyl_dict_struct_t * psi = v_struct_info;\n";
    } else
        out << "    static const zyl_dict_struct_t v_struct_info[" << structCount() << "] = { \n";
    for (unsigned n = 0; n < v_used.size(); n++) {
        Struct const& s = *v_used[n];
        Layout const& c = s.m_layout.compact;
        Layout const& u = s.m_layout.large;
        int const first = v_firstField[s.m_dictNo];
        if (m_dynamicTables)
            out << "    psi->name = \"" << s.m_name << "\";\n    psi->flags = " << GetStructFlags(s)
                << ";\n    psi->n_fields = " << static_cast<int>(s.v_field.size())
                << ";\n    psi->fields = v_field_info_ptr + " << first << ";\n    psi->c_size = " << txt(c.m_size)
                << ";\n    psi->c_align = " << txt(c.m_align) << ";\n    psi->u_size = " << txt(u.m_size)
                << ";\n    psi->u_align = " << txt(u.m_align) << ";\n    psi++;\n";
        else
            out << "    { \"" << s.m_name << "\", " << GetStructFlags(s) << ", "
                << static_cast<int>(s.v_field.size()) << ", (v_field_info + " << first << "), " << txt(c.m_size)
                << ", " << txt(c.m_align) << ", " << txt(u.m_size) << ", " << txt(u.m_align) << "},\n";
    }
    if (!m_dynamicTables)
        out << "    };\n";
}

void ClassDictCreator::printAll(IOutStream& out, bool sortFields) {
    if (!m_dynamicTables) {
        printAllFields(out, sortFields);
        printAllUsedStructs(out);
        return;
    }
    collectFields(sortFields);
    // Without structures there are no fields to point at.
    bool const fields = v_used.size() > 0;
    out << "    static zyl_dict_struct_t * v_struct_info_ptr;\n";
    if (fields)
        out << "    static zyl_dict_field_t * v_field_info_ptr;\n";
    // The dictionary points at the initial values after these blocks have
    // closed, so the tables stand outside them.
    printInitTables(out);
    if (fields) {
        out << "    {\n";
        printFieldTable(out);
        out << "\n      v_field_info_ptr = v_field_info;\n    }\n";
    }
    out << "    {\n";
    printAllUsedStructs(out);
    out << "\n      v_struct_info_ptr = v_struct_info;\n    }\n";
}
