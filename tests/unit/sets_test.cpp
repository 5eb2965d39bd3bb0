// Ordered sets: key order for look-ups, insertion order for walks, and
// reference-counted ownership of the elements.
#include <gtest/gtest.h>

#include "foundation/sets.h"

namespace {

int g_destroyed = 0;

struct Named : IComparable {
    explicit Named(char const* n) : name(n) {}
    ~Named() override { g_destroyed++; }
    bool less(IComparable const* other) const override { return name < static_cast<Named const*>(other)->name; }
    mstring name;
};

mstring nameOf(HIComparable const& h) { return static_cast<Named*>(h.get())->name; }

}  // namespace

TEST(Sets, HandlesCountReferences) {
    g_destroyed = 0;
    {
        HIComparable a(new Named("x"));
        EXPECT_EQ(a->m_refCount, 1);
        HIComparable b = a;
        EXPECT_EQ(a->m_refCount, 2);
        b = HIComparable();
        EXPECT_EQ(a->m_refCount, 1);
        EXPECT_EQ(g_destroyed, 0);
        a = a;  // self-assignment keeps the target alive
        EXPECT_EQ(g_destroyed, 0);
    }
    EXPECT_EQ(g_destroyed, 1);
}

TEST(Sets, WalkInInsertionOrderFindByKey) {
    g_destroyed = 0;
    {
        ISet* set = ISet::create();
        char const* names[] = {"delta", "alpha", "charlie", "bravo"};
        for (char const* n : names)
            EXPECT_TRUE(set->add(HIComparable(new Named(n))));
        EXPECT_EQ(set->size(), 4u);

        ISet::Pos* pos = set->first();
        for (char const* n : names) {
            ASSERT_TRUE(pos->valid());
            EXPECT_EQ(nameOf(pos->get()), n);
            pos->next();
        }
        EXPECT_FALSE(pos->valid());
        EXPECT_TRUE(pos->get().isNull());
        delete pos;

        for (char const* n : names) {
            Named key(n);
            HIComparable* found = set->find(key);
            ASSERT_NE(found, nullptr) << n;
            EXPECT_EQ(nameOf(*found), n);
        }
        Named missing("echo");
        EXPECT_EQ(set->find(missing), nullptr);
        Named before("a");
        EXPECT_EQ(set->find(before), nullptr);
        HIComparable byHandle(new Named("charlie"));
        ASSERT_NE(set->find(byHandle), nullptr);
        EXPECT_NE(set->find(byHandle)->get(), byHandle.get());  // the stored one, not the key
        byHandle = HIComparable();
        delete set;
    }
    EXPECT_EQ(g_destroyed, 4 + 6 + 1);  // elements, stack keys, the handle key
}

TEST(Sets, DuplicateKeepsTheFirst) {
    ISet* set = ISet::create();
    Named* first = new Named("same");
    EXPECT_TRUE(set->add(HIComparable(first)));
    HIComparable second(new Named("same"));
    EXPECT_FALSE(set->add(second));
    EXPECT_EQ(set->size(), 1u);
    Named key("same");
    EXPECT_EQ(set->find(key)->get(), first);
    EXPECT_EQ(second->m_refCount, 1);  // the caller still holds the refused one
    delete set;
}

TEST(Sets, RemoveOnlyHidesFromLookUp) {
    ISet* set = ISet::create();
    set->add(HIComparable(new Named("a")));
    set->add(HIComparable(new Named("b")));
    set->add(HIComparable(new Named("c")));
    Named b("b");
    set->remove(b);
    EXPECT_EQ(set->find(b), nullptr);
    EXPECT_EQ(set->size(), 3u);  // walks and output still see it
    ISet::Pos* pos = set->first();
    pos->next();
    EXPECT_EQ(nameOf(pos->get()), "b");
    delete pos;
    Named a("a"), c("c"), zz("zz");
    EXPECT_NE(set->find(a), nullptr);
    EXPECT_NE(set->find(c), nullptr);
    set->remove(zz);  // unknown: nothing happens
    EXPECT_EQ(set->size(), 3u);
    // Once removed, the key can be added again.
    EXPECT_TRUE(set->add(HIComparable(new Named("b"))));
    EXPECT_EQ(set->size(), 4u);
    delete set;
}

TEST(Sets, EmptySetCursor) {
    ISet* set = ISet::create();
    ISet::Pos* pos = set->first();
    EXPECT_FALSE(pos->valid());
    EXPECT_TRUE(pos->get().isNull());
    delete pos;
    delete set;
}

TEST(Sets, StringSet) {
    StringSet s;
    EXPECT_TRUE(s.insert("x"));
    EXPECT_TRUE(s.insert("y"));
    EXPECT_FALSE(s.insert("x"));
    EXPECT_TRUE(s.find("y"));
    EXPECT_FALSE(s.find("z"));
    EXPECT_TRUE(s.insert(""));
    EXPECT_TRUE(s.find(mstring()));  // null and empty are the same text
    EXPECT_EQ(s.v_strings.size(), 3u);
}
