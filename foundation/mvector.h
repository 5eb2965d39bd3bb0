// mvector<T>: the compiler's own owning vector.
//
// Deliberately without a growth factor: compiles are small, so a vector
// that outgrows its block reallocates for exactly the size it needs. The
// block comes from array new and is always constructed up to the capacity.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

template <class T>
class mvector {
public:
    mvector() = default;
    mvector(mvector const& other) { copyFrom(other); }
    // A move hands the block over and leaves the source empty; only copies
    // get a fresh block of the source's size.
    mvector(mvector&& other) noexcept : m_data(other.m_data), m_size(other.m_size), m_cap(other.m_cap) {
        other.m_data = nullptr;
        other.m_size = other.m_cap = 0;
    }
    ~mvector() { delete[] m_data; }

    mvector& operator=(mvector const& other) {
        if (this != &other) {
            delete[] m_data;
            m_data = nullptr;
            m_size = m_cap = 0;
            copyFrom(other);
        }
        return *this;
    }

    mvector& operator=(mvector&& other) noexcept {
        if (this != &other) {
            delete[] m_data;
            m_data = other.m_data;
            m_size = other.m_size;
            m_cap = other.m_cap;
            other.m_data = nullptr;
            other.m_size = other.m_cap = 0;
        }
        return *this;
    }

    std::uint32_t size() const { return m_size; }
    std::uint32_t capacity() const { return m_cap; }
    T& operator[](int i) { return m_data[i]; }
    T const& operator[](int i) const { return m_data[i]; }

    // Shrinking only lowers the size: the dropped elements stay constructed.
    // Growing resets every regained place to a default value.
    void resize(std::uint32_t n) {
        if (n > m_cap) {
            T* block = new T[n];
            // Nothing can see the old elements again (the block is deleted
            // right after), so they are moved rather than deep-copied.
            for (std::uint32_t i = 0; i < m_size; i++)
                block[i] = std::move(m_data[i]);
            delete[] m_data;
            m_data = block;
            m_cap = n;
            // A record's constructor has just set every new place to what
            // T() gives (the element classes initialize every member), so
            // only plain values still need the reset.
            if constexpr (std::is_class_v<T> && !std::is_trivially_default_constructible_v<T>) {
                m_size = n;
                return;
            }
        }
        for (std::uint32_t i = m_size; i < n; i++)
            m_data[i] = T();
        m_size = n;
    }

    void push_back(T const& v) {
        resize(m_size + 1);
        m_data[m_size - 1] = v;
    }

    // push_back and insert, growing the same way, but the new element takes
    // over v's contents instead of copying them; v is left as a move leaves
    // it. Named apart so that a temporary handed to push_back is still copied.
    void push_back_moved(T&& v) {
        resize(m_size + 1);
        m_data[m_size - 1] = std::move(v);
    }

    void insert(int pos, T const& v) { insertWith(pos, v); }
    void insert_moved(int pos, T&& v) { insertWith(pos, std::move(v)); }

private:
    template <class V>
    void insertWith(int pos, V&& v) {
        if (m_size + 1 > m_cap) {
            // Growing: each old element is moved once, straight to its final
            // place, and not once into the new block and again up by one.
            // Size, capacity and contents end as resize and the shift below
            // leave them.
            std::uint32_t const n = m_size + 1;
            T* block = new T[n];
            for (int i = 0; i < pos; i++)
                block[i] = std::move(m_data[i]);
            for (std::uint32_t i = static_cast<std::uint32_t>(pos); i < m_size; i++)
                block[i + 1] = std::move(m_data[i]);
            block[pos] = std::forward<V>(v);
            delete[] m_data;
            m_data = block;
            m_size = m_cap = n;
            return;
        }
        resize(m_size + 1);
        // Each place is overwritten right after it is read: moved, not copied.
        for (int i = static_cast<int>(m_size) - 1; i > pos; i--)
            m_data[i] = std::move(m_data[i - 1]);
        m_data[pos] = std::forward<V>(v);
    }

    void copyFrom(mvector const& other) {
        if (other.m_size == 0)
            return;
        m_data = new T[other.m_size];
        m_cap = m_size = other.m_size;
        for (std::uint32_t i = 0; i < m_size; i++)
            m_data[i] = other.m_data[i];
    }

    T* m_data = nullptr;
    std::uint32_t m_size = 0;
    std::uint32_t m_cap = 0;
};

// Heap sort in place, ascending by `before(a, b)` ("a is ordered before b").
// Not stable, and the resulting order of equal keys decides layouts, so it
// must stay exactly this algorithm.
template <class T, class Before>
void down_heap(mvector<T>& v, int i, int n, Before before) {
    int child = 2 * i + 1;
    while (child < n) {
        if (child + 1 < n && before(v[child], v[child + 1]))
            child = child + 1;
        if (!before(v[i], v[child]))
            break;
        std::swap(v[i], v[child]);
        i = child;
        child = 2 * i + 1;
    }
}

template <class T, class Before>
void sort_vector(mvector<T>& v, Before before) {
    int n = static_cast<int>(v.size());
    for (int i = n / 2 - 1; i >= 0; i--)
        down_heap(v, i, n, before);
    for (int last = n - 1; last >= 1; last--) {
        std::swap(v[0], v[last]);
        down_heap(v, 0, last, before);
    }
}

// The element types that define their own order (FldLayout, FieldRef) do so
// through a free function `ordered_before(a, b)`.
template <class T>
void down_heap(mvector<T>& v, int i, int n) {
    down_heap(v, i, n, [](T const& a, T const& b) { return ordered_before(a, b); });
}

template <class T>
void sort_vector(mvector<T>& v) {
    sort_vector(v, [](T const& a, T const& b) { return ordered_before(a, b); });
}
