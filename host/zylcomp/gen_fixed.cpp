// Fixed and direct structure access.
//
// A fixed structure is a plain C struct with the fixed-size fields of a
// struct or class, so that an application reads or writes all of them in
// one call; {s}_fixed_get and {s}_fixed_put chain the field functions for
// it. A direct struct's C type is its stored image, laid out by the C
// compiler, so the dictionary can name its sizes and offsets.
//
// The fixed type and functions of a nested struct are written before those
// of the struct that holds it, whatever the set order: C needs a member's
// type complete, and an inline body must see the functions it calls.
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

namespace {

bool hasFixedPart(Struct const& s);

// A field the fixed structure holds: fixed in size and read by one call.
// An array of characters is read element by element, so of the arrays only
// those of scalars count (spatial fields among them); a struct counts when
// it has a fixed part of its own.
bool isFixedField(Field const& f) {
    if (f.m_isHidden || f.m_isVector || f.m_isOptional)
        return false;
    switch (f.m_struct->m_category) {
    case TC_SCALAR:
        return true;
    case TC_CHARS:
    case TC_NCHARS:
    case TC_BINARY:
        return !f.m_isArray;
    case TC_STRUCT:
        return !f.m_isArray && hasFixedPart(*f.m_struct);
    default:
        return false;
    }
}

bool hasFixedPart(Struct const& s) {
    if (s.m_category == TC_OID_REF)
        return false;
    for (unsigned i = 0; i < s.v_field.size(); i++)
        if (isFixedField(s.v_field[static_cast<int>(i)]))
            return true;
    return false;
}

// True when `s` is in `done` already; otherwise it is added.
bool seenBefore(std::unordered_set<Struct const*>& done, Struct const& s) { return !done.insert(&s).second; }

// The values the templates of one fixed field draw on. {n} is the length of
// a character field in its own units, {dim} the dimension of an array.
// Every name is set each time, so one Subst serves field after field.
void fixedFieldSubst(Subst& v, Struct const& s, Field const& f) {
    Struct const& t = *f.m_struct;
    int bytes = t.m_layout.compact.m_size.m_num;
    v.setType("s", s.m_name)
        .set("field", f.m_name)
        .set("m", alone(f.m_name))
        .setType("t", t.m_name)
        .set("ctype", cTypeOf(t))
        .setNum("n", t.m_category == TC_NCHARS ? bytes / 2 : bytes)
        .setNum("count", f.m_arraySize);
    if (f.m_isArray) {
        char buf[24];
        v.set("dim", {"[", UT::decimal(static_cast<long long>(f.m_arraySize), buf), "]"});
    } else {
        v.set("dim", "");
    }
}

}  // namespace

void GenOutput::genFixedStruct(Struct& s) {
    if (!hasFixedPart(s) || seenBefore(v_fixedTypesWritten, s))
        return;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        if (isFixedField(f) && f.m_struct->m_category == TC_STRUCT)
            genFixedStruct(*f.m_struct);
    }

    *m_h << "typedef struct " << s.m_name << "_fixed_ {\n";
    Subst v;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        if (!isFixedField(f))
            continue;
        fixedFieldSubst(v, s, f);
        switch (f.m_struct->m_category) {
        case TC_SCALAR:
            v.fillTo(*m_h, "  {ctype} {m}{dim};\n");
            break;
        case TC_CHARS:
        case TC_BINARY:
            v.fillTo(*m_h, "  char {m}[{n}];\n");
            break;
        case TC_NCHARS:
            v.fillTo(*m_h, "  nchar_t {m}[{n}];\n");
            break;
        default:  // a struct
            v.fillTo(*m_h, "  {t}_fixed {m};\n");
            break;
        }
    }
    *m_h << "} " << s.m_name << "_fixed;\n\n";
}

void GenOutput::outputFixed(Struct& s) {
    // Without an API there are no field functions to chain.
    if (s.m_noApi || !hasFixedPart(s) || seenBefore(v_fixedFunctionsWritten, s))
        return;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        if (isFixedField(f) && f.m_struct->m_category == TC_STRUCT)
            outputFixed(*f.m_struct);
    }

    // Each field adds one link to both chains. A link that may meet a null
    // value (a nullable field, or a struct that may hold one) lets it pass
    // and remembers it in has_nulls_, so the remaining fields are still read.
    // The texts grow link by link: std::string, so that adding a link does
    // not scan the chain built so far.
    std::string locals;
    std::string getChain;
    std::string putChain;
    std::string get;
    std::string put;
    Subst v;
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        if (!isFixedField(f))
            continue;
        fixedFieldSubst(v, s, f);
        char const* join = getChain.empty() ? "\n    " : "\n    && ";
        getChain += join;
        putChain += join;
        get.clear();
        put.clear();
        if (f.m_struct->m_category == TC_STRUCT) {
            // The nested object is reached through a handle of its own.
            v.fillTo(locals, "  {t} {m};\n");
            v.fillTo(getChain, "(((rc_ = {s}_{field}_read_handle(handle_, &{m})) == ZYL_S_OK"
                               " && (rc_ = {t}_fixed_get(&{m}, &dst_->{m})) == ZYL_S_OK)"
                               " || (has_nulls_ = rc_) == ZYL_S_NULL_VALUE)");
            v.fillTo(putChain, "(rc_ = {s}_{field}_write_handle(handle_, &{m})) == ZYL_S_OK"
                               " && (rc_ = {t}_fixed_put(&{m}, &src_->{m})) == ZYL_S_OK");
            continue;
        }
        if (f.m_isRect || f.m_isPoint) {
            v.fillTo(get, "{s}_{field}_get(handle_, dst_->{m})");
            v.fillTo(put, "{s}_{field}_put(handle_, src_->{m})");
        } else if (f.m_isArray) {
            v.fillTo(get, "{s}_{field}_get_range(handle_, 0, {count}, dst_->{m})");
            v.fillTo(put, "{s}_{field}_put_range(handle_, 0, {count}, src_->{m})");
        } else if (f.m_struct->m_category == TC_SCALAR) {
            v.fillTo(get, "{s}_{field}_get(handle_, &dst_->{m})");
            v.fillTo(put, "{s}_{field}_put(handle_, src_->{m})");
        } else {
            v.fillTo(get, "{s}_{field}_get(handle_, dst_->{m}, {n})");
            v.fillTo(put, "{s}_{field}_put(handle_, src_->{m}, {n})");
        }
        if (f.m_isNullable)
            getChain.append("((rc_ = ").append(get).append(") == ZYL_S_OK || (has_nulls_ = rc_) == ZYL_S_NULL_VALUE)");
        else
            getChain.append("(rc_ = ").append(get).append(") == ZYL_S_OK");
        putChain.append("(rc_ = ").append(put).append(") == ZYL_S_OK");
    }

    v.setType("s", s.m_name);
    std::string head;
    std::string body;
    appendHead(head, {s.m_name.c_str(), "_fixed_get"}, s.m_outputWidth);
    v.fillTo(head, " ( {s} *handle_, {s}_fixed* dst_ )");
    body.append("{ ZYL_RET rc_ = ZYL_S_OK, has_nulls_ = ZYL_S_OK;\n")
        .append(locals)
        .append("  return")
        .append(getChain)
        .append("\n  ? has_nulls_ : rc_;\n}\n\n");
    writeCFunction(head, body);
    head.clear();
    body.clear();
    appendHead(head, {s.m_name.c_str(), "_fixed_put"}, s.m_outputWidth);
    v.fillTo(head, " ( {s} *handle_, {s}_fixed const* src_ )");
    body.append("{ ZYL_RET rc_;\n").append(locals).append("  return").append(putChain).append("\n  ? ZYL_S_OK : rc_;\n}\n\n");
    writeCFunction(head, body);
}

// The stored image of a direct struct is this C type, laid out by the C
// compiler; the dictionary's sizes and offsets refer to it by name.
void GenOutput::direct_struct_output(Struct& s, mstring const& suffix) {
    *m_h << "typedef struct \n{\n";
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field const& f = s.v_field[static_cast<int>(i)];
        Struct const& t = *f.m_struct;
        mstring const size = UT::n2s(t.m_layout.compact.m_size.m_num);
        mstring dim = f.m_isArray ? mstring("[") + UT::n2s(f.m_arraySize) + "]" : mstring();
        switch (t.m_category) {
        case TC_SCALAR:
            *m_h << "\t" << cTypeOf(t) << " " << alone(f.m_name) << dim << ";\n";
            break;
        case TC_CHARS:
        case TC_BINARY:
            *m_h << "\tchar " << alone(f.m_name) << dim << "[" << size << "];\n";
            break;
        case TC_NCHARS:
            *m_h << "\tnchar_t " << alone(f.m_name) << dim << "[" << size << " / sizeof(nchar_t)];\n";
            break;
        case TC_DIRECT:
            *m_h << "\t" << t.m_name << "_d " << alone(f.m_name) << dim << ";\n";
            break;
        default:
            // The finishing checks refuse these; the C compiler would too.
            *m_h << "#error Direct struct field has bad type " << f.m_typeName << "\n";
            break;
        }
    }
    *m_h << "} " << s.m_name << "_d" << suffix << ";\n\n";
}
