// FSize: a size, alignment or offset that is a number, a C constant
// expression kept as text, or the sum of both.
//
// A direct struct is laid out by the C compiler that later builds the
// generated source, so anything that depends on one cannot be folded here
// and travels as text (alignsz, structsz, fieldsz, fieldoffs calls);
// everything else stays a plain number.
#pragma once

#include <cstdint>

#include "foundation/mstring.h"

// Sizes, offsets and counts are 32-bit. A schema can ask for more (char<N>
// of any N, 65535 elements of it): the result then wraps around instead of
// being undefined, and values in range come out as they always did.
inline std::int32_t wrap32(std::int64_t v) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(v)); }

// Rounds `n` up to a multiple of `align` by the layout's rule: only 2, 4
// and 8 round, and only a number of 1 or more. False, with `n` as it was,
// where the rule leaves the number alone.
inline bool roundUp(std::int32_t& n, int align) {
    if (n < 1)
        return false;
    switch (align) {
    case 2:
        n = wrap32(std::int64_t{(n - 1) | 1} + 1);
        return true;
    case 4:
        n = wrap32(std::int64_t{(n - 1) & ~3} + 4);
        return true;
    case 8:
        n = wrap32(std::int64_t{(n - 1) & ~7} + 8);
        return true;
    default:
        return false;
    }
}

class FSize {
public:
    FSize() = default;
    // Explicit, so that `size = 4` goes through operator=(int), which keeps
    // m_text, instead of a converted copy that would overwrite everything.
    explicit FSize(std::int32_t num) : m_num(num) {}
    explicit FSize(mstring const& expr) : m_expr(expr) {}
    FSize(std::int32_t num, mstring const& expr) : m_num(num), m_expr(expr) {}

    // Copies as a member-wise copy would, but an empty text is not handed
    // to mstring's copy (a scan and a call for nothing): most values are
    // plain numbers, and they are copied into every record made of them.
    FSize(FSize const& other) : m_num(other.m_num), m_saved(other.m_saved) {
        copyText(m_expr, other.m_expr);
        copyText(m_text, other.m_text);
    }
    FSize& operator=(FSize const& other) {
        if (this != &other) {
            m_num = other.m_num;
            copyText(m_expr, other.m_expr);
            m_saved = other.m_saved;
            copyText(m_text, other.m_text);
        }
        return *this;
    }
    FSize(FSize&&) noexcept = default;
    FSize& operator=(FSize&&) noexcept = default;
    ~FSize() = default;

    // Symbolic: some text is present, so the value is only known to the C
    // compiler.
    bool is_str() const { return !m_expr.empty(); }

    // A plain number: the text and the carried number go, m_text stays.
    FSize& operator=(int num);

    // The value as C text: "12", "x", "12+x". The result lives in m_text and
    // is rewritten by the next rendering of the same value.
    operator mstring const&() const;  // NOLINT: values are spliced into text everywhere

    // Number and text compare; m_saved and m_text do not.
    bool operator==(FSize const& other) const;
    bool operator!=(FSize const& other) const { return !(*this == other); }

    // Accumulates a size onto an offset: numbers add, texts join with "+".
    // The carried number of the left side stays.
    FSize& operator+=(FSize const& other);

    // Numeric part; 0 when the value is pure text.
    std::int32_t m_num = 0;
    // Symbolic part, a C constant expression; empty for a pure number.
    mstring m_expr;
    // The number a symbolic text replaced; travels with copies.
    std::int32_t m_saved = 0;
    // Scratch for the rendered text; rewritten by every rendering.
    mutable mstring m_text;

private:
    // What `to = from` leaves: a copy of a non-empty text, else no block.
    static void copyText(mstring& to, mstring const& from) {
        if (!from.empty())
            to = from;
        else if (to.ptr() != nullptr)
            to = mstring();
    }
};
