// mstring and mvector: the capacity rules where they change, and the insert
// semantics that the rest of the compiler relies on.
#include <gtest/gtest.h>

#include <string>

#include "foundation/mstring.h"
#include "foundation/mvector.h"

// A copy goes through set, which takes n + 100 and reallocates once n
// reaches the capacity (the NUL needs its byte); a join makes room for the
// total + 200 once its right side has 100 bytes.
TEST(MString, CapacityRulesAtTheirEdges) {
    mstring null;
    EXPECT_EQ(null.ptr(), nullptr);
    mstring const empty("");
    EXPECT_TRUE(empty == null);
    EXPECT_EQ(mstring(empty).ptr(), nullptr);  // an empty source gives a null pointer

    mstring s;
    s.set("abcd", 4);
    EXPECT_EQ(s.capacity(), 104u);
    std::string const big(104, 'q');  // exactly the capacity
    s.set(big.c_str(), big.size());
    EXPECT_EQ(s.capacity(), 204u);
    EXPECT_EQ(std::string(s.c_str()), big);

    // setExact: a block of the text's own size, even from inside the old one.
    s.setExact(s.c_str() + 1, 2);
    EXPECT_EQ(s, "qq");
    EXPECT_EQ(s.capacity(), 3u);
    s += "e";  // a full exact block grows as any other: total + 200
    EXPECT_EQ(s.capacity(), 203u);

    for (size_t nb : {99, 100}) {
        mstring const j = mstring("ab") + std::string(nb, 'r').c_str();
        EXPECT_EQ(j.capacity(), nb < 100 ? 102u : 2 + nb + 200) << nb;
        EXPECT_EQ(std::string(j.c_str()), "ab" + std::string(nb, 'r'));
    }
    // Ordering is by unsigned bytes; null sorts as empty.
    EXPECT_TRUE(mstring("z") < mstring("\xc3\xa9"));
    EXPECT_FALSE(mstring() < mstring(""));
}

// Growth is by exactly what is needed, so every insert meets a full block,
// at the front, in the middle and at the end.
TEST(MVector, InsertIntoAFullVector) {
    mvector<mstring> v;
    for (char const* s : {"a", "b", "c"})
        v.push_back(s);
    ASSERT_EQ(v.capacity(), v.size());
    v.insert(0, "first");
    v.insert(2, "i");
    v.insert(5, "end");
    std::string all;
    for (unsigned i = 0; i < v.size(); i++)
        all += std::string(v[i].c_str()) + " ";
    EXPECT_EQ(all, "first a i b c end ");
}
