// The preprocessor's line buffer: the pieces it cuts a file into, and the
// text of each, are those of fgets into a buffer of the same size with the
// text ended at the first line feed, carriage return or "//" (a NUL ends it
// too, as it ends any C string). Checked against that reading directly.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/ut.h"

namespace {

struct Piece {
    std::string text;
    bool slash;
};

FILE* fileWith(std::string const& bytes) {
    FILE* f = std::tmpfile();
    if (f == nullptr)
        return nullptr;
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::rewind(f);
    return f;
}

// The reading the buffer must give: one fgets per piece.
std::vector<Piece> byFgets(std::string const& bytes, int size) {
    std::vector<Piece> pieces;
    FILE* f = fileWith(bytes);
    std::vector<char> buf(static_cast<size_t>(size) + 2);
    while (std::fgets(buf.data(), size, f) != nullptr) {
        for (char* p = buf.data(); (p = std::strpbrk(p, "\n\r/")) != nullptr; p++) {
            if (*p != '/' || p[1] == '/') {
                *p = '\0';
                break;
            }
        }
        std::string text = buf.data();
        pieces.push_back(Piece{text, text.find('/') != std::string::npos});
    }
    std::fclose(f);
    return pieces;
}

std::vector<Piece> byBuf(std::string const& bytes, int size) {
    std::vector<Piece> pieces;
    FILE* f = fileWith(bytes);
    UT::Buf buf(size);
    while (buf.read(f)) {
        EXPECT_EQ(std::strlen(buf.str()), buf.length());
        pieces.push_back(Piece{buf.str(), buf.hasSlash()});
    }
    EXPECT_STREQ(buf.str(), "");
    EXPECT_FALSE(buf.read(f));
    std::fclose(f);
    return pieces;
}

void expectSame(std::string const& bytes, int size) {
    std::vector<Piece> const want = byFgets(bytes, size);
    std::vector<Piece> const got = byBuf(bytes, size);
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < want.size(); i++) {
        EXPECT_EQ(got[i].text, want[i].text) << "piece " << i;
        EXPECT_EQ(got[i].slash, want[i].slash) << "piece " << i;
    }
}

TEST(LineBuffer, SmallCases) {
    std::string const nuls("ab\0cd\nef\0\n\0/x\n", 15);
    std::string const cases[] = {
        "", "\n", "a", "a\nb\n", "a // b\nc\n", "a / b / c\n", "//\n/\n", "x/", "a\rb\nc\r\n", "\r\r\n\n", nuls,
    };
    for (std::string const& c : cases)
        for (int size : {2, 3, 4, 5, 8, 5000})
            expectSame(c, size);
}

// Pieces cut at the size limit, "//" and '/' at either side of the cut, and
// lines the length of the limit with and without their line feed.
TEST(LineBuffer, LongLinesArriveInPieces) {
    int const size = 5000;
    for (int len : {4997, 4998, 4999, 5000, 5001, 9998, 9999, 10000, 20000}) {
        std::string line(static_cast<size_t>(len), 'a');
        expectSame(line, size);
        expectSame(line + "\n" + line + "\n", size);
        for (int at : {4997, 4998, 4999}) {
            if (at + 1 < len) {
                std::string cut = line;
                cut[static_cast<size_t>(at)] = '/';
                cut[static_cast<size_t>(at) + 1] = '/';
                expectSame(cut + "\nz\n", size);
                cut[static_cast<size_t>(at) + 1] = 'b';
                expectSame(cut + "\nz\n", size);
                cut[static_cast<size_t>(at)] = '\r';
                expectSame(cut + "\nz\n", size);
            }
        }
    }
}

}  // namespace
