// The token reader: cuts preprocessed lines into text tokens. A token is a
// plain mstring; the grammar compares texts, there are no token classes.
// Tokens that are only compared can be looked at where they stand (Token),
// so that only the tokens the model keeps become strings.
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

    // A token's characters where they stand: in the current line, or in a
    // token that was put back. Valid until the parser reads on.
    struct Token {
        char const* s;
        unsigned n;

        bool empty() const { return n == 0; }
        // Whether the token is exactly `word`. No token holds a NUL, so a
        // shorter word stops the loop at its end.
        bool is(char const* word) const {
            for (unsigned i = 0; i < n; i++)
                if (word[i] != s[i])
                    return false;
            return word[n] == '\0';
        }
        mstring str() const {
            mstring t;
            t.set(s, n);
            return t;
        }
    };

    // The next token; empty at the end of the input.
    mstring get();
    // The next token, read as get reads it, without a string made of it.
    Token next();
    // The next token, left in place: the next read returns it again. The
    // read position and line are those get would leave.
    Token peek();
    // Drops the token peek has shown.
    void skip();
    // Tokens put back come out again last-in, first-out.
    void takeBack(mstring const& token);
    void takeBack(mstring&& token);
    bool match(mstring const& expected);
    bool match(char const* expected);
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
    // The next line into m_text; false at the end of the input.
    bool nextLine();
    // Reports the unknown character `first` before the read position.
    void unknown(char first);
    // Moves past white space, reading lines as needed, and cuts the token
    // found there, as its start and length in the line; the read position
    // is left behind it. False at the end of the input.
    bool take(int* start, int* len);
    // take for the common tokens only: false, with nothing changed, for
    // any other and at the end of the line.
    bool quickTake(int* start, int* len);
    // take for every case.
    bool takeAny(int* start, int* len);
    // With nothing put back: the token peek has cut, or else the next one
    // of the line, as its start and length in the line. False at the end
    // of the input.
    bool lineToken(int* start, int* len);
    // The token peek has cut from the line becomes a string at the bottom
    // of the tokens put back, for a reader that may go on to the next line.
    void keepPeeked();
    // The top token put back, moved out into m_spent.
    Token pop();
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
    // A token cut from the line by peek and not read yet: it comes out
    // before the line goes on, and after every token put back since.
    bool m_peeked = false;
    int m_peekStart = 0;
    int m_peekLen = 0;
    // The token put back that next or skip took last: a Token may point
    // into it.
    mstring m_spent;
};
