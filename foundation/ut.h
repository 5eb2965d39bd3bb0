// Small tools for texts, numbers and file names.
#pragma once

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

    // The preprocessor's line buffer.
    class Buf {
    public:
        explicit Buf(int n);
        ~Buf();
        Buf(Buf const&) = delete;
        Buf& operator=(Buf const&) = delete;

        void eos() { m_buf[0] = '\0'; }
        // Reads up to the buffer's size and ends the text at the first line
        // feed, carriage return or "//". False at the end of the file.
        bool read(FILE* f);
        char* str() { return m_buf; }

    private:
        char* m_buf;
        int m_size;
    };
};
