#include "host/zylcomp/typecode.h"

#include "frontend/diagnostics.h"
#include "host/zylcomp/schema.h"

namespace {

struct ScalarCode {
    char const* cType;
    int code;
    int seqCode;  // code of a sequence of this element type, 0 for none
};

// Scalars by their C type; "boolean" (uint1 too) is told apart before this.
ScalarCode const kScalars[] = {
    {"uint1", 1, 30},        {"uint2", 2, 31},     {"uint4", 3, 32},        {"int1", 4, 34},
    {"int2", 5, 35},         {"int4", 6, 36},      {"int8", 13, 37},        {"zyl_int8", 13, 37},
    {"uint8", 12, 33},       {"float", 10, 38},    {"double", 11, 39},      {"zyl_date", 16, 32},
    {"zyl_datetime", 24, 41}, {"zyl_time", 17, 32}, {"autoid_t", 13, 0},
};

ScalarCode const* scalarOf(Struct const& t) {
    for (ScalarCode const& s : kScalars)
        if (t.m_cType == s.cType)
            return &s;
    return nullptr;
}

int sequenceCode(Field const& f) {
    Struct const* elem = f.m_elemStruct;
    if (elem->m_category == TC_STRUCT || elem->m_category == TC_CHARS || elem->m_category == TC_BINARY)
        return 40;
    ScalarCode const* s = scalarOf(*elem);
    if (s == nullptr || s->seqCode == 0)
        IErrReporter::panic("Wrong sequence element type " + elem->m_name +
                                ": sequences can be defined only singined/unsigned integer, floatig point, "
                                "date/time, character and fixed size struct type.",
                            false);
    return s->seqCode;
}

}  // namespace

int fieldTypeCode(Field const& f, bool allowStruct) {
    Struct const& t = *f.m_struct;
    switch (t.m_category) {
    case TC_STRUCT:
    case TC_BLOB:
        if (!allowStruct)
            IErrReporter::panic("illegal index field type", false);
        return t.m_category == TC_STRUCT ? FTC_STRUCT : FTC_BLOB;
    case TC_SCALAR: {
        if (t.m_cType == "uint1" && t.m_name == "boolean")
            return FTC_BIT;
        if (ScalarCode const* s = scalarOf(t))
            return s->code;
        // What is left must be an enum, coded by its size.
        int size = t.m_layout.large.m_size.m_num;
        if (f.m_enum == nullptr || (size != 1 && size != 2 && size != 4))
            IErrReporter::panic("unknown simple type", false);
        return size == 1 ? 1 : size == 2 ? 5 : 6;
    }
    case TC_CHARS:
        return FTC_CHARS;
    case TC_STRING:
        return FTC_STRING;
    case TC_OID_REF:
        return 9;
    case TC_AUTOID:
        return 14;
    case TC_VERSION:
        return 15;
    case TC_AUTO_OID:
        return 18;
    case TC_NCHARS:
        return FTC_NCHARS;
    case TC_NSTRING:
        return FTC_NSTRING;
    case TC_DIRECT:
        return FTC_STRUCT;
    case TC_SEQUENCE:
        return sequenceCode(f);
    case TC_BINARY:
        return 25;
    case TC_VARBINARY:
        return 26;
    default:
        IErrReporter::panic("illegal index field type", false);
    }
}
