// Java and C# bindings: declarations that a language binding reads at run
// time through attributes (C#) and annotations (Java); they hold no code.
// All classes and structs stand in {db}.cs; each class, struct and enum has
// a Java file of its own, which opens at the class head and closes at its
// end. Between those files m_java is a null stream, so the field sections
// write their Java lines without testing.
//
// The field lines of strings, characters, structs, blobs and references
// are written by the field sections themselves; here stand those whose
// type has to be mapped: scalars, vectors and arrays of scalars, sequences.
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

namespace {

// The class properties the binding is told, in the order they are written.
struct Property {
    bool Class::*member;
    char const* cs;
    char const* java;
};

Property const kProperties[] = {
    {&Class::m_persistent, "Disk=true", "disk=true"},
    {&Class::m_hasList, "List=true", "list=true"},
    {&Class::m_hasAutoid, "AutoID=true", "autoid=true"},
    {&Class::m_compact, "Compact=true", "compact=true"},
    {&Class::m_local, "Local=true", "local=true"},
    {&Class::m_distributed, "Distributed=true", "distributed=true"},
};

// The binding's name of an index kind; null for the kinds it is not told
// of: a kd-tree, and a list, which is the List property of the class.
char const* indexKind(IndexType type) {
    switch (type) {
        case IT_TREE:
            return "BTree";
        case IT_HASH:
            return "Hash";
        case IT_RTREE:
            return "RTree";
        case IT_PATRICIA:
            return "Patricia";
        case IT_TRIGRAM:
            return "Trigram";
        default:
            return nullptr;
    }
}

// The binding's name of a class event; null for a field's update event,
// which stands at its field.
char const* eventKind(int kind) {
    switch (kind) {
        case EV_NEW:
            return "OnNew";
        case EV_DELETE:
            return "OnDelete";
        case EV_CHECKPOINT:
            return "OnCheckpoint";
        case EV_DELETE_ALL:
            return "OnDeleteAll";
        case EV_CLASS_UPDATE:
            return "OnUpdate";
        default:
            return nullptr;
    }
}

// The binding's name of a sequence order, from the runtime's constant.
char const* sequenceOrder(mstring const& order) {
    if (order == "ZYL_SEQ_ASC_ORDER")
        return "Ascending";
    if (order == "ZYL_SEQ_DESC_ORDER")
        return "Descending";
    return "None";
}

// The binding does not see indexes the compiler made for itself, history
// and kd-tree indexes, user-defined ones, nor voluntary ones, which the
// application builds when it wants them. The list of a class, declared or
// implicit, is an index without key parts; the binding knows it as the
// class's List property.
bool indexIsDeclared(Class const& c, Index const& idx) {
    return !indexIsHidden(idx) && !(c.m_hasHistory && idx.m_name == "history_index@") &&
           indexKind(idx.m_type) != nullptr && !idx.m_userdef && !idx.m_voluntary && idx.v_fieldName.size() > 0;
}

// A struct or enum of the schema, whose name the bindings use as a type.
bool declaredType(Struct const& t) { return t.m_isEnum || t.m_category == TC_STRUCT || t.m_category == TC_DIRECT; }

// The C# type of a scalar; a boolean has its own type there.
mstring csType(Struct const& t) {
    mstring const mapped = UT::mapCSType(t.m_name == "boolean" ? mstring("bool") : t.m_cType);
    return declaredType(t) ? alone(mapped) : mapped;
}

// The Java type of a field's values, or of a sequence's elements (boxed).
mstring javaType(Struct const& t, bool boxed) {
    mstring const mapped = UT::mapJavaType(t.m_cType, t.m_name, boxed);
    return declaredType(t) ? alone(mapped) : mapped;
}

}  // namespace

mstring java_seq_elem_type(mstring const& suffix) {
    // The runtime's families of sequence calls, one constant each: every
    // element the family holds, a date as its unsigned count, a boolean as
    // a byte, binary data and structs as characters of a given size.
    static char const* const kRows[][2] = {
        {"uint1", "UInt1"}, {"uint2", "UInt2"},   {"uint4", "UInt4"}, {"uint8", "UInt8"},
        {"int1", "Int1"},   {"int2", "Int2"},     {"int4", "Int4"},   {"int8", "Int8"},
        {"float", "Float"}, {"double", "Double"}, {"char", "Char"},   {"datetime", "DateTime"},
    };
    for (auto const& row : kRows)
        if (suffix == row[0])
            return row[1];
    return mstring();
}

// ---------------------------------------------------------------------------
// Class heads

void GenOutput::outputClassHead(Class& c) {
    if (m_genJava) {
        IOutStream* file = nullptr;
        if (!openJava(file, c.m_name)) {
            delete file;
            return;
        }
        delete m_java;
        m_java = file;
    }

    mstring cs;
    mstring java;
    for (Property const& p : kProperties) {
        if (!(c.*p.member))
            continue;
        cs += cs.empty() ? "(" : ",";
        cs += p.cs;
        java += java.empty() ? "(" : ",";
        java += p.java;
    }
    *m_cs << "[Persistent" << cs << (cs.empty() ? "" : ")") << "]\n";
    *m_java << "@Persistent" << java << (java.empty() ? "" : ")") << "\n";

    bool first = true;
    for (unsigned i = 0; i < c.v_index.size(); i++) {
        Index const& idx = c.v_index[static_cast<int>(i)];
        if (!indexIsDeclared(c, idx))
            continue;
        char const* kind = indexKind(idx.m_type);
        *m_cs << "[Index(\"" << idx.m_name << "\", Type=Database.IndexType." << kind;
        *m_java << (first ? "@Indexes({" : ", ") << "@Index(name=\"" << idx.m_name << "\", type=Database.IndexType."
                << kind;
        first = false;
        if (idx.m_unique) {
            *m_cs << ", Unique=true";
            *m_java << ", unique=true";
        }
        if (idx.m_thick) {
            *m_cs << ", Thick=true";
            *m_java << ", thick=true";
        }
        *m_cs << ", Keys=new string[]{";
        *m_java << ", keys={";
        mstring orders;
        bool descending = false;
        for (unsigned k = 0; k < idx.v_fieldName.size(); k++) {
            mstring const& path = idx.v_fieldName[static_cast<int>(k)];
            bool const desc = idx.v_desc[static_cast<int>(k)];
            char const* sep = k > 0 ? ", " : "";
            *m_cs << sep << "\"" << path << "\"";
            // Java names the value of an annotation as soon as a second
            // element is given.
            if (desc)
                *m_java << sep << "@Key(value=\"" << path << "\", descending=true)";
            else
                *m_java << sep << "@Key(\"" << path << "\")";
            orders += mstring(sep) + (desc ? "\"desc\"" : "\"asc\"");
            descending = descending || desc;
        }
        *m_cs << "}";
        *m_java << "})";
        if (descending)
            *m_cs << ", Order=new string[]{" << orders << "}";
        *m_cs << ")]\n";
    }
    if (!first)
        *m_java << "})\n";

    for (unsigned i = 0; i < c.v_event.size(); i++) {
        Event const& ev = c.v_event[static_cast<int>(i)];
        char const* kind = eventKind(ev.m_kind);
        if (kind == nullptr)
            continue;
        *m_cs << "[Event(\"" << ev.m_name << "\", EventType." << kind << ")]\n";
        *m_java << "@Event(name=\"" << ev.m_name << "\", type=Database.EventType." << kind << ")\n";
    }

    *m_cs << "public class " << alone(c.m_name) << " {\n";
    *m_java << "public class " << alone(c.m_name) << " {\n";
}

void GenOutput::outputClassEnd(Class&) {
    *m_cs << "}\n\n";
    *m_java << "}\n\n";
    if (m_genJava) {
        delete m_java;
        m_java = IOutStream::createNullStream();
    }
}

// ---------------------------------------------------------------------------
// Fields whose types are mapped

void GenOutput::outputScalarBinding(Field const& f) {
    Struct const& t = *f.m_struct;
    // The type names are looked up only for a binding that is written.
    if (m_genCs)
        *m_cs << "\tpublic " << csType(t) << " " << alone(f.m_name) << ";\n";
    if (m_genJava)
        *m_java << "\tpublic " << javaType(t, false) << " " << alone(f.m_name) << ";\n";
}

void GenOutput::outputElementBinding(Field const& f) {
    Struct const& t = *f.m_struct;
    // A vector that has a dimension counts as a vector.
    if (f.m_isArray && !f.m_isVector) {
        *m_cs << "\t[Dimension(" << f.m_arraySize << ")]\n";
        *m_java << "\t@Dimension(" << f.m_arraySize << ")\n";
    }
    if (m_genCs)
        *m_cs << "\tpublic " << csType(t) << "[] " << alone(f.m_name) << ";\n";
    if (m_genJava)
        *m_java << "\tpublic " << javaType(t, false) << "[] " << alone(f.m_name) << ";\n";
}

void GenOutput::outputSequenceBinding(Field const& f, mstring const& suffix, int elemSize) {
    Struct const& e = *f.m_elemStruct;
    // Elements that travel as characters have their size given: char and
    // binary elements are text as their fields are; a struct element is
    // the bytes of its fixed part, since a struct that only a sequence uses
    // has no declaration of its own.
    bool const chars = suffix == "char";
    bool const structs = e.m_category == TC_STRUCT;
    mstring const cs = structs ? mstring("byte[]") : chars ? mstring("string") : csType(e);
    mstring const java = structs ? mstring("byte[]")
                         : chars ? mstring("String")
                                 : javaType(e, true);
    mstring const size = chars ? mstring(", ElemSize=") + UT::n2s(elemSize) : mstring();
    char const* const order = sequenceOrder(f.m_seqOrder);
    bool const ordered = f.m_seqOrder == "ZYL_SEQ_ASC_ORDER" || f.m_seqOrder == "ZYL_SEQ_DESC_ORDER";

    if (ordered)
        *m_cs << "\t[Sequence(Order=SequenceOrder." << order << size << ")]\n\tpublic OrderedSequence<" << cs << "> "
              << alone(f.m_name) << ";\n";
    else
        *m_cs << "\tpublic UnorderedSequence<" << cs << "> " << alone(f.m_name) << ";\n";

    *m_java << "\t@Sequence(type=Sequence.Type." << java_seq_elem_type(suffix) << ", order=Sequence.Order." << order;
    if (chars)
        *m_java << ", elemSize=" << elemSize;
    *m_java << ")\n\tpublic " << (ordered ? "OrderedSequence<" : "UnorderedSequence<") << java << "> " << alone(f.m_name)
            << ";\n";
}

// ---------------------------------------------------------------------------
// Closing

void GenOutput::closeBindings() {
    delete m_cs;
    m_cs = nullptr;
    delete m_java;
    m_java = nullptr;
}
