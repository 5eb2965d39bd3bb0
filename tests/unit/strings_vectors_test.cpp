// mstring and mvector: the capacity rules and the copy/resize semantics that
// the rest of the compiler relies on.
#include <gtest/gtest.h>

#include <cstring>

#include "foundation/mstring.h"
#include "foundation/mvector.h"

TEST(MString, ConstructionAndCapacity) {
    mstring null;
    EXPECT_EQ(null.ptr(), nullptr);
    EXPECT_EQ(null.capacity(), 0u);
    EXPECT_STREQ(null.c_str(), "");

    mstring exact("abc");  // exact fit
    EXPECT_EQ(exact.capacity(), 4u);
    mstring empty("");  // a one-byte block, not a null pointer
    EXPECT_NE(empty.ptr(), nullptr);
    EXPECT_EQ(empty.capacity(), 1u);
    EXPECT_TRUE(empty == null);

    mstring copyOfEmpty(empty);  // an empty source gives a null pointer
    EXPECT_EQ(copyOfEmpty.ptr(), nullptr);
    mstring copy(exact);
    EXPECT_EQ(copy.capacity(), 103u);  // copies go through set: n + 100
    EXPECT_EQ(copy, "abc");
}

TEST(MString, SetRules) {
    mstring s("hello");
    s.set("x", 0);  // n == 0 frees the block
    EXPECT_EQ(s.ptr(), nullptr);
    EXPECT_EQ(s.capacity(), 0u);
    EXPECT_TRUE(s == "");

    s.set("abcd", 4);
    EXPECT_EQ(s.capacity(), 104u);
    char const* block = s.ptr();
    s.set("xy", 2);  // fits: block and capacity stay
    EXPECT_EQ(s.ptr(), block);
    EXPECT_EQ(s.capacity(), 104u);
    EXPECT_EQ(s, "xy");

    std::string big(104, 'q');  // exactly the capacity: the NUL needs a byte
    s.set(big.c_str(), big.size());
    EXPECT_EQ(s.capacity(), 204u);
    EXPECT_EQ(std::string(s.c_str()), big);

    mstring t("abc");
    t = mstring();  // assigning an empty string frees the block
    EXPECT_EQ(t.ptr(), nullptr);
}

TEST(MString, AddRules) {
    mstring s;
    s.add("ab", 2);  // on a null string add behaves as set
    EXPECT_EQ(s.capacity(), 102u);
    s.add("cd", 2);
    EXPECT_EQ(s.capacity(), 102u);
    EXPECT_EQ(s, "abcd");

    mstring exact("abcdef");  // capacity 7, length 6
    exact.add("g", 1);        // total 7 >= capacity: grows to total + 200
    EXPECT_EQ(exact.capacity(), 207u);
    EXPECT_EQ(exact, "abcdefg");

    mstring zero("");  // a block of length 0 with capacity 1
    char const* block = zero.ptr();
    zero.add("", 0);  // n fits: the block stays
    EXPECT_EQ(zero.ptr(), block);

    mstring self("xy");
    self += self;
    EXPECT_EQ(self, "xyxy");
    self += 'z';
    self += mstring();  // a null operand adds nothing
    EXPECT_EQ(self, "xyxyz");
}

TEST(MString, ConcatenationAndOrdering) {
    mstring a("ab");
    EXPECT_EQ(a + mstring("c"), "abc");
    EXPECT_EQ(a + "d", "abd");
    EXPECT_EQ("e" + a, "eab");
    EXPECT_EQ(mstring() + mstring(), "");

    EXPECT_TRUE(mstring("a") < mstring("b"));
    EXPECT_TRUE(mstring("b") > mstring("a"));
    EXPECT_TRUE(mstring() < mstring("a"));
    EXPECT_FALSE(mstring() < mstring(""));
    // Ordering is by unsigned bytes.
    EXPECT_TRUE(mstring("z") < mstring("\xc3\xa9"));
    EXPECT_NE(mstring("a"), mstring("A"));
    EXPECT_EQ(mstring("abc").length(), 3u);
    EXPECT_EQ(mstring().length(), 0u);
}

namespace {
struct Rec {
    mstring name;
    mvector<int> items;
};
}  // namespace

TEST(MVector, GrowsByExactlyOne) {
    mvector<int> v;
    EXPECT_EQ(v.size(), 0u);
    EXPECT_EQ(v.capacity(), 0u);
    for (int i = 0; i < 5; i++) {
        v.push_back(i * 10);
        EXPECT_EQ(v.size(), static_cast<unsigned>(i + 1));
        EXPECT_EQ(v.capacity(), v.size());  // capacity equals size after any growth
    }
    EXPECT_EQ(v[4], 40);

    v.insert(0, -1);
    v.insert(3, 99);
    int expected[] = {-1, 0, 10, 99, 20, 30, 40};
    ASSERT_EQ(v.size(), 7u);
    for (int i = 0; i < 7; i++)
        EXPECT_EQ(v[i], expected[i]);
    v.insert(7, 77);  // at the end
    EXPECT_EQ(v[7], 77);
}

TEST(MVector, ShrinkAndRegrowGivesDefaults) {
    mvector<mstring> v;
    v.push_back("a");
    v.push_back("b");
    v.push_back("c");
    v.resize(1);
    EXPECT_EQ(v.size(), 1u);
    EXPECT_EQ(v.capacity(), 3u);  // shrinking only lowers the size
    v.resize(3);
    EXPECT_EQ(v[0], "a");
    EXPECT_EQ(v[1].ptr(), nullptr);  // regained places are default values
    EXPECT_EQ(v[2].ptr(), nullptr);
    v.resize(4);
    EXPECT_EQ(v.capacity(), 4u);
    EXPECT_EQ(v[0], "a");
}

TEST(MVector, CopiesAreDeep) {
    mvector<Rec> v;
    Rec r;
    r.name = "first";
    r.items.push_back(1);
    v.push_back(r);
    r.items.push_back(2);  // the copy in the vector is unaffected
    EXPECT_EQ(v[0].items.size(), 1u);

    mvector<Rec> w = v;
    w[0].name = "changed";
    w[0].items.push_back(3);
    EXPECT_EQ(v[0].name, "first");
    EXPECT_EQ(v[0].items.size(), 1u);
    EXPECT_EQ(w.capacity(), 1u);  // a copy gets a fresh block of the source's size

    for (int i = 0; i < 20; i++) {  // growth keeps the old elements intact
        Rec e;
        e.name = mstring("n") + mstring(std::to_string(i).c_str());
        e.items.push_back(i);
        v.push_back(e);
    }
    EXPECT_EQ(v[0].name, "first");
    EXPECT_EQ(v[20].name, "n19");
    EXPECT_EQ(v[20].items[0], 19);

    mvector<int> empty;
    mvector<int> emptyCopy(empty);
    EXPECT_EQ(emptyCopy.capacity(), 0u);
}

namespace {
struct Keyed {
    bool flag = false;
    int weight = 0;
    int id = 0;
};
// Elements with the flag false first, and within each group larger weights first.
bool ordered_before(Keyed const& a, Keyed const& b) {
    if (a.flag != b.flag)
        return !a.flag;
    return a.weight > b.weight;
}
}  // namespace

TEST(MVector, HeapSort) {
    mvector<Keyed> none;
    sort_vector(none);
    EXPECT_EQ(none.size(), 0u);

    mvector<Keyed> one;
    one.push_back({true, 3, 7});
    sort_vector(one);
    EXPECT_EQ(one[0].id, 7);

    // Table: {flag, weight}. The result is ascending in the element order:
    // flag false first, largest weight first; then flag true, largest first.
    mvector<Keyed> v;
    int const table[][2] = {{1, 4}, {0, 1}, {0, 8}, {1, 2}, {0, 4}, {1, 8}, {0, 2}};
    for (int i = 0; i < 7; i++)
        v.push_back({table[i][0] != 0, table[i][1], i});
    sort_vector(v);
    for (unsigned i = 1; i < v.size(); i++)
        EXPECT_FALSE(ordered_before(v[i], v[i - 1])) << "at " << i;
    int const want[][2] = {{0, 8}, {0, 4}, {0, 2}, {0, 1}, {1, 8}, {1, 4}, {1, 2}};
    for (int i = 0; i < 7; i++) {
        EXPECT_EQ(v[i].flag, want[i][0] != 0) << "at " << i;
        EXPECT_EQ(v[i].weight, want[i][1]) << "at " << i;
    }

    mvector<int> nums;
    for (int x : {5, 3, 9, 1, 5, 0, -2})
        nums.push_back(x);
    sort_vector(nums, [](int a, int b) { return a < b; });
    int sorted[] = {-2, 0, 1, 3, 5, 5, 9};
    for (int i = 0; i < 7; i++)
        EXPECT_EQ(nums[i], sorted[i]);
}
