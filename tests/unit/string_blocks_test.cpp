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
    std::uint64_t cap, size;  // cap as allocate() left it
    char fill;
};

Held take(std::uint64_t size, char fill) {
    Held h{nullptr, size, size, fill};
    h.block = strblocks::allocate(h.cap);
    std::memset(h.block, fill, size);
    return h;
}

bool intact(Held const& h) { return std::all_of(h.block, h.block + h.size, [&h](char c) { return c == h.fill; }); }

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
    char fill = 1;
    for (int round = 0; round < 20000; round++) {
        bool const taking = held.empty() || rng() % 3 != 0;
        if (taking) {
            std::uint64_t const size = 1 + rng() % (strblocks::kMaxPooled + 40);
            held.push_back(take(size, fill));
            EXPECT_EQ(strblocks::usable(held.back().cap), size);
            if (size > strblocks::kMaxPooled) {
                EXPECT_EQ(held.back().cap, size) << "a long block is never a slab's";
            }
            fill = static_cast<char>(fill == 127 ? 1 : fill + 1);
        } else {
            std::size_t const i = rng() % held.size();
            ASSERT_TRUE(intact(held[i])) << "block of " << held[i].size << " bytes overwritten";
            strblocks::release(held[i].block, held[i].cap);
            held[i] = held.back();
            held.pop_back();
        }
    }
    for (Held const& h : held) {
        EXPECT_TRUE(intact(h)) << "block of " << h.size << " bytes overwritten";
        strblocks::release(h.block, h.cap);
    }
    strblocks::release(nullptr, 10);  // nothing to give back
    strblocks::release(outside.block, outside.cap);
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
                strblocks::release(held[i].block, held[i].cap);
        EXPECT_EQ(scope.slabsHeld(), full);
        // The rest from the back, but for two that outlive the scope.
        for (std::size_t i = held.size(); i-- > 0;) {
            if (i / 2 % 2 == 0)
                continue;
            if (i == 3 || i == 5998)
                escaped.push_back(held[i]);
            else
                strblocks::release(held[i].block, held[i].cap);
        }
        EXPECT_LE(scope.slabsHeld(), 4u);

    }
    for (Held const& h : escaped) {
        EXPECT_TRUE(intact(h));
        strblocks::release(h.block, h.cap);
    }
}
