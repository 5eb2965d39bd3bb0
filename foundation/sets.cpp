#include "foundation/sets.h"

#include <utility>

void HIComparable::release() {
    IComparable* p = m_ptr;
    m_ptr = nullptr;
    if (--p->m_refCount < 1)
        delete p;
}

ISet* ISet::create() { return new SetImpl(); }

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

HIComparable* SetImpl::find(IComparable const& key) {
    unsigned i = lowerBound(key);
    if (i < m_sortedCount && !key.less(v_sorted[static_cast<int>(i)].get()))
        return &v_sorted[static_cast<int>(i)];
    return nullptr;
}

HIComparable* SetImpl::find(HIComparable const& key) {
    return key.get() ? find(*key.get()) : nullptr;
}

HIComparable* SetImpl::find(Compare compare, void const* key) {
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

bool SetImpl::add(HIComparable const& h) {
    if (h.get() == nullptr)
        return false;
    unsigned i = lowerBound(*h.get());
    if (i < m_sortedCount && !h->less(v_sorted[static_cast<int>(i)].get()))
        return false;
    makeRoom(v_sorted, m_sortedCount);
    for (unsigned j = m_sortedCount; j > i; j--)
        v_sorted[static_cast<int>(j)] = std::move(v_sorted[static_cast<int>(j - 1)]);
    v_sorted[static_cast<int>(i)] = h;
    m_sortedCount++;
    makeRoom(v_inOrder, m_inOrderCount);
    v_inOrder[static_cast<int>(m_inOrderCount++)] = h;
    return true;
}

unsigned SetImpl::size() const { return m_inOrderCount; }

// Only the sorted view forgets the element: walks and output still see it.
void SetImpl::remove(IComparable const& key) {
    unsigned i = lowerBound(key);
    if (i >= m_sortedCount || key.less(v_sorted[static_cast<int>(i)].get()))
        return;
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
    v_strings.push_back(s);
    return true;
}
