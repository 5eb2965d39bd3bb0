#include "foundation/sets.h"

void HIComparable::release() {
    IComparable* p = m_ptr;
    m_ptr = nullptr;
    if (--p->m_refCount < 1)
        delete p;
}

ISet* ISet::create() { return new SetImpl(); }

SetImpl::~SetImpl() {
    for (unsigned i = 0; i < v_inOrder.size(); i++)
        v_inOrder[i] = HIComparable();
    for (unsigned i = 0; i < v_sorted.size(); i++)
        v_sorted[i] = HIComparable();
}

unsigned SetImpl::lowerBound(IComparable const& key) const {
    unsigned lo = 0, hi = v_sorted.size();
    while (lo < hi) {
        unsigned mid = lo + (hi - lo) / 2;
        IComparable const* e = v_sorted[mid].get();
        if (e == nullptr || e->less(&key))
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}

HIComparable* SetImpl::find(IComparable const& key) {
    unsigned i = lowerBound(key);
    if (i < v_sorted.size() && !key.less(v_sorted[i].get()))
        return &v_sorted[i];
    return nullptr;
}

HIComparable* SetImpl::find(HIComparable const& key) {
    return key.get() ? find(*key.get()) : nullptr;
}

bool SetImpl::add(HIComparable const& h) {
    if (h.get() == nullptr)
        return false;
    unsigned i = lowerBound(*h.get());
    if (i < v_sorted.size() && !h->less(v_sorted[i].get()))
        return false;
    v_sorted.insert(static_cast<int>(i), h);
    v_inOrder.push_back(h);
    return true;
}

unsigned SetImpl::size() const { return v_inOrder.size(); }

// Only the sorted view forgets the element: walks and output still see it.
void SetImpl::remove(IComparable const& key) {
    unsigned i = lowerBound(key);
    if (i >= v_sorted.size() || key.less(v_sorted[i].get()))
        return;
    for (unsigned j = i; j + 1 < v_sorted.size(); j++)
        v_sorted[j] = v_sorted[j + 1];
    v_sorted[v_sorted.size() - 1] = HIComparable();
    v_sorted.resize(v_sorted.size() - 1);
}

ISet::Pos* SetImpl::first() const { return new PosImpl(this); }

HIComparable PosImpl::get() {
    if (m_index < m_set->inOrder().size())
        return m_set->inOrder()[m_index];
    return HIComparable();
}

void PosImpl::next() { m_index++; }

bool PosImpl::valid() { return m_index < m_set->inOrder().size(); }

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
