// Test stand-in for the database runtime's C++ sequence header, which
// {db}.hpp includes when a class holds sequences. Declarations only.
#ifndef ZYL_TEST_RUNTIME_ZYLSEQ_HPP
#define ZYL_TEST_RUNTIME_ZYLSEQ_HPP

#include "zyl.hpp"
#include "zylseq.h"

// Any sequence, whatever its element type, reached through its iterator.
struct GenericSequence {
    zyl_seq_iterator_h iter;
};

// A sequence of T values.
template <class T>
struct Sequence : GenericSequence {};

#endif
