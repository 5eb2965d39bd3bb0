// Symbolic sizes: FSize itself, rounding, array sizes, the hand-over of a
// field's placement to text, and the order of a Layout's fields.
#include "host/zylcomp/fsize.h"

#include "foundation/ut.h"
#include "host/zylcomp/genoutput.h"
#include "host/zylcomp/schema.h"

// ---------------------------------------------------------------------------
// FSize

FSize& FSize::operator=(int num) {
    m_num = num;
    m_expr = mstring();
    m_saved = 0;
    return *this;
}

FSize::operator mstring const&() const {
    m_text = mstring();
    if (m_num == 0 && is_str()) {
        m_text = m_expr;
        return m_text;
    }
    m_text = UT::n2s(static_cast<int>(m_num));
    if (is_str()) {
        m_text += "+";
        m_text += m_expr;
    }
    return m_text;
}

bool FSize::operator==(FSize const& other) const { return m_num == other.m_num && m_expr == other.m_expr; }

FSize& FSize::operator+=(FSize const& other) {
    m_num = wrap32(std::int64_t{m_num} + other.m_num);
    if (is_str() && other.is_str())
        m_expr += "+";
    m_expr += other.m_expr;
    return *this;
}

// ---------------------------------------------------------------------------
// Rounding and array sizes

namespace {

// Only 2, 4 and 8 round; any other alignment, and any size below 1, leaves
// the number as it is (so a zero offset stays 0 whatever the alignment).
FSize alignNumber(FSize const& size, int align) {
    FSize result = size;
    std::int32_t n = size.m_num;
    if (roundUp(n, align))
        result = n;
    return result;
}

FSize alignText(FSize const& size, mstring const& align) {
    FSize result = size;
    result.m_expr = "alignsz(" + static_cast<mstring const&>(size) + "," + align + ")";
    result.m_num = 0;
    return result;
}

}  // namespace

// A symbolic alignment is ignored for a numeric size: a number is never
// wrapped into text because of its alignment.
FSize GenOutput::alignInt(FSize size, FSize align) {
    if (size.is_str())
        return alignText(size, align);
    return alignNumber(size, align.m_num);
}

FSize GenOutput::alignInt(FSize size, int align) {
    if (size.is_str())
        return alignText(size, UT::n2s(align));
    return alignNumber(size, align);
}

// Even a plain number stays text here ("(8)*10"): the C-source dictionary
// prints it as it is. The in-memory dictionary overrides this and folds.
FSize GenOutput::getArraySize(FSize& elem, int n) {
    FSize result;
    result.m_expr = "(" + static_cast<mstring const&>(elem) + ")*" + UT::n2s(n);
    return result;
}

void GenOutput::update_layout_strings(FldLayout& fld) { fld.update_strings(); }

// ---------------------------------------------------------------------------
// FldLayout

namespace {

// A value that replaces another keeps the other's carried number.
void setText(FSize& value, mstring const& expr) {
    value.m_num = 0;
    value.m_expr = expr;
}

}  // namespace

void FldLayout::update_strings() {
    if (m_field == nullptr) {
        m_typeIsDirect = false;
        m_inDirect = false;
        return;
    }
    Field const& f = *m_field;
    Struct const* container = f.m_containerStruct;
    m_typeIsDirect = f.m_isDirect;
    m_inDirect = container != nullptr && container->m_isDirect;

    if (m_inDirect) {
        // A member of a direct struct: the C compiler places it.
        mstring const args = "(" + container->m_name + "_d_aligned_to_1, " + alone(f.m_name) + ")";
        setText(m_offset, "fieldoffs" + args);
        if (!m_size.is_str()) {
            m_size.m_saved = m_size.m_num;
            setText(m_size, "fieldsz" + args);
        }
        if (!m_align.is_str())
            setText(m_align, "1");
        return;
    }
    if (m_typeIsDirect && !f.m_isVector) {
        // A direct struct held by value. The offset is a placeholder that the
        // placement pass overwrites from the neighbouring field.
        mstring const size = "structsz(" + f.m_struct->m_name + "_d_aligned_to_1)";
        if (!m_offset.is_str())
            setText(m_offset, size);
        if (!m_size.is_str())
            setText(m_size, size);
        if (!m_align.is_str())
            setText(m_align, "1");
    }
    // An ordinary field, or a vector of direct structs, has an ordinary slot.
}

// The non-stable heap sort over this order decides layouts: keep both exactly as they are.
bool ordered_before(FldLayout const& a, FldLayout const& b) {
    if (a.m_typeIsDirect == b.m_typeIsDirect)
        return a.m_align.m_num > b.m_align.m_num;
    return b.m_typeIsDirect;
}
