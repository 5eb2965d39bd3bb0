// The runtime's allocators as a test runtime supplies them. Linking this
// file replaces the library's weak zyl_sys_malloc and zyl_sys_calloc: every
// block is recorded until the test releases it, so that a test can count
// the dictionary memory a call handed to its caller, compare it with what
// the dictionary reaches, and free it. Recorded blocks stay reachable, so a
// leak checker reports only memory the compiler lost on its own.
#pragma once

#include <cstddef>
#include <string>

#include "zyldict.h"

namespace dictmem {

// Blocks handed out since the start of the process, freed or not.
std::size_t allocations();
// Blocks handed out and not yet released.
std::size_t live();
// Frees every live block.
void releaseAll();
// Forgets every block without freeing it: what earlier tests of this
// process left (a refused call's blocks of a runtime's allocators stay the
// runtime's) is none of the next load's business.
void forgetAll();
// A runtime's deallocator: frees live block `p` and forgets it. Returns
// false, and frees nothing, when `p` is no live block: never handed out, or
// released already.
bool release(void* p);
// The deallocator that zyl_dict_free needs in this binary, whose own
// zyl_sys_malloc records every block: plain free() would leave a freed
// block recorded, for releaseAll to free again.
void forgetAndFree(void* p);

// Releases `dict` through zyl_dict_free with release() as its deallocator.
// Returns the blocks freed, and counts in `wrong` the pointers it was handed
// that were no live block.
std::size_t freeDictionary(zyl_dictionary_t* dict, std::size_t* wrong);

// Checks that the live blocks are exactly the memory of `dict`: every block
// is the dictionary, a table or a string it points to; everything the
// dictionary points to lies inside a live block; and every string is a
// block of its own that no other pointer reaches. Returns an empty text, or
// what is wrong.
std::string checkOwnedBy(zyl_dictionary_t const* dict);

}  // namespace dictmem
