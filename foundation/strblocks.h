// The character blocks of mstring.
//
// A large schema keeps hundreds of thousands of short texts (names, type
// names), each in a block of its own. Taken from malloc, each would carry a
// chunk header and round up to 32 bytes, and every one costs a malloc and a
// free. While a compile runs, blocks of up to kMaxPooled bytes therefore
// come from slabs of one size class each, without headers, and go back to
// their slab's free list.
//
// The slabs belong to a Pool, and a pool to one compile: each entry opens a
// Scope, which makes a new pool current on its thread, so compiles on
// different threads never share a slab and need no lock. When the scope
// ends its slabs go back to the heap. Blocks made outside any scope, and
// larger blocks, are plain array new.
//
// The caller always passes the capacity that allocate() left: it carries
// kSlabBit when the block came from a slab, so the blocks need no header.
// A block may outlive its compile (a function-local constant made during
// the first compile that needed it): its slab then stays, without a pool,
// until its last block is released.
//
// Built with ZYL_PLAIN_STRING_BLOCKS (the sanitizer preset), every block is
// plain array new, so that the address sanitizer sees each one on its own.
// Under the address sanitizer without it (the fuzz targets), slab blocks
// are poisoned while free and followed by a poisoned guard.
#pragma once

#include <cstdint>

namespace strblocks {

// Largest block that comes from a slab.
constexpr std::uint64_t kMaxPooled = 256;
// Set in a capacity whose block lies in a slab.
constexpr std::uint64_t kSlabBit = std::uint64_t{1} << 63;

// The usable size of a capacity that allocate() left.
inline std::uint64_t usable(std::uint64_t cap) { return cap & ~kSlabBit; }

// A block of at least `cap` bytes; `cap` gets kSlabBit when the block comes
// from a slab. Ends the process when memory is out.
char* allocate(std::uint64_t& cap);
// Gives back a block with the capacity allocate() left. Null does nothing.
void release(char* block, std::uint64_t cap);

class Pool;

// The string pool of one compile, current on this thread while it lives.
// Scopes nest: a compile started from inside another (a report function
// that loads a dictionary) has its own, and the outer one is current again
// afterwards.
class Scope {
public:
    Scope();
    ~Scope();
    Scope(Scope const&) = delete;
    Scope& operator=(Scope const&) = delete;

    // Slabs the pool holds at the moment, open ones included: for tests.
    unsigned slabsHeld() const;

private:
    Pool* m_pool;
    Pool* m_previous;
};

}  // namespace strblocks
