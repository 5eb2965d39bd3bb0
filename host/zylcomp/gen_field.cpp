// The field API: for every field of a struct or class, the typed access
// functions in C, their forwarding members in the C++ wrapper, and the
// field's line in the C# and Java declarations. Optional, vector, array,
// spatial and sequence fields go to their own sections; every other field
// is written here by the category of its type.
//
// Location rule: a field whose offset is the same in both object formats
// is reached by "{off}, {fn}" and through the runtime calls without the
// suffix "2"; one whose offsets differ by "{off_u}, {off_c}, {fn}" (large
// format first) and through the "2" calls. Some calls take both offsets
// whatever they are; their names end in "2" in the templates.
//
// Event rule: a field of a class with an update event of its own, or with
// a class update event, writes through the "_ev" calls with the event
// number last. A struct written for itself has no events.
//
// Nullable fields: every function that reads the field first asks the
// field's indicator, and every one that writes it first sets the indicator.
#include "foundation/ut.h"
#include "host/zylcomp/gen_field.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

using namespace fieldtext;

namespace {

// Scalar access; an indicator is a boolean field of the same struct.
char const* const kScalarGet = " ( {h} *handle, /*OUT*/ {t} * result)";
char const* const kScalarPut = " ( {h} *handle, {t} value )";

char const* const kReadIndicator = " uint1 indicator; ZYL_RET rc = {cf}_indicator_get(handle, &indicator); "
                                   "if (rc != ZYL_S_OK) return rc; else if (!indicator) return ZYL_S_NULL_VALUE;";
char const* const kWriteIndicator = " ZYL_RET rc = {cf}_indicator_put(handle, 1); if (rc != ZYL_S_OK) return rc;";

// The type categories whose fields get a C++ property member.
bool hasProperty(TypeCategory category) {
    return category == TC_SCALAR || category == TC_AUTOID || category == TC_CHARS || category == TC_STRING;
}

}  // namespace

// ---------------------------------------------------------------------------
// The walk over the fields

void GenOutput::output(Struct& s, Class* c) {
    if (s.m_isDirect)
        outputDirectAccess(s);
    if (s.m_noApi)
        return;
    v_cppProperty.resize(0);
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field& f = s.v_field[static_cast<int>(i)];
        if (f.m_isHidden)
            continue;
        *m_h << "\n";
        if (f.m_isNullable)
            declareIndicator(s, f);
        if (f.m_isOptional)
            output_optional_field(s, c, f);
        else if (f.m_isVector)
            output_vector_field(s, c, f);
        else if (f.m_isArray && (f.m_isRect || f.m_isPoint))
            output_spatial_field(s, c, f);
        else if (f.m_isArray)
            output_array_field(s, c, f);
        else
            outputField(s, c, f);
    }
    if (m_cppProperties) {
        *m_hpp << "  " << hppClass(s.m_name) << "() {\n";
        for (unsigned i = 0; i < v_cppProperty.size(); i++)
            *m_hpp << "    " << alone(v_cppProperty[static_cast<int>(i)]) << ".handle_ = this;\n";
        *m_hpp << "  }\n\n";
    }
}

Subst GenOutput::fieldSubst(Struct& s, Class* c, Field const& f) const {
    FldLayout const& large = *f.m_largeLayout;
    FldLayout const& compact = *f.m_compactLayout;
    // Texts of the two layouts' own offsets: each stays as it is until the
    // same offset is asked for its text again.
    char ubuf[24];
    char cbuf[24];
    char const* const offU = textOf(large.m_offset, ubuf);
    char const* const offC = textOf(compact.m_offset, cbuf);
    char buf[24];
    char const* const fn = UT::decimal(static_cast<long long>(f.m_fieldNo), buf);
    bool const same = large.m_offset == compact.m_offset;
    std::uint32_t e = NO_EVENT;
    if (c != nullptr) {
        e = c->getUpdateEvent(s, f);
        if (e == NO_EVENT)
            e = c->getClassUpdateEvent();
    }
    Struct const& t = *f.m_struct;
    char const* const name = s.m_name.c_str();
    Subst v;
    v.set("db", m_schema->m_dbName).set("ns", alone(m_schema->m_dbName))
        .setType("h", s.m_name)
        .set("hpp", hppClass(s.m_name))
        .set("field", f.m_name)
        .set("m", alone(f.m_name))
        .set("cf", {name, "_", f.m_name.c_str()})
        .set("fn", fn)
        .set("off_u", offU)
        .set("off_c", offC)
        .set("loc", same ? std::initializer_list<char const*>{offU, ", ", fn}
                         : std::initializer_list<char const*>{offU, ", ", offC, ", ", fn})
        .set("sfx", same ? "" : "2")
        .set("ix", c != nullptr && c->fieldIsIndexed(f) ? "1" : "0")
        .set("ev", e != NO_EVENT ? "_ev" : "");
    if (e != NO_EVENT) {
        char ebuf[24];
        v.set("evarg", {", ", UT::decimal(static_cast<unsigned long long>(e), ebuf)});
    } else {
        v.set("evarg", "");
    }
    char sbuf[24];
    v.set("size", textOf(large.m_size, sbuf));
    // The bindings need the number where the C text names a member of a
    // direct struct by the compiler's fieldsz().
    v.setNum("bsize", large.m_size.is_str() ? large.m_size.m_saved : large.m_size.m_num);
    if (t.m_category == TC_STRUCT || t.m_category == TC_DIRECT)
        v.setType("t", t.m_name);
    else
        v.set("t", cTypeOf(t));
    if (c != nullptr) {
        // Columns are read in the format the class stores its objects in.
        FldLayout const& stored = c->m_compact ? compact : large;
        // {code} as classCode gives it.
        char kbuf[24];
        char const* const code = UT::decimal(static_cast<long long>(c->m_code), kbuf);
        if (m_classCodeOrigin)
            v.set("code", {"dict.class_code_origin + ", code});
        else
            v.set("code", code);
        v.set("off", textOf(stored.m_offset, kbuf));
    }
    return v;
}

void GenOutput::declareAhead(Struct& s, mstring const& field, mstring const& params) {
    // Out of line every prototype stands in {db}.h before any definition.
    if (!m_outOfLine)
        *m_proto << functionHead(s.m_name + "_" + field, params, s.m_outputWidth) << ";\n";
}

void GenOutput::declareIndicator(Struct& s, Field const& f) {
    // Inline, the indicator's functions are defined only after this field's.
    Subst ind;
    ind.setType("h", s.m_name).set("t", "uint1");
    declareAhead(s, f.m_name + "_indicator_get", ind.fill(kScalarGet));
    declareAhead(s, f.m_name + "_indicator_put", ind.fill(kScalarPut));
}

void GenOutput::writeFieldRows(Struct& s, Field const& f, Subst& v, FieldRow const* rows, unsigned n) {
    // Each text is filled into a buffer that the next row reuses.
    std::string& head = m_rowHead;
    std::string& body = m_rowBody;
    std::string& member = m_rowMember;
    std::string& forward = m_rowForward;
    for (unsigned i = 0; i < n; i++) {
        FieldRow const& row = rows[i];
        if (!row.when)
            continue;
        v.set("op", row.op).setFilled("args", row.args);
        body.clear();
        if (row.kind == FieldRow::kWhole) {
            v.fillTo(body, row.body);
        } else {
            body += '{';
            if (f.m_isNullable && row.kind == FieldRow::kRead)
                v.fillTo(body, kReadIndicator);
            if (f.m_isNullable && row.kind == FieldRow::kWrite)
                v.fillTo(body, kWriteIndicator);
            v.fillTo(body, row.body);
            body += "\n}\n\n";
        }
        head.clear();
        appendHead(head, {s.m_name.c_str(), "_", f.m_name.c_str(), row.op}, s.m_outputWidth);
        v.fillTo(head, row.params);
        writeCFunction(head, body);
        if (row.member != nullptr) {
            member.clear();
            v.fillTo(member, row.member);
            forward.clear();
            v.fillTo(forward, row.forward);
            writeCppMember(row.memberDecl, hppClass(s.m_name), member, forward);
        }
    }
}

// ---------------------------------------------------------------------------
// Fields by the category of their type

void GenOutput::outputField(Struct& s, Class* c, Field& f) {
    Subst v = fieldSubst(s, c, f);
    std::uint32_t const own = c != nullptr ? c->getUpdateEvent(s, f) : NO_EVENT;
    if (own != NO_EVENT) {
        Event const& ev = c->v_event[static_cast<int>(c->getEventPos(static_cast<int>(own)))];
        *m_cs << "\t[Event(\"" << ev.m_name << "\", EventType.OnFieldUpdate)]\n";
        *m_java << "\t@Event(name=\"" << ev.m_name << "\", type=Database.EventType.OnFieldUpdate)\n";
    }

    TypeCategory const category = f.m_struct->m_category;
    // Top-n functions exist for indexed fields of classes with sequences;
    // the C++ properties have their own way to the data.
    bool const top = s.m_hasSequences && f.m_isIndexed && !m_cppProperties;
    // Only the top functions take the name apart from the Subst.
    mstring const cf = top ? s.m_name + "_" + f.m_name : mstring();
    switch (category) {
    case TC_NSTRING: {
        FieldRow const get[] = {
            {true, FieldRow::kRead, "_get", " ( {h} *handle, /*OUT*/ nchar_t * dest, uint2 dest_size, /*OUT*/ uint2 * len)",
             " return zyl_w_nstring_get2( (zyl_objhandle_h) handle, {off_u}, {off_c}, {fn}, dest, dest_size, len); ",
             kMember, "{field}_get( nchar_t * dest, uint2 dest_size, uint2 & len)", kForward, "dest, dest_size, &len"},
        };
        writeFieldRows(s, f, v, get, 1);
        if (top)
            genVarCharTopFunction(s, cf, f, "nchar_t");
        FieldRow const rest[] = {
            {true, FieldRow::kRead, "_size", " ( {h} *handle, /*OUT*/ uint2 *result)",
             " return zyl_w_nstring_len2( (zyl_objhandle_h) handle, {off_u}, {off_c}, {fn}, result); ", kMember,
             "{field}_size(uint2 &result)", kForward, "&result"},
            {true, FieldRow::kWrite, "_put", " ( {h} *handle, const nchar_t * src, uint2 len)",
             " return zyl_w_nstring_put{ev}2( (zyl_objhandle_h) handle, {off_u}, {off_c}, {fn}, src, len, {ix}{evarg});",
             kMember, "{field}_put(const nchar_t * src, uint2 len)", kForward, "src, len"},
        };
        writeFieldRows(s, f, v, rest, 2);
        if (m_genCs)
            v.fillTo(*m_cs, "\t[Encoding(\"UTF-16\")]\n\tpublic string {m};\n");
        if (m_genJava)
            v.fillTo(*m_java, "\t@Encoding(\"UTF-16\")\n\tpublic String {m};\n");
        break;
    }
    case TC_STRING:
    case TC_VARBINARY: {
        FieldRow const get[] = {
            {true, FieldRow::kRead, "_get", " ( {h} *handle, /*OUT*/ char * dest, uint2 dest_size, /*OUT*/ uint2 * len)",
             " return zyl_w_string_get2( (zyl_objhandle_h) handle, {off_u}, {off_c}, {fn}, dest, dest_size, len); ",
             kMember, "{field}_get( char * dest, uint2 dest_size, uint2 & len)", kForward, "dest, dest_size, &len"},
        };
        writeFieldRows(s, f, v, get, 1);
        if (top)
            genVarCharTopFunction(s, cf, f, "char");
        FieldRow const rest[] = {
            {true, FieldRow::kRead, "_size", " ( {h} *handle, /*OUT*/ uint2 *result)",
             " return zyl_w_string_len2( (zyl_objhandle_h) handle, {off_u}, {off_c}, {fn}, result); ", kMember,
             "{field}_size(uint2 &result)", kForward, "&result"},
            {true, FieldRow::kWrite, "_put", " ( {h} *handle, const char * src, uint2 len)",
             " return zyl_w_string_put{ev}2( (zyl_objhandle_h) handle, {off_u}, {off_c}, {fn}, src, len, {ix}{evarg});",
             kMember, "{field}_put(const char * src, uint2 len)", kForward, "src, len"},
        };
        writeFieldRows(s, f, v, rest, 2);
        if (m_genCs)
            v.fillTo(*m_cs, "\tpublic string {m};\n");
        if (m_genJava)
            v.fillTo(*m_java, "\tpublic String {m};\n");
        break;
    }
    case TC_NCHARS: {
        FieldRow const get[] = {
            {true, FieldRow::kRead, "_get", " ( {h} *handle, /*OUT*/ nchar_t * dest, uint2 dest_size)",
             " return zyl_w_nchars_get{sfx}( (zyl_objhandle_h) handle, {loc}, dest, dest_size, {size});", kMember,
             "{field}_get(nchar_t * dest, uint2 dest_size)", kForward, "dest, dest_size"},
        };
        writeFieldRows(s, f, v, get, 1);
        if (top)
            genCharTopFunction(s, cf, f, "nchar_t");
        FieldRow const put[] = {
            {true, FieldRow::kWrite, "_put", " ( {h} *handle, const nchar_t * src, uint2 len) ",
             " return zyl_w_nchars_put{ev}{sfx}( (zyl_objhandle_h)handle, {loc}, src, len, {size}, {ix}{evarg});",
             kMember, "{field}_put( const nchar_t * src, uint2 len )", kForward, "src, len"},
        };
        writeFieldRows(s, f, v, put, 1);
        if (m_genCs)
            v.fillTo(*m_cs, "\t[Encoding(\"UTF-16\")]\n\t[Dimension({bsize})]\n\tpublic string {m};\n");
        if (m_genJava)
            v.fillTo(*m_java, "\t@Encoding(\"UTF-16\")\n\t@Dimension({bsize})\n\tpublic String {m};\n");
        break;
    }
    case TC_CHARS:
    case TC_BINARY: {
        // A class of columns reads a character field as a column too.
        if (category == TC_CHARS && c != nullptr && c->m_listSequences)
            outputSequenceColumn(s, v, true);
        FieldRow const get[] = {
            {true, FieldRow::kRead, "_get", " ( {h} *handle, /*OUT*/ char * dest, uint2 dest_size)",
             " return zyl_w_chars_get{sfx}( (zyl_objhandle_h) handle, {loc}, dest, dest_size, {size});", kMember,
             "{field}_get(char * dest, uint2 dest_size)", kForward, "dest, dest_size"},
        };
        writeFieldRows(s, f, v, get, 1);
        if (top)
            genCharTopFunction(s, cf, f, "char");
        FieldRow const put[] = {
            {true, FieldRow::kWrite, "_put", " ( {h} *handle, const char * src, uint2 len) ",
             " return zyl_w_chars_put{ev}{sfx}( (zyl_objhandle_h)handle, {loc}, src, len, {size}, {ix}{evarg});",
             kMember, "{field}_put( const char * src, uint2 len )", kForward, "src, len"},
        };
        writeFieldRows(s, f, v, put, 1);
        if (m_genCs)
            v.fillTo(*m_cs, "\t[Dimension({bsize})]\n\tpublic string {m};\n");
        if (m_genJava)
            v.fillTo(*m_java, "\t@Dimension({bsize})\n\tpublic String {m};\n");
        break;
    }
    case TC_STRUCT:
    case TC_DIRECT: {
        FieldRow const rows[] = {
            {true, FieldRow::kRead, "_read_handle", " ( {h} *handle, /*OUT*/ {t} * h )",
             " return zyl_w_struct_get2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, {off_u}, {off_c}, {fn}); ",
             kMember, "{field}_read( {t} & s )", kForwardRead, "&s"},
            {true, FieldRow::kWrite, "_write_handle", " ( {h} *handle, /*OUT*/ {t} * h )",
             " return zyl_w_struct_put2( (zyl_objhandle_h)handle, (zyl_objhandle_h)h, {off_u}, {off_c}, {fn}, {ix});",
             kMember, "{field}_write( {t} & s )", kForward, "&s"},
        };
        writeFieldRows(s, f, v, rows, 2);
        if (m_genCs)
            v.fillTo(*m_cs, "\tpublic {t} {m};\n");
        if (m_genJava)
            v.fillTo(*m_java, "\tpublic {t} {m};\n");
        break;
    }
    case TC_BLOB: {
        FieldRow const rows[] = {
            {true, FieldRow::kRead, "_get",
             " ( {h} *handle, uint4 start_offset, /*OUT*/ char * dest, uint4 dest_size, /*OUT*/ uint4 * len)",
             " return zyl_w_blob_get2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, start_offset, dest, "
             "dest_size, len);",
             kMember, "{field}_get(uint4 start_offset, char * dest, uint4 dest_size, uint4 & len )", kForward,
             "start_offset, dest, dest_size, &len"},
            {true, FieldRow::kRead, "_size", " ( {h} *handle, /*OUT*/ uint4 * result)",
             " return zyl_w_blob_len2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, result);", kMember,
             "{field}_size(uint4 & result)", kForward, "&result"},
            {true, FieldRow::kWrite, "_put", " ( {h} *handle, const void * src, uint4 nbytes )",
             " return zyl_w_blob_put2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, (const char*)src, nbytes);",
             kMember, "{field}_put( const void * src, uint4 nbytes )", kForward, "src, nbytes"},
            {true, FieldRow::kWrite, "_append", " ( {h} *handle, const void * src, uint4 nbytes )",
             " return zyl_w_blob_append2( (zyl_objhandle_h)handle, {off_u}, {off_c}, {fn}, (const char*)src, "
             "nbytes);",
             kMember, "{field}_append( const void * src, uint4 nbytes )", kForward, "src, nbytes"},
        };
        writeFieldRows(s, f, v, rows, 4);
        if (m_genCs)
            v.fillTo(*m_cs, "\t[Blob]\n\tpublic byte[] {m};\n");
        if (m_genJava)
            v.fillTo(*m_java, "\t@Blob\n\tpublic byte[] {m};\n");
        break;
    }
    case TC_OID_REF: {
        FieldRow const rows[] = {
            {true, FieldRow::kRead, "_get", " ( {h} *handle, /*OUT*/ {db}_oid * result )",
             " return zyl_w_chars_get{sfx}( (zyl_objhandle_h) handle, {loc}, (char*)result, sizeof(*result), {size});",
             kMember, "{field}_get( {db}_oid & result )", kForward, "&result"},
            {true, FieldRow::kWrite, "_put", " ( {h} *handle, {db}_oid* src )",
             " return zyl_w_chars_put{ev}{sfx}( (zyl_objhandle_h)handle, {loc}, (const char *)src, sizeof(*src), "
             "{size}, {ix}{evarg});",
             kMember, "{field}_put( {db}_oid & src )", kForward, "&src"},
        };
        writeFieldRows(s, f, v, rows, 2);
        if (m_genCs)
            v.fillTo(*m_cs, "\tpublic ulong {m};\n");
        if (m_genJava)
            v.fillTo(*m_java, "\tpublic long {m};\n");
        break;
    }
    case TC_SCALAR:
    case TC_AUTOID:
        outputScalarField(s, c, f, v);
        break;
    case TC_SEQUENCE:
        output_sequence_field(s, c, f);
        break;
    default:
        // The version and auto_oid fields are the runtime's own.
        break;
    }
    if (m_cppProperties && hasProperty(category))
        outputProperty(f, v);
}

// Scalars: the runtime call is chosen by the size of the type; an enum is
// read through an integer of its size.
void GenOutput::outputScalarField(Struct& s, Class* c, Field& f, Subst& v) {
    Struct const& t = *f.m_struct;
    int const size = t.m_layout.large.m_size.m_num;
    char const* family = "";
    if (t.m_name == "boolean")
        family = "bit";
    else if (size == 1 || size == 2 || size == 4 || size == 8)
        family = size == 1 ? "b1" : size == 2 ? "b2" : size == 4 ? "b4" : "b8";
    else
        IErrReporter::panic(mstring("illegal size of scalar field ") + f.m_name + ": " + UT::n2s(size), false);
    bool const isEnum = f.m_enum != nullptr;
    v.set("getter", {"zyl_w_", family, "_get"})
        .set("putter", {"zyl_w_", family, "_put"})
        .set("int", isEnum ? enum_int_type(size) : mstring())
        .setNum("b", size)
        .setNum("p", f.m_precision);

    bool const numeric = f.m_precision >= 0;
    if (numeric) {
        // The text functions stand before the functions they call.
        declareAhead(s, f.m_name + "_get", v.fill(kScalarGet));
        declareAhead(s, f.m_name + "_put", v.fill(kScalarPut));
    }
    FieldRow const text[] = {
        {numeric, FieldRow::kWhole, "_get_chars", " ( {h} *handle, char* buf, int buf_size)",
         "{{t} _scaled_num; ZYL_RET _rc = {cf}_get(handle, &_scaled_num); return _rc == ZYL_S_OK ? "
         "zyl_w_numeric_b{b}_to_string(_scaled_num, {p}, buf, buf_size) : _rc; }\n\n",
         kMember, "{field}_get_chars(char* buf, int buf_size)", kForward, "buf, buf_size"},
        {numeric, FieldRow::kWhole, "_to_chars", " ({t} scaled_num, char* buf, int buf_size)",
         "{ return zyl_w_numeric_b{b}_to_string(scaled_num, {p}, buf, buf_size); }\n\n", kStaticMember,
         "{field}_to_chars({t} scaled_num, char* buf, int buf_size)", kForwardStatic, "scaled_num, buf, buf_size"},
        {numeric, FieldRow::kWhole, "_put_chars", " ( {h} *handle, char const* buf)",
         "{{t} _scaled_num;  ZYL_RET _rc = zyl_w_numeric_b{b}_from_string(&_scaled_num, {p}, buf); return _rc == "
         "ZYL_S_OK ? {cf}_put(handle, _scaled_num) : _rc; }\n\n",
         kMember, "{field}_put_chars(char const* buf)", kForward, "buf"},
        {numeric, FieldRow::kWhole, "_from_chars", " ( {t}* scaled_num, char const* buf)",
         "{ return zyl_w_numeric_b{b}_from_string(scaled_num, {p}, buf); }\n\n", kStaticMember,
         "{field}_from_chars({t}& scaled_num, char const* buf)", kForwardStatic, "&scaled_num, buf"},
    };
    writeFieldRows(s, f, v, text, 4);

    if (c != nullptr && c->m_listSequences) {
        // An enum column holds the enum's integers.
        v.set("seqtype", isEnum ? enum_int_type(size) : t.m_cType);
        outputSequenceColumn(s, v, false);
    }

    bool const direct = f.m_containerStruct->m_isDirect;
    FieldRow const get[] = {
        {true, FieldRow::kRead, "_get", kScalarGet,
         direct ? " return zyl_w_chars_get{sfx}( (zyl_objhandle_h) handle, {loc}, (char*)result, sizeof(*result), "
                  "{size});"
         : isEnum ? "{ {int} temp; ZYL_RET rc = {getter}{sfx}( (zyl_objhandle_h) handle, {loc}, &temp);\n"
                    "  *result = ({t}) temp; return rc; }"
                  : " return {getter}{sfx}( (zyl_objhandle_h) handle, {loc},result);",
         kMember, "{field}_get( {t} & result )", kForward, "&result"},
    };
    writeFieldRows(s, f, v, get, 1);
    outputScalarBinding(f);

    if (s.m_hasSequences && f.m_isIndexed && !m_cppProperties)
        genTopFunction(s, v, "/*OUT*/{t}* keys",
                       "if ((rc = {cf}_get(&handle, &keys[r])) != ZYL_S_OK && rc != ZYL_S_NULL_VALUE) return rc;");

    // The autoid is the runtime's to give.
    FieldRow const put[] = {
        {t.m_category != TC_AUTOID, FieldRow::kWrite, "_put", kScalarPut,
         t.m_cType == "float"
             ? "{ union { float f; uint4 i; } u; u.f = value; return {putter}{ev}{sfx}( (zyl_objhandle_h) handle, "
               "{loc}, {ix}, u.i{evarg}); }"
         : direct ? " return zyl_w_chars_put{ev}{sfx}( (zyl_objhandle_h)handle, {loc}, (char*)&value, sizeof(value), "
                    "{size}, {ix}{evarg});"
                  : " return {putter}{ev}{sfx}( (zyl_objhandle_h) handle, {loc}, {ix}, ({t}) value{evarg});",
         kMember, "{field}_put( {t} value )", kForward, "value"},
    };
    writeFieldRows(s, f, v, put, 1);
}

void GenOutput::outputSequenceColumn(Struct& s, Subst& v, bool chars) {
    mstring const params = " ( zyl_trans_t trans, /*OUT*/zyl_seq_iterator_h seq )";
    mstring const name = v.fill("{cf}_sequence");
    if (chars) {
        v.set("seqtype", v.fill(" Char<{size}> "));
        writeCFunction(functionHead(name, params, s.m_outputWidth),
                       v.fill("{ return zyl_w_seq_sequence_char(trans, {code}, {off}, seq, {size}); }\n\n"));
    } else {
        writeCFunction(functionHead(name, params, s.m_outputWidth),
                       v.fill("{ return zyl_w_seq_sequence_{seqtype}(trans, {code}, {off}, seq); }\n\n"));
    }
    *m_hpp << v.fill("  static Sequence<{seqtype}> {field}_sequence(zyl_trans_h trans);\n");
    *m_hppInline << v.fill("inline Sequence<{seqtype}> {hpp}::{field}_sequence(zyl_trans_h trans)\n"
                           "{ Sequence<{seqtype}> seq; ZYL_CPP_CHECK({ns}::{cf}_sequence(trans, seq.iter)); "
                           "return seq; }\n\n");
}

void GenOutput::outputProperty(Field const& f, Subst& v) {
    v_cppProperty.push_back(f.m_name);
    switch (f.m_struct->m_category) {
    case TC_STRING:
        *m_hpp << v.fill("  struct { \n    {h}* handle_;\n    operator std::string() const {\n"
                         "      std::string str_;\n      uint2 len_;\n      ZYL_CPP_CHECK({cf}_size(handle_, &len_));\n"
                         "      str_.resize(len_);\n      ZYL_CPP_CHECK({cf}_get(handle_, &str_[0], len_, &len_));\n"
                         "      return str_;\n    }\n    std::string const& operator=(std::string const& str_) {\n"
                         "      ZYL_CPP_CHECK({cf}_put(handle_, str_.data(), str_.size()));\n      return str_;\n"
                         "    }\n  } {m};\n\n");
        break;
    case TC_CHARS:
        *m_hpp << v.fill("  struct { \n    {h}* handle_;\n    operator Char<{size}>() const {\n"
                         "      std::string str_({size}, '\\0');\n"
                         "      ZYL_CPP_CHECK({cf}_get(handle_, &str_[0], {size}));\n"
                         "      return str_;\n    }\n    Char<{size}> const& operator=(Char<{size}> const& str_) {\n"
                         "      ZYL_CPP_CHECK({cf}_put(handle_, str_.body, {size}));\n      return str_;\n"
                         "    }\n  } {m};\n\n");
        break;
    default:
        *m_hpp << v.fill("  struct { \n    {h}* handle_;\n    operator  {t}() const {\n      {t} val_;\n"
                         "      ZYL_CPP_CHECK({cf}_get(handle_, &val_));\n      return val_;\n    }\n");
        // The autoid is read only.
        if (f.m_struct->m_category != TC_AUTOID)
            *m_hpp << v.fill("    {t} operator=({t} val_) {\n      ZYL_CPP_CHECK({cf}_put(handle_, val_));\n"
                             "      return val_;\n    }\n");
        *m_hpp << v.fill("  } {m};\n\n");
        break;
    }
}

// ---------------------------------------------------------------------------
// Direct structs as a whole

void GenOutput::outputDirectAccess(Struct& s) {
    Subst v;
    v.setType("s", s.m_name).set("hpp", hppClass(s.m_name)).set("db", m_schema->m_dbName).set("ns", alone(m_schema->m_dbName));
    int const width = s.m_outputWidth;
    writeCFunction(functionHead(s.m_name + "_get_ptr", v.fill(" ( {s} *handle, /*OUT*/ {s}_d_aligned_to_1** dest)"),
                                width),
                   v.fill("{\n return zyl_w_direct_struct_get_ptr( (zyl_objhandle_h) handle, (void**)dest, "
                          "sizeof({s}_d_aligned_to_1));\n}\n\n"));

    // A packed image has its own C type, copied member by member.
    mstring in;
    mstring out;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        v.set("f", alone(s.v_field[static_cast<int>(i)].m_name));
        in += v.fill(" zyl_memcpy((char*)&dest->{f}, (char*)&src.{f}, sizeof(dest->{f}));\n");
        out += v.fill(" zyl_memcpy((char*)&dest.{f}, (char*)&src->{f}, sizeof(dest.{f}));\n");
    }
    mstring getBody;
    mstring putBody;
    if (s.m_packed) {
        getBody = v.fill("{\n {s}_d_aligned_to_1 src;\n ZYL_RET rc= zyl_w_chars_get( (zyl_objhandle_h) handle, 0, 0 , "
                         "(char*)&src, sizeof({s}_d_aligned_to_1), sizeof({s}_d_aligned_to_1));\n") +
                  in + " return rc;\n}\n\n";
        putBody = v.fill("{\n {s}_d_aligned_to_1 dest;\n") + out +
                  v.fill(" return zyl_w_chars_put( (zyl_objhandle_h) handle, 0, 0, (char*)&dest, "
                         "sizeof({s}_d_aligned_to_1), sizeof({s}_d_aligned_to_1), 0");
    } else {
        getBody = "{\n ZYL_RET rc= zyl_w_chars_get( (zyl_objhandle_h) handle, 0, 0 , (char*)dest, sizeof(*dest), "
                  "sizeof(*dest));\n return rc;\n}\n\n";
        putBody = "{\n return zyl_w_chars_put( (zyl_objhandle_h) handle, 0, 0, (char*)src, sizeof(*src), "
                  "sizeof(*src), 0";
    }
    putBody += ");\n}\n\n";
    writeCFunction(functionHead(s.m_name + "_get_all", v.fill(" ( {s} *handle, /*OUT*/ {s}_d * dest)"), width),
                   getBody);
    writeCppMember(kMember, hppClass(s.m_name), v.fill("get_all ( {s}_d * dest)"),
                   v.fill("{ ZYL_RET ret_ = {ns}::{s}_get_all(this, dest); return ret_; "));
    writeCFunction(functionHead(s.m_name + "_put_all", v.fill(" ( {s} *handle, const {s}_d * src)"), width), putBody);
    writeCppMember(kMember, hppClass(s.m_name), v.fill("put_all ( {s}_d * src)"),
                   v.fill("{ ZYL_RET ret_ = {ns}::{s}_put_all(this, src); return ret_; "));
}

// ---------------------------------------------------------------------------
// Top-n functions

void GenOutput::genTopFunction(Struct& s, Subst& v, char const* keys, char const* read) {
    // The walk turns cursor positions into handles; in inline mode that
    // function is defined further down, so it is declared here.
    *m_proto << functionHead(s.m_name + "_from_cursor", v.fill(" ( zyl_trans_h t, zyl_cursor_h c, /*OUT*/ {h} *handle )"),
                             s.m_outputWidth)
             << ";\n";
    v.set("keys", v.fill(keys)).set("read", v.fill(read));
    mstring const params = v.fill(
        "(zyl_trans_h t, zyl_cursor_h cursor, /*INOUT*/zyl_size_t* n, {keys}, /*OUT*/double* aggregates, "
        "ZYL_RET (*aggregate)(zyl_trans_h t, {h}* handle, /*OUT*/double* result, void* ctx), "
        "ZYL_RET (*filter)(zyl_trans_h t, zyl_cursor_h cursor, void* ctx), void* ctx)");
    // The keys and aggregates stay sorted by falling aggregate; a new value
    // enters by binary search and pushes the smallest out when all places
    // are taken.
    writeCFunction(functionHead(v.fill("{cf}_top"), params, s.m_outputWidth),
                   v.fill("{\n"
                          "  ZYL_RET rc;\n"
                          "  zyl_size_t max = *n;\n"
                          "  zyl_size_t top = 0;\n"
                          "  {h} handle;\n"
                          "  double value;\n"
                          "  do {\n"
                          "    if (filter) {\n"
                          "      switch (rc = filter(t, cursor, ctx)) {\n"
                          "      case ZYL_S_OK:\n"
                          "        break;\n"
                          "      case ZYL_S_NOTFOUND:\n"
                          "        goto skip;\n"
                          "      case ZYL_S_CURSOR_END:\n"
                          "        *n = top;\n"
                          "        zyl_cursor_close(cursor);\n"
                          "        return ZYL_S_OK;\n"
                          "      default:\n"
                          "        return rc;\n"
                          "      }\n"
                          "    }\n"
                          "    if ((rc = {h}_from_cursor(t, cursor, &handle)) != ZYL_S_OK) return rc;\n"
                          "    rc = aggregate(t, &handle, &value, ctx);\n"
                          "    if (rc == ZYL_S_NOTFOUND) goto skip;\n"
                          "    if (rc != ZYL_S_OK) return rc;\n"
                          "    if (top < max || (top > 0 && aggregates[top-1] < value)) {\n"
                          "      zyl_size_t l = 0, r = top, m;\n"
                          "      while (l < r) {\n"
                          "        m = (l + r) >> 1;\n"
                          "        if (aggregates[m] > value) l = m+1; else r = m;\n"
                          "      }\n"
                          "      if (top < max) top++;\n"
                          "      zyl_memmove(&keys[r+1], &keys[r], (top-r-1)*sizeof(*keys));\n"
                          "      zyl_memmove(&aggregates[r+1], &aggregates[r], (top-r-1)*sizeof(*aggregates));\n"
                          "      aggregates[r] = value;\n"
                          "      {read}\n"
                          "    }\n"
                          "  skip:\n"
                          "    rc = zyl_cursor_next(t, cursor);\n"
                          "  } while (rc == ZYL_S_OK);\n"
                          "  *n = top;\n"
                          "  zyl_cursor_close(cursor);\n"
                          "  return (rc == ZYL_S_CURSOR_END) ? ZYL_S_OK : rc;\n"
                          "}\n\n"));
}

// Fixed-size characters: each key is a buffer the size of the field.
void GenOutput::genCharTopFunction(Struct& s, mstring const& cf, Field const& f, char const* elem) {
    Subst v;
    int const bytes = f.m_struct->m_layout.compact.m_size.m_num;
    int const n = mstring(elem) == "char" ? bytes : bytes / 2;
    v.set("cf", cf).setType("h", s.m_name).set("elem", elem).set("n", UT::n2s(n));
    genTopFunction(s, v, "/*OUT*/{elem} (*keys)[{n}]",
                   "if ((rc = {cf}_get(&handle, keys[r], (uint2)sizeof(*keys))) != ZYL_S_OK && rc != "
                   "ZYL_S_NULL_VALUE) return rc;");
}

// Strings have no size of their own; each key keeps as much of the value as
// a character element of a sequence can hold.
void GenOutput::genVarCharTopFunction(Struct& s, mstring const& cf, Field const&, char const* elem) {
    Subst v;
    v.set("cf", cf).setType("h", s.m_name).set("elem", elem);
    genTopFunction(s, v, "/*OUT*/{elem} (*keys)[ZYL_SEQ_MAX_CHAR_SIZE]",
                   "{ uint2 len_; if ((rc = {cf}_get(&handle, keys[r], (uint2)sizeof(*keys), &len_)) != ZYL_S_OK && "
                   "rc != ZYL_S_NULL_VALUE) return rc; }");
}
