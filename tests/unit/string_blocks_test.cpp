// The slabs behind mstring's short blocks: blocks never overlap whatever the
// order of allocations and releases, and slabs go back to the heap once
// their blocks are gone.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "foundation/mstring.h"
#include "foundation/strblocks.h"

namespace {

struct Held {
    char* block;
    std::uint64_t size;
    char fill;
};

void fillBlock(Held const& h) { std::memset(h.block, h.fill, h.size); }

bool intact(Held const& h) {
    for (std::uint64_t i = 0; i < h.size; i++)
        if (h.block[i] != h.fill)
            return false;
    return true;
}

}  // namespace

// Blocks of every size up to past the pooled limit, taken and given back in
// a random order: each block keeps its own bytes to the end.
TEST(StringBlocks, BlocksNeverOverlap) {
    std::mt19937 rng(20261121);
    std::vector<Held> held;
    char fill = 1;
    for (int round = 0; round < 20000; round++) {
        bool const take = held.empty() || rng() % 3 != 0;
        if (take) {
            std::uint64_t const size = 1 + rng() % (strblocks::kMaxPooled + 40);
            Held h{strblocks::allocate(size), size, fill};
            fill = static_cast<char>(fill == 127 ? 1 : fill + 1);
            fillBlock(h);
            held.push_back(h);
        } else {
            std::size_t const i = rng() % held.size();
            ASSERT_TRUE(intact(held[i])) << "block of " << held[i].size << " bytes overwritten";
            strblocks::release(held[i].block, held[i].size);
            held[i] = held.back();
            held.pop_back();
        }
    }
    for (Held const& h : held) {
        EXPECT_TRUE(intact(h)) << "block of " << h.size << " bytes overwritten";
        strblocks::release(h.block, h.size);
    }
    strblocks::release(nullptr, 10);  // nothing to give back
}

// Slabs that lose their last block are freed, in whatever order the blocks
// come back; only the open slab of each size class may stay.
TEST(StringBlocks, EmptySlabsGoBack) {
    unsigned const before = strblocks::slabsHeld();
    std::vector<Held> held;
    for (int i = 0; i < 6000; i++) {
        std::uint64_t const size = i % 2 == 0 ? 5 : 112;  // a name, a text built by set
        held.push_back(Held{strblocks::allocate(size), size, 'x'});
    }
    unsigned const full = strblocks::slabsHeld();
    if (full == 0)
        GTEST_SKIP() << "built with plain blocks (address sanitizer)";
    EXPECT_GE(full, before + 20u);  // 3000 blocks of 112 bytes need a score of slabs

    // Every other block of each size first: no slab empties, so none goes.
    for (std::size_t i = 0; i < held.size(); i++)
        if (i / 2 % 2 == 0)
            strblocks::release(held[i].block, held[i].size);
    EXPECT_EQ(strblocks::slabsHeld(), full);
    // The rest from the back.
    for (std::size_t i = held.size(); i-- > 0;)
        if (i / 2 % 2 == 1)
            strblocks::release(held[i].block, held[i].size);
    EXPECT_LE(strblocks::slabsHeld(), before + 2u);

    // Strings release their blocks with the capacity they were given.
    {
        std::vector<mstring> names;
        for (int i = 0; i < 5000; i++) {
            names.emplace_back("name");
            names.back() += "_indicator";  // grows into a block of another class
        }
        EXPECT_GT(strblocks::slabsHeld(), before + 10u);
    }
    // The open slabs of the three classes used.
    EXPECT_LE(strblocks::slabsHeld(), before + 3u);
}
