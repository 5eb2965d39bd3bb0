// The schema preprocessor.
//
// Lines are read one at a time. Comments are overwritten with blanks rather
// than removed, so that line numbers and columns stay true. The condition
// stack and the macros are shared by all files: an #endif may close what an
// including file opened, and a macro lives to the end of the compile.
// Expanded lines are built in memory; reading a schema creates no file.
#include "frontend/preprocessor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "foundation/ut.h"

namespace {

// Longer lines arrive in pieces of this size, and each piece counts as a line.
int const kLineBufSize = 5000;
// More files than this below the current one are taken for an include loop.
unsigned const kMaxIncludeDepth = 100;
// An expansion this deep is taken for a macro that refers to itself.
int const kMaxMacroDepth = 21;
// The most characters one line may expand to. Macros that each name the
// next several times grow exponentially, so the expansion stops as soon as
// it passes this; no honest schema comes near it.
unsigned const kMaxExpandedLine = 1u << 20;

using schema_chars::isBlank;
using schema_chars::isIdentChar;
using schema_chars::isIdentStart;

// The characters a line copies as they are, whatever stands before them,
// and that leave nothing for the next one to look at: ASCII other than
// the NUL, the double quote, the zero and the start of an identifier.
struct PlainTable {
    bool c[256];
    constexpr PlainTable() : c() {
        for (int i = 1; i < 128; i++)
            c[i] = i != '"' && i != '0' && !((i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z') || i == '_');
    }
};

constexpr PlainTable kPlain{};

inline bool isPlain(char c) { return kPlain.c[static_cast<unsigned char>(c)]; }

// Opens an include file for reading, or gives null. Only a regular file is
// read: a FIFO would hold the compile until a writer came, a device may
// never end, and a directory has no lines. `*irregular` tells that the path
// names something other than a regular file.
FILE* openRegular(char const* path, bool* irregular) {
    // Looked at before the open, so that no device is opened at all, and
    // again through the descriptor, since the path may change in between;
    // the open does not wait for a FIFO's writer meanwhile.
    struct stat st;
    if (::stat(path, &st) == 0 && !S_ISREG(st.st_mode)) {
        *irregular = true;
        return nullptr;
    }
    int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        *irregular = true;
        return nullptr;
    }
    // The lines are read blocking, as from any file.
    int flags = ::fcntl(fd, F_GETFL);
    if (flags != -1)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    FILE* f = ::fdopen(fd, "r");
    if (f == nullptr)
        ::close(fd);
    return f;
}

}  // namespace

PreProcessor::PreProcessor(FILE* f, mstring const& fileName, IErrReporter* reporter, mstring const& includeDir,
                           mstring const& tempDir)
    : m_reporter(reporter),
      m_macros(ISet::create()),
      m_file(f),
      m_fileName(fileName),
      m_includeDir(includeDir),
      m_tempDir(tempDir),
      m_lineBuf(kLineBufSize) {}

PreProcessor::~PreProcessor() {
    // Include files are closed innermost first. The bottom file was handed
    // in by the caller, which closes it itself: the compile driver does so
    // right after the analysis, before this object goes away.
    if (v_files.size() > 0) {
        std::fclose(m_file);
        for (int i = static_cast<int>(v_files.size()) - 1; i >= 1; i--)
            std::fclose(v_files[i]);
    }
    delete m_macros;
    delete[] m_out;
}

char const* PreProcessor::readLine() {
    if (m_end)
        return "";
    UT::Buf& buf = m_lineBuf;
    for (;;) {
        // A read that gets nothing is the end of the file: no empty line
        // and no line number behind the last line.
        while (m_file == nullptr || !buf.read(m_file)) {
            if (m_inComment)
                error("comment is not closed with */", 0);
            unsigned depth = v_files.size();
            if (depth == 0) {
                if (v_conds.size() != 0)
                    error("no #endif for #if", 0);
                m_end = true;
                return "";
            }
            // Back to the including file, which may be at its end as well.
            std::fclose(m_file);
            buf.pop();
            m_file = v_files[depth - 1];
            m_fileName = v_fileNames[depth - 1];
            m_line = v_lines[depth - 1];
            v_files.resize(depth - 1);
            v_fileNames.resize(depth - 1);
            v_lines.resize(depth - 1);
        }

        m_line++;
        char* text = buf.str();
        std::size_t len = buf.length();

        // Both comment marks hold a '/': a line without one needs no search.
        if (m_inComment) {
            char* close = buf.hasSlash() ? std::strstr(text, "*/") : nullptr;
            if (close == nullptr)
                continue;
            std::memset(text, ' ', static_cast<size_t>(close + 2 - text));
            m_inComment = false;
        }
        // Comments do not nest: the first "*/" behind a "/*" closes it.
        if (buf.hasSlash()) {
            for (char* open = std::strstr(text, "/*"); open != nullptr; open = std::strstr(text, "/*")) {
                char* close = std::strstr(open + 2, "*/");
                if (close == nullptr) {
                    *open = '\0';
                    len = static_cast<std::size_t>(open - text);
                    m_inComment = true;
                    break;
                }
                std::memset(open, ' ', static_cast<size_t>(close + 2 - open));
            }
        }
        return processLine(text, len);
    }
}

void PreProcessor::grow(std::size_t n) {
    std::size_t cap = m_outCap == 0 ? 256 : m_outCap;
    while (cap < n)
        cap *= 2;
    char* block = new char[cap];
    if (m_outLen > 0)
        std::memcpy(block, m_out, m_outLen);
    delete[] m_out;
    m_out = block;
    m_outCap = cap;
}

void PreProcessor::put(char const* from, std::size_t n) {
    if (m_outLen + n > kMaxExpandedLine)
        tooLong();
    // One more for the NUL that ends the line.
    reserve(m_outLen + n + 1);
    std::memcpy(m_out + m_outLen, from, n);
    m_outLen += n;
}

char const* PreProcessor::processLine(char const* text) { return processLine(text, std::strlen(text)); }

char const* PreProcessor::processLine(char const* text, std::size_t len) {
    char const* p = text;
    while (isBlank(*p))
        p++;
    bool isDirective = *p == '#';
    mstring word;
    mstring arg;
    if (isDirective) {
        // "# ifdef" has an empty word: the blank ends it at once.
        char const* start = ++p;
        while (schema_chars::isAlpha(*p))
            p++;
        word.set(start, static_cast<unsigned long>(p - start));
        while (isBlank(*p))
            p++;
        arg = p;
    }

    // A change of the condition stack takes effect from the next line on:
    // every directive ends by taking the state again, so `active` is
    // already that of the stack here.
    if (isDirective) {
        directive(word, arg);
        return "";
    }
    if (!active)
        return "";

    // Every identifier goes out expanded, with a blank on either side; all
    // other text is copied as it is. Without macros a line grows at most
    // threefold (a one-letter name becomes three characters), so room for
    // that is made once and the characters are written without checks; a
    // macro's value makes room for itself, and room is made again behind it.
    // Without macros no name needs a look-up.
    bool const macros = m_macros->size() > 0;
    m_outLen = 0;
    reserve(3 * len + 1);
    char* o = m_out;
    char prev = 0;
    char const* s = text;
    char const* const end = text + len;
    while (*s != '\0') {
        // A run of plain characters, taken in one loop: none of them is a
        // '0', so the character behind the run sees no '0' before it.
        if (prev != '0' && isPlain(*s)) {
            do
                *o++ = *s++;
            while (isPlain(*s));
            prev = s[-1];
            continue;
        }
        char c = *s;
        if (prev == '0' && c != '"') {
            if (c == 'x' || c == 'X') {
                // The token reader sees one spelling of the hex prefix.
                *o++ = 'x';
                s++;
                while (UT::CVT::isHexDigit(*s))
                    *o++ = *s++;
                prev = s[-1];
            } else {
                // Digits glued to letters make no identifier unless the
                // word starts with a letter.
                *o++ = c;
                prev = c;
                s++;
            }
        } else if (isIdentStart(c)) {
            *o++ = ' ';
            if (macros) {
                char const* start = s;
                while (isIdentChar(*s))
                    s++;
                m_outLen = static_cast<size_t>(o - m_out);
                expand(start, static_cast<size_t>(s - start), 0);
                reserve(m_outLen + 3 * static_cast<size_t>(end - s) + 2);
                o = m_out + m_outLen;
            } else {
                do
                    *o++ = *s++;
                while (isIdentChar(*s));
            }
            *o++ = ' ';
            prev = s[-1];
        } else if (c == '"') {
            *o++ = *s++;
            for (; *s != '"'; s++) {
                if (*s == '\0') {
                    error("non-terminated string literal", 0);
                    break;
                }
                if (*s == '\\' && s[1] != '\0')
                    *o++ = *s++;
                *o++ = *s;
            }
            if (*s == '"')
                *o++ = *s++;
            prev = s[-1];
        } else {
            *o++ = c;
            prev = c;
            s++;
        }
    }
    m_outLen = static_cast<size_t>(o - m_out);
    // The text around the macros may still carry the line past the limit.
    if (m_outLen > kMaxExpandedLine)
        tooLong();
    if (m_outLen == 0)
        return "";
    *o = '\0';
    return m_out;
}

void PreProcessor::tooLong() {
    error1("macro expansion of this line exceeds #1 characters", UT::n2s(kMaxExpandedLine), 0);
}

void PreProcessor::expand(char const* name, std::size_t n, int depth) {
    mstring key;
    key.set(name, n);
    Macros* macro = findDef(key);
    if (macro == nullptr) {
        put(name, n);
        return;
    }
    if (depth >= kMaxMacroDepth) {
        error("recursion in macro", 0);
        return;
    }
    // Unlike a line, a value knows no strings and no hex prefixes: only a
    // character behind a "0" is kept from starting an identifier.
    char prev = 0;
    char const* s = macro->m_value.c_str();
    char const* run = s;
    while (*s != '\0') {
        char c = *s;
        if (prev != '0' && isIdentStart(c)) {
            put(run, static_cast<size_t>(s - run));
            char const* start = s;
            while (isIdentChar(*s))
                s++;
            put(' ');
            expand(start, static_cast<size_t>(s - start), depth + 1);
            put(' ');
            prev = s[-1];
            run = s;
        } else {
            prev = c;
            s++;
        }
    }
    put(run, static_cast<size_t>(s - run));
}

void PreProcessor::directive(mstring const& word, mstring const& arg) {
    if (word == "ifdef" || word == "ifndef") {
        // Under a false branch everything stays false, known macro or not.
        bool known = findDef(arg) != nullptr;
        Cond cond;
        cond.m_word = word;
        cond.m_active = active && (word == "ifdef" ? known : !known);
        pushCond(cond);
    } else if (word == "else") {
        if (!arg.empty())
            error("extra words after #else", 0);
        unsigned n = v_conds.size();
        if (n == 0 || (v_conds[n - 1].m_word != "ifdef" && v_conds[n - 1].m_word != "ifndef")) {
            error("#else without matching #if", 0);
            return;
        }
        bool wasTaken = v_conds[n - 1].m_active;
        v_conds.resize(n - 1);
        setLast();
        Cond cond;
        cond.m_word = "else";
        cond.m_active = wasTaken ? false : active;
        pushCond(cond);
    } else if (word == "endif") {
        if (v_conds.size() == 0) {
            error("#endif without matching #if", 0);
            return;
        }
        v_conds.resize(v_conds.size() - 1);
    } else if (word == "define") {
        if (!active)
            return;
        UT::Pair def = UT::split2(arg);
        if (findDef(def.first) != nullptr) {
            error1("macro #1 already defined", def.first, 0);
            return;
        }
        m_macros->add(HIComparable(new Macros(def.first, def.second)));
    } else if (word == "undef") {
        if (!active)
            return;
        UT::Pair def = UT::split2(arg);
        if (!def.second.empty())
            error("illegal #undef command - extra words", 0);
        removeDef(def.first);
    } else if (word == "include") {
        if (active)
            include(arg);
    }
    // Any other word ("#pragma" and the like) vanishes without a report.

    // Keeps the top pointer valid after a push; `active` is taken again at
    // the next line anyway.
    setLast();
}

void PreProcessor::pushCond(Cond const& cond) {
    // The vector grows by one place at a time, copying all it holds, which
    // made each level of nesting cost as much as all those below it. Room
    // is made by doubling instead: a shrink keeps the places, so push_back
    // finds one free.
    unsigned n = v_conds.size();
    if (n == v_conds.capacity()) {
        v_conds.resize(n < 8 ? 8 : 2 * n);
        v_conds.resize(n);
    }
    v_conds.push_back(cond);
}

void PreProcessor::include(mstring const& arg) {
    if (v_files.size() > kMaxIncludeDepth) {
        error("recursion in #include", 0);
        return;
    }
    char const* a = arg.c_str();
    unsigned n = arg.length();
    // "name" and <name> mean the same.
    if (n < 3 || !((a[0] == '"' && a[n - 1] == '"') || (a[0] == '<' && a[n - 1] == '>'))) {
        error("incorrect #include syntax", 0);
        return;
    }
    mstring name;
    name.set(a + 1, n - 2);
    // The first directory that holds the name decides, even when what it
    // holds cannot be read: a later directory is searched only when the
    // name is not there at all.
    mstring path;
    bool irregular = false;
    FILE* f = nullptr;
    for (unsigned i = 0; i <= v_firstDirs.size(); i++) {
        path = UT::makefnm(i < v_firstDirs.size() ? v_firstDirs[i] : m_includeDir, name);
        f = openRegular(path.c_str(), &irregular);
        if (f != nullptr || irregular || (errno != ENOENT && errno != ENOTDIR))
            break;
    }
    if (irregular) {
        // Our own texts, kept out of the message table: it holds exactly the
    // system's pairs. A key with no entry is printed as it stands.
    error1("cannot include \"#1\": not a regular file", name, 0);
        return;
    }
    if (f == nullptr) {
        error2("current directory is #1, cannot open include file #2", UT::currdir(), name, 0);
        return;
    }
    v_included.push_back(path);
    m_lineBuf.push();
    v_files.push_back(m_file);
    v_fileNames.push_back(m_fileName);
    v_lines.push_back(m_line);
    // Diagnostics name an include file as it was written, without the directory.
    m_file = f;
    m_fileName = name;
    m_line = 0;
}

PreProcessor::Macros* PreProcessor::findDef(mstring const& name) {
    Macros key(name, mstring());
    HIComparable* found = m_macros->find(key);
    return found ? static_cast<Macros*>(found->get()) : nullptr;
}

void PreProcessor::removeDef(mstring const& name) {
    Macros key(name, mstring());
    m_macros->remove(key);
}

void PreProcessor::setLast() {
    unsigned n = v_conds.size();
    m_last = n > 0 ? &v_conds[n - 1] : nullptr;
    active = m_last ? m_last->m_active : true;
}

void PreProcessor::error(mstring const& msg, int pos) { m_reporter->err(msg, m_fileName, m_line, pos); }

void PreProcessor::error1(mstring const& msg, mstring const& p1, int pos) {
    m_reporter->err1(msg, p1, m_fileName, m_line, pos);
}

void PreProcessor::error2(mstring const& msg, mstring const& p1, mstring const& p2, int pos) {
    m_reporter->err2(msg, p1, p2, m_fileName, m_line, pos);
}

void PreProcessor::error3(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3, int pos) {
    m_reporter->err3(msg, p1, p2, p3, m_fileName, m_line, pos);
}

void PreProcessor::error4(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3,
                          mstring const& p4, int pos) {
    m_reporter->err4(msg, p1, p2, p3, p4, m_fileName, m_line, pos);
}

void PreProcessor::warning(mstring const& msg, int pos) { m_reporter->warning(msg, m_fileName, m_line, pos); }
