// Ordered sets of reference-counted elements.
//
// A set keeps two views of its elements: the order of insertion, which is
// what walks and output see, and the order by key, which look-ups use.
// Elements keyed by a name are also found through a hash table on that
// name; the sorted view of such a set is only built once something asks
// for the key order.
#pragma once

#include <cstdint>

#include "foundation/mstring.h"
#include "foundation/mvector.h"

class IComparable {
public:
    virtual ~IComparable() = default;
    virtual bool less(IComparable const* other) const = 0;
    // The name the element is ordered by, or null for an element ordered
    // some other way. An element that gives a name must order exactly as
    // strcmp orders the names, and keep the name while a set looks it up.
    virtual char const* keyName() const { return nullptr; }

    int m_refCount = 0;
};

// Counted handle: copying adds a reference, releasing the last one destroys
// the target. Inline, so that the element loops of a growing vector of
// handles need no calls.
class HIComparable {
public:
    HIComparable() = default;
    HIComparable(IComparable* p) : m_ptr(p) {  // NOLINT: handles are made from raw targets everywhere
        if (m_ptr)
            m_ptr->m_refCount++;
    }
    HIComparable(HIComparable const& other) : m_ptr(other.m_ptr) {
        if (m_ptr)
            m_ptr->m_refCount++;
    }
    // A move hands the reference over: no count changes.
    HIComparable(HIComparable&& other) noexcept : m_ptr(other.m_ptr) { other.m_ptr = nullptr; }
    ~HIComparable() {
        if (m_ptr)
            release();
    }
    // The target is read before anything is released: `other` may be this
    // very handle, which release() clears.
    HIComparable& operator=(HIComparable const& other) { return *this = other.m_ptr; }
    HIComparable& operator=(HIComparable&& other) noexcept {
        if (this != &other) {
            IComparable* p = other.m_ptr;
            other.m_ptr = nullptr;
            if (m_ptr)
                release();
            m_ptr = p;
        }
        return *this;
    }
    // Counts the new target before releasing the old, so that assigning
    // the target a handle already holds keeps it alive.
    HIComparable& operator=(IComparable* p) {
        if (p)
            p->m_refCount++;
        if (m_ptr)
            release();
        m_ptr = p;
        return *this;
    }

    IComparable* get() const { return m_ptr; }
    IComparable* operator->() const { return m_ptr; }
    bool isNull() const { return m_ptr == nullptr; }

private:
    // Drops the reference of a handle that holds one.
    void release();
    IComparable* m_ptr = nullptr;
};

class ISet {
public:
    class Pos {
    public:
        virtual ~Pos() = default;
        virtual HIComparable get() = 0;
        virtual void next() = 0;
        virtual bool valid() = 0;
    };

    virtual ~ISet() = default;
    virtual bool add(HIComparable const& h) = 0;
    virtual HIComparable* find(HIComparable const& key) = 0;
    virtual HIComparable* find(IComparable const& key) = 0;
    // Look-up without a key object: `compare(element, key)` answers below,
    // at or above zero as the element orders before, equal to or after the
    // key, in the same order as `less`.
    using Compare = int (*)(IComparable const* element, void const* key);
    virtual HIComparable* find(Compare compare, void const* key) = 0;
    // The element whose key name is `name`, as find(compare, name) answers
    // it; `compare` gets a char const* key. Constant time while every
    // element of the set has a key name.
    virtual HIComparable* findName(char const* name, Compare compare) = 0;
    // The same with `hash` = nameHash(name), for a caller that looks one
    // name up in several sets.
    virtual HIComparable* findName(char const* name, Compare compare, std::uint32_t hash) = 0;
    static std::uint32_t nameHash(char const* name);
    virtual unsigned size() const = 0;
    virtual void remove(IComparable const& key) = 0;
    // A new cursor at the first element in order of insertion; the caller owns it.
    virtual Pos* first() const = 0;

    static ISet* create();
};

class SetImpl : public ISet {
public:
    ~SetImpl() override;
    bool add(HIComparable const& h) override;
    HIComparable* find(HIComparable const& key) override;
    HIComparable* find(IComparable const& key) override;
    HIComparable* find(Compare compare, void const* key) override;
    HIComparable* findName(char const* name, Compare compare) override;
    HIComparable* findName(char const* name, Compare compare, std::uint32_t hash) override;
    unsigned size() const override;
    void remove(IComparable const& key) override;
    Pos* first() const override;

    // The element added i-th; i below size().
    HIComparable const& inOrder(unsigned i) const { return v_inOrder[static_cast<int>(i)]; }

private:
    // One place of the name table: the name's hash and the element's place
    // in v_inOrder plus one; 0 marks a free place, kRemoved a removed one.
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t place = 0;
    };
    static constexpr std::uint32_t kRemoved = 0xFFFFFFFFu;

    // Index of the first element of the sorted view that is not less than key.
    unsigned lowerBound(IComparable const& key) const;
    // Builds the sorted view if it is not kept yet; from then on every add
    // keeps it up to date.
    void keepSorted();
    // The table place holding element `e` under `hash`, or -1.
    int slotOf(IComparable const* e, std::uint32_t hash) const;
    // The table place of the element named `name`, or -1.
    int slotNamed(char const* name, std::uint32_t hash) const;
    void addSlot(std::uint32_t hash, std::uint32_t place);

    // Both views keep spare null places behind their elements: a set that
    // grew its blocks by one element would copy itself on every add.
    mvector<HIComparable> v_inOrder;
    mvector<HIComparable> v_sorted;
    unsigned m_inOrderCount = 0;
    unsigned m_sortedCount = 0;
    // The name table, a power of two in size; used only while m_named.
    mvector<Slot> v_slots;
    unsigned m_slotsTaken = 0;  // free places excepted
    bool m_named = true;        // every element added so far has a key name
    bool m_sortedKept = false;  // v_sorted holds every element not removed
};

class PosImpl : public ISet::Pos {
public:
    explicit PosImpl(SetImpl const* set) : m_set(set) {}
    HIComparable get() override;
    void next() override;
    bool valid() override;

private:
    SetImpl const* m_set;
    unsigned m_index = 0;
};

class StringSet {
public:
    virtual ~StringSet() = default;
    virtual bool insert(mstring const& s);
    virtual bool find(mstring const& s);

    mvector<mstring> v_strings;
};
