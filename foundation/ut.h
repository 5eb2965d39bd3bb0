// Small tools for texts, numbers and file names.
#pragma once

#include <cstddef>
#include <cstdio>

#include "foundation/mstring.h"
#include "foundation/mvector.h"

// The path separator put between a directory and a name.
extern "C" char const* OS_SEP;

class UT {
public:
    struct Pair {
        mstring first;
        mstring second;
    };

    static mstring n2s(int v);
    static mstring n2s(unsigned int v);
    static mstring n2s(long long v);
    static mstring n2s(double v);
    static mstring n2s(void* v);
    static mstring n2s(int v, int w);
    static mstring n2s(unsigned int v, int w);
    static mstring n2s(long long v, int w);
    // The decimal text of `v`, as printf's "%lld" and "%llu" write it, at
    // the end of `buf`; returns where it begins. Without the cost of a
    // format string: the generator writes numbers by the million.
    static char* decimal(long long v, char (&buf)[24]);
    static char* decimal(unsigned long long v, char (&buf)[24]);

    // Pads with blanks on the right up to `w` characters; longer texts stay.
    static mstring adjust(mstring const& s, int w);
    static mstring trim(mstring const& s);
    // `dir` and `name` joined by OS_SEP; one trailing separator of `dir` is dropped.
    static mstring makefnm(mstring const& dir, mstring const& name);
    // Every piece between occurrences of `c`, empty pieces included.
    static mvector<mstring> splitName(mstring const& s, char c);
    // The text up to the first white space, and what follows that white space.
    static Pair split2(mstring const& s);
    static mstring stringTime();
    static mstring currdir();
    static void dlog(mstring const& s);
    // The closing line of a compile, on standard output.
    static void finishComp(bool ok);

    // The C# and Java types of a field whose C type is `cType`. C# has a
    // type of each size and sign; Java has only signed ones, so an unsigned
    // C type keeps its size there. A boolean is "bool" to mapCSType and is
    // told to mapJavaType by its schema type name `typeName`; `boxed` gives
    // the class Java needs as a type argument. A type not in the tables (an
    // enum, a struct) keeps its name.
    static mstring mapCSType(mstring const& cType);
    static mstring mapJavaType(mstring const& cType, mstring const& typeName, bool boxed);

    class CVT {
    public:
        static bool isHexDigit(char c);
        static bool fromHex(char const* s, long* v);
        static bool fromOct(char const* s, long* v);
        static bool s2int(char const* s, long* v);
        static bool s2i8(char const* s, long long* v);
        static bool s2u8(char const* s, unsigned long long* v);
        static bool s2dbl(char const* s, double* v);
    };

    // The preprocessor's line buffer. The file is read in large blocks and
    // cut into lines where they stand, rather than by a library call per
    // line: schema lines are short, and the call cost more than the line.
    // The lines are what fgets into a buffer of `n` bytes would give.
    class Buf {
    public:
        explicit Buf(int n);
        ~Buf();
        Buf(Buf const&) = delete;
        Buf& operator=(Buf const&) = delete;

        void eos() { m_text = m_empty; m_len = 0; m_slash = false; m_empty[0] = '\0'; }
        // The next piece of the file: up to and with the next line feed, or
        // the buffer's size less one when no line feed comes before. Its
        // text ends at the first line feed, carriage return, NUL or "//".
        // False at the end of the file.
        bool read(FILE* f);
        // The text, which the caller may overwrite up to its end.
        char* str() { return m_text; }
        // The text's length, and whether a '/' stands in it.
        std::size_t length() const { return m_len; }
        bool hasSlash() const { return m_slash; }
        // What was read ahead of a file is put aside while another file is
        // read (an include), and taken up again when that one ends.
        void push();
        void pop();

    private:
        // Makes the block hold at least `m_size - 1` unread bytes, or all
        // that remain of the file.
        void fill(FILE* f);

        struct Saved {
            char* block = nullptr;
            std::size_t pos = 0;
            std::size_t end = 0;
            bool atEof = false;
        };

        int m_size;
        // The bytes read and not yet cut: [m_pos, m_end) of m_block.
        char* m_block;
        std::size_t m_cap;
        std::size_t m_pos = 0;
        std::size_t m_end = 0;
        bool m_atEof = false;
        // A piece cut at the size limit ends with a NUL written over the
        // first byte of the next piece; that byte is kept here meanwhile.
        char m_held = 0;
        bool m_holding = false;
        char* m_text;
        std::size_t m_len = 0;
        bool m_slash = false;
        char m_empty[1];
        mvector<Saved> v_saved;
    };
};
