// The schema preprocessor: turns schema files into clean, expanded lines.
//
// It removes comments, obeys #ifdef/#ifndef/#else/#endif/#define/#undef/
// #include, expands macros, and owns the position (file, line) that every
// diagnostic of the grammar reports.
#pragma once

#include <cctype>
#include <cstddef>
#include <cstdio>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "foundation/sets.h"
#include "foundation/ut.h"
#include "frontend/diagnostics.h"

// Character classes of the front end. ASCII answers from a table, as the
// C library answers it in every locale; other bytes still ask the library,
// which alone knows the current locale's view of them.
namespace schema_chars {

enum : unsigned char { kBlank = 1, kAlpha = 2, kIdentStart = 4, kIdentChar = 8 };

struct Table {
    unsigned char c[128];
    constexpr Table() : c() {
        for (int i = 0; i < 128; i++) {
            unsigned char k = 0;
            if (i == ' ' || (i >= '\t' && i <= '\r'))
                k |= kBlank;
            if ((i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z'))
                k |= kAlpha | kIdentStart | kIdentChar;
            if (i == '_')
                k |= kIdentStart | kIdentChar;
            if (i >= '0' && i <= '9')
                k |= kIdentChar;
            c[i] = k;
        }
    }
};

inline constexpr Table kTable{};

inline bool isBlank(char c) {
    unsigned char u = static_cast<unsigned char>(c);
    return u < 128 ? (kTable.c[u] & kBlank) != 0 : std::isspace(u) != 0;
}
inline bool isAlpha(char c) {
    unsigned char u = static_cast<unsigned char>(c);
    return u < 128 ? (kTable.c[u] & kAlpha) != 0 : std::isalpha(u) != 0;
}
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
// A letter or '_'.
inline bool isIdentStart(char c) {
    unsigned char u = static_cast<unsigned char>(c);
    return u < 128 ? (kTable.c[u] & kIdentStart) != 0 : std::isalpha(u) != 0;
}
// A letter, a digit or '_'.
inline bool isIdentChar(char c) {
    unsigned char u = static_cast<unsigned char>(c);
    return u < 128 ? (kTable.c[u] & kIdentChar) != 0 : std::isalnum(u) != 0;
}

}  // namespace schema_chars

class PreProcessor {
public:
    struct Cond {
        mstring m_word;
        bool m_active = false;
    };
    // Declared for the record and never filled.
    struct InpInfo {
        mstring m_name;
        int m_line = 0;
    };
    class Macros : public IComparable {
    public:
        Macros() = default;
        Macros(mstring const& name, mstring const& value) : m_name(name), m_value(value) {}
        bool less(IComparable const* other) const override {
            return m_name < static_cast<Macros const*>(other)->m_name;
        }
        mstring m_name;
        mstring m_value;
    };

    PreProcessor(FILE* f, mstring const& fileName, IErrReporter* reporter, mstring const& includeDir,
                 mstring const& tempDir);
    ~PreProcessor();
    PreProcessor(PreProcessor const&) = delete;
    PreProcessor& operator=(PreProcessor const&) = delete;

    // The next line, valid until the next call. Empty with isEnd() set
    // means the end of input; empty alone is a blank or skipped line.
    char const* readLine();
    char const* processLine(char const* text);
    Macros* findDef(mstring const& name);
    void removeDef(mstring const& name);
    void setLast();

    void error(mstring const& msg, int pos);
    void error1(mstring const& msg, mstring const& p1, int pos);
    void error2(mstring const& msg, mstring const& p1, mstring const& p2, int pos);
    void error3(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3, int pos);
    void error4(mstring const& msg, mstring const& p1, mstring const& p2, mstring const& p3, mstring const& p4,
                int pos);
    void warning(mstring const& msg, int pos);

    // Directories that #include searches, in this order, before the one
    // given to the constructor.
    void searchFirst(mvector<mstring> const& dirs) { v_firstDirs = dirs; }

    bool isEnd() const { return m_end; }
    mstring const& fileName() const { return m_fileName; }
    int lineNo() const { return m_line; }
    IErrReporter* reporter() const { return m_reporter; }
    // Every #include file opened so far, as the path it was opened by, in
    // the order of opening; a file included twice stands here twice.
    mvector<mstring> const& includedFiles() const { return v_included; }

private:
    // processLine for a text of `len` characters.
    char const* processLine(char const* text, std::size_t len);
    // One directive line; every directive gives an empty line.
    void directive(mstring const& word, mstring const& arg);
    // Puts the name of `n` characters at `name` on the output line, expanded
    // if it is a macro.
    void expand(char const* name, std::size_t n, int depth);
    // Makes room for `n` characters on the output line, keeping those on it.
    void reserve(std::size_t n) {
        if (n > m_outCap)
            grow(n);
    }
    void grow(std::size_t n);
    // Appends to the output line; past the limit of one line's expansion
    // the line is refused before anything more is built.
    void put(char const* from, std::size_t n);
    void put(char c) { put(&c, 1); }
    void tooLong();
    // Pushes onto the condition stack in amortized constant time.
    void pushCond(Cond const& cond);
    void include(mstring const& arg);

    IErrReporter* m_reporter;
    ISet* m_macros;
    mvector<Cond> v_conds;
    mvector<InpInfo> v_inpInfo;
    FILE* m_file;
    mstring m_fileName;
    int m_line = 0;
    mvector<FILE*> v_files;
    mvector<mstring> v_fileNames;
    mvector<int> v_lines;
    mstring m_includeDir;
    mvector<mstring> v_firstDirs;
    bool m_end = false;
    bool m_inComment = false;
    mstring m_tempDir;
    Cond* m_last = nullptr;
    bool active = true;
    mvector<mstring> v_included;
    // The line buffer, made once rather than for every line.
    UT::Buf m_lineBuf;
    // The expanded line, kept from line to line so that it is rarely
    // allocated; NUL-terminated at m_outLen.
    char* m_out = nullptr;
    std::size_t m_outLen = 0;
    std::size_t m_outCap = 0;
};
