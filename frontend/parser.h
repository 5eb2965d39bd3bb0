// The token reader: cuts preprocessed lines into text tokens. A token is a
// plain mstring; the grammar compares texts, there are no token classes.
#pragma once

#include <cstdio>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "frontend/diagnostics.h"
#include "frontend/preprocessor.h"

class Parser {
public:
    Parser(FILE* f, mstring const& fileName, IErrReporter* reporter, mstring const& includeDir,
           mstring const& tempDir);
    ~Parser();

    // The next token; empty at the end of the input.
    mstring get();
    // Tokens put back come out again last-in, first-out.
    void takeBack(mstring const& token);
    bool match(mstring const& expected);
    mstring getName();
    unsigned getNum() { return getNumEx(false); }
    unsigned getNumEx(bool optional);
    int getSigned();
    mstring getQuotedString();
    void skipBlanks();
    bool canAppend(mstring const& token, char c);

    PreProcessor& pp() { return m_pp; }
    int pos() const { return m_pos; }

private:
    // Moves the read position to the next character that is not white
    // space, reading lines as needed; false at the end of the input.
    bool fillLine();
    // Cuts the token that begins at the read position (fillLine has found
    // one there) and returns where it began; it ends at the new position.
    int cut();
    // getNumEx for a token already read.
    unsigned toNumber(mstring const& token, bool optional);
    // canAppend for a token that begins with `first` and `second` ('\0' for
    // a token of one character): the rules look no further into it.
    bool appends(char first, char second, char c);

    int m_pos = 0;
    // The current preprocessed line, owned by the preprocessor.
    char const* m_text = "";
    PreProcessor m_pp;
    mvector<mstring> v_takenBack;
};
