// Output streams and the small utilities.
#include <gtest/gtest.h>

#include <climits>
#include <unistd.h>

#include <string>
#include <vector>

#include "foundation/outfile.h"
#include "foundation/outstream.h"
#include "foundation/ut.h"
#include "support/process.h"

// A string stream keeps its text in a file of its own in the given
// directory, named after the process and a counter, until it is deleted.
TEST(Streams, StringStreamUsesATemporaryFile) {
    TempDir dir;
    IOutStream* s = IOutStream::createStrStream(dir.path().c_str());
    IOutStream* t = IOutStream::createStrStream(dir.path().c_str());
    std::vector<std::string> files = dir.list();
    ASSERT_EQ(files.size(), 2u);
    std::string const prefix = "temp_" + std::to_string(getpid()) + "_";
    EXPECT_EQ(files[0].compare(0, prefix.size(), prefix), 0) << files[0];
    EXPECT_EQ(s->retstr(), "");  // nothing written: empty, not an error
    std::string big(3000, 'x');  // more than one 1024-byte piece
    *t << big.c_str() << "|" << 42L;
    EXPECT_EQ(std::string(t->retstr().c_str()), big + "|42");
    EXPECT_EQ(std::string(t->retstr().c_str()), big + "|42");  // the file is still there
    delete s;
    delete t;
    EXPECT_TRUE(dir.list().empty());
}

TEST(Utilities, FileNamesAndNumberConversions) {
    char const* const files[][3] = {{"dir/", "a", "dir/a"}, {"dir", "a", "dir/a"}, {"", "a", "a"},
                                     {"/", "a", "a"},       {"d\\", "a", "d/a"}};
    for (auto const& f : files)
        EXPECT_EQ(UT::makefnm(f[0], f[1]), f[2]) << f[0];

    struct { char const* text; bool ok; long value; } const ints[] = {{"0XAb", true, 171}, {"0x1g", false, 0}, {"017", true, 15}, {"09", false, 0},
                      {"-5", true, -5},    {"12a", false, 0},  {"", true, 0}};
    for (auto const& c : ints) {
        long v = 0;
        EXPECT_EQ(UT::CVT::s2int(c.text, &v), c.ok) << c.text;
        EXPECT_EQ(c.ok ? v : 0, c.value) << c.text;
    }
    long long ll = 1;
    EXPECT_TRUE(UT::CVT::s2i8("0x10", &ll));  // base 0, unlike s2int
    EXPECT_EQ(ll, 16);
}

// A collected text of several megabytes crosses the memory stream's blocks
// at every kind of piece; handed to a file (blockwise) or read back whole, it
// must come out as written.
TEST(Streams, LargeCollectedTextSurvivesBlocksAndHandOver) {
    std::string expected;
    auto fill = [&](IOutStream& s) {
        expected.clear();
        std::string const piece(997, 'p');  // odd sizes, so pieces straddle blocks
        for (int i = 0; expected.size() < (size_t{5} << 20); i++) {
            switch (i % 4) {
            case 0: s << piece.c_str(); expected += piece; break;
            case 1: s.write(piece.data(), static_cast<size_t>(i % 997)); expected.append(piece, 0, i % 997); break;
            case 2: s << static_cast<long>(i); expected += std::to_string(i); break;
            default: s << '\n'; expected += '\n'; break;
            }
        }
    };

    IOutStream* mem = IOutStream::createMemStream();
    fill(*mem);
    EXPECT_TRUE(std::string(mem->retstr().c_str()) == expected);
    delete mem;

    TempDir dir;
    IOutStream* file = IOutStream::createFileStream(dir.file("hpp").c_str());
    *file << "head|";
    mem = IOutStream::createMemStream();
    fill(*mem);
    mem->moveTextTo(*file);
    EXPECT_EQ(mem->retstr(), "");  // handed over: nothing is left behind
    *file << "|tail";
    delete mem;
    delete file;
    EXPECT_TRUE(readFile(dir.file("hpp")) == "head|" + expected + "|tail");
}

// An output's temporary is ".{name}.XXXXXX" beside it, its name cut so
// that it stays a file name: every output name up to the longest one works,
// and each of the six characters is drawn anew for each temporary.
TEST(OutFiles, TemporaryNamesAtTheNameLimit) {
    TempDir dir;
    for (size_t n : {size_t(NAME_MAX) - 8, size_t(NAME_MAX) - 7, size_t(NAME_MAX)}) {
        SCOPED_TRACE(n);
        std::string const name(n, 'n');
        OutFile out(mstring(dir.file(name).c_str()));
        IOutStream* s = nullptr;
        ASSERT_EQ(out.open(s), 0);
        *s << "text";
        delete s;
        EXPECT_EQ(out.commit(), 0);
        EXPECT_EQ(readFile(dir.file(name)), "text");
    }
    std::vector<OutFile*> open;
    for (int i = 0; i < 20; i++) {
        open.push_back(new OutFile(mstring(dir.file("t").c_str())));
        IOutStream* s = nullptr;
        ASSERT_EQ(open.back()->open(s), 0);
        delete s;
    }
    std::vector<std::string> temps;
    for (std::string const& f : dir.list())
        if (f.compare(0, 3, ".t.") == 0)
            temps.push_back(f.substr(3));
    ASSERT_EQ(temps.size(), 20u);
    for (size_t at = 0; at < 6; at++) {
        SCOPED_TRACE(at);
        size_t differ = 0;
        for (std::string const& t : temps)
            differ += t.size() == 6 && t[at] != temps[0][at];
        EXPECT_GT(differ, 0u);
    }
    for (OutFile* f : open)
        delete f;
    EXPECT_EQ(dir.list().size(), 3u);  // the temporaries went with their files
}
