#include "foundation/mstring.h"

#include <cstring>

mstring::mstring(char const* s) {
    // Exact fit; an empty argument still gets its one-byte block.
    unsigned long n = std::strlen(s);
    m_cap = n + 1;
    m_str = new char[m_cap];
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
        delete[] m_str;
        m_str = nullptr;
        m_cap = 0;
        return;
    }
    if (n >= m_cap) {
        // The source may live in our own block: copy before freeing it.
        char* block = new char[n + 100];
        std::memcpy(block, s, n);
        delete[] m_str;
        m_str = block;
        m_cap = n + 100;
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
    if (total >= m_cap) {
        char* block = new char[total + 200];
        std::memcpy(block, m_str, len);
        std::memcpy(block + len, s, n);
        delete[] m_str;
        m_str = block;
        m_cap = total + 200;
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

mstring operator+(mstring const& a, mstring const& b) {
    mstring r;
    r.set(a.c_str(), a.length());
    r += b;
    return r;
}

mstring operator+(mstring const& a, char const* b) {
    mstring r;
    r.set(a.c_str(), a.length());
    r += b;
    return r;
}

mstring operator+(char const* a, mstring const& b) {
    mstring r;
    r.set(a, std::strlen(a));
    r += b;
    return r;
}

bool operator<(mstring const& a, mstring const& b) { return std::strcmp(a.c_str(), b.c_str()) < 0; }
bool operator>(mstring const& a, mstring const& b) { return std::strcmp(a.c_str(), b.c_str()) > 0; }
