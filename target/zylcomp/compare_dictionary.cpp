// zyl_dict_compare: what changed between the dictionary the data was
// written with and a new one, and whether the old data and old peers can
// still be read as they are.
//
// Only the records are read, so a dictionary from a generated {db}.c
// compares like one built in memory. Classes are matched by name, fields
// by path inside their class, indexes by name inside their class. A class
// "holds data" when the old dictionary made it persistent (its objects and
// indexes are stored) or distributed (peers exchange its objects): changes
// to the objects of such a class are breaking, while the same changes to
// a class whose objects live and die with one process are compatible.
// The rules are written down in doc/compare.md.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "zylcomp.h"

namespace {

constexpr std::uint32_t kNone32 = 0xFFFFFFFFu;

std::string num(long long v) { return std::to_string(v); }

// One dictionary with the look-ups the comparison needs.
class Dict {
public:
    explicit Dict(zyl_dictionary_t const& d) : d(d) {
        for (unsigned code = 1; code <= d.n_class_codes; code++) {
            names.push_back(className(code));
            byName.emplace(names.back(), code);
        }
    }

    // A class without a recorded name (the C form of inline functions
    // omits them) is known by its code.
    std::string className(unsigned code) const {
        char const* n = d.str_class_names != nullptr ? d.str_class_names[code] : nullptr;
        return n != nullptr ? std::string(n) : "#" + num(code);
    }
    std::string const& name(unsigned code) const { return names[code - 1]; }
    unsigned code(std::string const& n) const {
        auto it = byName.find(n);
        return it == byName.end() ? 0 : it->second;
    }
    zyl_dict_class_info_t const& info(unsigned code) const { return d.v_class_info[code]; }
    zyl_dict_struct_t const* structOf(unsigned code) const { return info(code).struct_ptr; }
    zyl_dict_struct_t const* structAt(std::int32_t n) const {
        return n >= 0 && n < d.n_structs && d.v_all_struct != nullptr ? &d.v_all_struct[n] : nullptr;
    }
    bool compact(unsigned code) const { return (info(code).flags & ZYL_CLASS_COMPACT) != 0; }
    bool persistent(unsigned code) const { return (info(code).flags & ZYL_CLASS_PERSISTENT) != 0; }
    bool holdsData(unsigned code) const {
        return (info(code).flags & (ZYL_CLASS_PERSISTENT | ZYL_CLASS_DISTRIBUTED)) != 0;
    }
    // The class's indexes: places in v_desc_indexes.
    unsigned firstIndex(unsigned code) const { return info(code).first_index_num; }
    unsigned indexCount(unsigned code) const {
        zyl_dict_class_info_t const& c = info(code);
        return c.first_index_num == ZYL_DICT_NONE16 || d.v_desc_indexes == nullptr
                   ? 0
                   : static_cast<unsigned>(c.last_index_num - c.first_index_num + 1);
    }
    // The name of index `n` without its "{class}." or, when none was
    // recorded, its place in the class.
    std::string indexName(unsigned code, unsigned n) const {
        char const* full = d.str_index_names != nullptr ? d.str_index_names[n] : nullptr;
        if (full == nullptr)
            return "#" + num(n - firstIndex(code));
        char const* dot = std::strchr(full, '.');
        return dot != nullptr ? dot + 1 : full;
    }
    std::string collation(unsigned id) const {
        if (id == ZYL_DICT_NONE16)
            return "";
        if (id < d.n_desc_colls && d.v_desc_colls != nullptr && d.v_desc_colls[id].name != nullptr)
            return d.v_desc_colls[id].name;
        return "#" + num(id);
    }

    zyl_dictionary_t const& d;

private:
    std::vector<std::string> names;
    std::unordered_map<std::string, unsigned> byName;
};

char const* seqElement(int code) {
    switch (code) {
    case ZYL_FT_SEQ_UINT1: return "unsigned<1>";
    case ZYL_FT_SEQ_UINT2: return "unsigned<2>";
    case ZYL_FT_SEQ_UINT4: return "unsigned<4>";
    case ZYL_FT_SEQ_UINT8: return "unsigned<8>";
    case ZYL_FT_SEQ_INT1: return "signed<1>";
    case ZYL_FT_SEQ_INT2: return "signed<2>";
    case ZYL_FT_SEQ_INT4: return "signed<4>";
    case ZYL_FT_SEQ_INT8: return "signed<8>";
    case ZYL_FT_SEQ_FLOAT: return "float";
    case ZYL_FT_SEQ_DOUBLE: return "double";
    case ZYL_FT_SEQ_DATETIME: return "datetime";
    default: return nullptr;
    }
}

// The type of a field in the schema language, as far as the dictionary
// tells it: an enum shows as the integer it is stored in.
std::string typeText(Dict const& D, zyl_dict_field_t const& f) {
    std::string const size = num(f.field_size);
    std::string t;
    switch (f.field_el_type) {
    case ZYL_FT_UINT1: t = "unsigned<1>"; break;
    case ZYL_FT_UINT2: t = "unsigned<2>"; break;
    case ZYL_FT_UINT4: t = "unsigned<4>"; break;
    case ZYL_FT_INT1: t = "signed<1>"; break;
    case ZYL_FT_INT2: t = "signed<2>"; break;
    case ZYL_FT_INT4: t = "signed<4>"; break;
    case ZYL_FT_CHARS: t = "char<" + size + ">"; break;
    case ZYL_FT_STRING: t = "string"; break;
    case ZYL_FT_OID_REF: t = "ref"; break;
    case ZYL_FT_FLOAT: t = "float"; break;
    case ZYL_FT_DOUBLE: t = "double"; break;
    case ZYL_FT_UINT8: t = "unsigned<8>"; break;
    case ZYL_FT_INT8: t = f.refto_class != ZYL_DICT_NONE16 ? "autoid_t" : "signed<8>"; break;
    case ZYL_FT_AUTOID: t = "autoid"; break;
    case ZYL_FT_VERSION: t = "version"; break;
    case ZYL_FT_DATE: t = "date"; break;
    case ZYL_FT_TIME: t = "time"; break;
    case ZYL_FT_AUTO_OID: t = "auto_oid"; break;
    case ZYL_FT_NCHARS: t = "nchar<" + num(f.field_size / 2) + ">"; break;
    case ZYL_FT_NSTRING: t = "nstring"; break;
    case ZYL_FT_BOOLEAN: t = "boolean"; break;
    case ZYL_FT_DATETIME: t = "datetime"; break;
    case ZYL_FT_BINARY: t = "binary<" + size + ">"; break;
    case ZYL_FT_VARBINARY: t = "varbinary"; break;
    case ZYL_FT_BLOB: t = "blob"; break;
    case ZYL_FT_STRUCT: {
        zyl_dict_struct_t const* s = D.structAt(f.struct_num);
        t = s != nullptr && s->name != nullptr ? s->name : "struct #" + num(f.struct_num);
        break;
    }
    default:
        if (char const* e = seqElement(f.field_el_type))
            t = std::string("sequence<") + e + ">";
        else if (f.field_el_type == ZYL_FT_SEQ_CHARS)
            t = "sequence<" + num(f.seq_elem_size) + "-byte element>";
        else
            t = "type " + num(f.field_el_type);
        break;
    }
    if (f.seq_order == ZYL_DICT_SEQ_ASC)
        t += " asc";
    else if (f.seq_order == ZYL_DICT_SEQ_DESC)
        t += " desc";
    if (f.refto_class != ZYL_DICT_NONE16) {
        unsigned const c = f.refto_class;
        t += "<" + (c >= 1 && c <= D.d.n_class_codes ? D.name(c) : "#" + num(c)) + ">";
    }
    if (f.flags & ZYL_FIELD_NUMERIC)
        t += " with " + num(f.precision) + " digits after the point";
    return t;
}

// Single, array or vector, as the field's declaration says it.
std::string shapeText(zyl_dict_field_t const& f) {
    if (f.flags & ZYL_FIELD_VECTOR)
        return "a vector";
    if (f.flags & ZYL_FIELD_ARRAY)
        return f.array_size != 0 ? "an array of " + num(f.array_size) : "a bit array";
    return "a single value";
}

class Comparer {
public:
    Comparer(zyl_dictionary_t const& o, zyl_dictionary_t const& n, zyl_dict_change_callback_t cb, void* ctx)
        : O(o), N(n), m_cb(cb), m_ctx(ctx) {}

    int run() {
        schemaSettings();
        collations();
        classes();
        return m_breaking;
    }

private:
    // Everything about one finding but its message.
    struct About {
        About(char const* subject, std::string cls, std::string item, bool inOld = false,
              std::string holder = std::string(), int declNo = -1)
            : subject(subject), cls(std::move(cls)), item(std::move(item)), inOld(inOld),
              holder(std::move(holder)), declNo(declNo) {}

        char const* subject;
        std::string cls;
        std::string item;
        bool inOld;
        std::string holder;
        int declNo;
    };

    void report(bool breaking, char const* code, About const& a, std::string const& message) {
        if (breaking)
            m_breaking++;
        if (m_cb == nullptr)
            return;
        zyl_dict_change_t c;
        c.kind = breaking ? ZYL_CHANGE_BREAKING : ZYL_CHANGE_COMPATIBLE;
        c.code = code;
        c.subject = a.subject;
        c.class_name = a.cls.c_str();
        c.item = a.item.c_str();
        c.message = message.c_str();
        c.in_old = a.inOld ? 1 : 0;
        c.holder = a.holder.c_str();
        c.decl_no = a.declNo;
        m_cb(&c, m_ctx);
    }

    static About schemaItem() { return About{"schema", "", ""}; }

    // -- the schema's own settings -------------------------------------------

    void schemaSettings() {
        zyl_dictionary_t const& o = O.d;
        zyl_dictionary_t const& n = N.d;
        std::uint32_t const wide = ZYL_SCHEMA_WIDE_OFFSETS, keep = ZYL_SCHEMA_KEEP_FIELD_ORDER;
        if ((o.flags & wide) != (n.flags & wide))
            report(true, "schema-flags", schemaItem(),
                   (n.flags & wide) ? "offsets changed from 4 to 8 bytes" : "offsets changed from 8 to 4 bytes");
        if ((o.flags & keep) != (n.flags & keep))
            report(true, "schema-flags", schemaItem(),
                   (n.flags & keep) ? "fields are now kept in declared order"
                                    : "fields are no longer kept in declared order");
        if ((o.flags & ~(wide | keep)) != (n.flags & ~(wide | keep)))
            report(true, "schema-flags", schemaItem(),
                   "dictionary flags changed from " + num(o.flags) + " to " + num(n.flags));
        if (o.oid_is_supported != n.oid_is_supported)
            report(true, "oid-type", schemaItem(),
                   n.oid_is_supported ? "the schema now declares an oid" : "the schema no longer declares an oid");
        else if (o.exact_OID_sizeof != n.exact_OID_sizeof || o.layout_OID_size != n.layout_OID_size)
            report(true, "oid-type", schemaItem(),
                   "the oid type changed from " + num(o.exact_OID_sizeof) + " bytes (" + num(o.layout_OID_size) +
                       " packed) to " + num(n.exact_OID_sizeof) + " bytes (" + num(n.layout_OID_size) +
                       " packed)");
        if (o.auto_oid_supported != n.auto_oid_supported)
            report(true, "auto-oid", schemaItem(),
                   n.auto_oid_supported ? "the schema now declares auto_oid"
                                        : "the schema no longer declares auto_oid");
    }

    // -- collations -----------------------------------------------------------

    static char const* collationKind(std::uint32_t kind) {
        switch (kind) {
        case ZYL_FT_CHARS: return "char";
        case ZYL_FT_NCHARS: return "nchar";
        case ZYL_FT_WCHARS: return "wide char";
        default: return "unused";
        }
    }

    // True when an index of a persistent class of the old dictionary
    // orders its stored keys by collation `name`.
    bool storedOrder(char const* name) const {
        zyl_dictionary_t const& d = O.d;
        for (unsigned i = 0; i < d.n_desc_indexes && d.v_desc_indexes != nullptr; i++) {
            zyl_dict_index_t const& x = d.v_desc_indexes[i];
            if (!(x.flags & ZYL_INDEX_PERSISTENT))
                continue;
            for (unsigned k = 0; k < x.numof_fields && x.fields != nullptr; k++)
                if (x.fields[k].collation_id != ZYL_DICT_NONE16 && O.collation(x.fields[k].collation_id) == name)
                    return true;
        }
        return false;
    }

    void collations() {
        auto find = [](Dict const& D, char const* name) -> zyl_dict_collation_t const* {
            for (unsigned i = 0; i < D.d.n_desc_colls && D.d.v_desc_colls != nullptr; i++)
                if (D.d.v_desc_colls[i].name != nullptr && std::strcmp(D.d.v_desc_colls[i].name, name) == 0)
                    return &D.d.v_desc_colls[i];
            return nullptr;
        };
        for (unsigned i = 0; i < N.d.n_desc_colls && N.d.v_desc_colls != nullptr; i++) {
            zyl_dict_collation_t const& c = N.d.v_desc_colls[i];
            if (c.name == nullptr)
                continue;
            About const a{"collation", "", c.name};
            zyl_dict_collation_t const* old = find(O, c.name);
            if (old == nullptr)
                report(false, "collation-added", a, std::string("collation ") + c.name + " added");
            else if (old->type != c.type)
                report(storedOrder(c.name), "collation-kind", a,
                       std::string("collation ") + c.name + " changed from " + collationKind(old->type) +
                           " to " + collationKind(c.type) + " keys");
        }
        for (unsigned i = 0; i < O.d.n_desc_colls && O.d.v_desc_colls != nullptr; i++) {
            zyl_dict_collation_t const& c = O.d.v_desc_colls[i];
            if (c.name != nullptr && find(N, c.name) == nullptr) {
                About a{"collation", "", c.name};
                a.inOld = true;
                report(storedOrder(c.name), "collation-removed", a, std::string("collation ") + c.name + " removed");
            }
        }
    }

    // -- classes --------------------------------------------------------------

    // What a class's objects look like, for telling a renamed class from
    // one removed and another added.
    std::string layoutKey(Dict const& D, unsigned code) const {
        zyl_dict_class_info_t const& c = D.info(code);
        zyl_dict_struct_t const* s = D.structOf(code);
        std::string k = num(c.flags) + "/" + num(c.fixedsize) + "/" + num(static_cast<long long>(c.init_size));
        if (s == nullptr)
            return k;
        k += "/" + num(s->c_size) + "/" + num(s->u_size) + "/" + num(s->c_align) + "/" + num(s->u_align);
        for (unsigned i = 0; i < s->n_fields; i++) {
            zyl_dict_field_t const& f = s->fields[i];
            k += "|" + std::string(f.name != nullptr ? f.name : "") + ":" + typeText(D, f) + ":" + num(f.flags) +
                 ":" + num(f.array_size) + ":" + num(f.layout.c_offset) + ":" + num(f.layout.u_offset);
        }
        return k;
    }

    void classes() {
        // Gone and new names; a gone class whose layout a new one repeats
        // is taken as renamed.
        std::vector<unsigned> gone, added;
        for (unsigned c = 1; c <= O.d.n_class_codes; c++)
            if (N.code(O.name(c)) == 0)
                gone.push_back(c);
        for (unsigned c = 1; c <= N.d.n_class_codes; c++)
            if (O.code(N.name(c)) == 0)
                added.push_back(c);
        std::unordered_map<unsigned, unsigned> renamedFrom;  // new code -> old code
        std::vector<bool> goneTaken(gone.size(), false);
        if (!gone.empty() && !added.empty()) {
            std::vector<std::string> goneKeys;
            for (unsigned c : gone)
                goneKeys.push_back(layoutKey(O, c));
            for (unsigned c : added) {
                std::string const k = layoutKey(N, c);
                for (size_t g = 0; g < gone.size(); g++)
                    if (!goneTaken[g] && goneKeys[g] == k) {
                        goneTaken[g] = true;
                        renamedFrom[c] = gone[g];
                        break;
                    }
            }
        }

        for (unsigned c = 1; c <= N.d.n_class_codes; c++) {
            std::string const& name = N.name(c);
            About const a{"class", name, ""};
            unsigned const old = O.code(name);
            if (old != 0) {
                oneClass(old, c);
                continue;
            }
            auto r = renamedFrom.find(c);
            if (r != renamedFrom.end())
                report(O.holdsData(r->second), "class-renamed", a,
                       "class " + O.name(r->second) + " looks renamed to " + name + ": the same layout");
            else
                report(false, "class-added", a, "class " + name + " added");
        }
        for (size_t g = 0; g < gone.size(); g++) {
            if (goneTaken[g])
                continue;
            About a{"class", O.name(gone[g]), ""};
            a.inOld = true;
            report(O.holdsData(gone[g]), "class-removed", a, "class " + a.cls + " removed");
        }
    }

    void flagChange(unsigned oc, unsigned nc, std::uint32_t flag, bool breaking, char const* code,
                    char const* became, char const* left) {
        bool const was = (O.info(oc).flags & flag) != 0, is = (N.info(nc).flags & flag) != 0;
        if (was != is)
            report(breaking, code, About{"class", N.name(nc), ""},
                   "class " + N.name(nc) + " " + (is ? became : left));
    }

    void oneClass(unsigned oc, unsigned nc) {
        std::string const& name = N.name(nc);
        About const a{"class", name, ""};
        bool const kept = O.holdsData(oc);
        if (oc != nc)
            report(true, "class-code", a, "class " + name + " moved from class code " + num(oc) + " to " + num(nc));
        // Stored objects are lost when the class stops being persistent; a
        // class that becomes persistent has none stored yet.
        flagChange(oc, nc, ZYL_CLASS_PERSISTENT, O.persistent(oc), "class-persistent", "became persistent",
                   "became transient");
        flagChange(oc, nc, ZYL_CLASS_COMPACT, kept, "class-compact", "became compact", "is no longer compact");
        flagChange(oc, nc, ZYL_CLASS_DISTRIBUTED, true, "class-distributed", "became distributed",
                   "is no longer distributed");
        flagChange(oc, nc, ZYL_CLASS_LOCAL, true, "class-local", "became local", "is no longer local");

        zyl_dict_class_info_t const& oi = O.info(oc);
        zyl_dict_class_info_t const& ni = N.info(nc);
        zyl_dict_struct_t const* os = O.structOf(oc);
        zyl_dict_struct_t const* ns = N.structOf(nc);
        std::string sizes;
        auto part = [](std::string& out, char const* what, long long was, long long is) {
            if (was != is)
                out += std::string(out.empty() ? "" : ", ") + what + " " + num(was) + " to " + num(is);
        };
        part(sizes, "fixed", oi.fixedsize, ni.fixedsize);
        part(sizes, "initial", static_cast<long long>(oi.init_size), static_cast<long long>(ni.init_size));
        if (os != nullptr && ns != nullptr) {
            part(sizes, "compact", os->c_size, ns->c_size);
            part(sizes, "large", os->u_size, ns->u_size);
        }
        if (!sizes.empty())
            report(kept, "class-size", a, "class " + name + " changed its object size: " + sizes);
        if (os != nullptr && ns != nullptr) {
            std::string aligns;
            part(aligns, "compact", os->c_align, ns->c_align);
            part(aligns, "large", os->u_align, ns->u_align);
            if (!aligns.empty())
                report(kept, "class-align", a, "class " + name + " changed its alignment: " + aligns);
            fields(os, ns, name, name, "", kept, 0);
        }
        indexes(oc, nc);
        events(oc, nc);
    }

    // -- fields ---------------------------------------------------------------

    static std::vector<zyl_dict_field_t const*> byName(zyl_dict_struct_t const* s) {
        std::vector<zyl_dict_field_t const*> v;
        for (unsigned i = 0; i < s->n_fields; i++)
            if (s->fields[i].name != nullptr)
                v.push_back(&s->fields[i]);
        std::sort(v.begin(), v.end(), [](zyl_dict_field_t const* a, zyl_dict_field_t const* b) {
            return std::strcmp(a->name, b->name) < 0;
        });
        return v;
    }

    // The fields of struct `os` against those of `ns`, both held by class
    // `cls`, their paths beginning with `prefix`.
    void fields(zyl_dict_struct_t const* os, zyl_dict_struct_t const* ns, std::string const& cls,
                std::string const& holder, std::string const& prefix, bool kept, int depth) {
        // A struct holds itself only through a vector, and the records
        // never loop; the bound is for records that do.
        if (depth > 64)
            return;
        std::vector<zyl_dict_field_t const*> const ov = byName(os), nv = byName(ns);
        std::string const oldHolder = os->name != nullptr ? os->name : cls;
        size_t i = 0, j = 0;
        while (i < ov.size() || j < nv.size()) {
            int const cmp = i == ov.size() ? 1 : j == nv.size() ? -1 : std::strcmp(ov[i]->name, nv[j]->name);
            if (cmp < 0) {
                zyl_dict_field_t const& f = *ov[i++];
                About a{"field", cls, prefix + f.name, true, oldHolder, f.order_no};
                report(kept, "field-removed", a, "field " + a.item + " of class " + cls + " removed");
            } else if (cmp > 0) {
                zyl_dict_field_t const& f = *nv[j++];
                About const a{"field", cls, prefix + f.name, false, holder, f.order_no};
                report(false, "field-added", a, "field " + a.item + " of class " + cls + " added");
            } else {
                field(*ov[i++], *nv[j++], cls, holder, prefix, kept, depth);
            }
        }
    }

    void field(zyl_dict_field_t const& of, zyl_dict_field_t const& nf, std::string const& cls,
               std::string const& holder, std::string const& prefix, bool kept, int depth) {
        About const a{"field", cls, prefix + nf.name, false, holder, nf.order_no};
        std::string const what = "field " + a.item + " of class " + cls;
        std::string const ot = typeText(O, of), nt = typeText(N, nf);
        bool const retyped = ot != nt || of.field_size != nf.field_size;
        if (ot != nt)
            report(kept, "field-type", a, what + " changed type from " + ot + " to " + nt);
        else if (of.field_size != nf.field_size)
            report(kept, "field-type", a,
                   what + " changed size from " + num(of.field_size) + " to " + num(nf.field_size) + " bytes");
        std::uint8_t const shape = ZYL_FIELD_VECTOR | ZYL_FIELD_ARRAY;
        if ((of.flags & shape) != (nf.flags & shape) || of.array_size != nf.array_size)
            report(kept, "field-array", a, what + " changed from " + shapeText(of) + " to " + shapeText(nf));
        if ((of.flags & ZYL_FIELD_NULLABLE) != (nf.flags & ZYL_FIELD_NULLABLE))
            report(kept, "field-nullable", a,
                   what + ((nf.flags & ZYL_FIELD_NULLABLE) ? " became nullable" : " is no longer nullable"));
        if ((of.flags & ZYL_FIELD_OPTIONAL) != (nf.flags & ZYL_FIELD_OPTIONAL))
            report(kept, "field-optional", a,
                   what + ((nf.flags & ZYL_FIELD_OPTIONAL) ? " became optional" : " is no longer optional"));

        std::string moved;
        auto part = [&moved](char const* w, long long was, long long is) {
            if (was != is)
                moved += std::string(moved.empty() ? "" : ", ") + w + " " + num(was) + " to " + num(is);
        };
        zyl_dict_field_layout_t const& ol = of.layout;
        zyl_dict_field_layout_t const& nl = nf.layout;
        part("compact offset", ol.c_offset, nl.c_offset);
        // A new type brings its own size; that was said already.
        if (!retyped)
            part("compact size", ol.c_size, nl.c_size);
        part("compact alignment", ol.c_align, nl.c_align);
        part("large offset", ol.u_offset, nl.u_offset);
        if (!retyped)
            part("large size", ol.u_size, nl.u_size);
        part("large alignment", ol.u_align, nl.u_align);
        if (!moved.empty())
            report(kept, "field-layout", a, what + " changed its place: " + moved);

        if (of.field_el_type == ZYL_FT_STRUCT && nf.field_el_type == ZYL_FT_STRUCT) {
            zyl_dict_struct_t const* os = O.structAt(of.struct_num);
            zyl_dict_struct_t const* ns = N.structAt(nf.struct_num);
            if (os != nullptr && ns != nullptr)
                fields(os, ns, cls, ns->name != nullptr ? ns->name : cls, a.item + ".", kept, depth + 1);
        }
    }

    // -- indexes --------------------------------------------------------------

    static std::uint32_t offsetIn(zyl_dict_field_t const& f, bool compact) {
        return compact ? f.layout.c_offset : f.layout.u_offset;
    }

    // The path of the field that key `k` reads, found by its number and
    // place; "#{no}" when the records do not lead to it.
    static std::string keyPath(Dict const& D, unsigned code, zyl_dict_index_field_t const& k) {
        bool const compact = D.compact(code);
        zyl_dict_struct_t const* s = D.structOf(code);
        if (s == nullptr)
            return "#" + num(k.fld_no);
        std::string prefix;
        if (k.vect_field_offset != kNone32) {
            zyl_dict_field_t const* holder = nullptr;
            for (unsigned i = 0; i < s->n_fields && holder == nullptr; i++)
                if ((s->fields[i].flags & (ZYL_FIELD_VECTOR | ZYL_FIELD_ARRAY)) &&
                    offsetIn(s->fields[i], compact) == k.vect_field_offset)
                    holder = &s->fields[i];
            if (holder == nullptr || holder->name == nullptr)
                return "#" + num(k.fld_no);
            s = holder->field_el_type == ZYL_FT_STRUCT ? D.structAt(holder->struct_num) : nullptr;
            if (s == nullptr)
                return holder->name;
            prefix = std::string(holder->name) + ".";
        }
        std::uint32_t at = k.field_offset;
        for (int depth = 0; s != nullptr && depth < 64; depth++) {
            zyl_dict_struct_t const* inner = nullptr;
            for (unsigned i = 0; i < s->n_fields; i++) {
                zyl_dict_field_t const& f = s->fields[i];
                std::uint32_t const off = offsetIn(f, compact);
                if (f.name == nullptr)
                    continue;
                if (f.field_el_type != ZYL_FT_STRUCT && f.no == k.fld_no && off == at)
                    return prefix + f.name;
                std::uint32_t const size = compact ? f.layout.c_size : f.layout.u_size;
                if (f.field_el_type == ZYL_FT_STRUCT && !(f.flags & (ZYL_FIELD_VECTOR | ZYL_FIELD_ARRAY)) &&
                    at >= off && at < off + size && inner == nullptr) {
                    inner = D.structAt(f.struct_num);
                    prefix += std::string(f.name) + ".";
                    at -= off;
                }
            }
            s = inner;
        }
        return "#" + num(k.fld_no);
    }

    static char const* kindText(unsigned impl) {
        switch (impl) {
        case ZYL_INDEX_IMPL_TREE: return "tree";
        case ZYL_INDEX_IMPL_INCLUSIVE_TREE: return "inclusive tree";
        case ZYL_INDEX_IMPL_DISK_TREE: return "stored tree or hash";
        case ZYL_INDEX_IMPL_HASH: return "hash";
        case ZYL_INDEX_IMPL_KDTREE:
        case ZYL_INDEX_IMPL_DISK_KDTREE: return "kdtree";
        case ZYL_INDEX_IMPL_RTREE:
        case ZYL_INDEX_IMPL_DISK_RTREE: return "rtree";
        case ZYL_INDEX_IMPL_PATRICIA:
        case ZYL_INDEX_IMPL_DISK_PATRICIA: return "patricia";
        case ZYL_INDEX_IMPL_TRIGRAM:
        case ZYL_INDEX_IMPL_DISK_TRIGRAM: return "trigram";
        case ZYL_INDEX_IMPL_LIST: return "list";
        default: return "unknown";
        }
    }

    struct Key {
        std::string path, type, collation;
        bool desc, nocase;
    };

    static std::vector<Key> keys(Dict const& D, unsigned code, zyl_dict_index_t const& x) {
        std::vector<Key> v;
        for (unsigned k = 0; k < x.numof_fields && x.fields != nullptr; k++) {
            zyl_dict_index_field_t const& f = x.fields[k];
            zyl_dict_field_t probe = {};
            probe.field_el_type = f.field_type;
            probe.field_size = f.field_size;
            probe.refto_class = ZYL_DICT_NONE16;
            v.push_back(Key{keyPath(D, code, f), typeText(D, probe), D.collation(f.collation_id),
                            (f.fld_flags & ZYL_KEY_DESC) != 0, (f.fld_flags & ZYL_KEY_NOCASE) != 0});
        }
        return v;
    }

    static std::string keyList(std::vector<Key> const& v) {
        std::string s;
        for (Key const& k : v)
            s += (s.empty() ? "" : ", ") + k.path + " " + k.type;
        return "<" + s + ">";
    }

    void indexes(unsigned oc, unsigned nc) {
        std::string const& cls = N.name(nc);
        // Stored indexes belong to persistent classes; the others are built
        // afresh at every start.
        bool const stored = O.persistent(oc) && N.persistent(nc);
        bool const wasStored = O.persistent(oc);
        std::unordered_map<std::string, unsigned> oldByName;
        unsigned const of = O.firstIndex(oc), on = O.indexCount(oc);
        for (unsigned i = 0; i < on; i++)
            oldByName.emplace(O.indexName(oc, of + i), of + i);
        unsigned const nfirst = N.firstIndex(nc), nn = N.indexCount(nc);
        std::vector<bool> seen(on, false);
        for (unsigned i = 0; i < nn; i++) {
            unsigned const n = nfirst + i;
            std::string const name = N.indexName(nc, n);
            About const a{"index", cls, name, false, "", static_cast<int>(i)};
            std::string const what = "index " + name + " of class " + cls;
            auto it = oldByName.find(name);
            if (it == oldByName.end()) {
                report(false, "index-added", a, what + " added");
                continue;
            }
            unsigned const o = it->second;
            seen[o - of] = true;
            zyl_dict_index_t const& ox = O.d.v_desc_indexes[o];
            zyl_dict_index_t const& nx = N.d.v_desc_indexes[n];
            if (o != n && stored)
                report(true, "index-code", a, what + " moved from index number " + num(o) + " to " + num(n));
            // A class that changes persistence changes the implementation of
            // every index with it; that is the class's change.
            if (ox.impl_no != nx.impl_no && O.persistent(oc) == N.persistent(nc))
                report(stored, "index-kind", a,
                       what + " changed kind from " + kindText(ox.impl_no) + " to " + kindText(nx.impl_no));
            if ((ox.flags & ZYL_INDEX_UNIQUE) != (nx.flags & ZYL_INDEX_UNIQUE))
                report(stored, "index-unique", a,
                       what + ((nx.flags & ZYL_INDEX_UNIQUE) ? " became unique" : " is no longer unique"));
            if ((ox.flags & ZYL_INDEX_THICK) != (nx.flags & ZYL_INDEX_THICK) &&
                !((ox.flags | nx.flags) & ZYL_INDEX_TRIGRAM))
                report(stored, "index-thick", a,
                       what + ((nx.flags & ZYL_INDEX_THICK) ? " became thick" : " is no longer thick"));
            if (ox.userdef_id != nx.userdef_id)
                report(stored, "index-userdef", a,
                       what + " changed its user-defined index number from " + num(ox.userdef_id) + " to " +
                           num(nx.userdef_id));
            std::vector<Key> const ok = keys(O, oc, ox), nk = keys(N, nc, nx);
            bool sameParts = ok.size() == nk.size();
            for (size_t k = 0; sameParts && k < ok.size(); k++)
                sameParts = ok[k].path == nk[k].path && ok[k].type == nk[k].type;
            if (!sameParts) {
                report(stored, "index-keys", a,
                       what + " changed its key parts from " + keyList(ok) + " to " + keyList(nk));
                continue;
            }
            for (size_t k = 0; k < ok.size(); k++) {
                std::string const part = "key part " + nk[k].path + " of " + what;
                if (ok[k].desc != nk[k].desc)
                    report(stored, "index-order", a,
                           part + " changed order from " + (ok[k].desc ? "descending" : "ascending") + " to " +
                               (nk[k].desc ? "descending" : "ascending"));
                if (ok[k].collation != nk[k].collation)
                    report(stored, "index-collation", a,
                           part + " changed collation from " + (ok[k].collation.empty() ? "none" : ok[k].collation) +
                               " to " + (nk[k].collation.empty() ? "none" : nk[k].collation));
                if (ok[k].nocase != nk[k].nocase)
                    report(stored, "index-collation", a,
                           part + (nk[k].nocase ? " became case-insensitive" : " became case-sensitive"));
            }
        }
        for (unsigned i = 0; i < on; i++) {
            if (seen[i])
                continue;
            About const a{"index", O.name(oc), O.indexName(oc, of + i), true, "", static_cast<int>(i)};
            report(wasStored, "index-removed", a, "index " + a.item + " of class " + cls + " removed");
        }
    }

    // -- events ---------------------------------------------------------------

    static std::vector<std::string> eventList(Dict const& D, unsigned code) {
        std::vector<std::string> v;
        zyl_dict_class_info_t const& c = D.info(code);
        if (c.first_event_num == ZYL_DICT_NONE16 || D.d.v_desc_events == nullptr)
            return v;
        zyl_dict_struct_t const* s = D.structOf(code);
        bool const compact = D.compact(code);
        for (unsigned e = c.first_event_num; e <= c.last_event_num && e < D.d.n_desc_events; e++) {
            zyl_dict_event_t const& x = D.d.v_desc_events[e];
            switch (x.flags) {
            case ZYL_EVENT_NEW: v.push_back("event<new>"); break;
            case ZYL_EVENT_DELETE: v.push_back("event<delete>"); break;
            case ZYL_EVENT_DELETE_ALL: v.push_back("event<delete_all>"); break;
            case ZYL_EVENT_CHECKPOINT: v.push_back("event<checkpoint>"); break;
            case ZYL_EVENT_CLASS_UPDATE: v.push_back("event<update>"); break;
            case ZYL_EVENT_FIELD_UPDATE: {
                std::string name = "#" + num(x.fld_no);
                for (unsigned i = 0; s != nullptr && i < s->n_fields; i++)
                    if (s->fields[i].no == x.fld_no && offsetIn(s->fields[i], compact) == x.field_offset &&
                        s->fields[i].name != nullptr)
                        name = s->fields[i].name;
                v.push_back("event<" + name + " update>");
                break;
            }
            default: v.push_back("event of kind " + num(x.flags)); break;
            }
        }
        return v;
    }

    // Events change what the application is told, not what is stored or
    // exchanged: every event change is compatible.
    void events(unsigned oc, unsigned nc) {
        std::vector<std::string> ov = eventList(O, oc), nv = eventList(N, nc);
        std::sort(ov.begin(), ov.end());
        std::sort(nv.begin(), nv.end());
        std::string const& cls = N.name(nc);
        std::vector<std::string> gone, added;
        std::set_difference(ov.begin(), ov.end(), nv.begin(), nv.end(), std::back_inserter(gone));
        std::set_difference(nv.begin(), nv.end(), ov.begin(), ov.end(), std::back_inserter(added));
        for (std::string const& e : added)
            report(false, "event-added", About{"event", cls, e}, "class " + cls + " has a new " + e);
        for (std::string const& e : gone) {
            About a{"event", cls, e};
            a.inOld = true;
            report(false, "event-removed", a, "class " + cls + " no longer has its " + e);
        }
    }

    Dict const O;
    Dict const N;
    zyl_dict_change_callback_t m_cb;
    void* m_ctx;
    int m_breaking = 0;
};

}  // namespace

extern "C" int zyl_dict_compare(const zyl_dictionary_t* old_dict, const zyl_dictionary_t* new_dict,
                                zyl_dict_change_callback_t callback, void* context) {
    if (old_dict == nullptr || new_dict == nullptr)
        return -1;
    for (zyl_dictionary_t const* d : {old_dict, new_dict})
        if (d->magic_number != ZYL_DICT_MAGIC_NUMBER || d->version_major != ZYL_DICT_VERSION_MAJOR ||
            d->version_minor != ZYL_DICT_VERSION_MINOR || d->v_class_info == nullptr)
            return -1;
    return Comparer(*old_dict, *new_dict, callback, context).run();
}
