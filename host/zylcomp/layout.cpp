// The layout pass: class codes, and the placement of every field of every
// struct and class in both object formats, compact and large; then the
// column widths of the generated text.
//
// Invariant: sizes and offsets are numbers unless a direct struct is
// involved. Only a member of a direct struct, a direct struct held by value,
// and whatever is placed after one become text, which the C compiler folds
// (FldLayout::update_strings decides which). The in-memory dictionary
// overrides the virtual steps so that everything stays numeric there.
#include <cassert>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "foundation/sets.h"
#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

namespace {

// Calls `visit` on every element of `set`, in set order.
template <class T, class Visit>
void forEach(ISet* set, Visit visit) {
    std::unique_ptr<ISet::Pos> pos(set->first());
    for (; pos->valid(); pos->next())
        visit(*static_cast<T*>(pos->get().get()));
}

// Declared structs and direct structs have fields of their own to place.
bool hasOwnLayout(Struct const& t) { return t.m_category == TC_STRUCT || t.m_category == TC_DIRECT; }

// Nested structs are placed by recursion, one level of the stack each. A
// deeper chain is refused rather than let it exhaust the stack, which in
// the run-time entry is the host program's.
int const kMaxNesting = 1000;

// One level of that recursion, counted in the compile's own generator.
class NestingLevel {
public:
    explicit NestingLevel(int& nesting) : m_nesting(nesting) { m_nesting++; }
    ~NestingLevel() { m_nesting--; }
    NestingLevel(NestingLevel const&) = delete;
    NestingLevel& operator=(NestingLevel const&) = delete;

private:
    int& m_nesting;
};

FSize textSize(mstring const& expr) {
    FSize result;
    result.m_expr = expr;
    return result;
}

// "{a}+{b}" as one text: the end of `fld` when the C compiler has to add it.
FSize endAsText(FldLayout const& fld) {
    return textSize(static_cast<mstring const&>(fld.m_offset) + "+" + static_cast<mstring const&>(fld.m_size));
}

void widen(int& width, int length) {
    if (length > width)
        width = length;
}

int len(mstring const& s) { return static_cast<int>(s.length()); }

// A record in the sort: its two keys, folded into one number, and where it
// stands before sorting. The heap sort runs over these with the records'
// own order (ordered_before), so it makes exactly the comparisons and moves
// it would make on the records, without reaching into them; each record is
// then moved once to its place instead of being swapped (ten strings each
// time) down the heap.
struct SortEntry {
    std::int64_t m_key = 0;
    unsigned m_from = 0;
};

// ordered_before(a, b) is "a's key is greater": a record whose type is not
// a direct struct lies 2^33 above every one whose type is, which outweighs
// any difference of two 32-bit alignments; within a group the alignments
// decide.
std::int64_t sortKey(FldLayout const& fld) {
    return (fld.m_typeIsDirect ? 0 : std::int64_t{1} << 33) + fld.m_align.m_num;
}

unsigned const kPlaced = ~0u;

// `order` is scratch, shared by the calls for one struct's two formats.
void sortFields(mvector<FldLayout>& v, mvector<SortEntry>& order) {
    unsigned const n = v.size();
    order.resize(n);
    for (unsigned i = 0; i < n; i++) {
        FldLayout const& fld = v[static_cast<int>(i)];
        SortEntry& e = order[static_cast<int>(i)];
        e.m_key = sortKey(fld);
        e.m_from = i;
    }
    sort_vector(order, [](SortEntry const& a, SortEntry const& b) { return a.m_key > b.m_key; });

    // Place i takes the record from order[i].m_from: follow each cycle of
    // that permutation once, one record held aside per cycle.
    for (unsigned i = 0; i < n; i++) {
        SortEntry& start = order[static_cast<int>(i)];
        if (start.m_from == kPlaced)
            continue;
        if (start.m_from == i) {
            start.m_from = kPlaced;
            continue;
        }
        FldLayout held = std::move(v[static_cast<int>(i)]);
        unsigned to = i;
        for (;;) {
            SortEntry& e = order[static_cast<int>(to)];
            unsigned const from = e.m_from;
            e.m_from = kPlaced;
            if (from == i) {
                v[static_cast<int>(to)] = std::move(held);
                break;
            }
            v[static_cast<int>(to)] = std::move(v[static_cast<int>(from)]);
            to = from;
        }
    }
}

}  // namespace

// ---------------------------------------------------------------------------
// The whole pass

void GenOutput::layout() {
    layoutTypes();
    layoutClasses();
}

void GenOutput::layoutTypes() {
    Schema& schema = *m_schema;
    if (schema.m_oidDeclared) {
        Struct* ref = schema.findType("ref");
        if (ref != nullptr)
            schema.m_oidSize = oid_layout(*ref);
    }
    forEach<Struct>(schema.m_types, [this](Struct& s) { layout(s, 0, nullptr); });
}

void GenOutput::layoutClasses() {
    int code = 1;
    forEach<Class>(m_schema->m_classes, [this, &code](Class& c) {
        c.m_code = code++;
        layout(c, classStart(c), &c);
    });
    // The dump shows the placements just made.
    if (m_genXmlSchema)
        dump(*m_xml);
}

void GenOutput::numberClasses() {
    int code = 1;
    forEach<Class>(m_schema->m_classes, [&code](Class& c) { c.m_code = code++; });
}

// Objects of a class with an oid begin with the oid, rounded up to an even
// size.
int GenOutput::classStart(Class const& c) const {
    return c.m_hasOid ? wrap32(std::int64_t{m_schema->m_oidSize} + 1) & ~1 : 0;
}

// The calls layout(c, ...) makes on a class's nested structs, which are
// placed already and only learn of their owner: the same owners, in the
// same order.
void GenOutput::registerOwners(Class& c) {
    c.addOwner(&c);
    if (!c.m_hasStructFields)
        return;
    for (unsigned i = 0; i < c.v_field.size(); i++) {
        Struct* t = c.v_field[i].m_struct;
        if (t != nullptr && hasOwnLayout(*t))
            layout(*t, 0, &c);
    }
}

// The oid is packed by its own rule: scalars of 2 bytes on even offsets,
// larger ones (8-byte ones too) on multiples of 4, character data unaligned.
int GenOutput::oid_layout(Struct& oid) {
    int offset = 0;
    for (unsigned i = 0; i < oid.v_field.size(); i++) {
        Struct const* t = oid.v_field[i].m_struct;
        assert(t != nullptr);  // resolved by the finishing passes
        int sz = t->m_layout.large.m_size.m_num;
        switch (t->m_category) {
        case TC_STRUCT: {
            DeclFocus const at(m_err, m_schema->declaration("field", oid.v_field[i].m_name, oid.v_field[i].m_place));
            m_err->err("Nested structure in oid");
            return 0;
        }
        case TC_SCALAR:
            if (sz == 2)
                offset = alignInt(FSize(offset), 2).m_num;
            else if (sz > 2)
                offset = alignInt(FSize(offset), 4).m_num;
            offset = wrap32(std::int64_t{offset} + sz);
            break;
        case TC_CHARS:
        case TC_NCHARS:
        case TC_BINARY:
            offset = wrap32(std::int64_t{offset} + sz);
            break;
        default: {
            DeclFocus const at(m_err, m_schema->declaration("field", oid.v_field[i].m_name, oid.v_field[i].m_place));
            m_err->err("Variable-length field in oid");
            return 0;
        }
        }
    }
    oid.m_layout.compact.m_size = offset;
    oid.m_layout.large.m_size = offset;
    oid.m_layout.compact.m_align = 1;
    oid.m_layout.large.m_align = 1;
    return offset;
}

// ---------------------------------------------------------------------------
// One struct or class

bool GenOutput::layout(Struct& s, int startOffset, Class* owner) {
    if (owner != nullptr)
        s.addOwner(owner);
    if (!hasOwnLayout(s))
        s.m_layoutDone = true;

    if (!s.m_layoutDone) {
        if (s.m_layoutBusy) {
            // Reached again while its own fields are placed: it contains
            // itself by value.
            DeclFocus const at(m_err, m_schema->declaration(s.m_isClass ? "class" : "struct", s.m_name, s.m_place));
            m_err->err("recursive definition of \"" + s.m_name + "\"");
            return false;
        }
        NestingLevel level(m_layoutNesting);
        if (m_layoutNesting > kMaxNesting) {
            DeclFocus const at(m_err, m_schema->declaration(s.m_isClass ? "class" : "struct", s.m_name, s.m_place));
            m_err->err("structures nested more than " + UT::n2s(kMaxNesting) + " deep at \"" + s.m_name + "\"");
            return false;
        }
        s.m_layoutBusy = true;
        Layout& compact = s.m_layout.compact;
        Layout& large = s.m_layout.large;
        // Sized once for all fields rather than grown by one per field: the
        // vectors end as n push_backs would leave them, without moving every
        // placement again for each field added.
        unsigned const base = compact.v_fld.size();
        compact.v_fld.resize(base + s.v_field.size());
        large.v_fld.resize(base + s.v_field.size());

        for (unsigned i = 0; i < s.v_field.size(); i++) {
            Field& f = s.v_field[i];
            Struct* t = f.m_struct;
            assert(t != nullptr);  // resolved by the finishing passes
            // A nested struct is placed by itself, from offset 0.
            if (hasOwnLayout(*t)) {
                if (!layout(*t, 0, owner))
                    return false;
            } else if (t->m_category == TC_OID_REF && m_schema->m_oidSize == 0) {
                IErrReporter::panic("oid size unknown", false);
            }

            // Filled in place: resize left both records as fresh ones.
            FldLayout& cf = compact.v_fld[static_cast<int>(base + i)];
            FldLayout& lf = large.v_fld[static_cast<int>(base + i)];
            cf.m_field = &f;
            lf.m_field = &f;

            Layout& tc = t->m_layout.compact;
            Layout& tl = t->m_layout.large;
            bool array = false;
            // The first matching kind wins: an optional or vector field has
            // its own slot whatever else it is.
            if (f.m_isOptional) {
                cf.m_size = 2;
                lf.m_size = 4;
                cf.m_align = 2;
                lf.m_align = 4;
            } else if (f.m_isVector) {
                cf.m_size = 4;
                lf.m_size = 6;
                cf.m_align = 2;
                lf.m_align = 4;
            } else {
                cf.m_align = tc.m_align;
                lf.m_align = tl.m_align;
                array = f.m_isArray;
                if (!array) {
                    cf.m_size = tc.m_size;
                    lf.m_size = tl.m_size;
                }
            }
            if (s.m_packed) {
                cf.m_align = 1;
                lf.m_align = 1;
            }
            if (array) {
                if (t->m_name == "boolean") {
                    // Eight flags to a byte.
                    int bytes = (f.m_arraySize + 7) / 8;
                    cf.m_size = wrap32(std::int64_t{alignInt(tc.m_size, cf.m_align).m_num} * bytes);
                    lf.m_size = wrap32(std::int64_t{alignInt(tl.m_size, lf.m_align).m_num} * bytes);
                } else if (f.m_isDirect || tc.m_size.is_str() || tl.m_size.is_str()) {
                    cf.m_size = getArraySize(tc.m_size, f.m_arraySize);
                    lf.m_size = getArraySize(tl.m_size, f.m_arraySize);
                } else {
                    cf.m_size = wrap32(std::int64_t{alignInt(tc.m_size, cf.m_align).m_num} * f.m_arraySize);
                    lf.m_size = wrap32(std::int64_t{alignInt(tl.m_size, lf.m_align).m_num} * f.m_arraySize);
                }
            }
            update_layout_strings(cf);
            update_layout_strings(lf);
        }

        // The C compiler lays a direct struct out in declared order, so it
        // keeps that order; so does every struct under keepFieldOrder. The
        // two formats may end up in different orders.
        if (!m_dictFlagA && !s.m_isDirect) {
            // The heap sort is not stable and its order decides layouts: keep it exactly as it is.
            mvector<SortEntry> order;
            sortFields(compact.v_fld, order);
            sortFields(large.v_fld, order);
        }
        layout(compact, startOffset, &s);
        layout(large, startOffset, &s);

        // The vectors are final now, so the fields may point into them.
        for (unsigned i = 0; i < compact.v_fld.size(); i++)
            compact.v_fld[i].m_field->m_compactLayout = &compact.v_fld[i];
        for (unsigned i = 0; i < large.v_fld.size(); i++)
            large.v_fld[i].m_field->m_largeLayout = &large.v_fld[i];
        s.m_layoutDone = true;
        s.m_layoutBusy = false;
        return true;
    }

    // Laid out already: the nested structs still learn of their new owner.
    if (owner != nullptr) {
        for (unsigned i = 0; i < s.v_field.size(); i++) {
            Struct* t = s.v_field[i].m_struct;
            if (t != nullptr && hasOwnLayout(*t))
                layout(*t, 0, owner);
        }
    }
    return true;
}

// ---------------------------------------------------------------------------
// Offsets of one format

// The total is where the last field ends; it is not rounded up to the
// alignment (the generated code rounds where it needs to).
void GenOutput::layout(Layout& l, int startOffset, Struct*) {
    FSize offs(startOffset);
    int maxAlign = 1;
    Struct const* direct = nullptr;
    FldLayout const* lastDirectHolder = nullptr;

    for (unsigned i = 0; i < l.v_fld.size(); i++) {
        FldLayout& fld = l.v_fld[i];
        if (fld.m_align.m_num > maxAlign)
            maxAlign = fld.m_align.m_num;
        // A numeric offset rounds in place, as alignInt would round it.
        if (offs.is_str())
            offs = alignInt(offs, fld.m_align);
        else if (roundUp(offs.m_num, fld.m_align.m_num))
            offs = offs.m_num;
        fld.m_offset = offs;
        offs += fld.m_size;
        // A member of a direct struct gets its fieldoffs text here, in place
        // of the offset just set.
        fld.update_strings();

        Struct const* c = fld.m_field != nullptr ? fld.m_field->m_containerStruct : nullptr;
        if (c != nullptr && c->m_isDirect)
            direct = c;
        if (c != nullptr && c->m_hasDirect)
            lastDirectHolder = &fld;

        // A direct struct held by value has no size known here, so its offset
        // is spelled from the field before it.
        if (fld.m_typeIsDirect) {
            if (i == 0) {
                fld.m_offset = textSize("0");
            } else {
                FldLayout const& prev = l.v_fld[i - 1];
                if (prev.m_typeIsDirect) {
                    fld.m_offset = endAsText(prev);
                } else {
                    fld.m_offset = prev.m_offset;
                    fld.m_offset += prev.m_size;
                }
            }
        }
    }

    l.m_size = offs;
    if (direct != nullptr)
        l.m_align = 1;
    else
        l.m_align = maxAlign;
    if (lastDirectHolder != nullptr)
        l.m_size = endAsText(*lastDirectHolder);
    else if (direct != nullptr)
        l.m_size = textSize("structsz(" + direct->m_name + "_d_aligned_to_1)");
}

// ---------------------------------------------------------------------------
// Column widths

namespace {

// An enum-typed field, its type and the type's C form all take the enum's
// (prefixed) name.
void useEnumNames(Struct& s) {
    for (unsigned i = 0; i < s.v_field.size(); i++) {
        Field& f = s.v_field[i];
        if (f.m_enum == nullptr)
            continue;
        // Mostly the names agree already; a field keeps its own block then.
        mstring const& name = f.m_enum->m_name;
        if (f.m_typeName != name)
            f.m_typeName = name;
        if (f.m_struct != nullptr) {
            if (f.m_struct->m_name != name)
                f.m_struct->m_name = name;
            if (f.m_struct->m_cType != name)
                f.m_struct->m_cType = name;
        }
    }
}

}  // namespace

void GenOutput::calculateFormating() {
    Schema& schema = *m_schema;

    forEach<Enum>(schema.m_enums, [this](Enum& e) {
        addPrefix(e.m_name);
        for (unsigned i = 0; i < e.v_elem.size(); i++)
            addPrefix(e.v_elem[i].m_name);
    });

    forEach<Class>(schema.m_classes, [this](Class& c) {
        addPrefix(c.m_name);
        widen(m_structNameWidth, len(c.m_name));
        widen(m_fieldNameWidth, c.m_maxFieldNameLen);
        for (unsigned i = 0; i < c.v_index.size(); i++) {
            widen(c.m_maxIndexNameLen, len(c.v_index[i].m_name));
            widen(m_funcNameWidth2, len(c.v_index[i].m_name));
        }
        c.m_outputWidth = c.m_maxIndexNameLen + c.m_maxFieldNameLen + len(c.m_name) + 16;
        // Unprefixed, a field's type name, its enum's type's name and C form
        // are all the enum's own name since the declaration: nothing to do,
        // and a large schema's fields are not walked once more for nothing.
        if (m_usePrefix)
            useEnumNames(c);
    });

    forEach<Struct>(schema.m_types, [this](Struct& s) {
        // Only the structs the schema declares take the prefix: base and
        // compiler-made types are still recognised by their own names later
        // ("boolean", "sequence", "ref").
        if (hasOwnLayout(s))
            addPrefix(s.m_name);
        widen(m_structNameWidth, len(s.m_name));
        useEnumNames(s);
        s.m_outputWidth = s.m_maxFieldNameLen + len(s.m_name) + 16;
        if (s.m_category == TC_SCALAR)
            widen(m_typeNameWidth, len(s.m_cType));
    });

    m_retTypeWidth = m_typeNameWidth > 8 ? m_typeNameWidth : 8;
    m_funcNameWidth = 20;
}
