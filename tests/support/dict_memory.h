// The runtime's allocators as a test runtime supplies them: linking this file
// replaces the library's weak zyl_sys_malloc and zyl_sys_calloc with ones
// that record every block until the test releases it, so that a test can
// count, check and free the dictionary memory a call handed out. Recorded
// blocks stay reachable: a leak checker reports only what the compiler lost.
#pragma once

#include <cstddef>
#include <string>

#include "zyldict.h"

namespace dictmem {

std::size_t live();         // blocks handed out and not yet released
void releaseAll();          // frees every live block
// Forgets every block unfreed: a refused call's blocks of a runtime's
// allocators stay the runtime's, none of the next load's business.
void forgetAll();
// A runtime's deallocator: frees live block `p` and forgets it; false, and
// nothing freed, when `p` is no live block.
bool release(void* p);
// The deallocator zyl_dict_free needs here: plain free() would leave the
// block recorded, for releaseAll to free again.
void forgetAndFree(void* p);

// Releases `dict` through zyl_dict_free with release() as its deallocator;
// returns the blocks freed and adds to `wrong` the pointers that were none.
std::size_t freeDictionary(zyl_dictionary_t* dict, std::size_t* wrong);

// Empty when the live blocks are exactly the memory of `dict` (the
// dictionary, its tables and strings, each string a block of its own that
// no other pointer reaches, nothing it points to outside them); else what
// is wrong.
std::string checkOwnedBy(zyl_dictionary_t const* dict);

}  // namespace dictmem
