// The foundation: mstring and mvector where their capacity rules change, the
// slabs behind mstring's short blocks, ordered sets and the set of names,
// output streams and files, the small utilities, and the preprocessor's line
// buffer: the pieces it cuts a file into, and the text of each, are those of
// fgets into a buffer of the same size with the text ended at the first line
// feed, carriage return or "//" (a NUL ends it too, as it ends any C string),
// checked against that reading directly.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "foundation/outfile.h"
#include "foundation/outstream.h"
#include "foundation/sets.h"
#include "foundation/strblocks.h"
#include "foundation/ut.h"
#include "support/process.h"

// A copy goes through set, which takes n + 100 and reallocates once n
// reaches the capacity (the NUL needs its byte); a join makes room for the
// total + 200 once its right side has 100 bytes.
TEST(MString, CapacityRulesAtTheirEdges) {
    mstring const empty("");
    EXPECT_TRUE(empty == mstring());
    EXPECT_EQ(mstring(empty).ptr(), nullptr);  // an empty source gives a null pointer

    mstring s;
    s.set("abcd", 4);
    EXPECT_EQ(s.capacity(), 104u);
    std::string const big(104, 'q');  // exactly the capacity
    s.set(big.c_str(), big.size());
    EXPECT_EQ(s.capacity(), 204u);
    EXPECT_EQ(std::string(s.c_str()), big);

    // setExact: a block of the text's own size, even from inside the old one.
    s.setExact(s.c_str() + 1, 2);
    EXPECT_EQ(s, "qq");
    EXPECT_EQ(s.capacity(), 3u);
    s += "e";  // a full exact block grows as any other: total + 200
    EXPECT_EQ(s.capacity(), 203u);

    for (size_t nb : {99, 100}) {
        mstring const j = mstring("ab") + std::string(nb, 'r').c_str();
        EXPECT_EQ(j.capacity(), nb < 100 ? 102u : 2 + nb + 200) << nb;
        EXPECT_EQ(std::string(j.c_str()), "ab" + std::string(nb, 'r'));
    }
    // Ordering is by unsigned bytes; null sorts as empty.
    EXPECT_TRUE(mstring("z") < mstring("\xc3\xa9"));
    EXPECT_FALSE(mstring() < mstring(""));
}

// Growth is by exactly what is needed, so every insert meets a full block,
// at the front, in the middle and at the end.
TEST(MVector, InsertIntoAFullVector) {
    mvector<mstring> v;
    for (char const* s : {"a", "b", "c"})
        v.push_back(s);
    ASSERT_EQ(v.capacity(), v.size());
    v.insert(0, "first");
    v.insert(2, "i");
    v.insert(5, "end");
    std::string all;
    for (unsigned i = 0; i < v.size(); i++)
        all += std::string(v[i].c_str()) + " ";
    EXPECT_EQ(all, "first a i b c end ");
}

namespace {

struct Held {
    char* block;
    std::uint64_t cap;  // as allocate() left it: the usable size, and the slab bit
    char fill;

    std::uint64_t size() const { return strblocks::usable(cap); }
    bool intact() const { return std::all_of(block, block + size(), [this](char c) { return c == fill; }); }
    void release() const { strblocks::release(block, cap); }
};

Held take(std::uint64_t size, char fill) {
    Held h{nullptr, size, fill};
    h.block = strblocks::allocate(h.cap);
    EXPECT_EQ(h.size(), size);
    std::memset(h.block, fill, size);
    return h;
}

}  // namespace

// Blocks of every size up to past the pooled limit, taken and given back in
// a random order: each block keeps its own bytes to the end. Only short
// blocks, and only inside a scope, come from slabs.
TEST(StringBlocks, BlocksNeverOverlap) {
    Held outside = take(16, 'o');
    EXPECT_EQ(outside.cap, 16u) << "no scope, no slab";
    strblocks::Scope scope;
    std::mt19937 rng(20261121);
    std::vector<Held> held;
    for (int round = 0; round < 20000; round++) {
        if (held.empty() || rng() % 3 != 0) {
            std::uint64_t const size = 1 + rng() % (strblocks::kMaxPooled + 40);
            held.push_back(take(size, static_cast<char>(1 + round % 127)));
            if (size > strblocks::kMaxPooled) {
                EXPECT_EQ(held.back().cap, size) << "a long block is never a slab's";
            }
        } else {
            std::size_t const i = rng() % held.size();
            ASSERT_TRUE(held[i].intact()) << "block of " << held[i].size() << " bytes overwritten";
            held[i].release();
            held[i] = held.back();
            held.pop_back();
        }
    }
    for (Held const& h : held) {
        EXPECT_TRUE(h.intact()) << "block of " << h.size() << " bytes overwritten";
        h.release();
    }
    strblocks::release(nullptr, 10);  // nothing to give back
    outside.release();
}

// Slabs that lose their last block are freed, in whatever order the blocks
// come back; only the open slab of each size class may stay. Blocks that
// outlive their scope keep their slab until they are released.
TEST(StringBlocks, SlabsFollowTheirBlocks) {
    std::vector<Held> escaped;
    {
        strblocks::Scope scope;
        std::vector<Held> held;
        for (int i = 0; i < 6000; i++)
            held.push_back(take(i % 2 == 0 ? 5 : 112, 'x'));  // a name, a text built by set
        unsigned const full = scope.slabsHeld();
        if (full == 0)
            GTEST_SKIP() << "built with plain blocks";
        EXPECT_GE(full, 20u);  // 3000 blocks of 112 bytes need a score of slabs

        // Every other block of each size first: no slab empties, so none goes.
        for (std::size_t i = 0; i < held.size(); i++)
            if (i / 2 % 2 == 0)
                held[i].release();
        EXPECT_EQ(scope.slabsHeld(), full);
        // The rest from the back, but for two that outlive the scope.
        escaped = {held[3], held[5998]};
        for (std::size_t i = held.size(); i-- > 0;)
            if (i / 2 % 2 == 1 && i != 3 && i != 5998)
                held[i].release();
        EXPECT_LE(scope.slabsHeld(), 4u);
    }
    for (Held const& h : escaped) {
        EXPECT_TRUE(h.intact());
        h.release();
    }
}

namespace {

struct Named : IComparable {
    explicit Named(char const* n) : name(n) {}
    bool less(IComparable const* other) const override { return name < static_cast<Named const*>(other)->name; }
    mstring name;
};

// An element keyed by its name: the sets find it through their name table.
struct Keyed : Named {
    explicit Keyed(char const* n) : Named(n) {}
    char const* keyName() const override { return name.c_str(); }
};

int compareNamed(IComparable const* e, void const* key) {
    return std::strcmp(static_cast<Named const*>(e)->name.c_str(), static_cast<char const*>(key));
}

std::string walk(ISet* set) {
    std::string s;
    ISet::Pos* pos = set->first();
    for (; pos->valid(); pos->next())
        s += std::string(static_cast<Named*>(pos->get().get())->name.c_str()) + " ";
    EXPECT_TRUE(pos->get().isNull());
    delete pos;
    return s;
}

}  // namespace

// Names are kept whole, however long.
TEST(Sets, StringSet) {
    StringSet s;
    EXPECT_TRUE(s.insert("x"));
    EXPECT_FALSE(s.insert("x"));
    EXPECT_TRUE(s.insert(""));
    EXPECT_TRUE(s.find(mstring()));  // null and empty are the same text
    EXPECT_TRUE(s.insert("long_name"));
    EXPECT_TRUE(s.find("long_name"));
    EXPECT_FALSE(s.find("long_nam"));
    EXPECT_EQ(s.v_strings.size(), 3u);
}

// The name table and the sorted view answer alike: for keyed elements, for
// a set that also holds an unkeyed one, across removals and re-adds, and
// over enough names that the table grows several times.
TEST(Sets, NameLookUpAgreesWithKeyOrder) {
    for (bool mixed : {false, true}) {
        SCOPED_TRACE(mixed ? "with an unkeyed element" : "keyed only");
        ISet* set = ISet::create();
        std::set<std::string> model;
        std::string walked;  // what a walk must give: the names added, in order
        auto add = [&](std::string const& n, bool keyed) {
            HIComparable h(keyed ? new Keyed(n.c_str()) : new Named(n.c_str()));
            bool const added = set->add(h);
            EXPECT_EQ(added, model.insert(n).second) << n;
            walked += added ? n + " " : "";
        };
        for (int i = 0; i < 3000; i++) {
            // Names repeat (i % 1700) and differ only late ("n12" against "n120").
            add("n" + std::to_string((i * 7919) % 1700), true);
            if (mixed && i == 1000)
                add("unkeyed", false);
        }
        for (int i = 0; i < 1700; i += 3) {
            std::string const n = "n" + std::to_string(i);
            Named key(n.c_str());
            set->remove(key);
            model.erase(n);
        }
        for (int i = 0; i < 1700; i += 9)
            add("n" + std::to_string(i), true);
        for (int i = -5; i < 1800; i++) {
            std::string const n = "n" + std::to_string(i);
            Named key(n.c_str());
            HIComparable* byKey = set->find(key);
            HIComparable* byName = set->findName(n.c_str(), &compareNamed);
            bool const present = model.count(n) != 0;
            EXPECT_EQ(byKey != nullptr, present) << n;
            EXPECT_EQ(byName != nullptr, present) << n;
            if (byKey && byName) {
                EXPECT_EQ(byKey->get(), byName->get()) << n;
            }
        }
        EXPECT_EQ(set->findName("", &compareNamed), nullptr);
        EXPECT_EQ(walk(set), walked);
        delete set;
    }
}

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
    *t << "text";
    EXPECT_EQ(t->retstr(), "text");
    EXPECT_EQ(t->retstr(), "text");  // the file is still there
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

// A collected text of several megabytes crosses the memory stream's blocks,
// and the string stream's 1024-byte pieces, at every kind of piece; read
// back whole, or handed to a file (blockwise), it must come out as written.
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

    TempDir dir;
    for (IOutStream* s : {IOutStream::createMemStream(), IOutStream::createStrStream(dir.path().c_str())}) {
        fill(*s);
        EXPECT_TRUE(std::string(s->retstr().c_str()) == expected);
        delete s;
    }
    IOutStream* file = IOutStream::createFileStream(dir.file("hpp").c_str());
    *file << "head|";
    IOutStream* mem = IOutStream::createMemStream();
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
    ASSERT_EQ(dir.list().size(), 23u);
    std::set<char> drawn[6];  // the characters each place of ".t.XXXXXX" took
    for (std::string const& f : dir.list())
        for (size_t at = 0; at < 6 && f.size() == 9 && f.compare(0, 3, ".t.") == 0; at++)
            drawn[at].insert(f[3 + at]);
    for (std::set<char> const& d : drawn)
        EXPECT_GT(d.size(), 1u);
    for (OutFile* f : open)
        delete f;
    EXPECT_EQ(dir.list().size(), 3u);  // the temporaries went with their files
}

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

TEST(LineBuffer, PiecesAreThoseOfFgets) {
    std::string const nuls("ab\0cd\nef\0\n\0/x\n", 15);
    std::string const cases[] = {
        "", "\n", "a", "a\nb\n", "a // b\nc\n", "a / b / c\n", "//\n/\n", "x/", "a\rb\nc\r\n", "\r\r\n\n", nuls,
    };
    for (std::string const& c : cases)
        for (int size : {2, 3, 4, 5, 8, 5000})
            expectSame(c, size);
    // Pieces cut at the size limit, "//", '/' and '\r' at either side of the
    // cut, and lines the length of the limit with and without their line feed.
    for (int len : {4997, 4998, 4999, 5000, 5001, 9998, 9999, 10000, 20000}) {
        std::string line(static_cast<size_t>(len), 'a');
        expectSame(line, 5000);
        expectSame(line + "\n" + line + "\n", 5000);
        for (size_t at : {4997, 4998, 4999})
            for (char const* mark : {"//", "/b", "\rb"})
                if (at + 1 < line.size())
                    expectSame(std::string(line).replace(at, 2, mark) + "\nz\n", 5000);
    }
}

}  // namespace
