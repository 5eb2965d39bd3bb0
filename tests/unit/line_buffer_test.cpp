// The preprocessor's line buffer: the pieces it cuts a file into, and the
// text of each, are those of fgets into a buffer of the same size with the
// text ended at the first line feed, carriage return or "//" (a NUL ends it
// too, as it ends any C string). Checked against that reading directly.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "foundation/ut.h"

namespace {

using Pieces = std::vector<std::pair<std::string, bool>>;  // each piece's text, and whether it holds a '/'

FILE* fileWith(std::string const& bytes) {
    FILE* f = std::tmpfile();
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::rewind(f);
    return f;
}

// The reading the buffer must give: one fgets per piece.
Pieces byFgets(std::string const& bytes, int size) {
    Pieces pieces;
    FILE* f = fileWith(bytes);
    std::vector<char> buf(static_cast<size_t>(size) + 2);
    while (std::fgets(buf.data(), size, f) != nullptr) {
        for (char* p = buf.data(); (p = std::strpbrk(p, "\n\r/")) != nullptr; p++) {
            if (*p != '/' || p[1] == '/') {
                *p = '\0';
                break;
            }
        }
        pieces.emplace_back(buf.data(), std::strchr(buf.data(), '/') != nullptr);
    }
    std::fclose(f);
    return pieces;
}

void expectSame(std::string const& bytes, int size) {
    Pieces got;
    FILE* f = fileWith(bytes);
    UT::Buf buf(size);
    while (buf.read(f)) {
        EXPECT_EQ(std::strlen(buf.str()), buf.length());
        got.emplace_back(buf.str(), buf.hasSlash());
    }
    EXPECT_STREQ(buf.str(), "");
    EXPECT_FALSE(buf.read(f));
    std::fclose(f);
    EXPECT_EQ(got, byFgets(bytes, size)) << size;
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

// Pieces cut at the size limit, "//", '/' and '\r' at either side of the
// cut, and lines the length of the limit with and without their line feed.
TEST(LineBuffer, LongLinesArriveInPieces) {
    int const size = 5000;
    for (int len : {4997, 4998, 4999, 5000, 5001, 9998, 9999, 10000, 20000}) {
        std::string line(static_cast<size_t>(len), 'a');
        expectSame(line, size);
        expectSame(line + "\n" + line + "\n", size);
        for (size_t at : {4997, 4998, 4999})
            for (char const* mark : {"//", "/b", "\rb"})
                if (at + 1 < line.size())
                    expectSame(std::string(line).replace(at, 2, mark) + "\nz\n", size);
    }
}

}  // namespace
