// mstring: the compiler's own owning string.
//
// One heap block, NUL-terminated, no stored length: the length is always
// strlen of the block. A null block and an empty block both mean "empty",
// and every reader has to accept both. The block over-allocates on set/add
// because strings are built piece by piece all over the generator. Blocks
// come from strblocks, which knows a block by the capacity it was made with
// (which is why m_cap may carry strblocks::kSlabBit: read it through usable).
#pragma once

#include <cstdint>
#include <cstring>

#include "foundation/strblocks.h"

class mstring {
public:
    mstring() = default;
    mstring(char const* s);  // NOLINT: implicit on purpose, texts mix freely
    // Copying a null string leaves a null string: that case, the most common
    // copy of all (records full of unset texts), is decided inline.
    mstring(mstring const& other) {
        if (other.m_str != nullptr)
            copyFrom(other);
    }
    // A move hands the block over and leaves the source null; only copies
    // go through set and its capacity rule. Moves and the destructor are
    // inline: vectors of records that hold strings run them by the thousand.
    mstring(mstring&& other) noexcept : m_str(other.m_str), m_cap(other.m_cap) {
        other.m_str = nullptr;
        other.m_cap = 0;
    }
    ~mstring() {
        if (m_str != nullptr)
            strblocks::release(m_str, m_cap);
    }

    mstring& operator=(mstring const& other) {
        if (other.m_str != nullptr || m_str != nullptr)
            assignFrom(other);
        return *this;
    }
    mstring& operator=(mstring&& other) noexcept {
        if (this != &other) {
            if (m_str != nullptr)
                strblocks::release(m_str, m_cap);
            m_str = other.m_str;
            m_cap = other.m_cap;
            other.m_str = nullptr;
            other.m_cap = 0;
        }
        return *this;
    }
    mstring& operator=(char const* s);

    void set(char const* s, unsigned long n);
    // As set, but the block is exactly n + 1 bytes: for texts that are kept
    // as they are and seldom grow, such as the names the token reader cuts,
    // which a large schema holds by the hundred thousand.
    void setExact(char const* s, unsigned long n);
    void add(char const* s, unsigned long n);

    mstring& operator+=(mstring const& other);
    mstring& operator+=(char const* s);
    mstring& operator+=(char c);

    char& operator[](int i) { return m_str[i]; }
    char const& operator[](int i) const { return m_str[i]; }

    // The text, or null for a string that never got a block.
    char const* ptr() const { return m_str; }
    // The text, never null: what library functions are handed.
    char const* c_str() const { return m_str ? m_str : ""; }
    unsigned length() const;
    bool empty() const { return m_str == nullptr || m_str[0] == '\0'; }
    std::uint64_t capacity() const { return strblocks::usable(m_cap); }

private:
    friend mstring operator+(mstring const& a, mstring const& b);
    friend mstring operator+(mstring const& a, char const* b);
    friend mstring operator+(char const* a, mstring const& b);

    void copyFrom(mstring const& other);
    void assignFrom(mstring const& other);
    // a followed by b, in the block that set(a) and then add(b) would leave.
    static mstring joined(char const* a, unsigned long na, char const* b, unsigned long nb);

    char* m_str = nullptr;
    std::uint64_t m_cap = 0;
};

mstring operator+(mstring const& a, mstring const& b);
mstring operator+(mstring const& a, char const* b);
mstring operator+(char const* a, mstring const& b);

// Inline, and the first characters are compared before strcmp is called:
// the grammar tests each token against keyword after keyword.
inline bool operator==(mstring const& a, char const* b) {
    char const* x = a.c_str();
    char const* y = b ? b : "";
    return x[0] == y[0] && (x[0] == '\0' || std::strcmp(x + 1, y + 1) == 0);
}
inline bool operator!=(mstring const& a, char const* b) { return !(a == b); }
inline bool operator==(mstring const& a, mstring const& b) { return a == b.c_str(); }
inline bool operator!=(mstring const& a, mstring const& b) { return !(a == b); }
bool operator<(mstring const& a, mstring const& b);
bool operator>(mstring const& a, mstring const& b);
