// The finishing passes that complete the model once the whole text is read:
// their order, the resolution of field types with what follows from them,
// and the schema-wide rules on the oid and on references.
//
// Invariant: a pass may rely on everything the passes before it built. The
// system classes exist before any type is resolved, every field's type is
// resolved before indexes and events look at fields, and after a clean run
// every field of every struct and class has its m_struct, which the layout
// pass takes for granted.
#include "host/zylcomp/analyzer.h"
#include "host/zylcomp/keywords.h"

#include "frontend/parser.h"
#include "frontend/preprocessor.h"
#include "host/zylcomp/strdict.h"

void Analyzer::doChecks() {
    void (Analyzer::*const passes[])() = {
        &Analyzer::finishDistribClasses, &Analyzer::finishUpDownClasses, &Analyzer::finishStructFields,
        &Analyzer::finishIndices,        &Analyzer::finishEvents,        &Analyzer::checkObjid,
        &Analyzer::checkRefTo,
    };
    // The batch reporter ends the process and the in-memory one throws; a
    // reporter that returned would still stop the checks here.
    for (auto pass : passes) {
        (this->*pass)();
        if (failed())
            return;
    }
}

// ---------------------------------------------------------------------------
// Field types

void Analyzer::finishStructFields() {
    forEachIn<Struct>(m_schema.m_types, [this](Struct& s) {
        struct_finishStructFields(s, false);
        return true;
    });
    forEachIn<Class>(m_schema.m_classes, [this](Class& c) {
        struct_finishStructFields(c, true);
        return true;
    });
}

// The type named `typeName`, or null after the report.
Struct* Analyzer::findFieldType(mstring const& typeName, mstring const& fieldName) {
    Struct* t = m_schema.findType(typeName);
    if (t != nullptr)
        return t;
    // The message names the product and its vendor; it is the text users know.
    if (typeName == "wstring" || typeName == "wchar")
        error("wide character type is not supported in this version of Quorabase. Please contact Tarnwell Support.");
    else
        error2("unknown type #1 used in #2", typeName, fieldName);
    return nullptr;
}

// Resolves the types of the fields of `s`, first finishing every struct they
// name, and derives from them whether `s` is dynamic, holds blobs,
// sequences or initial values. A struct that is reached again while its
// own fields are resolved (it contains itself through another struct) is
// left alone there; the layout pass refuses it later.
void Analyzer::struct_finishStructFields(Struct& s, bool /*isClass*/) {
    if (s.m_finished)
        return;
    for (unsigned i = 0; i < m_finishing.size(); i++)
        if (m_finishing[i] == &s)
            return;
    m_finishing.push_back(&s);

    bool const direct = s.m_category == TC_DIRECT;
    bool blobs = false, sequences = false, dynamic = false, hasInit = false;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field& f = s.v_field[i];
        DeclFocus const at = focus("field", f.m_name, f.m_place);
        if (f.m_name == "updated_bitmap")
            s.m_hasUpdatedBitmap = true;
        // Only the direct case is seen here; a cycle through other structs
        // is the layout pass's to report.
        if (f.m_typeName == s.m_name)
            error1("struct #1 includes itself", s.m_name);
        // An unknown type is looked up again below, after the element type,
        // so that the reports keep their order. An enum of the name can
        // only stand behind a type of the enum's (or behind none).
        Struct* t = m_schema.findType(f.m_typeName);
        f.m_enum = t == nullptr || t->m_isEnum ? m_schema.findEnum(f.m_typeName) : nullptr;
        if (f.m_isSequence) {
            f.m_elemStruct = findFieldType(f.m_elemTypeName, f.m_name);
            sequences = true;
            // The dictionary has a sequence type for a few element types only.
            if (f.m_elemStruct != nullptr && sequenceTypeCode(*f.m_elemStruct) == 0)
                errorAt(f.m_place,
                        "sequence #1 cannot hold elements of type #2: a sequence holds integers, floating point "
                        "numbers, dates and times, char<n>, binary<n> or structs",
                        f.m_name, f.m_elemTypeName);
        }
        if (t == nullptr)
            t = findFieldType(f.m_typeName, f.m_name);
        f.m_struct = t;
        if (t == nullptr)
            continue;  // reported
        if (t->m_category == TC_STRUCT || t->m_category == TC_DIRECT)
            s.m_hasStructFields = true;
        if (direct && (t->m_category == TC_DIRECT || t->m_category == TC_STRUCT))
            error("No direct or normal structs can be included into direct struct");
        if (t->m_category == TC_DIRECT && f.m_isVector)
            error("Direct struct can not be element of a vector");
        if (!t->m_finished)
            struct_finishStructFields(*t, false);

        int nameLen = static_cast<int>(f.m_name.length());
        if (nameLen > s.m_maxFieldNameLen)
            s.m_maxFieldNameLen = nameLen;
        if (t->m_isDynamic || f.m_isVector || f.m_isOptional) {
            dynamic = true;
            if (direct)
                error("Direct struct can't include dynamic or optional fields");
        }
        if (t->m_hasInit || f.v_init.size() > 0)
            hasInit = true;
        blobs = blobs || t->m_hasBlobs;
        sequences = sequences || t->m_hasSequences;
    }
    s.m_hasBlobs = blobs;
    s.m_hasSequences = sequences;
    s.m_hasInit = hasInit;
    s.m_isDynamic = dynamic;
    s.m_finished = true;
    m_finishing.resize(m_finishing.size() - 1);
}

// ---------------------------------------------------------------------------
// Schema-wide rules

void Analyzer::checkObjid() {
    if (m_schema.m_dbName.empty()) {
        error("schema name is not defined");
        return;
    }
    Class const* classWithOid = nullptr;
    forEachIn<Class>(m_schema.m_classes, [&classWithOid](Class& c) {
        classWithOid = c.m_hasOid ? &c : nullptr;
        return classWithOid == nullptr;
    });
    if (classWithOid != nullptr && m_schema.m_idType.empty()) {
        DeclFocus const at = focus("class", classWithOid->m_name, classWithOid->m_place);
        error("oid is not declared");
        return;
    }
    if (m_schema.m_idType.empty())
        return;
    // The estimate is asked for even when no class has an oid.
    if (m_schema.m_oidEstimate == 0)
        error("estimated number of objects not specified");
    m_schema.m_oidStruct = m_schema.findType(m_schema.m_idType);
    if (m_schema.m_oidStruct == nullptr)
        error1("oid type #1 is not defined", m_schema.m_idType);
    else if (m_schema.m_oidStruct->m_isDynamic)
        error1("oid type #1 cannot be dynamic", m_schema.m_idType);
}

// ref<C> needs a class C with an oid, autoid_t<C> one with an autoid.
void Analyzer::checkRefTo() {
    forEachIn<Class>(m_schema.m_classes, [this](Class& c) {
        if (!c.m_hasRefNames)
            return true;
        for (unsigned i = 0; i < c.v_field.size(); i++) {
            Field const& f = c.v_field[i];
            if (f.m_refClassName.empty())
                continue;
            DeclFocus const at = focus("field", f.m_name, f.m_place);
            Class const* target = m_schema.findClass(f.m_refClassName);
            if (target == nullptr)
                error1("A reference to undefined class \"#1\" found.", f.m_refClassName);
            else if (f.m_typeName == "autoid_t" && !target->m_hasAutoid)
                error1("Class \"#1\" has no autoid.", f.m_refClassName);
            else if (f.m_typeName == "ref" && !target->m_hasOid)
                error1("Class \"#1\" has no oid.", f.m_refClassName);
        }
        return true;
    });
}

void Analyzer::checkCppNames() {
    // In C++ a member hides an enum type of its name for the members after
    // it, and no member may bear the name of its class.
    auto fields = [this](Struct& s) {
        for (unsigned j = 0; j < s.v_field.size(); j++) {
            Field const& g = s.v_field[static_cast<int>(j)];
            if (!g.m_struct->m_isEnum)
                continue;
            for (unsigned i = 0; i < j; i++) {
                Field const& f = s.v_field[static_cast<int>(i)];
                if (alone(f.m_name) == alone(g.m_struct->m_name)) {
                    errorAt(f.m_place, "field #1 of #2 is named like the enum type of its later field #3, which the "
                            "C++ member would hide", f.m_name, s.m_name, g.m_name);
                    return false;
                }
            }
        }
        return true;
    };
    forEachIn<Struct>(m_schema.m_types, fields);
    forEachIn<Class>(m_schema.m_classes, fields);
    bool sequences = false;
    forEachIn<Class>(m_schema.m_classes, [&sequences](Class& c) {
        sequences = c.m_hasSequences;
        return !sequences;
    });
    forEachIn<Class>(m_schema.m_classes, [this, sequences](Class& c) {
        // The wrappers' column members name Sequence<>, whose header comes
        // only with a sequence field.
        if (c.m_listSequences && !sequences)
            errorAt(c.m_place, "class #1 declares sequences while no field of the schema is a sequence: its C++ "
                    "wrappers would name Sequence without its header; compile it without --cpp", c.m_name);
        for (unsigned i = 0; i < c.v_index.size() && !failed(); i++) {
            Index const& idx = c.v_index[static_cast<int>(i)];
            if (alone(idx.m_name) == alone(c.m_name))
                errorAt(idx.m_place, "index #1 is named like its class: a C++ class has no member of its own name",
                        idx.m_name);
            // Searched by keywords, its wrappers define search_all twice.
            if (idx.m_type == IT_TREE && idx.m_thick && !idx.m_userdef && idx.v_segment.size() == 1) {
                int const category = idx.v_segment[0].v_fldEl[static_cast<int>(idx.v_segment[0].v_fldEl.size()) - 1]
                                         .m_field->m_struct->m_category;
                if (category == TC_STRING || category == TC_NSTRING)
                    errorAt(idx.m_place, "index #1 is a thick tree over a string, whose C++ wrappers would define "
                            "search_all twice; compile it without --cpp", idx.m_name);
            }
        }
        return !failed();
    });
}

void Analyzer::checkFieldFunctionNames(bool xmlAccess, bool jsonAccess) {
    // {struct}_{field}_get would be a function the struct has of its own.
    auto fields = [this, xmlAccess, jsonAccess](Struct& s) {
        for (unsigned i = 0; i < s.v_field.size(); i++) {
            Field const& f = s.v_field[static_cast<int>(i)];
            // A sequence, and a struct held once, have no _get of their own.
            bool const structOnce = f.m_struct != nullptr && f.m_struct->m_category == TC_STRUCT && !f.m_isVector &&
                                    !f.m_isArray;
            if (f.m_isSequence || structOnce)
                continue;
            char const* what = f.m_name == "fixed"                  ? "fixed-part"
                               : xmlAccess && f.m_name == "xml"     ? "XML access"
                               : jsonAccess && f.m_name == "json"   ? "JSON access"
                                                                    : nullptr;
            if (what != nullptr) {
                errorAt(f.m_place, "field #1 of #2 would define #2_#1_get, the name of the #3 function of #2", f.m_name,
                        s.m_name, what);
                return false;
            }
        }
        return true;
    };
    forEachIn<Struct>(m_schema.m_types, fields);
    forEachIn<Class>(m_schema.m_classes, fields);
}

void Analyzer::checkPrefixedNames() {
    // The offsets of a direct struct's members name its C type before the
    // prefix is put in front of it.
    auto fields = [this](Struct& s) {
        for (unsigned i = 0; i < s.v_field.size(); i++) {
            Field const& f = s.v_field[static_cast<int>(i)];
            if (f.m_struct != nullptr && f.m_struct->m_category == TC_DIRECT) {
                errorAt(f.m_place, "field #1 holds direct struct #2, whose offsets the C code would name without "
                        "the prefix; compile it without --prefix-names", f.m_name, f.m_struct->m_name);
                return false;
            }
        }
        return true;
    };
    forEachIn<Struct>(m_schema.m_types, fields);
    forEachIn<Class>(m_schema.m_classes, fields);
}

void Analyzer::checkBindingNames() {
    mstring const db = alone(m_schema.m_dbName);
    auto check = [this, &db](char const* kind, mstring const& name, DeclPlace const& at) {
        if (alone(name) == db)
            errorAt(at, "#1 #2 is named like the database: the Java and C# bindings would declare #3 twice", kind,
                    name, db);
        return !failed();
    };
    forEachIn<Class>(m_schema.m_classes,
                     [&check](Class& c) { return c.m_isSystem || check("class", c.m_name, c.m_place); });
    forEachIn<Struct>(m_schema.m_types, [&check](Struct& s) {
        return s.m_category != TC_STRUCT && s.m_category != TC_DIRECT ? true : check("struct", s.m_name, s.m_place);
    });
    forEachIn<Enum>(m_schema.m_enums, [&check](Enum& e) { return check("enum", e.m_name, e.m_place); });
}
