// Ordered sets: key order for look-ups, insertion order for walks, and
// reference-counted ownership of the elements.
#include <gtest/gtest.h>

#include <string>

#include "foundation/sets.h"

namespace {

int g_destroyed = 0;

struct Named : IComparable {
    explicit Named(char const* n) : name(n) {}
    ~Named() override { g_destroyed++; }
    bool less(IComparable const* other) const override { return name < static_cast<Named const*>(other)->name; }
    mstring name;
};

std::string walk(ISet* set) {
    std::string s;
    ISet::Pos* pos = set->first();
    for (; pos->valid(); pos->next())
        s += std::string(static_cast<Named*>(pos->get().get())->name.c_str()) + " ";
    EXPECT_TRUE(pos->get().isNull());
    delete pos;
    return s;
}

}  // namespace

TEST(Sets, HandlesCountReferences) {
    g_destroyed = 0;
    {
        HIComparable a(new Named("x"));
        HIComparable b = a;
        EXPECT_EQ(a->m_refCount, 2);
        b = HIComparable();
        a = a;  // self-assignment keeps the target alive
        EXPECT_EQ(a->m_refCount, 1);
        EXPECT_EQ(g_destroyed, 0);
    }
    EXPECT_EQ(g_destroyed, 1);
}

// Walks go in insertion order, look-ups by key; a duplicate is refused and
// the first kept; a removed element is hidden from look-ups only, and its
// key can be added again.
TEST(Sets, InsertionOrderLookUpDuplicatesAndRemoval) {
    ISet* set = ISet::create();
    EXPECT_EQ(walk(set), "");
    Named* first = nullptr;
    for (char const* n : {"delta", "alpha", "charlie", "bravo"}) {
        Named* e = new Named(n);
        first = first ? first : e;
        EXPECT_TRUE(set->add(HIComparable(e)));
    }
    HIComparable refused(new Named("delta"));
    EXPECT_FALSE(set->add(refused));
    EXPECT_EQ(refused->m_refCount, 1);  // the caller still holds it
    Named delta("delta"), echo("echo"), charlie("charlie");
    EXPECT_EQ(set->find(delta)->get(), first);
    EXPECT_EQ(set->find(echo), nullptr);

    set->remove(charlie);
    set->remove(echo);  // unknown: nothing happens
    EXPECT_EQ(set->find(charlie), nullptr);
    EXPECT_NE(set->find(delta), nullptr);
    EXPECT_EQ(set->size(), 4u);
    EXPECT_EQ(walk(set), "delta alpha charlie bravo ");
    EXPECT_TRUE(set->add(HIComparable(new Named("charlie"))));
    EXPECT_EQ(walk(set), "delta alpha charlie bravo charlie ");
    delete set;
}

TEST(Sets, StringSet) {
    StringSet s;
    EXPECT_TRUE(s.insert("x"));
    EXPECT_FALSE(s.insert("x"));
    EXPECT_TRUE(s.insert(""));
    EXPECT_TRUE(s.find(mstring()));  // null and empty are the same text
    EXPECT_FALSE(s.find("z"));
    EXPECT_EQ(s.v_strings.size(), 2u);
}
