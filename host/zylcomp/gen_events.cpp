// Events and object identifiers: the event constants, handler types and
// handler registration of a class, and the database-wide oid type with its
// two functions.
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

void GenOutput::outputEvents(Class& c) {
    for (unsigned i = 0; i < c.v_event.size(); i++) {
        Event const& ev = c.v_event[static_cast<int>(i)];
        // Update events hand the new value to the handler. The "when" order is
        // taken by field updates and, deliberately odd, by checkpoint events
        // (kind 5), not by class updates: that is the system's text.
        bool carriesValue = ev.m_kind == EV_UPDATE || ev.m_kind == EV_CLASS_UPDATE;
        bool takesWhen = ev.m_kind == EV_UPDATE || ev.m_kind == EV_CHECKPOINT;
        Subst v;
        v.set("ev", ev.m_name)
            .setType("class", c.m_name)
            .set("code", UT::n2s(ev.m_number))
            .set("when", takesWhen ? "(uint2)(when==ZYL_BEFORE_UPDATE)" : "0");

        *m_h << "#define ZYL_EVENT_" << ev.m_name << "  " << static_cast<int>(i + 1) << "\n";
        if (carriesValue)
            *m_h << v.fill("typedef ZYL_RET (*{ev}_handler)( zyl_trans_h t, {class} * obj, int class_code, "
                           "const char* field_name, zyl_dict_type_t field_type,const void * value, "
                           "/*INOUT*/ void *param); \n");
        else
            *m_h << v.fill("typedef ZYL_RET (*{ev}_handler)( zyl_trans_h t, {class} * obj, ZYL_EVENT_TYPE et, "
                           "/*INOUT*/ void *param); \n");

        mstring params = v.fill(" ( zyl_trans_h t, {ev}_handler handler, void * param");
        if (takesWhen)
            params += ", ZYL_HANDLING_ORDER when";
        params += " )";
        writeCFunction(
            functionHead(mstring("zyl_register_") + ev.m_name + "_handler", params, c.m_outputWidth),
            v.fill("{ return zyl_ev_h_register( t, (zyl_generic_ev_handler)handler, {code}, param, {when} );\n}\n\n"));
        writeCFunction(functionHead(mstring("zyl_unregister_") + ev.m_name + "_handler",
                                    v.fill(" ( zyl_trans_h t, {ev}_handler handler)"), c.m_outputWidth),
                       v.fill("{ return zyl_ev_h_unregister( t, (zyl_generic_ev_handler)handler, {code});\n}\n\n"));
    }
}

namespace {

// One member line of the oid struct. Nested and variable-length fields
// cannot be part of an identifier; the layout pass has refused them
// already, so meeting one here is an internal fault.
mstring oidMember(Field const& f) {
    Struct const& t = *f.m_struct;
    mstring size = UT::n2s(t.m_layout.large.m_size.m_num);
    switch (t.m_category) {
    case TC_SCALAR:
        return mstring("  ") + cTypeOf(t) + " " + alone(f.m_name) +
               (f.m_isArray ? mstring("[") + UT::n2s(f.m_arraySize) + "]" : mstring()) + ";\n";
    case TC_CHARS:
    case TC_BINARY:
        return mstring("  char ") + alone(f.m_name) + "[" + size + "];\n";
    case TC_NCHARS:
        return mstring("  nchar_t ") + alone(f.m_name) + "[" + size + " / sizeof(nchar_t) ];\n";
    case TC_STRUCT:
    case TC_DIRECT:
        IErrReporter::panic("Nested stucture in oid", false);  // the message keeps its typo
    default:
        IErrReporter::panic("Variable-length field in oid", false);
    }
}

}  // namespace

void GenOutput::outputObjid() {
    Struct const* oid = m_schema->m_oidStruct;
    if (oid == nullptr)
        return;
    mstring const& db = m_schema->m_dbName;
    mstring name = db + "_oid";
    head2(m_h, "Object Id definitions");

    // A single plain scalar is the identifier itself. Anything else, a single
    // array or character field too, becomes a struct, which keeps sizeof right.
    Field const* only = oid->v_field.size() == 1 ? &oid->v_field[0] : nullptr;
    if (only != nullptr && only->m_struct->m_category == TC_SCALAR && !only->m_isArray) {
        *m_h << "typedef " << cTypeOf(*only->m_struct) << "   " << name << ";\n\n";
    } else {
        *m_h << "typedef struct " << name << "__\n{\n";
        for (unsigned i = 0; i < oid->v_field.size(); i++)
            *m_h << oidMember(oid->v_field[static_cast<int>(i)]);
        *m_h << "} " << name << ";\n\n";
    }
    *m_h << "#define " << name << "_size  ( (uint2) sizeof(" << name << ") )\n\n";

    // These two stand in {db}.c in every mode, with a prototype in {db}.h.
    DupStream both(m_h, m_c, false);
    Subst v;
    v.set("db", db).set("ns", alone(db)).set("oid", name);
    writeCFunction(v.fill("ZYL_RET  {db}_delete_object( zyl_trans_h t, const {oid} * oid )"),
                   "{ return zyl_w_obj_del_byoid( t, oid ); \n}\n\n", &both, m_h, m_c);
    *m_h << "\n";
    writeCFunction(
        v.fill("ZYL_RET  {db}_get_class_code( zyl_trans_h t, const {oid} * oid, /*OUT*/ uint2 * class_code )"),
        "{ return zyl_w_classcode_byoid( t, oid, class_code ); \n}\n\n", &both, m_h, m_c);
    *m_h << "\n";
}
