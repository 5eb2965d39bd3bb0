// The token reader.
//
// Tokens are cut by a handful of rules in canAppend, which decide what a
// schema may look like: identifiers, numbers (with any number of points),
// one-character delimiters. Every report goes through the preprocessor, so
// it carries the current file and line, with the read position in the
// preprocessed line.
#include "frontend/parser.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "foundation/ut.h"

namespace {

using schema_chars::isBlank;
using schema_chars::isDigit;
using schema_chars::isIdentChar;
using schema_chars::isIdentStart;

// Each of these is a token of its own.
constexpr char kDelimiters[] = "{}<>;,()[]:*.=";

bool isDelimiter(char c) { return c != '\0' && std::strchr(kDelimiters, c) != nullptr; }

// A decimal number without sign or leading zero, short enough that strtol
// could not overflow on it: what strtol makes of it, taken directly.
bool plainDecimal(char const* s, size_t n, long* value) {
    if (n == 0 || n > 18 || s[0] < '1' || s[0] > '9')
        return false;
    long v = 0;
    for (size_t i = 0; i < n; i++) {
        if (!isDigit(s[i]))
            return false;
        v = v * 10 + (s[i] - '0');
    }
    *value = v;
    return true;
}

// Numbers written with a leading "0" are hex or octal. Returns false for
// any other token; otherwise the value (0 after a reported failure).
bool readZeroNumber(PreProcessor& pp, int pos, mstring const& token, long* value) {
    char const* s = token.c_str();
    if (s[0] != '0')
        return false;
    *value = 0;
    if (s[1] == 'x' || s[1] == 'X') {
        if (!UT::CVT::fromHex(s, value))
            pp.error1("not a hex number: #1", token, pos);
    } else if (!UT::CVT::fromOct(s, value)) {
        pp.error1("not an octal number: #1", token, pos);
    }
    return true;
}

// Character classes of the token reader, for take's common case. Bytes
// outside ASCII are only marked as such: the locale decides about them.
enum : unsigned char {
    kTokBlank = 1,
    kTokIdentStart = 2,
    kTokIdentChar = 4,
    kTokDelimiter = 8,
    // The first character of a decimal number, other than '0'.
    kTokNumber = 16,
    // A digit or '.', as a number goes on.
    kTokNumberChar = 32,
    kTokHigh = 64,
};

struct TokTable {
    unsigned char c[256];
    constexpr TokTable() : c() {
        for (int i = 1; i < 256; i++) {
            unsigned char k = 0;
            if (i >= 128)
                k |= kTokHigh;
            if (i == ' ' || (i >= '\t' && i <= '\r'))
                k |= kTokBlank;
            if ((i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z') || i == '_')
                k |= kTokIdentStart | kTokIdentChar;
            if (i >= '0' && i <= '9')
                k |= kTokIdentChar | kTokNumberChar;
            if ((i >= '1' && i <= '9') || i == '-')
                k |= kTokNumber;
            if (i == '.')
                k |= kTokNumberChar;
            for (char const* d = kDelimiters; *d != '\0'; d++)
                if (i == *d)
                    k |= kTokDelimiter;
            c[i] = k;
        }
    }
};

constexpr TokTable kTok{};

}  // namespace

Parser::Parser(FILE* f, mstring const& fileName, IErrReporter* reporter, mstring const& includeDir,
               mstring const& tempDir)
    : m_pp(f, fileName, reporter, includeDir, tempDir) {}

// The tokens put back go first, then the preprocessor: member order does it.
Parser::~Parser() = default;

bool Parser::fillLine() {
    for (;;) {
        // The read position never passes the line's NUL, so this is the
        // "at or past the end" test.
        while (m_text[m_pos] == '\0') {
            if (m_pp.isEnd())
                return false;
            m_text = m_pp.readLine();
            m_pos = 0;
        }
        skipBlanks();
        if (m_text[m_pos] != '\0')
            return true;
    }
}

bool Parser::nextLine() {
    if (m_pp.isEnd())
        return false;
    m_text = m_pp.readLine();
    m_pos = 0;
    return true;
}

void Parser::unknown(char first) {
    // reports the character
    appends(first, '\0', m_text[m_pos]);
}

// take for the tokens that make up nearly all of a schema: an identifier, a
// delimiter or a decimal number, in ASCII, with the line going on behind
// it. Those are cut here without a call; for everything else, and at the
// end of the line, nothing is changed and the answer is false.
inline bool Parser::quickTake(int* start, int* len) {
    char const* s = m_text;
    int pos = m_pos;
    unsigned char k;
    while ((k = kTok.c[static_cast<unsigned char>(s[pos])]) & kTokBlank)
        pos++;
    int const first = pos;
    if (k & kTokIdentStart) {
        pos++;
        while ((k = kTok.c[static_cast<unsigned char>(s[pos])]) & kTokIdentChar)
            pos++;
        // A byte outside ASCII may be a letter in the current locale.
        if (k & kTokHigh)
            return false;
    } else if (k & kTokDelimiter) {
        pos++;
    } else if (k & kTokNumber) {
        pos++;
        while (kTok.c[static_cast<unsigned char>(s[pos])] & kTokNumberChar)
            pos++;
    } else {
        return false;
    }
    m_pos = pos;
    *start = first;
    *len = pos - first;
    return true;
}

// fillLine and cut in one, for any token.
bool Parser::takeAny(int* start, int* len) {
    char const* s = m_text;
    int pos = m_pos;
    for (;;) {
        while (isBlank(s[pos]))
            pos++;
        if (s[pos] != '\0')
            break;
        m_pos = pos;
        if (!nextLine())
            return false;
        if (quickTake(start, len))
            return true;
        s = m_text;
        pos = 0;
    }
    // The rules of appends, applied along the line: the first character is
    // always taken, and white space or the line's end stops every token. An
    // unknown character standing alone passes as a token of its own.
    int const first = pos++;
    char const f = s[first];
    if (isIdentStart(f)) {
        while (isIdentChar(s[pos]))
            pos++;
    } else if (f == '0') {
        char const c = s[pos];
        if (c == 'x' || c == 'X') {
            pos++;
            while (UT::CVT::isHexDigit(s[pos]))
                pos++;
        } else if (isDigit(c) || c == '.') {
            pos++;
            while (isDigit(s[pos]) || s[pos] == '.')
                pos++;
        }
    } else if (isDigit(f) || f == '-') {
        while (isDigit(s[pos]) || s[pos] == '.')
            pos++;
    } else if (!isDelimiter(f) && s[pos] != '\0' && !isBlank(s[pos])) {
        m_pos = pos;
        unknown(f);
    }
    m_pos = pos;
    *start = first;
    *len = pos - first;
    return true;
}

inline bool Parser::take(int* start, int* len) { return quickTake(start, len) || takeAny(start, len); }

bool Parser::lineToken(int* start, int* len) {
    if (m_peeked) {
        m_peeked = false;
        *start = m_peekStart;
        *len = m_peekLen;
        return true;
    }
    return take(start, len);
}

Parser::Token Parser::pop() {
    unsigned n = v_takenBack.size();
    m_spent = std::move(v_takenBack[n - 1]);
    v_takenBack.resize(n - 1);
    char const* s = m_spent.c_str();
    return Token{s, static_cast<unsigned>(std::strlen(s))};
}

void Parser::keepPeeked() {
    if (!m_peeked)
        return;
    m_peeked = false;
    mstring token;
    token.setExact(m_text + m_peekStart, static_cast<unsigned long>(m_peekLen));
    v_takenBack.insert_moved(0, std::move(token));
}

mstring Parser::get() {
    unsigned n = v_takenBack.size();
    if (n > 0) {
        // Moved out: the place left behind is an empty string.
        mstring token = std::move(v_takenBack[n - 1]);
        v_takenBack.resize(n - 1);
        return token;
    }
    // The token is measured first and copied once, not grown by a
    // character at a time, into a block of its own size: names stay in
    // the model, and spare room in each of them would only make it larger.
    int start = 0;
    int len = 0;
    mstring token;
    if (lineToken(&start, &len))
        token.setExact(m_text + start, static_cast<unsigned long>(len));
    return token;
}

Parser::Token Parser::next() {
    if (v_takenBack.size() > 0)
        return pop();
    int start = 0;
    int len = 0;
    if (!lineToken(&start, &len))
        return Token{"", 0};
    return Token{m_text + start, static_cast<unsigned>(len)};
}

Parser::Token Parser::peek() {
    unsigned n = v_takenBack.size();
    if (n > 0) {
        char const* s = v_takenBack[n - 1].c_str();
        return Token{s, static_cast<unsigned>(std::strlen(s))};
    }
    if (!m_peeked) {
        // At the end of the input nothing is kept: reading again finds the
        // end again, and reports nothing more.
        if (!take(&m_peekStart, &m_peekLen))
            return Token{"", 0};
        m_peeked = true;
    }
    return Token{m_text + m_peekStart, static_cast<unsigned>(m_peekLen)};
}

void Parser::skip() {
    if (v_takenBack.size() > 0)
        pop();
    else
        m_peeked = false;
}

void Parser::takeBack(mstring const& token) { v_takenBack.push_back(token); }

void Parser::takeBack(mstring&& token) { v_takenBack.push_back_moved(std::move(token)); }

bool Parser::match(mstring const& expected) {
    // The token read from the line is compared where it stands: it is
    // dropped right after, so no string is made for it.
    bool same = next().is(expected.c_str());
    if (!same)
        m_pp.error1("expected #1", expected, m_pos);
    return same;
}

bool Parser::match(char const* expected) {
    bool same = next().is(expected);
    if (!same)
        m_pp.error1("expected #1", mstring(expected), m_pos);
    return same;
}

mstring Parser::getName() {
    // A token cut here from the line is measured as it is cut; one that
    // was put back is measured again.
    mstring token;
    size_t len = 0;
    bool const fromLine = v_takenBack.size() == 0;
    int start = 0;
    int cutLen = 0;
    if (!fromLine) {
        token = get();
        len = std::strlen(token.c_str());
    } else if (lineToken(&start, &cutLen)) {
        len = static_cast<size_t>(cutLen);
        token.setExact(m_text + start, static_cast<unsigned long>(len));
    }
    char const* s = token.c_str();
    bool const identStart = isIdentStart(s[0]);
    if (!identStart)
        m_pp.error1("identifier expected, found #1", token, m_pos);
    // A token cut from the line that begins an identifier stops at the
    // first other character; any other token is looked through.
    if (!fromLine || !identStart) {
        for (size_t i = 1; i < len; i++) {
            if (!isIdentChar(s[i])) {
                m_pp.error1("identifier expected, found #1", token, m_pos);
                break;
            }
        }
    }
    if (len > 0 && s[len - 1] == '_')
        m_pp.error("identifiers cannot end with the underscore", m_pos);
    return token;
}

unsigned Parser::getNumEx(bool optional) {
    // A plain decimal number read from the line needs no string.
    int start = 0;
    int cutLen = 0;
    if (v_takenBack.size() == 0 && lineToken(&start, &cutLen)) {
        size_t const len = static_cast<size_t>(cutLen);
        long value = 0;
        if (plainDecimal(m_text + start, len, &value))
            return static_cast<unsigned>(value);
        mstring token;
        token.setExact(m_text + start, static_cast<unsigned long>(len));
        return toNumber(token, optional);
    }
    return toNumber(get(), optional);
}

unsigned Parser::toNumber(mstring const& token, bool optional) {
    long value = 0;
    if (readZeroNumber(m_pp, m_pos, token, &value))
        return static_cast<unsigned>(value);

    char* end = nullptr;
    value = std::strtol(token.c_str(), &end, 10);
    if (value > 0 && *end == '\0')
        return static_cast<unsigned>(value);
    if (optional) {
        // Whatever strtol made of it: 0 for a word, and a negative number
        // comes back as it was, for callers that test "0 or less".
        takeBack(token);
        return static_cast<unsigned>(value);
    }
    m_pp.error1("positive number expected, found #1", token, m_pos);
    return static_cast<unsigned>(value);
}

int Parser::getSigned() {
    mstring token = get();
    long value = 0;
    if (readZeroNumber(m_pp, m_pos, token, &value))
        return static_cast<int>(value);

    char* end = nullptr;
    value = std::strtol(token.c_str(), &end, 10);
    if (*end != '\0')
        m_pp.error1("number expected, found #1", token, m_pos);
    return static_cast<int>(value);
}

mstring Parser::getQuotedString() {
    // This reader passes over the tokens put back and may read the next
    // line: a token only peeked at must not stay pointing into this one.
    keepPeeked();
    mstring result;
    if (!fillLine())
        return result;

    char const* s = m_text;
    if (s[m_pos] == '"')
        m_pos++;
    else
        m_pp.error("opening double quote is expected", m_pos);
    result += '"';

    // Both quotes stay in the result, and so does every backslash.
    int start = m_pos;
    for (;;) {
        char c = s[m_pos];
        if (c == '\0') {
            result.add(s + start, static_cast<unsigned long>(m_pos - start));
            m_pp.error("closing double quote is expected", m_pos);
            return result;
        }
        m_pos++;
        if (c == '"')
            break;
        if (c == '\\' && s[m_pos] != '\0')
            m_pos++;
    }
    result.add(s + start, static_cast<unsigned long>(m_pos - start));
    return result;
}

void Parser::skipBlanks() {
    char const* s = m_text;
    while (isBlank(s[m_pos]))
        m_pos++;
}

bool Parser::canAppend(mstring const& token, char c) {
    char const* t = token.c_str();
    return appends(t[0], t[0] != '\0' ? t[1] : '\0', c);
}

bool Parser::appends(char f, char second, char c) {
    if (isIdentStart(f))
        return isIdentChar(c);
    if (f == '0') {
        if (second == '\0')
            return c == 'x' || c == 'X' || isDigit(c) || c == '.';
        if (second == 'x' || second == 'X')
            return UT::CVT::isHexDigit(c);
        return isDigit(c) || c == '.';
    }
    if (isDigit(f) || f == '-')
        return isDigit(c) || c == '.';
    if (isDelimiter(f))
        return false;
    // The message names the character behind the unknown one: this check
    // is made when the second character of a token is looked at.
    mstring msg("Unrecognized Symbol \"");
    msg += c;
    msg += "\"";
    m_pp.error(msg, m_pos);
    return false;
}
