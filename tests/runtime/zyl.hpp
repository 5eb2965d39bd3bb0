// Test stand-in for the database runtime's C++ header, which a C++ interface
// generated with the runtime-header option includes in place of zyl.h.
// Declarations only; later work adds what the field properties need.
#ifndef ZYL_TEST_RUNTIME_ZYL_HPP
#define ZYL_TEST_RUNTIME_ZYL_HPP

#include "zyl.h"

#endif
