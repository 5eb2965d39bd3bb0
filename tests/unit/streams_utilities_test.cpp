// Output streams and the small utilities.
#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

#include "foundation/outstream.h"
#include "foundation/ut.h"
#include "support/process.h"

TEST(Streams, FileStreamWritesEveryKind) {
    TempDir dir;
    std::string path = dir.file("out.txt");
    IOutStream* s = IOutStream::createFileStream(path.c_str());
    EXPECT_TRUE(s->good());
    *s << mstring("a") << mstring() << "b" << 'c' << -5L << 7UL << -9LL << 3 << 4u;
    delete s;
    EXPECT_EQ(readFile(path), "abc-57-934");
}

TEST(Streams, UnopenableFileEndsTheProcess) {
    ProcessResult r = runInChild([] { IOutStream::createFileStream("/nonexistent-dir/x.h"); });
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err, "error: Cannot open file /nonexistent-dir/x.h\n");
}

TEST(Streams, StringStreamUsesATemporaryFile) {
    TempDir dir;
    IOutStream* s = IOutStream::createStrStream(dir.path().c_str());
    std::vector<std::string> files = dir.list();
    ASSERT_EQ(files.size(), 1u);
    std::string expectedPrefix = "temp_" + std::to_string(getpid()) + "_";
    EXPECT_EQ(files[0].compare(0, expectedPrefix.size(), expectedPrefix), 0) << files[0];
    EXPECT_EQ(s->retstr(), "");  // nothing written: empty, not an error

    IOutStream* t = IOutStream::createStrStream(dir.path().c_str());
    std::string big(3000, 'x');  // more than one 1024-byte piece
    *t << big.c_str() << "|" << 42L;
    EXPECT_EQ(std::string(t->retstr().c_str()), big + "|42");
    EXPECT_EQ(std::string(t->retstr().c_str()), big + "|42");  // the file is still there
    EXPECT_EQ(dir.list().size(), 2u);
    delete s;
    delete t;
    EXPECT_TRUE(dir.list().empty());  // destruction removes the files
}

TEST(Streams, StringStreamCountersDiffer) {
    TempDir dir;
    IOutStream* a = IOutStream::createStrStream(dir.path().c_str());
    IOutStream* b = IOutStream::createStrStream(dir.path().c_str());
    EXPECT_EQ(dir.list().size(), 2u);
    delete a;
    delete b;
}

TEST(Streams, MemoryStreamCollectsTheText) {
    IOutStream* s = IOutStream::createMemStream();
    EXPECT_TRUE(s->good());
    EXPECT_EQ(s->retstr(), "");  // nothing written: empty, not an error
    delete s;

    s = IOutStream::createMemStream();
    std::string big(3000, 'x');
    *s << big.c_str() << mstring("|") << mstring() << 'c' << -5L << 7UL << -9LL << 3 << 4u;
    EXPECT_EQ(std::string(s->retstr().c_str()), big + "|c-57-934");
    *s << "late";  // writing has ended, as with the file-backed string stream
    EXPECT_EQ(std::string(s->retstr().c_str()), big + "|c-57-934");
    delete s;
}

TEST(Streams, NullWrapAndDup) {
    TempDir dir;
    IOutStream* null = IOutStream::createNullStream();
    *null << "dropped" << 1L;
    EXPECT_TRUE(null->good());
    EXPECT_EQ(null->retstr(), "");

    IOutStream* file = IOutStream::createFileStream(dir.file("f").c_str());
    IOutStream* wrap = IOutStream::createWrapStream(file);
    *wrap << "w";
    delete wrap;  // leaves its target alone
    *file << "f";

    IOutStream* str = IOutStream::createStrStream(dir.path().c_str());
    IOutStream* wrapped = IOutStream::createWrapStream(file);
    IOutStream* dup = IOutStream::createDupStream(wrapped, str, false);
    *dup << "d" << 1L;
    EXPECT_TRUE(dup->good());
    EXPECT_EQ(str->retstr(), "d1");
    delete dup;  // not the owner: both targets live on
    delete wrapped;
    delete str;
    delete file;
    EXPECT_EQ(readFile(dir.file("f")), "wfd1");

    IOutStream* owned = IOutStream::createDupStream(IOutStream::createNullStream(),
                                                    IOutStream::createNullStream(), true);
    *owned << "x";
    delete owned;  // deletes both (checked by the sanitizer build)
    delete null;
}

TEST(Utilities, NumbersAsText) {
    EXPECT_EQ(UT::n2s(-12), "-12");
    EXPECT_EQ(UT::n2s(4000000000u), "4000000000");
    EXPECT_EQ(UT::n2s(-9000000000LL), "-9000000000");
    EXPECT_EQ(UT::n2s(1.5), "1.5");
    EXPECT_EQ(UT::n2s(7, 4), "7   ");
    EXPECT_EQ(UT::n2s(12345, 3), "12345");
    EXPECT_EQ(UT::adjust("ab", 0), "ab");
    EXPECT_EQ(UT::adjust("ab", 5), "ab   ");
    EXPECT_EQ(UT::adjust(mstring(), 2), "  ");
}

TEST(Utilities, TextTools) {
    EXPECT_EQ(UT::trim("  a b \t\n"), "a b");
    EXPECT_EQ(UT::trim("   "), "");
    EXPECT_EQ(UT::trim(mstring()), "");

    struct {
        char const* dir;
        char const* name;
        char const* expected;
    } const files[] = {
        {"dir/", "a", "dir/a"}, {"dir", "a", "dir/a"}, {"", "a", "a"},  {"/", "a", "a"},
        {"d\\", "a", "d/a"},    {"d//", "a", "d//a"},  {"/x", "a", "/x/a"},
    };
    for (auto const& f : files)
        EXPECT_EQ(UT::makefnm(f.dir, f.name), f.expected) << f.dir;

    mvector<mstring> p = UT::splitName("a=b", '=');
    ASSERT_EQ(p.size(), 2u);
    EXPECT_EQ(p[0], "a");
    EXPECT_EQ(p[1], "b");
    p = UT::splitName("=x==", '=');
    ASSERT_EQ(p.size(), 4u);
    EXPECT_EQ(p[0], "");
    EXPECT_EQ(p[1], "x");
    EXPECT_EQ(p[3], "");
    EXPECT_EQ(UT::splitName("plain", '=').size(), 1u);

    UT::Pair two = UT::split2("NAME  value with blanks");
    EXPECT_EQ(two.first, "NAME");
    EXPECT_EQ(two.second, "value with blanks");
    two = UT::split2("alone");
    EXPECT_EQ(two.first, "alone");
    EXPECT_EQ(two.second, "");

    mstring t = UT::stringTime();
    ASSERT_GT(t.length(), 0u);
    EXPECT_EQ(t[static_cast<int>(t.length()) - 1], '\n');
    char cwd[300];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    EXPECT_EQ(UT::currdir(), cwd);
}

TEST(Utilities, NumberConversions) {
    struct {
        char const* text;
        bool ok;
        long value;
    } const ints[] = {
        {"0x1f", true, 31}, {"0XAb", true, 171}, {"0x", true, 0},   {"0x1g", false, 0},
        {"017", true, 15},  {"0", true, 0},      {"09", false, 0},  {"123", true, 123},
        {"-5", true, -5},   {"12a", false, 0},   {"", true, 0},
    };
    for (auto const& c : ints) {
        long v = 0;
        EXPECT_EQ(UT::CVT::s2int(c.text, &v), c.ok) << c.text;
        if (c.ok) {
            EXPECT_EQ(v, c.value) << c.text;
        }
    }
    long v = 0;
    EXPECT_FALSE(UT::CVT::fromHex("12", &v));
    EXPECT_FALSE(UT::CVT::fromOct("17", &v));
    EXPECT_TRUE(UT::CVT::isHexDigit('F'));
    EXPECT_FALSE(UT::CVT::isHexDigit('g'));

    long long ll = 1;
    EXPECT_TRUE(UT::CVT::s2i8("", &ll));
    EXPECT_EQ(ll, 0);
    EXPECT_TRUE(UT::CVT::s2i8("0x10", &ll));  // base 0
    EXPECT_EQ(ll, 16);
    EXPECT_FALSE(UT::CVT::s2i8("1x", &ll));
    unsigned long long ull = 0;
    EXPECT_TRUE(UT::CVT::s2u8("18446744073709551615", &ull));
    EXPECT_EQ(ull, 18446744073709551615ull);
    double d = 0;
    EXPECT_TRUE(UT::CVT::s2dbl("2.5e1", &d));
    EXPECT_DOUBLE_EQ(d, 25.0);
    EXPECT_FALSE(UT::CVT::s2dbl("2.5x", &d));
}

TEST(Utilities, LineBuffer) {
    TempDir dir;
    std::string path = dir.write("lines", "first line\r\nsecond // comment\nthird\n");
    FILE* f = std::fopen(path.c_str(), "r");
    UT::Buf buf(5000);
    EXPECT_STREQ(buf.str(), "");
    ASSERT_TRUE(buf.read(f));
    EXPECT_STREQ(buf.str(), "first line");
    ASSERT_TRUE(buf.read(f));
    EXPECT_STREQ(buf.str(), "second ");
    ASSERT_TRUE(buf.read(f));
    EXPECT_STREQ(buf.str(), "third");
    EXPECT_FALSE(buf.read(f));
    std::fclose(f);

    // A line longer than the buffer comes in pieces.
    path = dir.write("long", "abcdefghij\n");
    f = std::fopen(path.c_str(), "r");
    UT::Buf small(5);
    ASSERT_TRUE(small.read(f));
    EXPECT_STREQ(small.str(), "abcd");
    ASSERT_TRUE(small.read(f));
    EXPECT_STREQ(small.str(), "efgh");
    std::fclose(f);
}
