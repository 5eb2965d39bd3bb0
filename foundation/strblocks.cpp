// Slabs of string blocks. Each slab serves one size class: its blocks are
// handed out first from the never-used end, then from the slab's own list of
// freed blocks. A class has one open slab that allocations come from; slabs
// that are not open and have a freed block wait in the class's list; slabs
// without any free block are in no list at all, until one of their blocks
// comes back. The compiler is single-threaded, so the state is plain.
#include "foundation/strblocks.h"

#include <cstdlib>
#include <cstring>

#include "frontend/diagnostics.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZYL_PLAIN_STRING_BLOCKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZYL_PLAIN_STRING_BLOCKS 1
#endif
#endif

namespace strblocks {

#ifdef ZYL_PLAIN_STRING_BLOCKS

char* allocate(std::uint64_t size) { return new char[size]; }
void release(char* block, std::uint64_t) { delete[] block; }
unsigned slabsHeld() { return 0; }

#else

namespace {

// Slabs are aligned to their size, so a block finds its slab by masking.
constexpr std::uintptr_t kSlabSize = 16384;
constexpr std::uint64_t kGrain = 8;
constexpr unsigned kClasses = static_cast<unsigned>(kMaxPooled / kGrain);

struct Slab {
    Slab* next;  // in the class's list of slabs with freed blocks
    Slab* prev;
    char* freed;         // freed blocks, linked through their first bytes
    std::uint32_t bump;  // offset of the first byte never handed out
    std::uint32_t live;  // blocks handed out and not yet back
    std::uint32_t cls;
    bool listed;
};

// Blocks start behind the header, on a multiple of the grain, so a block
// always has room and alignment for its link.
constexpr std::uint32_t kHeader = 64;
static_assert(sizeof(Slab) <= kHeader, "slab header too large");
static_assert(kHeader % kGrain == 0 && kGrain >= sizeof(char*), "blocks must hold a link");

struct SizeClass {
    Slab* open;
    Slab* waiting;  // slabs with freed blocks, other than the open one
};

SizeClass g_classes[kClasses];
unsigned g_slabs = 0;

char* nextOf(char* block) {
    char* next;
    std::memcpy(&next, block, sizeof next);
    return next;
}

void setNext(char* block, char* next) { std::memcpy(block, &next, sizeof next); }

Slab* slabOf(char* block) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(block) & ~(kSlabSize - 1));
}

void unlink(SizeClass& c, Slab* s) {
    if (s->prev != nullptr)
        s->prev->next = s->next;
    else
        c.waiting = s->next;
    if (s->next != nullptr)
        s->next->prev = s->prev;
    s->next = s->prev = nullptr;
    s->listed = false;
}

Slab* newSlab(unsigned cls) {
    void* p = std::aligned_alloc(kSlabSize, kSlabSize);
    if (p == nullptr)
        IErrReporter::panic("insufficient memory new[]", true);
    Slab* s = static_cast<Slab*>(p);
    *s = Slab{nullptr, nullptr, nullptr, kHeader, 0, cls, false};
    g_slabs++;
    return s;
}

// The open slab of class `cls` has no block left: a waiting slab takes its
// place, or a new one. The old open slab is full and so belongs in no list.
char* refill(SizeClass& c, unsigned cls) {
    Slab* s = c.waiting;
    if (s != nullptr)
        unlink(c, s);
    else
        s = newSlab(cls);
    c.open = s;
    s->live++;
    char* block = s->freed;
    if (block != nullptr) {
        s->freed = nextOf(block);
        return block;
    }
    block = reinterpret_cast<char*>(s) + s->bump;
    s->bump += static_cast<std::uint32_t>((cls + 1) * kGrain);
    return block;
}

}  // namespace

char* allocate(std::uint64_t size) {
    if (size > kMaxPooled || size == 0)
        return new char[size];
    unsigned const cls = static_cast<unsigned>((size - 1) / kGrain);
    SizeClass& c = g_classes[cls];
    Slab* s = c.open;
    if (s != nullptr) {
        char* block = s->freed;
        if (block != nullptr) {
            s->freed = nextOf(block);
            s->live++;
            return block;
        }
        std::uint32_t const blockSize = static_cast<std::uint32_t>((cls + 1) * kGrain);
        if (s->bump + blockSize <= kSlabSize) {
            block = reinterpret_cast<char*>(s) + s->bump;
            s->bump += blockSize;
            s->live++;
            return block;
        }
    }
    return refill(c, cls);
}

void release(char* block, std::uint64_t size) {
    if (block == nullptr)
        return;
    if (size > kMaxPooled || size == 0) {
        delete[] block;
        return;
    }
    Slab* s = slabOf(block);
    setNext(block, s->freed);
    s->freed = block;
    s->live--;
    SizeClass& c = g_classes[s->cls];
    if (s == c.open)
        return;  // stays, even when empty: the next allocation needs it
    if (s->live == 0) {
        if (s->listed)
            unlink(c, s);
        std::free(s);
        g_slabs--;
        return;
    }
    if (!s->listed) {
        s->next = c.waiting;
        s->prev = nullptr;
        if (c.waiting != nullptr)
            c.waiting->prev = s;
        c.waiting = s;
        s->listed = true;
    }
}

unsigned slabsHeld() { return g_slabs; }

#endif

}  // namespace strblocks

