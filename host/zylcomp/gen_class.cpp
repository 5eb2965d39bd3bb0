// The class API: the functions that create, delete and find objects of a
// class, as C functions and as members of the C++ wrapper class.
//
// Event rule: when the class declares the event a function stands for, its
// body calls the "_ev" variant of the runtime call with the event number as
// the last argument; otherwise the plain call.
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

namespace {

// One function of the class API. A row without a C++ member has a null
// `member`; one without an event variant a null `bodyEv`. {e} is the event
// number, the other places are filled per class.
struct ApiRow {
    bool when;
    char const* suffix;
    char const* params;
    char const* body;
    char const* bodyEv;
    std::uint32_t event;
    char const* memberDecl;
    char const* member;
    char const* memberBody;
};

char const* const kMember = "  ZYL_RET ";
char const* const kStaticMember = "  static ZYL_RET ";

}  // namespace

bool indexIsHidden(Index const& idx) { return idx.m_isSystem; }

void GenOutput::writeApiRow(Class& c, Subst& v, char const* suffix, char const* params, char const* body,
                            char const* memberDecl, char const* member, char const* memberBody) {
    // Filled into the buffers the field rows use.
    std::string& head = m_rowHead;
    std::string& text = m_rowBody;
    head.clear();
    appendHead(head, {c.m_name.c_str(), suffix}, c.m_outputWidth);
    v.fillTo(head, params);
    text.clear();
    v.fillTo(text, body);
    text += "\n}\n\n";
    writeCFunction(head, text);
    if (member == nullptr)
        return;
    m_rowMember.clear();
    v.fillTo(m_rowMember, member);
    m_rowForward.clear();
    v.fillTo(m_rowForward, memberBody);
    writeCppMember(memberDecl, hppClass(c.m_name), m_rowMember, m_rowForward);
}

void GenOutput::outputClassApi(Class& c) {
    mstring const& db = m_schema->m_dbName;
    // Objects are stored in the compact format when the class asks for it.
    Layout const& object = c.m_compact ? c.m_layout.compact : c.m_layout.large;
    Subst v;
    v.setType("class", c.m_name)
        .set("db", db).set("ns", alone(db))
        .set("oid", db + "_oid")
        .set("code", classCode(c))
        .set("init", static_cast<mstring const&>(object.m_size))
        .set("fields", UT::n2s(static_cast<int>(c.v_field.size())));

    ApiRow const rows[] = {
        {!c.m_hasOid, "_new", " ( zyl_trans_h t, /*OUT*/ {class} *handle )",
         "{ return zyl_w_new_obj_noid( t, {init}, {code}, (zyl_objhandle_h)handle);",
         "{ return zyl_w_new_obj_noid_ev( t, {init}, {code}, (zyl_objhandle_h)handle, {e});", c.getNewEvent(),
         kMember, "create( zyl_trans_h t )",
         "{ ZYL_RET ret_ = {ns}::{class}_new(t,this); set_valid(ret_==ZYL_S_OK); return ret_; "},
        {c.m_hasOid, "_new", " ( zyl_trans_h t, const {oid} *id, /*OUT*/ {class} *handle )",
         "{ return zyl_w_new_obj_oid( t, {init}, {code}, id, sizeof(*id), (zyl_objhandle_h)handle);",
         "{ return zyl_w_new_obj_oid_ev( t, {init}, {code}, id, sizeof(*id), (zyl_objhandle_h)handle, {e});",
         c.getNewEvent(), kMember, "create( zyl_trans_h t, const {oid} *id )",
         "{ ZYL_RET ret_ = {ns}::{class}_new(t,id,this); set_valid(ret_==ZYL_S_OK); return ret_; "},
        {true, "_delete", " ( {class} *handle )", "{ return zyl_w_obj_delete( (zyl_objhandle_h)handle); ",
         "{ return zyl_w_obj_delete_ev( (zyl_objhandle_h)handle, {e}); ", c.getDeleteEvent(), kMember, "remove()",
         "{ ZYL_RET ret_; set_valid(false); return (ret_={ns}::{class}_delete(this)); "},
        {c.m_persistent, "_set_allocation_block_size", "(zyl_trans_h t, zyl_size_t block_size)",
         "{ return zyl_set_class_allocation_block_size(t, {code}, block_size); ", nullptr, NO_EVENT, kMember,
         "set_allocation_block_size(zyl_trans_h t, zyl_size_t block_size)",
         "{ return {ns}::{class}_set_allocation_block_size(t,block_size); "},
        {c.m_persistent, "_set_caching_priority", "(zyl_trans_h t, int priority)",
         "{ return zyl_set_class_caching_priority(t, {code}, priority); ", nullptr, NO_EVENT, kMember,
         "set_caching_priority(zyl_trans_h t, int priority)",
         "{ return {ns}::{class}_set_caching_priority(t,priority); "},
        {true, "_delete_all", " ( zyl_trans_h t )", "{ return zyl_w_obj_delete_all( t, {code} ); ",
         "{ return zyl_w_obj_delete_all_ev( t, {code}, {e}); ", c.getDeleteAllEvent(), kMember,
         "remove_all( zyl_trans_h t )",
         "{ ZYL_RET ret_; set_valid(false); return (ret_={ns}::{class}_delete_all(t)); "},
        {true, "_checkpoint", " ( {class} *handle )", "{ return zyl_w_obj_checkpoint( (zyl_objhandle_h)handle );",
         "{ return zyl_w_obj_checkpoint_ev( (zyl_objhandle_h)handle,{e} );", c.getCheckpointEvent(), kMember,
         "checkpoint()", "{ ZYL_RET ret_={ns}::{class}_checkpoint(this); return ret_;"},
        {c.m_hasOid, "_oid_find", " ( zyl_trans_h t, const {oid} *id, /*OUT*/ {class} *handle )",
         "{ return zyl_w_find_byoid(t, id, (zyl_objhandle_h)handle, {code}); ", nullptr, NO_EVENT, kMember,
         "oid_find( zyl_trans_h t, const {oid} *id )",
         "{ ZYL_RET ret_ = {ns}::{class}_oid_find(t,id,this); set_valid(ret_==ZYL_S_OK); return ret_; "},
        {c.m_hasOid, "_oid_get", " ( {class} *handle, /*OUT*/ {oid} *id )",
         "{ return zyl_w_oid_get( (zyl_objhandle_h)handle, id, (uint2) sizeof(*id) );", nullptr, NO_EVENT, kMember,
         "oid_get( {oid} *id)", "{ ZYL_RET ret_={ns}::{class}_oid_get(this,id); return ret_; "},
        {c.m_isDynamic, "_pack", " ( {class} *handle, /*OUT*/ uint4 * pages_released )",
         "{ return zyl_w_compact( (zyl_objhandle_h)handle, {code}, {fields}, pages_released); ", nullptr,
         NO_EVENT, nullptr, nullptr, nullptr},
    };
    for (ApiRow const& row : rows) {
        if (!row.when)
            continue;
        bool withEvent = row.bodyEv != nullptr && row.event != NO_EVENT;
        v.setNum("e", row.event);
        writeApiRow(c, v, row.suffix, row.params, withEvent ? row.bodyEv : row.body, row.memberDecl, row.member,
                    row.memberBody);
    }
}

void GenOutput::output(Class& c) {
    outputClassHead(c);
    output(c, &c);
    outputClassEnd(c);
    *m_h << "\n";

    Subst v;
    v.setType("class", c.m_name).set("db", m_schema->m_dbName).set("ns", alone(m_schema->m_dbName)).set("code", classCode(c));
    ApiRow const rows[] = {
        {true, "_from_cursor", " ( zyl_trans_h t, zyl_cursor_h c, /*OUT*/ {class} *handle )",
         "{ return zyl_w_obj_from_cursor( t, c, {code}, (zyl_objhandle_h)handle ); ", nullptr, NO_EVENT,
         kMember, "from_cursor( zyl_trans_h t, zyl_cursor_h c )",
         "{ ZYL_RET ret_ = {ns}::{class}_from_cursor(t,c,this); set_valid(ret_==ZYL_S_OK); return ret_; "},
        {c.m_hasList, "_list_cursor", " ( zyl_trans_h t, /*OUT*/ zyl_cursor_h c )",
         "{ return zyl_w_list_cursor( t, {code}, c );", nullptr, NO_EVENT, kStaticMember,
         "list_cursor( zyl_trans_h t, /*OUT*/ zyl_cursor_h c )", "{ return {ns}::{class}_list_cursor(t,c); "},
        // User-defined indexes of a persistent class hold handles the runtime must normalize.
        {c.m_hasUserdef && c.m_persistent, "_normalize_handle", " ( {class} *handle )",
         "{ return zyl_w_normalize_handle((zyl_objhandle_h)handle ); ", nullptr, NO_EVENT, kMember,
         "normalize_handle()",
         "{ ZYL_RET ret_ = {ns}::{class}_normalize_handle(this); set_valid(ret_==ZYL_S_OK); return ret_; "},
    };
    for (ApiRow const& row : rows) {
        if (!row.when)
            continue;
        writeApiRow(c, v, row.suffix, row.params, row.body, row.memberDecl, row.member, row.memberBody);
    }

    for (unsigned i = 0; i < c.v_index.size(); i++) {
        Index& idx = c.v_index[static_cast<int>(i)];
        if (c.m_hasHistory && idx.m_name == "history_index@")
            outputVersions(c, idx);
        else if (!indexIsHidden(idx))
            outputIndex(c, idx);
    }
}

// A history index is walked by version, not searched.
void GenOutput::outputVersions(Class& c, Index const& idx) {
    outConstant(m_h, c.m_name + "_versions_limit", c.m_historyLength);
    Subst v;
    v.setType("class", c.m_name).set("indexcode", UT::n2s(idx.m_code));
    mstring params = v.fill(" ( {class} *handle, /*OUT*/ {class} *res_handle)");
    writeCFunction(
        functionHead(c.m_name + "_version_prev", params, c.m_outputWidth),
        v.fill("{ return zyl_w_version_prev( (zyl_objhandle_h)handle, (zyl_objhandle_h)res_handle, {indexcode});") +
            "\n}\n\n");
    writeCFunction(
        functionHead(c.m_name + "_version_next", params, c.m_outputWidth),
        v.fill("{ return zyl_w_version_next( (zyl_objhandle_h)handle, (zyl_objhandle_h)res_handle, {indexcode});") +
            "\n}\n\n");
}
