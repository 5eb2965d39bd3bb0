// The slabs behind mstring's short blocks: blocks never overlap whatever the
// order of allocations and releases, slabs go back to the heap once their
// blocks are gone, and a pool belongs to the scope (the compile) that made
// it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "foundation/strblocks.h"

namespace {

struct Held {
    char* block;
    std::uint64_t cap;  // as allocate() left it: the usable size, and the slab bit
    char fill;

    std::uint64_t size() const { return strblocks::usable(cap); }
    bool intact() const { return std::all_of(block, block + size(), [this](char c) { return c == fill; }); }
    void release() const { strblocks::release(block, cap); }
};

Held take(std::uint64_t size, char fill) {
    Held h{nullptr, size, fill};
    h.block = strblocks::allocate(h.cap);
    EXPECT_EQ(h.size(), size);
    std::memset(h.block, fill, size);
    return h;
}

}  // namespace

// Blocks of every size up to past the pooled limit, taken and given back in
// a random order: each block keeps its own bytes to the end. Only short
// blocks, and only inside a scope, come from slabs.
TEST(StringBlocks, BlocksNeverOverlap) {
    Held outside = take(16, 'o');
    EXPECT_EQ(outside.cap, 16u) << "no scope, no slab";
    strblocks::Scope scope;
    std::mt19937 rng(20261121);
    std::vector<Held> held;
    for (int round = 0; round < 20000; round++) {
        if (held.empty() || rng() % 3 != 0) {
            std::uint64_t const size = 1 + rng() % (strblocks::kMaxPooled + 40);
            held.push_back(take(size, static_cast<char>(1 + round % 127)));
            if (size > strblocks::kMaxPooled) {
                EXPECT_EQ(held.back().cap, size) << "a long block is never a slab's";
            }
        } else {
            std::size_t const i = rng() % held.size();
            ASSERT_TRUE(held[i].intact()) << "block of " << held[i].size() << " bytes overwritten";
            held[i].release();
            held[i] = held.back();
            held.pop_back();
        }
    }
    for (Held const& h : held) {
        EXPECT_TRUE(h.intact()) << "block of " << h.size() << " bytes overwritten";
        h.release();
    }
    strblocks::release(nullptr, 10);  // nothing to give back
    outside.release();
}

// Slabs that lose their last block are freed, in whatever order the blocks
// come back; only the open slab of each size class may stay. Blocks that
// outlive their scope keep their slab until they are released.
TEST(StringBlocks, SlabsFollowTheirBlocks) {
    std::vector<Held> escaped;
    {
        strblocks::Scope scope;
        std::vector<Held> held;
        for (int i = 0; i < 6000; i++)
            held.push_back(take(i % 2 == 0 ? 5 : 112, 'x'));  // a name, a text built by set
        unsigned const full = scope.slabsHeld();
        if (full == 0)
            GTEST_SKIP() << "built with plain blocks";
        EXPECT_GE(full, 20u);  // 3000 blocks of 112 bytes need a score of slabs

        // Every other block of each size first: no slab empties, so none goes.
        for (std::size_t i = 0; i < held.size(); i++)
            if (i / 2 % 2 == 0)
                held[i].release();
        EXPECT_EQ(scope.slabsHeld(), full);
        // The rest from the back, but for two that outlive the scope.
        escaped = {held[3], held[5998]};
        for (std::size_t i = held.size(); i-- > 0;)
            if (i / 2 % 2 == 1 && i != 3 && i != 5998)
                held[i].release();
        EXPECT_LE(scope.slabsHeld(), 4u);
    }
    for (Held const& h : escaped) {
        EXPECT_TRUE(h.intact());
        h.release();
    }
}
