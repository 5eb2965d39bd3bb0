// XML and JSON access: the functions that write an object as XML or JSON
// to a stream, read it back from XML, create one from XML, and write the
// class's XML schema. The runtime does the work from the dictionary, so
// every class gets them on request, a class without an API too.
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"
#include "zyldict.h"

// One access function: the C function and its C++ member, which forwards
// to it.
struct AccessRow {
    char const* suffix;
    char const* params;
    char const* body;
    char const* member;
    char const* forward;
};

namespace {

// A sequence lives beside its object, not in it, so an object holding one
// has no XML form.
bool hasXmlForm(Class const& c) {
    for (unsigned i = 0; i < c.v_field.size(); i++) {
        int const code = c.v_field[static_cast<int>(i)].dict_info(true).m_typeCode;
        if (code >= ZYL_FT_SEQ_UINT1 && code <= ZYL_FT_SEQ_DATETIME)
            return false;
    }
    return true;
}

}  // namespace

void GenOutput::outputAccessRows(Class& c, AccessRow const* rows, unsigned n) {
    Subst v;
    v.setType("class", c.m_name).set("db", m_schema->m_dbName).set("ns", alone(m_schema->m_dbName)).set("code", classCode(c));
    for (unsigned i = 0; i < n; i++) {
        AccessRow const& row = rows[i];
        writeCFunction(functionHead(c.m_name + row.suffix, v.fill(row.params), c.m_outputWidth),
                       v.fill(row.body));
        // The definitions keep the blank after "::" and before the last line end.
        *m_hpp << "  ZYL_RET " << row.member << ";\n";
        *m_hppInline << "inline  ZYL_RET " << hppClass(c.m_name) << ":: " << row.member << "\n"
                     << v.fill(row.forward);
    }
}

void GenOutput::outputXmlRW(Class& c) {
    if (!hasXmlForm(c))
        return;
    AccessRow const rows[] = {
        {"_xml_get", " ( {class} *handle, void * stream_handle, /*INOUT*/ zyl_stream_write o_stream )",
         "{ return zyl_w_xml_get_object( (zyl_objhandle_h)handle,  stream_handle, o_stream, {code}); \n}\n\n",
         "xml_get( void * stream_handle, /*INOUT*/ zyl_stream_write o_stream )",
         "{ return {ns}::{class}_xml_get(this,stream_handle,o_stream); \n} \n\n"},
        {"_xml_put", " ( {class} *handle, const char * xml )",
         "{ return zyl_w_xml_put_object( (zyl_objhandle_h)handle, xml, {code}); \n}\n\n", "xml_put( const char * xml )",
         "{ return {ns}::{class}_xml_put(this,xml); \n} \n\n"},
        {"_xml_create", " ( zyl_trans_h t, const char * xml, /*OUT*/ {class} *handle )",
         "{ return zyl_w_xml_create_object( t, xml, (zyl_objhandle_h)handle, {code}); \n}\n\n",
         "xml_create( zyl_trans_h t, const char * xml)",
         "{ ZYL_RET ret_ = {ns}::{class}_xml_create(t,xml,this); set_valid(ret_==ZYL_S_OK); return ret_; \n} \n\n"},
        {"_xml_schema", " ( zyl_trans_h t, void * stream_handle, /*INOUT*/ zyl_stream_write o_stream )",
         "{ return zyl_w_xml_schema(t, stream_handle, o_stream, {code}); \n}\n\n",
         "xml_schema(  zyl_trans_h t, void * stream_handle, /*INOUT*/ zyl_stream_write o_stream )",
         "{ return {ns}::{class}_xml_schema(t,stream_handle,o_stream); \n} \n\n"},
    };
    outputAccessRows(c, rows, sizeof rows / sizeof rows[0]);
}

void GenOutput::outputJsonW(Class& c) {
    AccessRow const rows[] = {
        {"_json_get", " ( {class} *handle, void * stream_handle, /*INOUT*/ zyl_stream_write o_stream )",
         "{ return zyl_w_json_get_object( (zyl_objhandle_h)handle,  stream_handle, o_stream, {code}); \n}\n\n",
         "json_get( void * stream_handle, /*INOUT*/ zyl_stream_write o_stream )",
         "{ return {ns}::{class}_json_get(this,stream_handle,o_stream); \n} \n\n"},
    };
    outputAccessRows(c, rows, 1);
}
