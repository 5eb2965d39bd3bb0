// The character blocks of mstring.
//
// A large schema keeps hundreds of thousands of short texts (names, type
// names), each in a block of its own. Taken from malloc, each would carry a
// chunk header and round up to 32 bytes, and every one costs a malloc and a
// free. Blocks of up to kMaxPooled bytes therefore come from slabs of one
// size class each, without headers, and go back to their slab's free list;
// a slab whose last block is freed goes back to the heap, so nothing is
// kept once the strings are gone but one open slab per size class. Larger
// blocks are plain array new.
//
// The caller always passes the capacity the block was allocated with:
// mstring keeps it anyway, so the blocks need no header.
//
// Under the address sanitizer every block is plain array new, so that the
// sanitizer sees each one on its own.
#pragma once

#include <cstdint>

namespace strblocks {

// Largest block that comes from a slab.
constexpr std::uint64_t kMaxPooled = 256;

// A block of at least `size` bytes. Ends the process when memory is out.
char* allocate(std::uint64_t size);
// Gives back a block `allocate(size)` returned. Null does nothing.
void release(char* block, std::uint64_t size);

// Slabs held at the moment, open ones included: for tests.
unsigned slabsHeld();

}  // namespace strblocks
