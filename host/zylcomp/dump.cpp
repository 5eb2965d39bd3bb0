// The schema dump: every model object prints itself as indented mark-up.
//
// The dump shows the model after layout, so it is where symbolic sizes can
// be read. Every attribute is `{key}="{value}" `, a blank behind each, the
// last too; values are not escaped (names are identifiers), only angle
// brackets become braces (see A()). Children stand two blanks deeper. The
// blank behind some end tags and not others is the format as readers know it.
#include <memory>

#include "foundation/outstream.h"
#include "foundation/sets.h"
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

namespace {

mstring pad(int indent) {
    mstring blanks;
    for (int i = 0; i < indent; i++)
        blanks += ' ';
    return blanks;
}

mstring flag(char const* key, bool value) { return A(key, value ? "true" : "false"); }

mstring num(char const* key, int value) { return A(key, UT::n2s(value)); }

mstring size(char const* key, FSize const& value) { return A(key, value); }

char const* indexKind(IndexType type) {
    switch (type) {
    case IT_TREE:
        return "Tree";
    case IT_HASH:
        return "Hash";
    case IT_KDTREE:
        return "KD-Tree";
    case IT_LIST:
        return "L2-List";
    default:
        // rtree, patricia and trigram have no name of their own here.
        return "unknown";
    }
}

template <class T, class Visit>
void forEach(ISet* set, Visit visit) {
    std::unique_ptr<ISet::Pos> pos(set->first());
    for (; pos->valid(); pos->next())
        visit(*static_cast<T const*>(pos->get().get()));
}

}  // namespace

void Schema::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    out << p << "<schema " << A("dbName", m_dbName) << A("idType", m_idType) << ">\n";
    forEach<Class>(m_classes, [&out, indent](Class const& c) {
        c.dump(out, indent + 2);
        out << "\n";
    });
    out << "\n";
    forEach<Struct>(m_types, [&out, indent](Struct const& s) {
        s.dump(out, indent + 2);
        out << "\n";
    });
    out << p << "</schema> \n";
}

void Class::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    out << p << "<class " << A("name", m_name) << num("code", m_code) << flag("id", m_hasOid)
        << flag("compact", m_compact) << flag("has_blobs", m_hasBlobs) << flag("has_sequences", m_hasSequences)
        << flag("list", m_hasList) << ">\n";
    for (unsigned i = 0; i < v_index.size(); i++)
        v_index[i].dump(out, indent + 2);
    Struct::dump(out, indent + 2);
    out << p << "</class>\n";
}

void Struct::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    out << p << "<struct " << num("category", m_category) << A("name", m_name) << flag("dynamic", m_isDynamic)
        << flag("has_blobs", m_hasBlobs) << flag("has_sequences", m_hasSequences) << A("c_type", m_cType)
        << ">\n";
    for (unsigned i = 0; i < v_field.size(); i++)
        v_field[i].dump(out, indent + 2);
    m_layout.dump(out, indent + 2);
    out << p << "</struct>\n";
}

void Field::dump(IOutStream& out, int indent) const {
    out << pad(indent) << "<field " << A("t", m_typeName) << A("name", m_name) << flag("vect", m_isVector)
        << flag("opt", m_isOptional) << "/>\n";
}

void Index::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    out << p << "<index " << A("name", m_name) << flag("unique", m_unique) << flag("thick", m_thick)
        << A("type", indexKind(m_type)) << num("code", m_code) << flag("voluntary", m_voluntary)
        << flag("vbased", m_vbased >= 0) << num("ecount", ecount) << ">\n";
    for (unsigned i = 0; i < v_segment.size(); i++)
        v_segment[i].dump(out, indent + 2);
    out << p << "</index> \n";
}

void Index::Segment::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    out << p << "<indfield " << flag("vbased", m_isVector) << ">\n";
    for (unsigned i = 0; i < v_fldEl.size(); i++)
        v_fldEl[i].dump(out, indent + 2);
    out << p << "</indfield> \n";
}

void Index::FldEl::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    out << p << "<fel " << A("name", m_name) << ">\n";
    if (m_field != nullptr)
        m_field->dump(out, indent + 2);
    out << p << "</fel> \n";
}

void Layout2::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    mstring const q = pad(indent + 2);
    out << p << "<layout2>\n" << q << "<compact>\n";
    compact.dump(out, indent + 4);
    out << q << "</compact>\n" << q << "<large>\n";
    large.dump(out, indent + 4);
    out << q << "</large>\n" << p << "</layout2>\n";
}

void Layout::dump(IOutStream& out, int indent) const {
    mstring const p = pad(indent);
    out << p << "<layout " << size("sz", m_size) << size("a", m_align);
    if (v_fld.size() == 0) {
        out << "/>\n";
        return;
    }
    out << ">\n";
    for (unsigned i = 0; i < v_fld.size(); i++) {
        FldLayout const& f = v_fld[i];
        mstring const name = f.m_field != nullptr ? f.m_field->m_name : mstring();
        out << pad(indent + 2) << "<fld " << A("name", name) << size("sz", f.m_size) << size("a", f.m_align)
            << size("offs", f.m_offset) << "/>\n";
    }
    out << p << "</layout>\n";
}

void GenOutput::dump(IOutStream& out) { m_schema->dump(out, 0); }
