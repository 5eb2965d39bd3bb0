// What the field sections of the generator share: the row that describes
// one function of a field, and the texts every such function is built of.
// The field API (gen_field.cpp) and the vector, array, optional, spatial and
// sequence sections (gen_vector.cpp, gen_optional.cpp) write through them.
#pragma once

#include "foundation/mstring.h"
#include "foundation/ut.h"
#include "host/zylcomp/fsize.h"

// One function of a field: the C function, and its C++ member unless
// `member` is null. Templates are filled by the field's Subst.
struct FieldRow {
    enum Body {
        kRead,   // `body` is the call: "{", for a nullable field the reading
                 // indicator line, `body`, "\n}\n\n"
        kWrite,  // the same with the writing indicator line
        kWhole,  // `body` is the whole body
    };
    bool when;
    Body kind;
    char const* op;
    char const* params;
    char const* body;
    char const* memberDecl;
    char const* member;
    char const* forward;  // the C++ member's body
    char const* args;     // {args} of `forward`, itself filled first
};

namespace fieldtext {

inline mstring text(FSize const& v) { return static_cast<mstring const&>(v); }
// The same text without a string made for it: a plain number is written
// into `buf`, an expression is the size's own text.
inline char const* textOf(FSize const& v, char (&buf)[24]) {
    return v.is_str() ? static_cast<mstring const&>(v).c_str() : UT::decimal(static_cast<long long>(v.m_num), buf);
}

inline constexpr char const* kMember = "  ZYL_RET ";
inline constexpr char const* kStaticMember = "  static ZYL_RET ";

// How a C++ member passes its arguments on to the C function.
inline constexpr char const* kForward = "{ ZYL_RET ret_ = {ns}::{cf}{op}(this, {args}); return ret_; ";
inline constexpr char const* kForwardStatic = "{ ZYL_RET ret_ = {ns}::{cf}{op}({args}); return ret_; ";
// A struct read into a wrapper makes the wrapper usable.
inline constexpr char const* kForwardRead =
    "{ ZYL_RET ret_ = {ns}::{cf}{op}(this, {args}); s.set_valid(ret_==ZYL_S_OK); return ret_; ";

}  // namespace fieldtext
