// Slabs of string blocks. Each slab serves one size class of one pool: its
// blocks are handed out first from the never-used end, then from the slab's
// own list of freed blocks. A class has one open slab that allocations come
// from; slabs that are not open and have a freed block wait in the class's
// list; slabs without any free block are in no list at all, until one of
// their blocks comes back. Every slab is also in its pool's list of all
// slabs, so that the pool can let them go when its compile ends.
//
// A pool is used by one thread only, so its state is plain. The only thing
// two threads can share is a slab whose pool has ended (an orphan), whose
// count of live blocks is therefore changed atomically.
#include "foundation/strblocks.h"

#include <cstdlib>
#include <cstring>

#include "frontend/diagnostics.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZYL_ASAN_SLABS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZYL_ASAN_SLABS 1
#endif
#endif

#if defined(ZYL_ASAN_SLABS) && !defined(ZYL_PLAIN_STRING_BLOCKS)
#include <sanitizer/asan_interface.h>
#define ZYL_POISON(p, n) ASAN_POISON_MEMORY_REGION(p, n)
#define ZYL_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION(p, n)
#else
#define ZYL_POISON(p, n) ((void)(p), (void)(n))
#define ZYL_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace strblocks {

#ifdef ZYL_PLAIN_STRING_BLOCKS

class Pool {};

char* allocate(std::uint64_t& cap) { return new char[cap]; }
void release(char* block, std::uint64_t) { delete[] block; }

Scope::Scope() : m_pool(nullptr), m_previous(nullptr) {}
Scope::~Scope() = default;
unsigned Scope::slabsHeld() const { return 0; }

#else

namespace {

// Slabs are aligned to their size, so a block finds its slab by masking.
constexpr std::uintptr_t kSlabSize = 16384;
constexpr std::uint64_t kGrain = 8;
#ifdef ZYL_ASAN_SLABS
// A poisoned grain behind every block catches a write past its end.
constexpr std::uint64_t kGuard = kGrain;
#else
constexpr std::uint64_t kGuard = 0;
#endif
constexpr unsigned kClasses = static_cast<unsigned>((kMaxPooled + kGuard) / kGrain);

struct Slab {
    Slab* next;  // in the class's list of slabs with freed blocks
    Slab* prev;
    Slab* allNext;  // in the pool's list of all its slabs
    Slab* allPrev;
    Pool* owner;    // null once the pool has ended
    char* freed;    // freed blocks, linked through their first bytes
    std::uint32_t bump;  // offset of the first byte never handed out
    std::uint32_t live;  // blocks handed out and not yet back
    std::uint16_t cls;
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

// Initial-exec: one load from the thread pointer on every allocation,
// where the general model would call into the dynamic loader.
__attribute__((tls_model("initial-exec"))) thread_local Pool* t_current = nullptr;

std::uint32_t blockSize(unsigned cls) { return static_cast<std::uint32_t>((cls + 1) * kGrain); }

char* nextOf(char* block) {
    char* next;
    ZYL_UNPOISON(block, sizeof next);
    std::memcpy(&next, block, sizeof next);
    ZYL_POISON(block, sizeof next);
    return next;
}

void setNext(char* block, char* next) {
    ZYL_UNPOISON(block, sizeof next);
    std::memcpy(block, &next, sizeof next);
    ZYL_POISON(block, sizeof next);
}

Slab* slabOf(char* block) {
    return reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(block) & ~(kSlabSize - 1));
}

void freeSlab(Slab* s) {
    ZYL_UNPOISON(s, kSlabSize);
    std::free(s);
}

}  // namespace

class Pool {
public:
    Pool() : m_classes() {}
    ~Pool();
    Pool(Pool const&) = delete;
    Pool& operator=(Pool const&) = delete;

    char* allocate(std::uint64_t size);
    void release(Slab* s, char* block);
    unsigned slabsHeld() const { return m_slabs; }

private:
    Slab* newSlab(unsigned cls);
    char* refill(SizeClass& c, unsigned cls);
    void unlistWaiting(SizeClass& c, Slab* s);
    void drop(Slab* s);

    SizeClass m_classes[kClasses];
    Slab* m_all = nullptr;
    unsigned m_slabs = 0;
};

Slab* Pool::newSlab(unsigned cls) {
    void* p = std::aligned_alloc(kSlabSize, kSlabSize);
    if (p == nullptr)
        IErrReporter::panic("insufficient memory new[]", true);
    Slab* s = static_cast<Slab*>(p);
    *s = Slab{nullptr, nullptr, m_all, nullptr, this, nullptr, kHeader, 0, static_cast<std::uint16_t>(cls), false};
    if (m_all != nullptr)
        m_all->allPrev = s;
    m_all = s;
    m_slabs++;
    ZYL_POISON(reinterpret_cast<char*>(s) + kHeader, kSlabSize - kHeader);
    return s;
}

void Pool::unlistWaiting(SizeClass& c, Slab* s) {
    if (s->prev != nullptr)
        s->prev->next = s->next;
    else
        c.waiting = s->next;
    if (s->next != nullptr)
        s->next->prev = s->prev;
    s->next = s->prev = nullptr;
    s->listed = false;
}

// Out of the pool and back to the heap.
void Pool::drop(Slab* s) {
    if (s->allPrev != nullptr)
        s->allPrev->allNext = s->allNext;
    else
        m_all = s->allNext;
    if (s->allNext != nullptr)
        s->allNext->allPrev = s->allPrev;
    m_slabs--;
    freeSlab(s);
}

// The open slab of class `cls` has no block left: a waiting slab takes its
// place, or a new one. The old open slab is full and so belongs in no list.
char* Pool::refill(SizeClass& c, unsigned cls) {
    Slab* s = c.waiting;
    if (s != nullptr)
        unlistWaiting(c, s);
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
    s->bump += blockSize(cls);
    return block;
}

char* Pool::allocate(std::uint64_t size) {
    unsigned const cls = static_cast<unsigned>((size - 1 + kGuard) / kGrain);
    SizeClass& c = m_classes[cls];
    Slab* s = c.open;
    char* block = nullptr;
    if (s != nullptr) {
        block = s->freed;
        if (block != nullptr) {
            s->freed = nextOf(block);
            s->live++;
        } else if (s->bump + blockSize(cls) <= kSlabSize) {
            block = reinterpret_cast<char*>(s) + s->bump;
            s->bump += blockSize(cls);
            s->live++;
        }
    }
    if (block == nullptr)
        block = refill(c, cls);
    ZYL_UNPOISON(block, size);
    return block;
}

void Pool::release(Slab* s, char* block) {
    ZYL_POISON(block, blockSize(s->cls));
    setNext(block, s->freed);
    s->freed = block;
    s->live--;
    SizeClass& c = m_classes[s->cls];
    if (s == c.open)
        return;  // stays, even when empty: the next allocation needs it
    if (s->live == 0) {
        if (s->listed)
            unlistWaiting(c, s);
        drop(s);
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

// Empty slabs go; a slab with blocks still in use stays as an orphan until
// its last block comes back.
Pool::~Pool() {
    for (Slab* s = m_all; s != nullptr;) {
        Slab* next = s->allNext;
        if (s->live == 0) {
            freeSlab(s);
        } else {
            s->owner = nullptr;
            s->next = s->prev = s->allNext = s->allPrev = nullptr;
        }
        s = next;
    }
}

char* allocate(std::uint64_t& cap) {
    Pool* pool = t_current;
    // cap - 1 wraps for 0, which thus stays out of the slabs.
    if (pool == nullptr || cap - 1 >= kMaxPooled)
        return new char[cap];
    char* block = pool->allocate(cap);
    cap |= kSlabBit;
    return block;
}

void release(char* block, std::uint64_t cap) {
    if (block == nullptr)
        return;
    if ((cap & kSlabBit) == 0) {
        delete[] block;
        return;
    }
    Slab* s = slabOf(block);
    if (s->owner != nullptr) {
        s->owner->release(s, block);
        return;
    }
    ZYL_POISON(block, blockSize(s->cls));
    if (__atomic_sub_fetch(&s->live, 1, __ATOMIC_ACQ_REL) == 0)
        freeSlab(s);
}

Scope::Scope() : m_pool(new Pool()), m_previous(t_current) { t_current = m_pool; }

Scope::~Scope() {
    t_current = m_previous;
    delete m_pool;
}

unsigned Scope::slabsHeld() const { return m_pool->slabsHeld(); }

#endif

}  // namespace strblocks
