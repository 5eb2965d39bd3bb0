// Ordered sets: key order for look-ups, insertion order for walks; and the
// set of names.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "foundation/sets.h"

namespace {

struct Named : IComparable {
    explicit Named(char const* n) : name(n) {}
    bool less(IComparable const* other) const override { return name < static_cast<Named const*>(other)->name; }
    mstring name;
};

// An element keyed by its name: the sets find it through their name table.
struct Keyed : Named {
    explicit Keyed(char const* n) : Named(n) {}
    char const* keyName() const override { return name.c_str(); }
};

int compareNamed(IComparable const* e, void const* key) {
    return std::strcmp(static_cast<Named const*>(e)->name.c_str(), static_cast<char const*>(key));
}

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

// Names are kept whole, however long.
TEST(Sets, StringSet) {
    StringSet s;
    EXPECT_TRUE(s.insert("x"));
    EXPECT_FALSE(s.insert("x"));
    EXPECT_TRUE(s.insert(""));
    EXPECT_TRUE(s.find(mstring()));  // null and empty are the same text
    EXPECT_TRUE(s.insert("long_name"));
    EXPECT_TRUE(s.find("long_name"));
    EXPECT_FALSE(s.find("long_nam"));
    EXPECT_EQ(s.v_strings.size(), 3u);
}

// The name table and the sorted view answer alike: for keyed elements, for
// a set that also holds an unkeyed one, across removals and re-adds, and
// over enough names that the table grows several times.
TEST(Sets, NameLookUpAgreesWithKeyOrder) {
    for (bool mixed : {false, true}) {
        SCOPED_TRACE(mixed ? "with an unkeyed element" : "keyed only");
        ISet* set = ISet::create();
        std::set<std::string> model;
        std::vector<std::string> order;
        auto add = [&](std::string const& n, bool keyed) {
            Named* e = keyed ? new Keyed(n.c_str()) : new Named(n.c_str());
            HIComparable h(e);
            EXPECT_EQ(set->add(h), model.insert(n).second) << n;
            if (order.size() < set->size())
                order.push_back(n);
        };
        for (int i = 0; i < 3000; i++) {
            // Names repeat (i % 1700) and differ only late ("n12" against "n120").
            add("n" + std::to_string((i * 7919) % 1700), true);
            if (mixed && i == 1000)
                add("unkeyed", false);
        }
        for (int i = 0; i < 1700; i += 3) {
            std::string const n = "n" + std::to_string(i);
            Named key(n.c_str());
            set->remove(key);
            model.erase(n);
        }
        for (int i = 0; i < 1700; i += 9)
            add("n" + std::to_string(i), true);
        for (int i = -5; i < 1800; i++) {
            std::string const n = "n" + std::to_string(i);
            Named key(n.c_str());
            HIComparable* byKey = set->find(key);
            HIComparable* byName = set->findName(n.c_str(), &compareNamed);
            bool const present = model.count(n) != 0;
            EXPECT_EQ(byKey != nullptr, present) << n;
            EXPECT_EQ(byName != nullptr, present) << n;
            if (byKey && byName) {
                EXPECT_EQ(byKey->get(), byName->get()) << n;
            }
        }
        EXPECT_EQ(set->findName("", &compareNamed), nullptr);
        std::string expected;
        for (std::string const& n : order)
            expected += n + " ";
        EXPECT_EQ(walk(set), expected);
        delete set;
    }
}
