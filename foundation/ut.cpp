#include "foundation/ut.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>

char const* OS_SEP = "/";

namespace {
template <class... A>
mstring format(char const* fmt, A... args) {
    char buf[64];
    std::snprintf(buf, sizeof buf, fmt, args...);
    return mstring(buf);
}
}  // namespace

char* UT::decimal(unsigned long long v, char (&buf)[24]) {
    // Two digits a step: numbers are written by the hundred thousand.
    static char const pairs[] =
        "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
        "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
        "8081828384858687888990919293949596979899";
    char* p = buf + sizeof buf - 1;
    *p = '\0';
    while (v >= 100) {
        unsigned const r = static_cast<unsigned>(v % 100);
        v /= 100;
        *--p = pairs[2 * r + 1];
        *--p = pairs[2 * r];
    }
    if (v >= 10) {
        unsigned const r = static_cast<unsigned>(v);
        *--p = pairs[2 * r + 1];
        *--p = pairs[2 * r];
    } else {
        *--p = static_cast<char>('0' + v);
    }
    return p;
}

char* UT::decimal(long long v, char (&buf)[24]) {
    // The magnitude as unsigned, so that the smallest value has one too.
    unsigned long long const u = static_cast<unsigned long long>(v);
    char* p = decimal(v < 0 ? 0ull - u : u, buf);
    if (v < 0)
        *--p = '-';
    return p;
}

mstring UT::n2s(int v) {
    char buf[24];
    return mstring(decimal(static_cast<long long>(v), buf));
}
mstring UT::n2s(unsigned int v) {
    char buf[24];
    return mstring(decimal(static_cast<unsigned long long>(v), buf));
}
mstring UT::n2s(long long v) {
    char buf[24];
    return mstring(decimal(v, buf));
}
mstring UT::n2s(double v) { return format("%g", v); }
mstring UT::n2s(void* v) { return format("%p", v); }
mstring UT::n2s(int v, int w) { return adjust(n2s(v), w); }
mstring UT::n2s(unsigned int v, int w) { return adjust(n2s(v), w); }
mstring UT::n2s(long long v, int w) { return adjust(n2s(v), w); }

mstring UT::adjust(mstring const& s, int w) {
    mstring r = s;
    // The blanks go on in pieces, not one add (and one strlen) per blank.
    static char const blanks[] = "                                ";
    for (int missing = w - static_cast<int>(s.length()); missing > 0;) {
        int const piece = static_cast<int>(sizeof blanks - 1);
        int const n = missing < piece ? missing : piece;
        r.add(blanks, static_cast<unsigned long>(n));
        missing -= n;
    }
    return r;
}

mstring UT::trim(mstring const& s) {
    char const* p = s.c_str();
    while (*p && std::isspace(static_cast<unsigned char>(*p)))
        p++;
    unsigned long n = std::strlen(p);
    while (n > 0 && std::isspace(static_cast<unsigned char>(p[n - 1])))
        n--;
    mstring r;
    r.set(p, n);
    return r;
}

mstring UT::makefnm(mstring const& dir, mstring const& name) {
    mstring d = dir;
    unsigned len = d.length();
    if (len > 0 && (d[len - 1] == '/' || d[len - 1] == '\\'))
        d.set(d.c_str(), len - 1);
    if (d.empty())
        return name;
    return d + OS_SEP + name;
}

mvector<mstring> UT::splitName(mstring const& s, char c) {
    mvector<mstring> pieces;
    char const* p = s.c_str();
    for (;;) {
        char const* q = std::strchr(p, c);
        mstring piece;
        piece.set(p, q ? static_cast<unsigned long>(q - p) : std::strlen(p));
        pieces.push_back(piece);
        if (q == nullptr)
            break;
        p = q + 1;
    }
    return pieces;
}

UT::Pair UT::split2(mstring const& s) {
    Pair r;
    char const* p = s.c_str();
    char const* q = p;
    while (*q && !std::isspace(static_cast<unsigned char>(*q)))
        q++;
    r.first.set(p, static_cast<unsigned long>(q - p));
    while (*q && std::isspace(static_cast<unsigned char>(*q)))
        q++;
    r.second = q;
    return r;
}

mstring UT::stringTime() {
    // The reentrant forms: compiles on other threads may ask at the same time.
    std::time_t now = std::time(nullptr);
    std::tm local;
    char text[64];
    if (localtime_r(&now, &local) == nullptr || asctime_r(&local, text) == nullptr)
        return mstring();
    return mstring(text);
}

mstring UT::currdir() {
    char buf[300];
    if (::getcwd(buf, sizeof buf) == nullptr)
        return mstring();
    return mstring(buf);
}

void UT::dlog(mstring const&) {}

void UT::finishComp(bool ok) {
    if (ok)
        std::printf("Compiled successfully: %s\n", stringTime().c_str());
    else
        std::printf("Error executing DDL compiler\n");
    std::fflush(stdout);
}

namespace {

// One row per C type of a scalar field: its C# type, its Java type, and the
// Java class of that type. Dates and times are the runtime's unsigned
// counts of their sizes; identifiers are 8-byte values, as a reference is.
struct TypeRow {
    char const* c;
    char const* cs;
    char const* java;
    char const* boxed;
};

TypeRow const kTypes[] = {
    {"int1", "sbyte", "byte", "Byte"},
    {"int2", "short", "short", "Short"},
    {"int4", "int", "int", "Integer"},
    {"zyl_int8", "long", "long", "Long"},
    {"uint1", "byte", "byte", "Byte"},
    {"uint2", "ushort", "short", "Short"},
    {"uint4", "uint", "int", "Integer"},
    {"uint8", "ulong", "long", "Long"},
    {"autoid_t", "ulong", "long", "Long"},
    {"float", "float", "float", "Float"},
    {"double", "double", "double", "Double"},
    {"bool", "bool", "boolean", "Boolean"},
    {"zyl_date", "uint", "int", "Integer"},
    {"zyl_time", "uint", "int", "Integer"},
    {"zyl_datetime", "ulong", "long", "Long"},
};

TypeRow const* findType(mstring const& cType) {
    for (TypeRow const& row : kTypes)
        if (cType == row.c)
            return &row;
    return nullptr;
}

}  // namespace

mstring UT::mapCSType(mstring const& cType) {
    TypeRow const* row = findType(cType);
    return row != nullptr ? mstring(row->cs) : cType;
}

mstring UT::mapJavaType(mstring const& cType, mstring const& typeName, bool boxed) {
    // A boolean's C type is uint1; only its schema type tells it apart.
    TypeRow const* row = findType(typeName == "boolean" ? mstring("bool") : cType);
    if (row == nullptr)
        return cType;
    return boxed ? row->boxed : row->java;
}

bool UT::CVT::isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Overflow wraps silently in all of these: nothing here detects it.
bool UT::CVT::fromHex(char const* s, long* v) {
    if (s[0] != '0' || (s[1] != 'x' && s[1] != 'X'))
        return false;
    unsigned long r = 0;
    for (char const* p = s + 2; *p; p++) {
        char c = *p;
        unsigned d;
        if (c >= '0' && c <= '9')
            d = c - '0';
        else if (c >= 'a' && c <= 'f')
            d = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            d = c - 'A' + 10;
        else
            return false;
        r = r * 16 + d;
    }
    *v = static_cast<long>(r);
    return true;
}

bool UT::CVT::fromOct(char const* s, long* v) {
    if (s[0] != '0')
        return false;
    unsigned long r = 0;
    for (char const* p = s + 1; *p; p++) {
        if (*p < '0' || *p > '7')
            return false;
        r = r * 8 + static_cast<unsigned>(*p - '0');
    }
    *v = static_cast<long>(r);
    return true;
}

bool UT::CVT::s2int(char const* s, long* v) {
    if (s[0] == '0') {
        if (s[1] == 'x' || s[1] == 'X')
            return fromHex(s, v);
        return fromOct(s, v);
    }
    char* end;
    *v = std::strtol(s, &end, 10);
    return *end == '\0';
}

bool UT::CVT::s2i8(char const* s, long long* v) {
    char* end;
    *v = std::strtoll(s, &end, 0);
    return *end == '\0';
}

bool UT::CVT::s2u8(char const* s, unsigned long long* v) {
    char* end;
    *v = std::strtoull(s, &end, 0);
    return *end == '\0';
}

bool UT::CVT::s2dbl(char const* s, double* v) {
    char* end;
    *v = std::strtod(s, &end);
    return *end == '\0';
}

namespace {

// The bytes a line's text may stop at: the line feed and the carriage
// return, the '/' that may begin "//", and the NUL, which ends the text as
// it would end a C string (and, as the last byte, ends the scan).
struct StopTable {
    bool c[256];
    constexpr StopTable() : c() {
        c[0] = c[static_cast<unsigned char>('\n')] = c[static_cast<unsigned char>('\r')] =
            c[static_cast<unsigned char>('/')] = true;
    }
};

constexpr StopTable kStop{};

// At least this much is asked of the file at a time.
std::size_t const kMinBlock = 16384;

}  // namespace

UT::Buf::Buf(int n)
    : m_size(n),
      m_cap(static_cast<std::size_t>(n) * 2 > kMinBlock ? static_cast<std::size_t>(n) * 2 : kMinBlock) {
    // One byte more for the NUL put behind the last byte read.
    m_block = new char[m_cap + 1];
    eos();
}

UT::Buf::~Buf() {
    delete[] m_block;
    for (unsigned i = 0; i < v_saved.size(); i++)
        delete[] v_saved[i].block;
}

void UT::Buf::fill(FILE* f) {
    std::size_t const rest = m_end - m_pos;
    if (m_pos > 0) {
        std::memmove(m_block, m_block + m_pos, rest);
        m_pos = 0;
        m_end = rest;
    }
    std::size_t const want = m_cap - m_end;
    std::size_t const got = std::fread(m_block + m_end, 1, want, f);
    m_end += got;
    // A short read is the end of the file, or an error, which ends it too.
    if (got < want)
        m_atEof = true;
}

bool UT::Buf::read(FILE* f) {
    if (m_holding) {
        m_block[m_pos] = m_held;
        m_holding = false;
    }
    std::size_t const piece = static_cast<std::size_t>(m_size - 1);
    if (m_end - m_pos < piece && !m_atEof)
        fill(f);
    if (m_pos == m_end) {
        eos();
        return false;
    }
    char* const s = m_block + m_pos;
    char* const lim = m_block + (m_end - m_pos < piece ? m_end : m_pos + piece);
    // A NUL at the piece's limit ends the scan without a count.
    char const atLim = *lim;
    *lim = '\0';
    bool slash = false;
    char* p = s;
    for (;;) {
        while (!kStop.c[static_cast<unsigned char>(*p)])
            p++;
        if (*p != '/' || p[1] == '/')
            break;
        // A single '/' is passed over.
        slash = true;
        p++;
    }
    char* next;
    if (p == lim) {
        next = lim;
        if (lim != m_block + m_end) {
            m_held = atLim;
            m_holding = true;
        }
    } else {
        *lim = atLim;
        if (*p == '\n') {
            next = p + 1;
        } else {
            // The rest of the piece, behind the end of the text, is dropped.
            void* nl = std::memchr(p, '\n', static_cast<std::size_t>(lim - p));
            next = nl != nullptr ? static_cast<char*>(nl) + 1 : lim;
        }
        *p = '\0';
    }
    m_text = s;
    m_len = static_cast<std::size_t>(p - s);
    m_slash = slash;
    m_pos = static_cast<std::size_t>(next - m_block);
    return true;
}

void UT::Buf::push() {
    if (m_holding) {
        m_block[m_pos] = m_held;
        m_holding = false;
    }
    Saved saved;
    saved.block = m_block;
    saved.pos = m_pos;
    saved.end = m_end;
    saved.atEof = m_atEof;
    v_saved.push_back(saved);
    m_block = new char[m_cap + 1];
    m_pos = m_end = 0;
    m_atEof = false;
}

void UT::Buf::pop() {
    unsigned const n = v_saved.size();
    if (n == 0)
        return;
    Saved const& saved = v_saved[n - 1];
    delete[] m_block;
    m_block = saved.block;
    m_pos = saved.pos;
    m_end = saved.end;
    m_atEof = saved.atEof;
    m_holding = false;
    v_saved.resize(n - 1);
    eos();
}
