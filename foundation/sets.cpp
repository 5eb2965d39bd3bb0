#include "foundation/sets.h"

#include <cstring>
#include <utility>

void HIComparable::release() {
    IComparable* p = m_ptr;
    m_ptr = nullptr;
    if (--p->m_refCount < 1)
        delete p;
}

ISet* ISet::create() { return new SetImpl(); }

// FNV-1a over the bytes, with a final mix so that names differing only in
// their last characters spread over the whole table.
std::uint32_t ISet::nameHash(char const* s) {
    std::uint32_t h = 2166136261u;
    for (; *s != '\0'; s++)
        h = (h ^ static_cast<unsigned char>(*s)) * 16777619u;
    h ^= h >> 16;
    h *= 0x85ebca6bu;
    h ^= h >> 13;
    return h;
}

SetImpl::~SetImpl() {
    for (unsigned i = 0; i < m_inOrderCount; i++)
        v_inOrder[static_cast<int>(i)] = HIComparable();
    for (unsigned i = 0; i < m_sortedCount; i++)
        v_sorted[static_cast<int>(i)] = HIComparable();
}

namespace {

// Makes room for one more element behind the `used` ones, doubling the
// block when it is full.
void makeRoom(mvector<HIComparable>& v, unsigned used) {
    if (used == v.size())
        v.resize(used < 8 ? 8 : 2 * used);
}

bool sameName(IComparable const* e, char const* name) {
    char const* n = e->keyName();
    return n[0] == name[0] && (n[0] == '\0' || std::strcmp(n + 1, name + 1) == 0);
}

}  // namespace

unsigned SetImpl::lowerBound(IComparable const& key) const {
    unsigned lo = 0, hi = m_sortedCount;
    while (lo < hi) {
        unsigned mid = lo + (hi - lo) / 2;
        IComparable const* e = v_sorted[static_cast<int>(mid)].get();
        if (e == nullptr || e->less(&key))
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}

// Until now nothing was removed, so the view holds every element added,
// and no two of them are equal: the order by key is unique.
void SetImpl::keepSorted() {
    if (m_sortedKept)
        return;
    m_sortedKept = true;
    if (m_inOrderCount == 0)
        return;
    v_sorted.resize(m_inOrderCount);
    for (unsigned i = 0; i < m_inOrderCount; i++)
        v_sorted[static_cast<int>(i)] = v_inOrder[static_cast<int>(i)];
    sort_vector(v_sorted, [](HIComparable const& a, HIComparable const& b) { return a->less(b.get()); });
    m_sortedCount = m_inOrderCount;
}

int SetImpl::slotOf(IComparable const* e, std::uint32_t hash) const {
    std::uint32_t const mask = v_slots.size() - 1;
    for (std::uint32_t i = hash & mask;; i = (i + 1) & mask) {
        Slot const& slot = v_slots[static_cast<int>(i)];
        if (slot.place == 0)
            return -1;
        if (slot.place != kRemoved && slot.hash == hash && v_inOrder[static_cast<int>(slot.place - 1)].get() == e)
            return static_cast<int>(i);
    }
}

int SetImpl::slotNamed(char const* name, std::uint32_t hash) const {
    if (v_slots.size() == 0)
        return -1;
    std::uint32_t const mask = v_slots.size() - 1;
    for (std::uint32_t i = hash & mask;; i = (i + 1) & mask) {
        Slot const& slot = v_slots[static_cast<int>(i)];
        if (slot.place == 0)
            return -1;
        if (slot.place != kRemoved && slot.hash == hash &&
            sameName(v_inOrder[static_cast<int>(slot.place - 1)].get(), name))
            return static_cast<int>(i);
    }
}

// At most three places in four are taken, free ones always remain.
void SetImpl::addSlot(std::uint32_t hash, std::uint32_t place) {
    if (4 * (m_slotsTaken + 1) > 3 * v_slots.size()) {
        mvector<Slot> old = std::move(v_slots);
        v_slots.resize(old.size() < 16 ? 16 : 2 * old.size());
        m_slotsTaken = 0;
        for (unsigned i = 0; i < old.size(); i++)
            if (old[static_cast<int>(i)].place != 0 && old[static_cast<int>(i)].place != kRemoved)
                addSlot(old[static_cast<int>(i)].hash, old[static_cast<int>(i)].place);
    }
    std::uint32_t const mask = v_slots.size() - 1;
    std::uint32_t i = hash & mask;
    while (v_slots[static_cast<int>(i)].place != 0)
        i = (i + 1) & mask;
    v_slots[static_cast<int>(i)].hash = hash;
    v_slots[static_cast<int>(i)].place = place;
    m_slotsTaken++;
}

HIComparable* SetImpl::find(IComparable const& key) {
    keepSorted();
    unsigned i = lowerBound(key);
    if (i < m_sortedCount && !key.less(v_sorted[static_cast<int>(i)].get()))
        return &v_sorted[static_cast<int>(i)];
    return nullptr;
}

HIComparable* SetImpl::find(HIComparable const& key) {
    return key.get() ? find(*key.get()) : nullptr;
}

HIComparable* SetImpl::find(Compare compare, void const* key) {
    keepSorted();
    unsigned lo = 0, hi = m_sortedCount;
    while (lo < hi) {
        unsigned mid = lo + (hi - lo) / 2;
        IComparable const* e = v_sorted[static_cast<int>(mid)].get();
        int c = e == nullptr ? -1 : compare(e, key);
        if (c == 0)
            return &v_sorted[static_cast<int>(mid)];
        if (c < 0)
            lo = mid + 1;
        else
            hi = mid;
    }
    return nullptr;
}

HIComparable* SetImpl::findName(char const* name, Compare compare) {
    if (!m_named)
        return find(compare, name);
    if (m_inOrderCount == 0)
        return nullptr;
    return findName(name, compare, nameHash(name));
}

HIComparable* SetImpl::findName(char const* name, Compare compare, std::uint32_t hash) {
    if (!m_named)
        return find(compare, name);
    int s = slotNamed(name, hash);
    return s < 0 ? nullptr : &v_inOrder[static_cast<int>(v_slots[s].place - 1)];
}

bool SetImpl::add(HIComparable const& h) {
    if (h.get() == nullptr)
        return false;
    char const* name = m_named ? h->keyName() : nullptr;
    std::uint32_t hash = 0;
    if (name != nullptr) {
        // Ordered like its name: an equal element is one of the same name.
        hash = nameHash(name);
        if (slotNamed(name, hash) >= 0)
            return false;
    } else if (m_named) {
        // An element without a name: from now on the set goes by order alone.
        keepSorted();
        m_named = false;
        v_slots = mvector<Slot>();
        m_slotsTaken = 0;
    }
    if (m_sortedKept) {
        unsigned i = lowerBound(*h.get());
        if (name == nullptr && i < m_sortedCount && !h->less(v_sorted[static_cast<int>(i)].get()))
            return false;
        makeRoom(v_sorted, m_sortedCount);
        for (unsigned j = m_sortedCount; j > i; j--)
            v_sorted[static_cast<int>(j)] = std::move(v_sorted[static_cast<int>(j - 1)]);
        v_sorted[static_cast<int>(i)] = h;
        m_sortedCount++;
    }
    makeRoom(v_inOrder, m_inOrderCount);
    v_inOrder[static_cast<int>(m_inOrderCount++)] = h;
    if (name != nullptr)
        addSlot(hash, m_inOrderCount);
    return true;
}

unsigned SetImpl::size() const { return m_inOrderCount; }

// Only the sorted view forgets the element: walks and output still see it.
void SetImpl::remove(IComparable const& key) {
    keepSorted();
    unsigned i = lowerBound(key);
    if (i >= m_sortedCount || key.less(v_sorted[static_cast<int>(i)].get()))
        return;
    if (m_named) {
        IComparable const* e = v_sorted[static_cast<int>(i)].get();
        int s = slotOf(e, nameHash(e->keyName()));
        if (s >= 0)
            v_slots[s].place = kRemoved;
    }
    for (unsigned j = i; j + 1 < m_sortedCount; j++)
        v_sorted[static_cast<int>(j)] = std::move(v_sorted[static_cast<int>(j + 1)]);
    v_sorted[static_cast<int>(m_sortedCount - 1)] = HIComparable();
    m_sortedCount--;
}

ISet::Pos* SetImpl::first() const { return new PosImpl(this); }

HIComparable PosImpl::get() {
    if (m_index < m_set->size())
        return m_set->inOrder(m_index);
    return HIComparable();
}

void PosImpl::next() { m_index++; }

bool PosImpl::valid() { return m_index < m_set->size(); }

bool StringSet::find(mstring const& s) {
    for (unsigned i = 0; i < v_strings.size(); i++)
        if (v_strings[i] == s)
            return true;
    return false;
}

bool StringSet::insert(mstring const& s) {
    if (find(s))
        return false;
    // Names are kept as they are, never built on: an exactly fitted copy.
    mstring copy;
    copy.setExact(s.c_str(), s.length());
    v_strings.push_back_moved(std::move(copy));
    return true;
}
