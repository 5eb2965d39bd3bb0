// Vector and array fields: a field of variable length (vector<...>) or of a
// fixed dimension ([n]) is reached element by element. The runtime calls
// come in families by the category of the element: simple scalars, bits
// (boolean), fixed characters, wide fixed characters, strings, wide
// strings and structs; an oid reference travels as fixed characters. A
// vector's calls begin with zyl_w_v_, an array's with zyl_w_va_; only a
// vector has a length of its own to read and to allocate, and only its
// strings and structs can be erased.
//
// All calls take the offsets of both object formats, large first. The
// field API's rules hold here too: a nullable field's functions ask or set
// its indicator first, and each C function has its C++ member.
#include "foundation/ut.h"
#include "host/zylcomp/gen_field.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

using namespace fieldtext;

namespace {

enum Family { kSimple, kBit, kChars, kNChars, kString, kNString, kStruct, kRef };

// The family of the element type; a type no vector or array can hold ends
// the compile, though the analyzer and the dictionary refuse those first.
Family familyOf(Field const& f) {
    Struct const& t = *f.m_struct;
    switch (t.m_category) {
    case TC_SCALAR:
        return t.m_name == "boolean" ? kBit : kSimple;
    case TC_CHARS:
    case TC_BINARY:
        return kChars;
    case TC_NCHARS:
        return kNChars;
    case TC_STRING:
    case TC_VARBINARY:
        return kString;
    case TC_NSTRING:
        return kNString;
    case TC_STRUCT:
    case TC_DIRECT:
        return kStruct;
    case TC_OID_REF:
        return kRef;
    case TC_SEQUENCE:
        IErrReporter::panic("Sequence cannot be element of an array", true);
    case TC_BLOB:
        IErrReporter::panic("Blob cannot be element of an array", true);
    default:
        IErrReporter::panic(mstring("illegal element type of field ") + f.m_name, false);
    }
}

// The family's part of the runtime names: zyl_w_v_{fam}_e_get2 and so on.
char const* familyName(Family fam) {
    static char const* const names[] = {"simple", "bit", "chars", "nchars", "string", "nstring", "struct", "chars"};
    return names[fam];
}

}  // namespace

void GenOutput::output_vector_field(Struct& s, Class* c, Field& f) { outputElementField(s, c, f, true); }

void GenOutput::output_array_field(Struct& s, Class* c, Field& f) {
    if (f.m_arraySize <= 0)
        IErrReporter::panic("internal error, array size", false);
    familyOf(f);  // refuses what no array holds before anything is written
    outConstant(m_h, s.m_name + "_" + f.m_name + "_length", f.m_arraySize);
    outputElementField(s, c, f, false);
}

void GenOutput::outputElementField(Struct& s, Class* c, Field& f, bool vector) {
    Struct const& t = *f.m_struct;
    Family const fam = familyOf(f);
    bool const simple = fam == kSimple;
    bool const bit = fam == kBit;
    bool const chars = fam == kChars || fam == kNChars;
    bool const strings = fam == kString || fam == kNString;
    bool const structs = fam == kStruct;
    bool const ref = fam == kRef;
    bool const wide = fam == kNChars || fam == kNString;
    bool const isEnum = f.m_enum != nullptr;
    // A float is put by its bytes, as fields of direct structs are.
    bool const isFloat = simple && t.m_cType == "float";
    int const elemSize = t.m_layout.large.m_size.m_num;

    Subst v = fieldSubst(s, c, f);
    // {size} is the element's size here, not the field's.
    char sbuf[24];
    char const* const size = textOf(t.m_layout.large.m_size, sbuf);
    v.set("size", size)
        .set("pfx", vector ? "zyl_w_v_" : "zyl_w_va_")
        .set("fam", familyName(fam))
        .set("ch", wide ? "nchar_t" : "char")
        .set("int", isEnum ? enum_int_type(elemSize) : mstring())
        .setNum("dim", f.m_arraySize);
    // Families whose elements have a size of their own pass it on.
    if (simple || chars || ref)
        v.set("esz", {", ", size});
    else
        v.set("esz", "");

    FieldRow const rows[] = {
        {vector, FieldRow::kRead, "_size", " ( {h} *handle, /*OUT*/ uint2 *result )",
         " return zyl_w_vector_size_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, result);", kMember,
         "{field}_size(uint2 & result)", kForward, "&result"},

        // _at: one element.
        {simple || bit, FieldRow::kRead, "_at", " ( {h} *handle, uint2 index, /*OUT*/ {t} *result)",
         bit ? " return {pfx}bit_e_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, result);"
         : isEnum
             ? "{ {int} temp; ZYL_RET rc = {pfx}simple_e_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, "
               "index, {size}, &temp);\n  *result = ({t}) temp; return rc; }"
             : " return {pfx}simple_e_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, {size}, result);",
         kMember, "{field}_at(uint2 index, {t} & result)", kForward, "index, &result"},
        {chars, FieldRow::kRead, "_at", " ( {h} *handle, uint2 index, /*OUT*/ {ch} * dest, uint2 dest_size)",
         " return {pfx}{fam}_e_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, dest, dest_size, {size});",
         kMember, "{field}_at(uint2 index, {ch} * dest, uint2 dest_size)", kForward, "index, dest, dest_size"},
        {ref, FieldRow::kRead, "_at", " ( {h} *handle, uint2 index, /*OUT*/ {db}_oid * result)",
         " return {pfx}chars_e_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, (char*)result, "
         "sizeof(*result), {size});",
         kMember, "{field}_at(uint2 index, {db}_oid & result)", kForward, "index, &result"},
        {strings, FieldRow::kRead, "_at",
         " ( {h} *handle, uint2 index, /*OUT*/ {ch} * dest, uint2 dest_size, /*OUT*/ uint2 * len)",
         " return {pfx}{fam}_e_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, dest, dest_size, len);",
         kMember, "{field}_at(uint2 index, {ch} * dest, uint2 dest_size, uint2 & len)", kForward,
         "index, dest, dest_size, &len"},
        {strings, FieldRow::kRead, "_at_len", " ( {h} *handle, uint2 index, /*OUT*/ uint2 *retlen)",
         " return {pfx}{fam}_e_get_len2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, retlen);", kMember,
         "{field}_at_len(uint2 index, uint2 &retlen)", kForward, "index, &retlen"},
        {structs, FieldRow::kRead, "_at", " ( {h} *handle, uint2 index, /*OUT*/ {t} *h)",
         " return {pfx}struct_e_get2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, index, {off_u}, {off_c}, {fn});",
         kMember, "{field}_at(uint2 index, {t} & s)", kForwardRead, "index, &s"},

        // _alloc: a vector's new length.
        {vector, FieldRow::kWrite, "_alloc", " ( {h} *handle, uint2 size)",
         " return zyl_w_v_{fam}_size_put2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, size{esz});", kMember,
         "{field}_alloc(uint2 size)", kForward, "size"},

        // _put: one element. The runtime names the bit array's calls without
        // the "2", though they take both offsets like all others.
        {simple || bit, FieldRow::kWrite, "_put", " ( {h} *handle, uint2 index, {t} value)",
         bit && !vector
             ? " return zyl_w_va_bit_e_put( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, value, {ix});"
         : isFloat ? " return {pfx}chars_e_put2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, "
                     "(char*)&value, sizeof(value), {size}, {ix});"
         : isEnum ? "{ {int} temp = ({int}) value; \n  return {pfx}simple_e_put2( (zyl_objhandle_h)handle, {off_u}, "
                    "{off_c}, {fn}, index, {size}, temp, {ix}); }"
                  : " return {pfx}{fam}_e_put2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index{esz}, ({t}) "
                    "value, {ix});",
         kMember, "{field}_put(uint2 index, {t} value)", kForward, "index, value"},
        {chars || strings, FieldRow::kWrite, "_put", " ( {h} *handle, uint2 index, const {ch} * src, uint2 len)",
         strings ? " return {pfx}{fam}_e_put2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, src, len, {ix});"
                 : " return {pfx}{fam}_e_put2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, src, len, "
                   "{size}, {ix});",
         kMember, "{field}_put(uint2 index, const {ch} * src, uint2 len)", kForward, "index, src, len"},
        {ref, FieldRow::kWrite, "_put", " ( {h} *handle, uint2 index, const {db}_oid * src)",
         " return {pfx}chars_e_put2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, (const char*)src, "
         "sizeof(*src), {size}, {ix});",
         kMember, "{field}_put(uint2 index, const {db}_oid & src)", kForward, "index, &src"},
        {structs, FieldRow::kWrite, "_put", " ( {h} *handle, uint2 index, {t} *h)",
         " return {pfx}struct_e_put2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, index, {off_u}, {off_c}, {fn}, "
         "{ix});",
         kMember, "{field}_put(uint2 index, {t} & s)", kForward, "index, &s"},

        // _erase: a string or struct element of a vector.
        {vector && (strings || structs), FieldRow::kWrite, "_erase", " ( {h} *handle, uint2 index)",
         " return zyl_w_v_{fam}_e_erase2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, index, {ix});", kMember,
         "{field}_erase(uint2 index)", kForward, "index"},

        // Ranges of scalars; bits come packed eight to a byte.
        {simple || bit, FieldRow::kRead, "_get_range",
         " ( {h} *handle, uint2 start_index, uint2 num, /*OUT*/ {t} *dest )",
         " return {pfx}{fam}_e_getrange2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, start_index, num{esz}, "
         "dest);",
         kMember, "{field}_get_range(uint2 start_index, uint2 num, {t} * dest)", kForward, "start_index, num, dest"},
        {simple || bit, FieldRow::kWrite, "_put_range",
         " ( {h} *handle, uint2 start_index, uint2 num, const {t} * src )",
         bit && !vector ? " return zyl_w_va_bit_e_putrange( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, "
                          "start_index, num, src, {ix});"
                        : " return {pfx}{fam}_e_putrange2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, "
                          "start_index, num{esz}, src, {ix});",
         kMember, "{field}_put_range(uint2 start_index, uint2 num, const {t} * src)", kForward,
         "start_index, num, src"},
    };
    writeFieldRows(s, f, v, rows, sizeof rows / sizeof rows[0]);

    if (bit && !vector) {
        // A bit array names fields (the updated_bitmap does): the walk finds
        // the next set bit from *index on, and leaves *index behind it, so
        // that the next call goes on from there.
        *m_protoEnd << v.fill("#define {cf}_field_index {fn}\n");
        FieldRow const fldname[] = {
            {true, FieldRow::kWhole, "_get_fldname",
             " ( {h} *handle, uint2* index, char * dest, uint2 dest_size,  uint2 * len )",
             "{\n"
             "  uint1 fld_data[64];\n"
             "  uint1 fsz = {cf}_length;\n"
             "  uint1 j,i,pos;\n"
             "  uint2 nel;\n"
             "  ZYL_RET rc = ZYL_S_OK;\n"
             "  pos = (*index)&(0xfff8); \n"
             "  if (pos != (*index)) j =  (*index)&7; else j = 0;\n"
             "  while(pos<fsz){\n"
             "    nel = fsz;\n"
             "    if (nel>(sizeof(fld_data)/sizeof(fld_data[0]))){\n"
             "      nel = sizeof(fld_data)/sizeof(fld_data[0]);\n"
             "    }\n"
             "    if ((rc = {cf}_get_range(handle,pos,nel,fld_data)) != ZYL_S_OK){\n"
             "      return rc;\n"
             "    }\n"
             "    for (i=0;i<(nel+7)/8;i++){\n"
             "      if (fld_data[i]){\n"
             "        uint1 v = fld_data[i];\n"
             "        for (;j<8;j++){\n"
             "          if ((v>>j)&1){\n"
             "            /*actually get fldname here*/\n"
             "            *index = pos+i*8+j+1;\n"
             "            return zyl_get_fieldname_by_fldno((zyl_objhandle_h)handle,(uint2)(*index-1),dest,"
             "dest_size,len);\n"
             "          }\n"
             "        }\n"
             "      }\n"
             "      j = 0;\n"
             "    }\n"
             "    pos += nel;\n"
             "  }\n"
             "  return ZYL_S_NOTFOUND;\n"
             "}\n\n",
             kMember, "{field}_get_fldname(uint2 & index, char * dest, uint2 dest_size, uint2 & len)", kForward,
             "&index, dest, dest_size, &len"},
        };
        writeFieldRows(s, f, v, fldname, 1);
    }

    if (m_cppProperties && simple) {
        // The elements as one std::vector; a vector's length follows the
        // value assigned, an array's stays.
        v_cppProperty.push_back(f.m_name);
        *m_hpp << v.fill("  struct { \n    {h}* handle_;\n    operator std::vector<{t}>() const {\n");
        *m_hpp << v.fill(vector ? "      std::vector<{t}> vec_;\n      uint2 len_;\n"
                                  "      ZYL_CPP_CHECK({cf}_size(handle_, &len_));\n      vec_.resize(len_);\n"
                                  "      ZYL_CPP_CHECK({cf}_get_range(handle_, 0, len_, vec_.data()));\n"
                                : "      std::vector<{t}> vec_({cf}_length);\n"
                                  "      ZYL_CPP_CHECK({cf}_get_range(handle_, 0, {cf}_length, vec_.data()));\n");
        *m_hpp << v.fill("      return vec_;\n    }\n"
                         "    std::vector<{t}> const& operator=(std::vector<{t}> const& vec_) {\n");
        if (vector)
            *m_hpp << v.fill("      ZYL_CPP_CHECK({cf}_alloc(handle_, (uint2)vec_.size()));\n");
        *m_hpp << v.fill("      ZYL_CPP_CHECK({cf}_put_range(handle_, 0, (uint2)vec_.size(), vec_.data()));\n"
                         "      return vec_;\n    }\n  } {m};\n\n");
    }

    // C# and Java: an array of the element's type in those languages, with
    // the dimension of an array; scalars by the type mapping of the bindings.
    if (simple || bit) {
        outputElementBinding(f);
        return;
    }
    v.set("dimcs", vector ? mstring() : v.fill("\t[Dimension({dim})]\n"))
        .set("dimjava", vector ? mstring() : v.fill("\t@Dimension({dim})\n"))
        .set("enccs", wide ? "\t[Encoding(\"UTF-16\")]\n" : "")
        .set("encjava", wide ? "\t@Encoding(\"UTF-16\")\n" : "")
        .set("cstype", structs ? alone(t.m_name) : ref ? "ulong" : "string")
        .set("jtype", structs ? alone(t.m_name) : ref ? "long" : "String");
    if (m_genCs)
        v.fillTo(*m_cs, "{enccs}{dimcs}\tpublic {cstype}[] {m};\n");
    if (m_genJava)
        v.fillTo(*m_java, "{encjava}{dimjava}\tpublic {jtype}[] {m};\n");
}
