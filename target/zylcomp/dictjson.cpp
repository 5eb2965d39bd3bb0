// A dictionary as JSON: one object keyed by the member names of
// zyl_dictionary_t, every pointer replaced by what it points to. It reads
// only the records, so it serves a dictionary built in memory and one that
// the C compiler built from generated source alike, and two dictionaries
// that mean the same print the same.
//
// Tables are as long as their counts say: str_class_names and v_class_info
// n_class_codes + 1, the index tables n_desc_indexes, the keys of an index
// numof_fields, the fields of a struct n_fields, the initial values
// init_i_data_n and init_d_data_n. A table of no entries prints [] whatever
// its pointer holds; null is a table that should have entries and has no
// pointer. struct_ptr prints as its place in v_all_struct. Numbers print as
// the members hold them, so -1 in a u16 is 65535. Real values that JSON
// cannot write print as the strings "NaN", "Infinity" and "-Infinity".
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "zylcomp.h"

namespace {

class Json {
public:
    explicit Json(FILE* out) : m_out(out) {}

    bool failed() const { return m_failed; }

    void raw(char const* s) {
        if (std::fputs(s, m_out) < 0)
            m_failed = true;
    }

    void str(char const* s) {
        if (s == nullptr) {
            raw("null");
            return;
        }
        raw("\"");
        for (; *s != '\0'; s++) {
            unsigned char const c = static_cast<unsigned char>(*s);
            char buf[8];
            if (c == '"' || c == '\\')
                std::snprintf(buf, sizeof buf, "\\%c", c);
            else if (c < 0x20)
                std::snprintf(buf, sizeof buf, "\\u%04x", c);
            else
                std::snprintf(buf, sizeof buf, "%c", c);
            raw(buf);
        }
        raw("\"");
    }

    void u(unsigned long long v) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%llu", v);
        raw(buf);
    }

    void i(long long v) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%lld", v);
        raw(buf);
    }

    // The shortest text that reads back as the same double.
    void real(double v) {
        if (std::isnan(v)) {
            raw("\"NaN\"");
            return;
        }
        if (std::isinf(v)) {
            raw(v > 0 ? "\"Infinity\"" : "\"-Infinity\"");
            return;
        }
        char buf[40];
        std::snprintf(buf, sizeof buf, "%.15g", v);
        if (std::strtod(buf, nullptr) != v)
            std::snprintf(buf, sizeof buf, "%.17g", v);
        raw(buf);
    }

private:
    FILE* m_out;
    bool m_failed = false;
};

// "{" ... "}" with the members separated; each key is written by key().
class Obj {
public:
    explicit Obj(Json& j, char const* open = "{", char const* close = "}") : m_j(j), m_close(close) { j.raw(open); }
    ~Obj() { m_j.raw(m_close); }
    Obj(Obj const&) = delete;
    Obj& operator=(Obj const&) = delete;

    Json& key(char const* name) {
        m_j.raw(m_first ? "\"" : m_sep);
        m_j.raw(m_first ? "" : "\"");
        m_first = false;
        m_j.raw(name);
        m_j.raw("\": ");
        return m_j;
    }
    void separate(char const* sep) { m_sep = sep; }

private:
    Json& m_j;
    char const* m_close;
    char const* m_sep = ", ";
    bool m_first = true;
};

// A member by its own name, so the keys are the records' member names.
#define U(o, rec, m) (o).key(#m).u((rec).m)
#define I(o, rec, m) (o).key(#m).i((rec).m)

// `n` entries of `table`, one per line, each written by `entry`; a missing
// table that should have entries is null.
template <class T, class Entry>
void array(Json& j, T const* table, unsigned long n, char const* indent, Entry entry) {
    if (n == 0) {
        j.raw("[]");
        return;
    }
    if (table == nullptr) {
        j.raw("null");
        return;
    }
    j.raw("[\n");
    for (unsigned long k = 0; k < n; k++) {
        j.raw(indent);
        entry(table[k]);
        j.raw(k + 1 < n ? ",\n" : "\n");
    }
    j.raw(indent + 2);
    j.raw("]");
}

// The same for short tables of scalars, on one line.
template <class T, class Entry>
void inlineArray(Json& j, T const* table, unsigned long n, Entry entry) {
    if (n > 0 && table == nullptr) {
        j.raw("null");
        return;
    }
    j.raw("[");
    for (unsigned long k = 0; k < n; k++) {
        if (k > 0)
            j.raw(", ");
        entry(table[k]);
    }
    j.raw("]");
}

void field(Json& j, zyl_dict_field_t const& f) {
    Obj o(j);
    o.key("name").str(f.name);
    {
        Obj l(o.key("layout"));
        U(l, f.layout, c_size);
        U(l, f.layout, c_align);
        U(l, f.layout, c_offset);
        U(l, f.layout, u_size);
        U(l, f.layout, u_align);
        U(l, f.layout, u_offset);
    }
    U(o, f, field_el_type);
    U(o, f, flags);
    U(o, f, array_size);
    I(o, f, struct_num);
    U(o, f, field_size);
    U(o, f, refto_class);
    U(o, f, init_index);
    U(o, f, order_no);
    U(o, f, no);
    U(o, f, event_id);
    U(o, f, indicator);
    U(o, f, precision);
    U(o, f, seq_order);
    U(o, f, seq_elem_size);
}

void structure(Json& j, zyl_dict_struct_t const& s) {
    Obj o(j);
    o.key("name").str(s.name);
    U(o, s, flags);
    U(o, s, n_fields);
    array(o.key("fields"), s.fields, s.n_fields, "      ", [&j](zyl_dict_field_t const& f) { field(j, f); });
    U(o, s, c_size);
    U(o, s, c_align);
    U(o, s, u_size);
    U(o, s, u_align);
}

void classInfo(Json& j, zyl_dict_class_info_t const& c, zyl_dictionary_t const& d) {
    Obj o(j);
    U(o, c, first_index_num);
    U(o, c, last_index_num);
    U(o, c, list_index_num);
    U(o, c, autoid_index_num);
    U(o, c, fixedsize);
    U(o, c, autoid_offset);
    U(o, c, history_index_num);
    U(o, c, history_length);
    U(o, c, history_offset);
    U(o, c, first_event_num);
    U(o, c, last_event_num);
    U(o, c, flags);
    Json& sp = o.key("struct_ptr");
    if (c.struct_ptr == nullptr)
        sp.raw("null");
    else if (d.v_all_struct != nullptr && c.struct_ptr >= d.v_all_struct && c.struct_ptr < d.v_all_struct + d.n_structs)
        sp.i(c.struct_ptr - d.v_all_struct);
    else
        sp.i(-1);  // points outside the structure table
    U(o, c, init_size);
    U(o, c, auto_oid_offset);
}

void indexKey(Json& j, zyl_dict_index_field_t const& k) {
    Obj o(j);
    U(o, k, field_offset);
    U(o, k, vect_field_offset);
    U(o, k, indicator_offset);
    U(o, k, field_size);
    U(o, k, field_type);
    U(o, k, fld_flags);
    U(o, k, fld_no);
    U(o, k, collation_id);
}

void indexEntry(Json& j, zyl_dict_index_t const& x) {
    Obj o(j);
    U(o, x, class_code);
    U(o, x, impl_no);
    U(o, x, numof_fields);
    U(o, x, vect_field_offset);
    U(o, x, flags);
    array(o.key("fields"), x.fields, x.numof_fields, "      ",
          [&j](zyl_dict_index_field_t const& k) { indexKey(j, k); });
    I(o, x, numof_keys_estimate);
    U(o, x, userdef_id);
}

void event(Json& j, zyl_dict_event_t const& e) {
    Obj o(j);
    U(o, e, class_code);
    U(o, e, flags);
    U(o, e, field_offset);
    U(o, e, field_size);
    U(o, e, field_type);
    U(o, e, fld_no);
}

void collation(Json& j, zyl_dict_collation_t const& c) {
    Obj o(j);
    o.key("name").str(c.name);
    U(o, c, type);
}

void dictionary(Json& j, zyl_dictionary_t const& d) {
    Obj o(j, "{\n  ", "\n}\n");
    o.separate(",\n  ");
    auto name = [&j](char const* s) { j.str(s); };
    inlineArray(o.key("str_class_names"), d.str_class_names, d.n_class_codes + 1UL, name);
    inlineArray(o.key("str_index_names"), d.str_index_names, d.n_desc_indexes, name);
    U(o, d, version_major);
    U(o, d, version_minor);
    U(o, d, version_build);
    U(o, d, magic_number);
    U(o, d, flags);
    U(o, d, oid_is_supported);
    U(o, d, auto_oid_supported);
    U(o, d, n_class_codes);
    U(o, d, n_list_indexes);
    U(o, d, n_autoid_indexes);
    U(o, d, n_history_indexes);
    U(o, d, n_userdef_indexes);
    U(o, d, max_numof_indexes_per_obj);
    U(o, d, n_structs);
    U(o, d, num_oid_estimation);
    U(o, d, num_HA_estimation);
    U(o, d, n_desc_indexes);
    U(o, d, n_desc_events);
    U(o, d, n_desc_colls);
    U(o, d, exact_OID_sizeof);
    U(o, d, layout_OID_size);
    array(o.key("v_class_info"), d.v_class_info, d.n_class_codes + 1UL, "    ",
          [&j, &d](zyl_dict_class_info_t const& c) { classInfo(j, c, d); });
    array(o.key("v_desc_indexes"), d.v_desc_indexes, d.n_desc_indexes, "    ",
          [&j](zyl_dict_index_t const& x) { indexEntry(j, x); });
    array(o.key("v_desc_events"), d.v_desc_events, d.n_desc_events, "    ",
          [&j](zyl_dict_event_t const& e) { event(j, e); });
    array(o.key("v_all_struct"), d.v_all_struct, d.n_structs, "    ",
          [&j](zyl_dict_struct_t const& s) { structure(j, s); });
    array(o.key("v_desc_colls"), d.v_desc_colls, d.n_desc_colls, "    ",
          [&j](zyl_dict_collation_t const& c) { collation(j, c); });
    auto byte = [&j](std::uint8_t v) { j.u(v); };
    inlineArray(o.key("sizeof_zyl_offs_t"), d.sizeof_zyl_offs_t, 2, byte);
    inlineArray(o.key("sizeof_zyl_size_t"), d.sizeof_zyl_size_t, 2, byte);
    inlineArray(o.key("init_i_data"), d.init_i_data.ptr, d.init_i_data_n, [&j](std::int32_t v) { j.i(v); });
    U(o, d, init_i_data_n);
    inlineArray(o.key("init_d_data"), d.init_d_data.ptr, d.init_d_data_n, [&j](double v) { j.real(v); });
    U(o, d, init_d_data_n);
}

#undef U
#undef I

}  // namespace

extern "C" int zyl_dict_write_json(const zyl_dictionary_t* dict, FILE* out) {
    Json j(out);
    if (dict == nullptr)
        j.raw("null\n");
    else
        dictionary(j, *dict);
    return j.failed() || std::fflush(out) != 0 ? -1 : 0;
}
