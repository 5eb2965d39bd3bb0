#include "foundation/mstring.h"

#include <cstring>

mstring::mstring(char const* s) {
    // Exact fit; an empty argument still gets its one-byte block.
    unsigned long n = std::strlen(s);
    m_cap = n + 1;
    m_str = strblocks::allocate(m_cap);
    std::memcpy(m_str, s, n + 1);
}

void mstring::copyFrom(mstring const& other) {
    char const* s = other.c_str();
    set(s, std::strlen(s));
}

void mstring::assignFrom(mstring const& other) {
    if (this != &other) {
        char const* s = other.c_str();
        set(s, std::strlen(s));
    }
}

mstring& mstring::operator=(char const* s) {
    if (s == nullptr)
        s = "";
    if (s == m_str)
        return *this;
    set(s, std::strlen(s));
    return *this;
}

void mstring::set(char const* s, unsigned long n) {
    if (n == 0) {
        strblocks::release(m_str, m_cap);
        m_str = nullptr;
        m_cap = 0;
        return;
    }
    if (n >= strblocks::usable(m_cap)) {
        // The source may live in our own block: copy before freeing it.
        std::uint64_t cap = n + 100;
        char* block = strblocks::allocate(cap);
        std::memcpy(block, s, n);
        strblocks::release(m_str, m_cap);
        m_str = block;
        m_cap = cap;
    } else {
        std::memmove(m_str, s, n);
    }
    m_str[n] = '\0';
}

void mstring::add(char const* s, unsigned long n) {
    if (m_str == nullptr) {
        set(s, n);
        return;
    }
    unsigned long len = std::strlen(m_str);
    unsigned long total = len + n;
    if (total >= strblocks::usable(m_cap)) {
        std::uint64_t cap = total + 200;
        char* block = strblocks::allocate(cap);
        std::memcpy(block, m_str, len);
        std::memcpy(block + len, s, n);
        strblocks::release(m_str, m_cap);
        m_str = block;
        m_cap = cap;
    } else {
        std::memmove(m_str + len, s, n);
    }
    m_str[total] = '\0';
}

mstring& mstring::operator+=(mstring const& other) {
    if (other.m_str != nullptr)
        add(other.m_str, std::strlen(other.m_str));
    return *this;
}

mstring& mstring::operator+=(char const* s) {
    if (s != nullptr)
        add(s, std::strlen(s));
    return *this;
}

mstring& mstring::operator+=(char c) {
    add(&c, 1);
    return *this;
}

unsigned mstring::length() const {
    return m_str ? static_cast<unsigned>(std::strlen(m_str)) : 0u;
}

// One block and each length counted once; the capacity is the one the two
// steps set(a) and add(b) arrive at: b alone gets length + 100; after a
// non-empty a, b fits the spare 100 bytes or the block is made for the
// total + 200.
mstring mstring::joined(char const* a, unsigned long na, char const* b, unsigned long nb) {
    mstring r;
    if (na == 0) {
        r.set(b, nb);
        return r;
    }
    unsigned long const total = na + nb;
    r.m_cap = nb >= 100 ? total + 200 : na + 100;
    r.m_str = strblocks::allocate(r.m_cap);
    std::memcpy(r.m_str, a, na);
    std::memcpy(r.m_str + na, b, nb);
    r.m_str[total] = '\0';
    return r;
}

mstring operator+(mstring const& a, mstring const& b) {
    return mstring::joined(a.c_str(), a.length(), b.c_str(), b.length());
}

mstring operator+(mstring const& a, char const* b) {
    return mstring::joined(a.c_str(), a.length(), b ? b : "", b ? std::strlen(b) : 0);
}

mstring operator+(char const* a, mstring const& b) {
    return mstring::joined(a, std::strlen(a), b.c_str(), b.length());
}

bool operator<(mstring const& a, mstring const& b) { return std::strcmp(a.c_str(), b.c_str()) < 0; }
bool operator>(mstring const& a, mstring const& b) { return std::strcmp(a.c_str(), b.c_str()) > 0; }

void mstring::setExact(char const* s, unsigned long n) {
    if (n == 0) {
        set(s, 0);
        return;
    }
    // The new block is filled before the old one goes: `s` may lie in it.
    std::uint64_t cap = n + 1;
    char* block = strblocks::allocate(cap);
    std::memcpy(block, s, n);
    block[n] = '\0';
    strblocks::release(m_str, m_cap);
    m_str = block;
    m_cap = cap;
}
