// Optional, spatial and sequence fields. (Blobs are written by the field
// API with the other categories.)
//
// An optional field holds a struct that may be absent: it is read and
// written through a handle like a nested struct, and can be erased. A point
// or rectangle is an array of coordinates read and written at once. A
// sequence is a column of values stored apart from the object, worked on
// through iterators; its runtime calls are chosen by the element type, as
// the dictionary codes it.
#include "foundation/ut.h"
#include "host/zylcomp/gen_field.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"
#include "zyldict.h"

using namespace fieldtext;

namespace {

// The largest element of the runtime's character sequences, in bytes
// (ZYL_SEQ_MAX_CHAR_SIZE of its headers).
int const kSeqMaxCharSize = 32;

// The runtime's suffix of the sequence calls, by the dictionary code of the
// field; null for a code that is no sequence.
char const* sequenceSuffix(int code) {
    switch (code) {
    case ZYL_FT_SEQ_UINT1:
        return "uint1";
    case ZYL_FT_SEQ_UINT2:
        return "uint2";
    case ZYL_FT_SEQ_UINT4:
        return "uint4";
    case ZYL_FT_SEQ_UINT8:
        return "uint8";
    case ZYL_FT_SEQ_INT1:
        return "int1";
    case ZYL_FT_SEQ_INT2:
        return "int2";
    case ZYL_FT_SEQ_INT4:
        return "int4";
    case ZYL_FT_SEQ_INT8:
        return "int8";
    case ZYL_FT_SEQ_FLOAT:
        return "float";
    case ZYL_FT_SEQ_DOUBLE:
        return "double";
    case ZYL_FT_SEQ_CHARS:
        return "char";
    case ZYL_FT_SEQ_DATETIME:
        return "datetime";
    default:
        return nullptr;
    }
}

// A C++ member of a sequence that hands back a new sequence rather than a
// result code.
struct SeqMember {
    bool when;
    char const* decl;    // before the member in the class body
    char const* member;
    char const* result;  // the call that fills resSeq.iter
};

}  // namespace

// ---------------------------------------------------------------------------
// Optional struct fields

void GenOutput::output_optional_field(Struct& s, Class* c, Field& f) {
    // An optional value is reached through a struct handle; an optional
    // field of another type has none to offer, and gets no functions.
    if (f.m_struct->m_category != TC_STRUCT)
        return;
    Subst v = fieldSubst(s, c, f);
    // Writing creates the struct, so the runtime needs its number in the dictionary.
    v.set("cnum", UT::n2s(f.m_struct->m_dictNo));
    FieldRow const rows[] = {
        // Deliberately the wrapper itself, not `s`, is marked valid after a read.
        {true, FieldRow::kRead, "_read_handle", " ( {h} *handle, /*OUT*/ {t} * h )",
         " return zyl_w_optional_get2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, {off_u}, {off_c}, {fn}); ",
         kMember, "{field}_read( {t} & s )",
         "{ ZYL_RET ret_ = {ns}::{cf}_read_handle( this, &s ); set_valid(ret_==ZYL_S_OK); return ret_; ", ""},
        {true, FieldRow::kWrite, "_write_handle", " ( {h} *handle, /*OUT*/ {t} * h )",
         " return zyl_w_optional_put2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, {cnum}, {off_u}, {off_c}, {fn}, "
         "{ix}); ",
         kMember, "{field}_write( {t} & s )",
         "{ ZYL_RET ret_ = {ns}::{cf}_write_handle( this, &s ); s.set_valid(ret_==ZYL_S_OK); return ret_; ", ""},
        {true, FieldRow::kWrite, "_erase", " ( {h} *handle )",
         " return zyl_w_optional_erase2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, {ix}); ", kMember,
         "{field}_erase()", "{ ZYL_RET ret_ = {ns}::{cf}_erase( this ); return ret_; ", ""},
    };
    writeFieldRows(s, f, v, rows, sizeof rows / sizeof rows[0]);
}

// ---------------------------------------------------------------------------
// Points and rectangles

void GenOutput::output_spatial_field(Struct& s, Class* c, Field& f) {
    Struct const& t = *f.m_struct;
    int const size = t.m_layout.large.m_size.m_num;
    if (size != 1 && size != 2 && size != 4 && size != 8)
        IErrReporter::panic(mstring("illegal size of coordinate of field ") + f.m_name + ": " + UT::n2s(size), false);
    Subst v = fieldSubst(s, c, f);
    // The runtime family goes by the shape and the coordinate's size: zyl_w_rect_b4_get.
    v.set("k", mstring(f.m_isRect ? "rect" : "point") + "_b" + UT::n2s(size));
    outConstant(m_h, v.fill("{cf}_length"), f.m_arraySize);
    FieldRow const rows[] = {
        {true, FieldRow::kRead, "_get", " ( {h} *handle, /*OUT*/ {t} *dest )",
         " return zyl_w_{k}_get{sfx}( (zyl_objhandle_h)handle, {loc}, dest);", kMember, "{field}_get( {t} * dest )",
         kForward, "dest"},
        {true, FieldRow::kWrite, "_put", " ( {h} *handle, const {t} *src )",
         " return zyl_w_{k}_put{sfx}( (zyl_objhandle_h)handle, {loc}, src, {ix});", kMember,
         "{field}_put( const {t} * src )", kForward, "src"},
    };
    writeFieldRows(s, f, v, rows, sizeof rows / sizeof rows[0]);

    if (m_cppProperties) {
        // The coordinates as one std::vector.
        v_cppProperty.push_back(f.m_name);
        *m_hpp << v.fill("  struct { \n    {h}* handle_;\n    operator std::vector<{t}>() const {\n"
                         "      std::vector<{t}> arr_({cf}_length);\n"
                         "      ZYL_CPP_CHECK({cf}_get(handle_, &arr_[0]));\n      return arr_;\n    }\n"
                         "    std::vector<{t}> const& operator=(std::vector<{t}> const& arr_) {\n"
                         "      ZYL_CPP_CHECK({cf}_put(handle_, &arr_[0]));\n      return arr_;\n    }\n"
                         "  } {m};\n\n");
    }
}

// ---------------------------------------------------------------------------
// Sequences

void GenOutput::output_sequence_field(Struct& s, Class* c, Field& f) {
    Struct const& e = *f.m_elemStruct;
    int const code = f.dict_info(true).m_typeCode;
    char const* const suffix = sequenceSuffix(code);
    if (suffix == nullptr)
        IErrReporter::panic(mstring("illegal sequence element of field ") + f.m_name, false);
    // Characters, binary data and structs share the runtime's character
    // calls, which hold at most kSeqMaxCharSize bytes and take the size.
    bool const chars = code == ZYL_FT_SEQ_CHARS;
    int const elemSize = e.m_layout.large.m_size.m_num;
    if (chars && elemSize > kSeqMaxCharSize) {
        m_err->err("Size of sequence element is larger than ZYL_SEQ_MAX_CHAR_SIZE");
        return;
    }
    bool const ordered = f.m_seqOrder == "ZYL_SEQ_ASC_ORDER" || f.m_seqOrder == "ZYL_SEQ_DESC_ORDER";
    bool const structs = e.m_category == TC_STRUCT;

    Subst v = fieldSubst(s, c, f);
    v.set("s", suffix).set("n", UT::n2s(elemSize)).set("esz", chars ? mstring(", ") + UT::n2s(elemSize) : mstring());
    // Ordered calls pass the order on: {mod}.
    v.set("mod", ordered ? mstring(", ") + f.m_seqOrder : mstring());
    // {T} is the element in C, {TC} in C++. Characters are a fixed-size C
    // type of the field's own, which the C++ interface sees as Char<n>; a
    // struct is its fixed part. {cast} and {val} take a C++ element to the
    // C one, by pointer and by value.
    if (structs) {
        v.set("T", e.m_name + "_fixed").set("TC", e.m_name + "_fixed").set("cast", "").set("val", "");
    } else if (chars) {
        v.set("T", v.fill("{cf}_fixed")).set("TC", v.fill("Char<{n}>"));
        v.set("cast", v.fill("({ns}::{T}*)")).set("val", v.fill("*({ns}::{T}*)&"));
        *m_h << v.fill("typedef struct { char body[{n}]; } {T};\n");
    } else {
        v.set("T", cTypeOf(e)).set("TC", cTypeOf(e)).set("cast", "").set("val", "");
    }
    // By value the character calls take the element's address.
    v.set("ref", chars ? "&" : "");

    FieldRow const opening[] = {
        {true, FieldRow::kRead, "_first", " ( {h} *handle, /*OUT*/ {T}* val)",
         " return zyl_w_seq_first_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, val{esz});", kMember,
         "{field}_first({TC}* val)", kForward, "{cast}val"},
        {true, FieldRow::kRead, "_last", " ( {h} *handle, /*OUT*/ {T}* val)",
         " return zyl_w_seq_last_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, val{esz});", kMember,
         "{field}_last({TC}* val)", kForward, "{cast}val"},
        {true, FieldRow::kWrite, "_append", " ( {h} *handle, {T} const* vals, zyl_size_t n_items)",
         " return zyl_w_seq_append_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, vals, n_items, NULL{esz});", nullptr,
         nullptr, nullptr, ""},
        {true, FieldRow::kWrite, "_append_nullable",
         " ( {h} *handle, {T} const* vals, zyl_size_t n_items, zyl_bitmap_word_t const* null_bitmap)",
         " return zyl_w_seq_append_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, vals, n_items, null_bitmap{esz});",
         nullptr, nullptr, nullptr, ""},
    };
    writeFieldRows(s, f, v, opening, sizeof opening / sizeof opening[0]);
    // One C++ member reaches both appends: the bitmap defaults to none.
    *m_hpp << v.fill("  ZYL_RET {field}_append({TC} const* vals, zyl_size_t n_items, zyl_bitmap_word_t const* "
                     "null_bitmap = NULL);\n");
    *m_hppInline << v.fill("inline  ZYL_RET {hpp}::{field}_append({TC} const* vals, zyl_size_t n_items, "
                           "zyl_bitmap_word_t const* null_bitmap)\n{ ZYL_RET ret_ = "
                           "{ns}::{cf}_append_nullable(this, {cast}vals, n_items, null_bitmap); return ret_; \n}\n\n");

    FieldRow const rows[] = {
        {true, FieldRow::kWrite, "_insert", " ( {h} *handle, zyl_seq_no_t pos, {T} const* vals, zyl_size_t n_items)",
         " return zyl_w_seq_insert_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, pos, vals, n_items, NULL{esz});",
         kMember, "{field}_insert(zyl_seq_no_t pos, {TC} const* vals, zyl_size_t n_items)", kForward,
         "pos, {cast}vals, n_items"},
        {true, FieldRow::kWrite, "_insert_nullable",
         " ( {h} *handle, zyl_seq_no_t pos, {T} const* vals, zyl_size_t n_items, zyl_bitmap_word_t const* "
         "null_bitmap)",
         " return zyl_w_seq_insert_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, pos, vals, n_items, "
         "null_bitmap{esz});",
         kMember,
         "{field}_insert_nullable(zyl_seq_no_t pos, {TC} const* vals, zyl_size_t n_items, zyl_bitmap_word_t const* "
         "null_bitmap)",
         kForward, "pos, {cast}vals, n_items, null_bitmap"},
        {true, FieldRow::kWrite, "_delete", " ( {h} *handle, zyl_seq_no_t from, zyl_seq_no_t till)",
         " return zyl_w_seq_delete_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, from, till{esz});", kMember,
         "{field}_delete(zyl_seq_no_t from, zyl_seq_no_t till)", kForward, "from, till"},
        {ordered, FieldRow::kRead, "_search",
         " ( {h} *handle, zyl_seq_iterator_h iterator, {T} low, zyl_seq_boundary_kind_t low_boundary, {T} high, "
         "zyl_seq_boundary_kind_t high_boundary)",
         " return zyl_w_seq_search_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, iterator, {ref}low, low_boundary, "
         "{ref}high, high_boundary{esz}{mod});",
         kMember,
         "{field}_search(Sequence<{TC}>& seq, {TC} low, zyl_seq_boundary_kind_t low_boundary, {TC} high, "
         "zyl_seq_boundary_kind_t high_boundary)",
         kForward, "seq.iter, {val}low, low_boundary, {val}high, high_boundary"},
        {ordered, FieldRow::kRead, "_join",
         " ( {h} *handle, zyl_seq_iterator_h result, zyl_seq_iterator_h join_with)",
         " return zyl_w_seq_join_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, result, join_with{esz}{mod});",
         kMember, "{field}_join(Sequence<zyl_seq_no_t>& result, Sequence<{TC}> const& joinWith)", kForward,
         "result.iter, joinWith.iter"},
        {true, FieldRow::kRead, "_count", " ( {h} *handle, /*OUT*/ zyl_seq_no_t* count)",
         " return zyl_w_seq_count( (zyl_objhandle_h)handle, {off_u}, {off_c}, count);", kMember,
         "{field}_count(zyl_seq_no_t & count)", kForward, "&count"},
    };
    writeFieldRows(s, f, v, rows, sizeof rows / sizeof rows[0]);

    // The rest hand back a new iterator; their C++ members a new Sequence.
    FieldRow const iterators[] = {
        {true, FieldRow::kRead, "_map",
         " ( {h} *handle, zyl_seq_iterator_h dst_iterator, zyl_seq_iterator_h map_iterator)",
         " return zyl_w_seq_map_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, dst_iterator, map_iterator{esz});",
         nullptr, nullptr, nullptr, ""},
        {true, FieldRow::kRead, "_subseq",
         " ( {h} *handle, zyl_seq_iterator_h iterator, zyl_seq_no_t from, zyl_seq_no_t till)",
         " return zyl_w_seq_subseq_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, iterator, from, till{esz});",
         nullptr, nullptr, nullptr, ""},
        {true, FieldRow::kRead, "_iterator", " ( {h} *handle, zyl_seq_iterator_h iterator)",
         " return zyl_w_seq_subseq_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, iterator, 0, "
         "ZYL_SEQ_INFINITY{esz});",
         nullptr, nullptr, nullptr, ""},
        // A class's sequence read from the object a cursor stands on.
        {c != nullptr, FieldRow::kWhole, "_from_cursor",
         "(zyl_trans_h trans, zyl_seq_iterator_h iterator, zyl_cursor_h cursor)",
         "{ return zyl_w_seq_from_cursor_{s}( trans, iterator, cursor, {code}, {off_u}, {off_c}{esz});\n}\n\n",
         nullptr, nullptr, nullptr, ""},
        {true, FieldRow::kRead, "_project", " ( {h} *handle, zyl_seq_iterator_h dst, zyl_seq_iterator_h src)",
         " return zyl_w_seq_project_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, dst, src{esz});", nullptr,
         nullptr, nullptr, ""},
    };
    writeFieldRows(s, f, v, iterators, sizeof iterators / sizeof iterators[0]);
    SeqMember const members[] = {
        {true, "  ", "{field}_map(Sequence<zyl_seq_no_t> const& positions)",
         "{ns}::{cf}_map(this, resSeq.iter, positions.iter)"},
        {true, "  ", "{field}_subseq(zyl_seq_no_t from, zyl_seq_no_t till)",
         "{ns}::{cf}_subseq(this, resSeq.iter, from, till)"},
        {true, "  ", "{field}_iterator()", "{ns}::{cf}_iterator(this, resSeq.iter)"},
        {c != nullptr, "  static ", "{field}_from_cursor(zyl_trans_h trans, zyl_cursor_h cursor)",
         "{ns}::{cf}_from_cursor(trans, resSeq.iter, cursor)"},
        {true, "  ", "{field}_project(GenericSequence const& seq)", "{ns}::{cf}_project(this, resSeq.iter, seq.iter)"},
    };
    for (SeqMember const& m : members) {
        if (!m.when)
            continue;
        mstring const member = v.fill(m.member);
        *m_hpp << m.decl << v.fill("Sequence<{TC}> ") << member << ";\n";
        *m_hppInline << v.fill("inline Sequence<{TC}> {hpp}::") << member
                     << v.fill("\n{ Sequence<{TC}> resSeq; ZYL_CPP_CHECK(") << v.fill(m.result)
                     << "); return resSeq; }\n\n";
    }

    FieldRow const store[] = {
        {true, FieldRow::kWrite, "_store", " ( {h} *handle, zyl_seq_iterator_h src)",
         " return zyl_w_seq_store_{s}( (zyl_objhandle_h)handle, {off_u}, {off_c}, src{esz});", kMember,
         "{field}_store(GenericSequence const& src)", kForward, "src.iter"},
    };
    writeFieldRows(s, f, v, store, 1);

    outputSequenceBinding(f, suffix, elemSize);
}
