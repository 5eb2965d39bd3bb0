// Test stand-in for the database runtime's C++ header, which a C++ interface
// generated with the runtime-header option includes in place of zyl.h.
// Declarations only: the field properties convert through these.
#ifndef ZYL_TEST_RUNTIME_ZYL_HPP
#define ZYL_TEST_RUNTIME_ZYL_HPP

#include <string>
#include <vector>

#include "zyl.h"

// Turns a failed call into the runtime's C++ error.
void zyl_cpp_check(ZYL_RET rc);
#define ZYL_CPP_CHECK(call) zyl_cpp_check(call)

// A char<n> value.
template <size_t N>
struct Char {
    char body[N];
    Char();
    Char(std::string const& s);
};

#endif
