#include "foundation/sets.h"
#include "foundation/ut.h"
#include "frontend/diagnostics.h"
#include "host/zylcomp/analyzer.h"

void Analyzer::initBaseTypes() {
    // A: alignment of 8-byte scalars; B and C: a blob's size and the size of
    // an offset, which wideOffsets makes 8 bytes wide.
    int const A = m_defaultAlign8 ? 8 : 4;
    int const B = m_wideOffsets ? 12 : 8;
    int const C = m_wideOffsets ? 8 : 4;

    struct BaseType {
        char const* name;
        TypeCategory category;
        int compactSize, largeSize, compactAlign, largeAlign;
        char const* cType;
    };
    // The order is the order of the type set, and so of every walk over it.
    // "$version" is 4 bytes wide with the C type int2 on purpose.
    BaseType const types[] = {
        {"signed<1>", TC_SCALAR, 1, 1, 1, 1, "int1"},
        {"signed<2>", TC_SCALAR, 2, 2, 2, 2, "int2"},
        {"signed<4>", TC_SCALAR, 4, 4, 4, 4, "int4"},
        {"signed<8>", TC_SCALAR, 8, 8, A, A, "zyl_int8"},
        {"autoid_t", TC_SCALAR, 8, 8, A, A, "autoid_t"},
        {"$autoid", TC_AUTOID, 8, 8, A, A, "autoid_t"},
        {"$auto_oid", TC_AUTO_OID, 8, 8, A, A, "zyl_int8"},
        {"$version", TC_VERSION, 4, 4, 4, 4, "int2"},
        {"float", TC_SCALAR, 4, 4, 4, 4, "float"},
        {"double", TC_SCALAR, 8, 8, A, A, "double"},
        {"unsigned<1>", TC_SCALAR, 1, 1, 1, 1, "uint1"},
        {"unsigned<2>", TC_SCALAR, 2, 2, 2, 2, "uint2"},
        {"unsigned<4>", TC_SCALAR, 4, 4, 4, 4, "uint4"},
        {"boolean", TC_SCALAR, 1, 1, 1, 1, "uint1"},
        {"unsigned<8>", TC_SCALAR, 8, 8, A, A, "uint8"},
        {"datetime", TC_SCALAR, 8, 8, A, A, "zyl_datetime"},
        {"date", TC_SCALAR, 4, 4, 4, 4, "zyl_date"},
        {"time", TC_SCALAR, 4, 4, 4, 4, "zyl_time"},
        {"string", TC_STRING, 2, 4, 2, 4, ""},
        {"varbinary", TC_VARBINARY, 2, 4, 2, 4, ""},
        {"nstring", TC_NSTRING, 2, 4, 2, 4, ""},
        {"blob", TC_BLOB, B, B, C, C, ""},
        {"sequence", TC_SEQUENCE, C, C, C, C, ""},
    };
    for (BaseType const& t : types)
        m_schema.m_types->add(HIComparable(new Struct(t.name, t.category, t.compactSize, t.largeSize,
                                                      t.compactAlign, t.largeAlign, t.cType)));
}

mstring enum_int_type(int size) {
    switch (size) {
    case 1:
        return "uint1";
    case 2:
        return "uint2";
    case 4:
        return "uint4";
    default:
        IErrReporter::panic(mstring("illegal enum element size (") + UT::n2s(size) + ")", false);
    }
}
