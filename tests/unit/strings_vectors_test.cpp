// mstring and mvector: the capacity rules and the copy/resize semantics that
// the rest of the compiler relies on.
#include <gtest/gtest.h>

#include <string>

#include "foundation/mstring.h"
#include "foundation/mvector.h"

// Null and empty are both empty; a literal fits exactly, a copy goes
// through set, which takes n + 100 and reallocates once n reaches the
// capacity (the NUL needs its byte).
TEST(MString, NullEmptyAndSet) {
    mstring null;
    EXPECT_EQ(null.ptr(), nullptr);
    EXPECT_STREQ(null.c_str(), "");
    mstring empty("");  // a one-byte block, not a null pointer
    EXPECT_NE(empty.ptr(), nullptr);
    EXPECT_EQ(empty.capacity(), 1u);
    EXPECT_TRUE(empty == null);
    EXPECT_EQ(mstring(empty).ptr(), nullptr);  // an empty source gives a null pointer
    mstring abc("abc");
    EXPECT_EQ(abc.capacity(), 4u);
    EXPECT_EQ(mstring(abc).capacity(), 103u);

    mstring s;
    s.set("abcd", 4);
    EXPECT_EQ(s.capacity(), 104u);
    char const* block = s.ptr();
    s.set("xy", 2);  // fits: block and capacity stay
    EXPECT_EQ(s.ptr(), block);
    EXPECT_EQ(s, "xy");
    std::string big(104, 'q');  // exactly the capacity
    s.set(big.c_str(), big.size());
    EXPECT_EQ(s.capacity(), 204u);
    EXPECT_EQ(std::string(s.c_str()), big);
    s.set("x", 0);  // n == 0 frees the block
    EXPECT_EQ(s.ptr(), nullptr);
    EXPECT_EQ(s.capacity(), 0u);

    // setExact: a block of the text's own size, even from inside the old one.
    s.setExact("name;", 4);
    EXPECT_EQ(s, "name");
    EXPECT_EQ(s.capacity(), 5u);
    s.setExact(s.c_str() + 1, 2);
    EXPECT_EQ(s, "am");
    EXPECT_EQ(s.capacity(), 3u);
    s += "e";  // a full exact block grows as any other: total + 200
    EXPECT_EQ(s.capacity(), 203u);
    s.setExact("x", 0);
    EXPECT_EQ(s.ptr(), nullptr);
    EXPECT_EQ(s.capacity(), 0u);
}

// add on a null string is set; once the total reaches the capacity it
// grows to total + 200.
TEST(MString, AddConcatenationAndOrder) {
    mstring s;
    s.add("ab", 2);
    EXPECT_EQ(s.capacity(), 102u);
    mstring exact("abcdef");  // capacity 7, length 6
    exact.add("g", 1);
    EXPECT_EQ(exact.capacity(), 207u);
    EXPECT_EQ(exact, "abcdefg");
    mstring self("xy");
    self += self;
    self += mstring();  // a null operand adds nothing
    EXPECT_EQ(self + "z", "xyxyz");
    EXPECT_EQ("e" + self, "exyxy");
    // Ordering is by unsigned bytes; null sorts as empty.
    EXPECT_TRUE(mstring("z") < mstring("\xc3\xa9"));
    EXPECT_TRUE(mstring() < mstring("a"));
    EXPECT_FALSE(mstring() < mstring(""));
}

// Growth is by exactly what is needed; shrinking only lowers the size, and
// regrowing gives default values; copies are deep, in a block of the
// source's size.
TEST(MVector, GrowthShrinkAndCopies) {
    mvector<mstring> v;
    for (char const* s : {"a", "b", "c"}) {
        v.push_back(s);
        EXPECT_EQ(v.capacity(), v.size());
    }
    v.insert(1, "i");
    v.insert(4, "end");
    std::string all;
    for (unsigned i = 0; i < v.size(); i++)
        all += std::string(v[i].c_str()) + " ";
    EXPECT_EQ(all, "a i b c end ");
    v.resize(1);
    EXPECT_EQ(v.capacity(), 5u);
    v.resize(3);
    EXPECT_EQ(v[0], "a");
    EXPECT_EQ(v[1].ptr(), nullptr);
    EXPECT_EQ(v[2].ptr(), nullptr);

    mvector<mvector<int>> nested;
    nested.resize(1);
    nested[0].push_back(1);
    mvector<mvector<int>> copy = nested;
    copy[0].push_back(2);
    EXPECT_EQ(nested[0].size(), 1u);
    EXPECT_EQ(copy.capacity(), 1u);
    mvector<int> none;
    EXPECT_EQ(mvector<int>(none).capacity(), 0u);
}

TEST(MVector, HeapSort) {
    mvector<int> nums;
    sort_vector(nums, [](int a, int b) { return a < b; });  // empty: nothing happens
    for (int x : {5, 3, 9, 1, 5, 0, -2})
        nums.push_back(x);
    sort_vector(nums, [](int a, int b) { return a < b; });
    std::string got;
    for (unsigned i = 0; i < nums.size(); i++)
        got += std::to_string(nums[i]) + " ";
    EXPECT_EQ(got, "-2 0 1 3 5 5 9 ");
}
