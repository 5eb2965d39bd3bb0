// Database-level output: the main loop of the access interface. It writes
// the enumerations, the class handles and codes, the owned structs, the
// fixed structures and the oid, then drives the per-class and per-struct
// sections, in every language at once. Streams of languages that are off
// are null streams, so only the extra Java files are tested for.
//
// System classes are skipped by every step here; they stand last in the
// class set, so the user classes' codes run from 1 without a gap.
#include <memory>

#include "foundation/sets.h"
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

namespace {

template <class T, class Visit>
void forEach(ISet* set, Visit visit) {
    std::unique_ptr<ISet::Pos> pos(set->first());
    for (; pos->valid(); pos->next())
        visit(*static_cast<T*>(pos->get().get()));
}

// Structs that get a handle type and an API: declared ones that a class uses.
bool isOwnedStruct(Struct const& s) {
    return (s.m_category == TC_STRUCT || s.m_category == TC_DIRECT) && s.v_owner.size() > 0;
}

// Some class that uses the struct has an API.
bool hasLiveOwner(Struct const& s) {
    for (unsigned i = 0; i < s.v_owner.size(); i++)
        if (!s.v_owner[static_cast<int>(i)]->m_noApi)
            return true;
    return false;
}

}  // namespace

bool GenOutput::openJava(IOutStream*& slot, mstring const& name) {
    if (!openOutput(slot, alone(name) + ".java"))
        return false;
    if (!m_javaPackage.empty())
        *slot << "package " << m_javaPackage << ";\n\n";
    *slot << "import com.tarnwell.quorabase.*;\n\n";
    return true;
}

void GenOutput::output() {
    Schema& schema = *m_schema;
    mstring const& db = schema.m_dbName;

    if (!m_outOfLine)
        *m_h << "#ifndef ZYL_TARGET_INLINE \n#define ZYL_TARGET_INLINE  __inline\n#endif\n\n";

    // {db}.java, the list of classes, stands in m_java until the handles are written.
    IOutStream* javaBetweenFiles = m_java;
    if (m_genJava) {
        IOutStream* file = nullptr;
        if (!openJava(file, db)) {
            delete file;
            return;
        }
        m_java = file;
        *m_java << "public class " << alone(db) << " { \n\tpublic static Class[] classes = { \n";
    }

    if (!m_csNamespace.empty())
        *m_cs << "namespace " << m_csNamespace << " {\n";
    *m_cs << "using System;\nusing Quorabase;\n\n";

    // A Java file that cannot be made ends the output where it stands.
    bool enumsWritten = outputEnums();
    if (enumsWritten)
        outputHandles();
    if (m_genJava) {
        delete m_java;
        m_java = javaBetweenFiles;
    }
    if (!enumsWritten)
        return;

    outputStructHandles();

    *m_hpp << "\n\n";
    head2(m_h, "Structures for fixed part of the structure");
    forEach<Struct>(schema.m_types, [this](Struct& s) { genFixedStruct(s); });
    forEach<Class>(schema.m_classes, [this](Class& c) {
        if (!c.m_isSystem)
            genFixedStruct(c);
    });
    *m_h << "\n";
    *m_hpp << "\n\n";

    outputObjid();

    bool firstWrapper = true;
    forEach<Class>(schema.m_classes, [this, &firstWrapper](Class& c) {
        if (c.m_isSystem)
            return;
        head2(m_h, mstring("class ") + c.m_name + " methods");
        if (!firstWrapper)
            *m_hpp << "\n";
        firstWrapper = false;
        *m_hpp << "class " << hppClass(c.m_name) << " : public ZylBase_\n{\n  public:\n\n";
        if (!c.m_noApi) {
            outputClassApi(c);
            output(c);
            if (c.v_event.size() > 0) {
                head2(m_h, mstring("class ") + c.m_name + " events");
                outputEvents(c);
            }
        } else {
            // The lists of types name every class, so a hidden one is
            // declared too, without fields.
            outputClassHead(c);
            outputClassEnd(c);
        }
        // A hidden class keeps its XML and JSON access.
        if (m_genXml)
            outputXmlRW(c);
        if (m_genJson)
            outputJsonW(c);
        *m_hpp << "};\n";
    });

    if (!outputStructs())
        return;

    forEach<Struct>(schema.m_types, [this](Struct& s) {
        if (isOwnedStruct(s) && hasLiveOwner(s))
            outputFixed(s);
    });
    forEach<Class>(schema.m_classes, [this](Class& c) {
        if (!c.m_isSystem && !c.m_noApi)
            outputFixed(c);
    });

    *m_hpp << "\n";
    if (!m_csNamespace.empty())
        *m_cs << "}\n";
    // The wrappers' definitions follow all class bodies.
    // Moved, not copied: the text is the largest the generator holds.
    m_hppInline->moveTextTo(*m_hpp);
    *m_hpp << "\n";
}

bool GenOutput::outputEnums() {
    if (m_schema->m_enums->size() == 0)
        return true;
    head2(m_h, "Enumerations");
    bool ok = true;
    forEach<Enum>(m_schema->m_enums, [this, &ok](Enum& e) {
        if (!ok)
            return;
        *m_h << "typedef enum " << e.m_name << "_\n{\n";
        *m_cs << "public enum " << alone(e.m_name) << " {\n";
        std::unique_ptr<IOutStream> java(IOutStream::createNullStream());
        if (m_genJava) {
            IOutStream* file = nullptr;
            ok = openJava(file, e.m_name);
            java.reset(file);
            if (!ok)
                return;
            *java << "public enum " << alone(e.m_name) << " {\n";
        }
        for (unsigned i = 0; i < e.v_elem.size(); i++) {
            Enum::Elem const& item = e.v_elem[static_cast<int>(i)];
            char const* comma = i + 1 < e.v_elem.size() ? "," : "";
            *m_h << "  " << alone(item.m_name) << " = " << item.m_value << comma << "\n";
            *m_cs << "\t" << alone(item.m_name) << " = " << item.m_value << comma << "\n";
            // Java enumerators carry no values; their order is the declaration's.
            *java << "\t" << alone(item.m_name) << comma << "\n";
        }
        *m_h << "} " << alone(e.m_name) << ";\n\n";
        *m_cs << "};\n\n";
        *java << "};\n\n";
    });
    return ok;
}

void GenOutput::outputHandles() {
    head2(m_h, "Handles and Class Codes");
    *m_cs << "public class " << alone(m_schema->m_dbName) << " { \n\tpublic static Type[] types = { \n";
    int n = 0;
    forEach<Class>(m_schema->m_classes, [this, &n](Class& c) {
        if (c.m_isSystem)
            return;
        n++;
        if (n > 1) {
            *m_cs << ",\n";
            *m_java << ",\n";
        }
        *m_cs << "\t\ttypeof(" << alone(c.m_name) << ")";
        *m_java << "\t" << alone(c.m_name) << ".class";
        if (n != c.m_code)
            IErrReporter::panic("class codes order", false);
        if (!c.m_hasOid && !c.m_hasList && !c.m_hasAutoid && c.v_index.size() == 0) {
            DeclFocus const at(m_err, m_schema->declaration("class", c.m_name, c.m_place));
            m_err->warning1("class #1 has no oid, autoid, list, or index defined", c.m_name);
        }
        *m_h << "#ifndef ZYL_CPP_INTERFACE\ntypedef struct " << UT::adjust(c.m_name + "_", m_structNameWidth + 1)
             << " { ZYL_Hf h; }  " << alone(c.m_name) << ";\n#else\nclass " << hppClass(c.m_name) << ";\n#endif\n";
        *m_h << "#define " << UT::adjust(c.m_name + "_code", m_structNameWidth + 6) << " " << c.m_code << "\n";
    });
    *m_cs << "\n\t};\n}\n\n";
    *m_java << "\n\t};\n}\n\n";
}

void GenOutput::outputStructHandles() {
    forEach<Struct>(m_schema->m_types, [this](Struct& s) {
        if (!isOwnedStruct(s))
            return;
        *m_h << "#ifndef ZYL_CPP_INTERFACE\ntypedef struct " << s.m_name << "_ { ZYL_Hf h; }  " << alone(s.m_name)
             << ";\n#else\nstruct " << hppClass(s.m_name) << ";\n#endif\n";
        if (s.m_category != TC_DIRECT)
            return;
        direct_struct_output(s, "");
        // Unpacked, the stored form is the C type itself.
        if (!s.m_packed) {
            *m_h << "#define  " << s.m_name << "_d_aligned_to_1  " << s.m_name << "_d\n";
        } else {
            *m_h << "\n#pragma pack(1)\n";
            direct_struct_output(s, "_aligned_to_1");
            *m_h << "#pragma pack()";
        }
        *m_h << "\n\n";
    });
}

bool GenOutput::outputStructs() {
    bool ok = true;
    forEach<Struct>(m_schema->m_types, [this, &ok](Struct& s) {
        if (!ok || !isOwnedStruct(s))
            return;
        head2(m_h, mstring("struct ") + s.m_name + " methods");
        *m_hpp << "struct " << hppClass(s.m_name) << " : public ZylBase_\n{\n  public:\n\n";
        *m_cs << "public struct " << alone(s.m_name) << " {\n";
        // The struct's fields go to its own Java file.
        IOutStream* javaBetweenFiles = m_java;
        if (m_genJava) {
            IOutStream* file = nullptr;
            ok = openJava(file, s.m_name);
            if (!ok) {
                delete file;
                return;
            }
            m_java = file;
            *m_java << "public class " << alone(s.m_name) << " {\n";
        }
        if (hasLiveOwner(s))
            output(s, nullptr);
        *m_cs << "}\n\n";
        *m_java << "}\n\n";
        if (m_genJava) {
            delete m_java;
            m_java = javaBetweenFiles;
        }
        *m_hpp << "}; // " << s.m_name << "\n";
    });
    return ok;
}
