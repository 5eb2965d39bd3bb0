// FSize: a size, alignment or offset that is a number, a C constant
// expression kept as text, or the sum of both.
//
// A direct struct is laid out by the C compiler that later builds the
// generated source, so anything that depends on one cannot be folded here
// and travels as text; everything else stays a plain number.
//
// Only the data and its constructors live here so far. Still to come with
// the layout pass: is_str(), assignment from an int (which clears m_expr and
// m_saved but leaves m_text alone), the rendering to text through
// `operator mstring const&`, operator== (m_num and m_expr only), and the
// addition that accumulates offsets.
#pragma once

#include <cstdint>

#include "foundation/mstring.h"

class FSize {
public:
    FSize() = default;
    // Explicit, so that `size = 4` cannot compile into a copy that also
    // overwrites m_saved and m_text by accident.
    explicit FSize(std::int32_t num) : m_num(num) {}
    explicit FSize(mstring const& expr) : m_expr(expr) {}
    FSize(std::int32_t num, mstring const& expr) : m_num(num), m_expr(expr) {}

    // Numeric part; 0 when the value is pure text.
    std::int32_t m_num = 0;
    // Symbolic part, a C constant expression; empty for a pure number.
    mstring m_expr;
    // The number a symbolic text replaced; travels with copies.
    std::int32_t m_saved = 0;
    // Scratch for the rendered text; rewritten by every rendering.
    mstring m_text;
};
