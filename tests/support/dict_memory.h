// The runtime's allocators as a test runtime supplies them. Linking this
// file replaces the library's weak zyl_sys_malloc and zyl_sys_calloc with
// ones that record every block until the test releases it, so that a test
// can count, check and free the dictionary memory a call handed out.
// Recorded blocks stay reachable: a leak checker reports only what the
// compiler lost on its own.
#pragma once

#include <cstddef>
#include <string>

#include "zyldict.h"

namespace dictmem {

std::size_t allocations();  // blocks handed out since the start, freed or not
std::size_t live();         // blocks handed out and not yet released
void releaseAll();          // frees every live block
// Forgets every block without freeing it: what earlier tests left (a
// refused call's blocks of a runtime's allocators stay the runtime's) is
// none of the next load's business.
void forgetAll();
// A runtime's deallocator: frees live block `p` and forgets it; false, and
// nothing freed, when `p` is no live block.
bool release(void* p);
// The deallocator zyl_dict_free needs in this binary, whose zyl_sys_malloc
// records every block: plain free() would leave it recorded, for
// releaseAll to free again.
void forgetAndFree(void* p);

// Releases `dict` through zyl_dict_free with release() as its deallocator;
// returns the blocks freed and counts in `wrong` the pointers that were no
// live block.
std::size_t freeDictionary(zyl_dictionary_t* dict, std::size_t* wrong);

// Whether the live blocks are exactly the memory of `dict`: every block is
// the dictionary, a table or a string it points to; everything it points to
// lies inside a live block; every string is a block of its own that no
// other pointer reaches. Empty, or what is wrong.
std::string checkOwnedBy(zyl_dictionary_t const* dict);

}  // namespace dictmem
