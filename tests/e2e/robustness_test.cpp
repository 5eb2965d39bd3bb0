// Hostile input against both entries: the run-time entry returns 0 or 1005
// and its process lives on; the batch entry completes or fails with status
// 255, leaving no file of that compile and the person's skeletons
// {db}_udf.c and {db}_coll.c untouched. Each entry runs in a child with
// bounded time and memory, so a hang fails instead of holding the machine.
// The sanitize preset runs the same cases; tests/schemas/regress holds what
// the sanitizers and the fuzzers found.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/dict_memory.h"
#include "support/process.h"
#include "zylcomp.h"

namespace {

std::string const kUserText = "/* a person's own code */\n";
std::string const kGood = "declare database h;\nclass A { signed<4> x; tree<x> t; };\n";

// Bytes of every value, the same on every run.
std::string garbage(unsigned seed, std::size_t n) {
    std::string out;
    for (std::size_t i = 0; i < n; i++) {
        seed = seed * 1103515245u + 12345u;
        out += static_cast<char>(seed >> 16);
    }
    return out;
}

// The schema s.zyl first, then the files it includes, all in one directory.
using Files = std::vector<std::pair<std::string, std::string>>;

Files schema(std::string const& body) { return {{"s.zyl", "declare database h;\n" + body}}; }

struct Outcome {
    int status;          // of the batch compile: 0 (complete) or 255
    std::string err;     // its standard error when it fails
    int rc;              // of the run-time entry: 0 or 1005
    std::string report;  // the run-time entry's error as "file:line:pos: message", if any
    std::string out = "Error executing DDL compiler\n";  // the batch entry's output when it fails
};

Outcome completes() { return {0, "", 0, ""}; }

Outcome refused(int line, std::string const& msg, std::string const& file = "s.zyl") {
    std::string const memFile = file == "s.zyl" ? "<membuf>" : file;
    return {255, "File " + file + ";  line " + std::to_string(line) + ": error: " + msg + "\n\n", 1005,
            memFile + ":" + std::to_string(line) + ":0: " + msg};
}

// Refused by the dictionary or the layout, which name no line.
Outcome refusedLate(std::string const& msg, std::string const& warnings = "") {
    return {255, warnings + "File s.zyl; error: " + msg + "\n\n", 1005, "<memory buffer>:0:0: " + msg};
}

// An output that cannot be opened ends the batch compile at once, with no
// closing line; the run-time entry writes nothing, so it does not mind.
Outcome cannotOpen(std::string const& file) { return {255, "error: Cannot open file out/" + file + "\n", 0, "", ""}; }

struct Case {
    std::string name;
    Files files;
    Outcome expected;
    // Makes what the files cannot hold (a FIFO, a link) in the case's directory.
    std::function<void(TempDir const&)> prepare = nullptr;
    unsigned seconds = 60;  // for each entry's compile
    std::vector<std::string> options = {};
};

// A failure names the case, not its bytes.
void PrintTo(Case const& c, std::ostream* os) { *os << c.name; }

// `line` n times, with {i} the count from 0 and {j} the next number.
std::string numbered(int n, std::string const& line) {
    std::string out;
    for (int i = 0; i < n; i++) {
        std::string l = line;
        for (auto const& v : {std::make_pair(std::string("{i}"), i), std::make_pair(std::string("{j}"), i + 1)})
            for (std::size_t at; (at = l.find(v.first)) != std::string::npos;)
                l.replace(at, 3, std::to_string(v.second));
        out += l;
    }
    return out;
}

// s.zyl includes i1.zyl, which includes i2.zyl, ... down to i{depth}.zyl,
// which includes `last` when it is not empty.
Files nestedIncludes(int depth, std::string const& last) {
    Files files = schema("#include \"i1.zyl\"\nclass A { signed<4> x; tree<x> t; };\n");
    for (int i = 1; i <= depth; i++) {
        std::string const next = i < depth ? "#include \"i" + std::to_string(i + 1) + ".zyl\"\n" : last;
        files.push_back({"i" + std::to_string(i) + ".zyl", next + "struct S" + std::to_string(i) + " { signed<4> x; };\n"});
    }
    return files;
}

// M0 names M1, ..., and the last one the type.
Files macroChain(int macros) {
    return schema(numbered(macros - 1, "#define M{i} M{j}\n") + "#define M" + std::to_string(macros - 1) +
                  " signed<4>\nclass A { M0 x; tree<x> t; };\n");
}

// S0 holds S1 by value, ..., down to the last of `depth` structs.
Files nestedStructs(int depth) {
    return schema(numbered(depth - 1, "struct S{i} { S{j} x; signed<4> y; };\n") + "struct S" +
                  std::to_string(depth - 1) + " { signed<4> y; };\nclass A { S0 s; signed<4> k; tree<k> t; };\n");
}

// Line 4 expands to 1 MiB and `extra` characters: every name is put with a
// blank on either side, so C's 1025 names B, each 1018 characters twice
// wrapped, and the blanks between and around them come to 1025 * 1023 + 1.
Files expandedToTheLimit(int extra) {
    return schema("#define B " + std::string(1018, 'x') + "\n#define C B" + numbered(1024, " B") + "\nC" +
                  std::string(extra, ';') + "\n");
}

// s.zyl including `name`, which `make` makes other than a regular file:
// a FIFO once waited for a writer, /dev/zero was read for ever.
Case includeOf(std::string const& what, std::string const& name, std::function<void(TempDir const&)> make) {
    return {"an include of " + what, schema("#include \"" + name + "\"\nclass A { signed<4> x; tree<x> t; };\n"),
            refused(2, "cannot include \"" + name + "\": not a regular file"), make, 10};
}

std::vector<Case> hostileCases() {
    std::vector<Case> cases = {
        {"garbage after the declaration", schema(garbage(1, 2000)),
         {255, "File s.zyl;  line 2, position 2: error: Unrecognized Symbol \"~\"\n\n", 1005,
          "<membuf>:2:1: Unrecognized Symbol \"~\""}},
        // A NUL cuts its line for the batch entry, which reads on; for the
        // run-time entry, which takes a C string, the text ends there.
        {"a NUL byte inside a class",
         schema(std::string("class A {\0 signed<4> x; };\nclass B { signed<4> y; };\n", 52)),
         {255, "File s.zyl;  line 3: error: expected ',' or ';'\n\n", 1005,
          "<membuf>:2:0: identifier expected, found \"#1\""}},
        {"a NUL byte ending the declaration",
         {{"s.zyl", std::string("declare database h;\0\nclass A { signed<4> x; tree<x> t; };\n", 58)}}, completes()},
        // A line is read in pieces of 5,000 bytes, each a line of its own.
        {"a line of 12,000 blanks", schema(std::string(12000, ' ') + "\nclass A { signed<4> x; tree<x> t; };\n"),
         completes()},
        {"a comment line of 20,000 bytes", schema("// " + std::string(20000, 'x') + "\nclass A { signed<4> x; };\n"),
         refused(3, "unexpected token: \"" + std::string(4999, 'x') + "\"")},
        {"an identifier of 6,000 bytes", schema("class A { signed<4> " + std::string(6000, 'a') + "; };\n"),
         refused(3, "expected ',' or ';'")},
        {"a string of 7,000 bytes", schema("#define S \"" + std::string(7000, 's') + "\"\nclass A { signed<4> x; };\n"),
         refused(3, "non-terminated string literal")},
        // More than 100 open files below the current one is taken for a loop.
        {"101 nested includes", nestedIncludes(101, ""), completes()},
        {"102 nested includes", nestedIncludes(101, "#include \"i102.zyl\"\n"),
         refused(1, "recursion in #include", "i101.zyl")},
        // Macro depth: an expansion 21 deep is taken for a loop.
        {"21 macros in a chain", macroChain(21), completes()},
        {"22 macros in a chain", macroChain(22), refused(24, "recursion in macro")},
        // Numbers past 32 bits wrap around; a refusal where the wrapped value
        // is out of range.
        {"sizes past 31 and 32 bits",
         schema("class A { signed<4> a[4294967297]; list; };\nclass B { char<4294967295> a; signed<4> b; list; };\n"
                "class C { numeric<4294967315, 2> n; list; };"),
         completes()},
        {"an array size past 64 bits", schema("class A { signed<4> a[99999999999999999999]; list; };"),
         refused(2, "array size must be between 1 and 65535")},
        {"a hash estimate past 31 bits", schema("class A { signed<4> k; hash<k> h[4294967295]; };"),
         refused(2, "estimated count value is not valid for the hash index h")},
        {"the largest hash estimate", schema("class A { signed<4> k; hash<k> h[2147483647]; };"), completes()},
        {"an autoid estimate past 31 bits", schema("class A { autoid[2147483648]; signed<4> k; };"),
         refused(2, "estimated count value is not valid for the autoid")},
        {"oid and auto_oid estimates past 31 bits",
         schema("declare oid K[4294967295];\ndeclare auto_oid[2147483648];\nstruct K { signed<4> id; };\n"
                "class A { oid; signed<4> k; tree<k> t; };"),
         completes()},
        {"enum values past 32 and 64 bits",
         schema("enum E { A = 2147483647, B = -2147483648, C = 99999999999999999999,\n  D = -99999999999999999999, "
                "F = 0xffffffffffffffffff, G = 077777777777777777777777 };\nclass A { E e; list; };"),
         completes()},
        {"initial values past their types",
         schema("enum E { A = 2147483647 };\nclass A {\n  E e = A;\n  signed<4> i = 99999999999999999999;\n"
                "  signed<8> j = 9999999999999999999999;\n  double d = " + std::string(400, '9') + ".0;\n  float f = 1" +
                std::string(50, '0') + ".5;\n  signed<2> s = 100000;\n  unsigned<1> u = -5;\n  unsigned<8> w = -1;\n"
                "  date t = 99999999999;\n  signed<4> a[3] = {99999999999, -99999999999, 5};\n  list;\n};"),
         completes()},
        {"an empty file", {{"s.zyl", ""}}, refused(0, "schema name is not defined")},
        {"10,000 classes", schema(numbered(10000, "class C{i} { signed<4> x; tree<x> t; };\n")), completes()},
        // Struct layout recurses; unbounded, it once overflowed the stack, a
        // sanitized build's at 5,000 levels.
        {"1,000 nested structs", nestedStructs(1000), completes()},
        {"1,001 nested structs", nestedStructs(1001),
         refusedLate("structures nested more than 1000 deep at \"S1000\"")},
        includeOf("a FIFO", "fifo.zyl",
                  [](TempDir const& dir) { ASSERT_EQ(mkfifo(dir.file("fifo.zyl").c_str(), 0644), 0); }),
        includeOf("/dev/zero", "zero.zyl",
                  [](TempDir const& dir) { ASSERT_EQ(symlink("/dev/zero", dir.file("zero.zyl").c_str()), 0); }),
        // Ten macros, each naming the next ten times: A0 would be 10^10 names.
        {"a macro bomb",
         schema("#define A9 x x x x x x x x x x\n" +
                numbered(9, "#define A{i} A{j} A{j} A{j} A{j} A{j} A{j} A{j} A{j} A{j} A{j}\n") + "class A { A0 x; };\n"),
         refused(12, "macro expansion of this line exceeds 1048576 characters"), nullptr, 10},
        {"a line expanded to 1 MiB", expandedToTheLimit(0),
         refused(4, "unexpected token: \"" + std::string(1018, 'x') + "\"")},
        {"a line expanded one past 1 MiB", expandedToTheLimit(1),
         refused(4, "macro expansion of this line exceeds 1048576 characters")},
        // Each nesting level once cost as much as all those below it.
        {"200,000 nested #ifdef",
         schema("#define X\n" + numbered(200000, "#ifdef X\n") + "class A { signed<4> x; tree<x> t; };\n" +
                numbered(200000, "#endif\n")),
         completes(), nullptr, 10},
        // A late failure, after every output and the ".new" skeletons are open.
        {"a late failure",
         schema("class A {\n  string s;\n  string t;\n  blob b[2];\n  userdef tree<s> u;\n  tree<t collate latin> c;\n};\n"),
         refusedLate("Blob cannot be element of array", "warning: file h_udf.c exists, generate h_udf.c.new\n"
                                                        "warning: file h_coll.c exists, generate h_coll.c.new\n")},
        // The first output cannot be opened (root may write in any directory,
        // so a directory stands in its way), or one after {db}.h and {db}.c
        // were: that of a 253-character name.
        {"the first output cannot be opened", schema("class A { signed<4> x; tree<x> t; };\n"), cannotOpen("h.h"),
         [](TempDir const& dir) { ASSERT_EQ(mkdir(dir.file("out/h.h").c_str(), 0755), 0); }},
        {"the C++ output cannot be opened",
         {{"s.zyl", "declare database " + std::string(253, 'd') + ";\nclass A { signed<4> x; tree<x> t; };\n"}},
         cannotOpen(std::string(253, 'd') + ".hpp"), nullptr, 60, {"--cpp"}},
    };
    // Sizes of 2^31 bytes and more, multiplied by array lengths and added up
    // into offsets, overflowed int: found by the sanitizers and the fuzzers.
    std::string const regress = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/regress/";
    for (std::string const& file : listDir(regress))
        cases.push_back({file, {{"s.zyl", readFile(regress + file)}}, completes()});
    return cases;
}

struct MemResult {
    int rc;
    std::string report;  // the first error
    std::string owned;   // what is wrong with the memory handed out, if anything
};

void collectFirst(int type, char const* message, char const* file, int line, int pos, void* context) {
    MemResult* r = static_cast<MemResult*>(context);
    if (type == 1 && r->report.empty())
        r->report = std::string(file) + ":" + std::to_string(line) + ":" + std::to_string(pos) + ": " + message;
}

// A dictionary made must be exactly the memory handed out, and zyl_dict_free
// must give back each block of it once; a refused call leaves *dict alone.
MemResult load(std::string const& text, zyl_dict_load_params_t const& p) {
    dictmem::forgetAll();
    zyl_dictionary_t* dict = nullptr;
    size_t dictSize = 0;
    char name[64];
    size_t nameSize = sizeof name;
    MemResult r = {-1, "", ""};
    r.rc = zyl_db_load_dictionary(text.c_str(), &p, &dict, &dictSize, name, &nameSize, collectFirst, &r);
    if (r.rc != 0 && dict != nullptr)
        r.owned = "a refused call set *dict";
    if (r.rc == 0) {
        r.owned = dictmem::checkOwnedBy(dict);
        std::size_t wrong = 0;
        dictmem::freeDictionary(dict, &wrong);
        if (wrong != 0 || dictmem::live() != 0)
            r.owned += std::to_string(wrong) + " blocks freed that were not the dictionary's, " +
                       std::to_string(dictmem::live()) + " of its blocks not freed";
    }
    dictmem::releaseAll();
    return r;
}

MemResult loadIn(std::string const& text, std::string const& includeDir, std::string const& outputDir) {
    zyl_dict_load_params_t p = {};
    p.includeDir = includeDir.c_str();
    p.outputDir = outputDir.c_str();
    return load(text, p);
}

// A child's bounds: SIGALRM after `seconds`, and 1 GiB of address space
// (not under a sanitizer, whose shadow memory alone exceeds it).
void limitChild(unsigned seconds) {
    alarm(seconds);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    rlim_t const bytes = rlim_t(1) << 30;
    rlimit const as = {bytes, bytes};
    setrlimit(RLIMIT_AS, &as);
#endif
}

int const kTimedOut = 128 + SIGALRM;

class Hostile : public ::testing::TestWithParam<Case> {};

// The case through both entries, in a directory of its own.
TEST_P(Hostile, ThroughBothEntries) {
    Case const& c = GetParam();
    Outcome const& want = c.expected;
    TempDir dir;
    for (auto const& f : c.files)
        dir.write(f.first, f.second);
    std::string const out = dir.file("out");
    mkdir(out.c_str(), 0755);
    dir.write("out/h_udf.c", kUserText);
    dir.write("out/h_coll.c", kUserText);
    if (c.prepare)
        c.prepare(dir);
    std::vector<std::string> const before = listDir(out);

    // The run-time entry in a child: its result comes back as rc, report
    // and memory verdict separated by NULs.
    ProcessResult const child = runInChild([&] {
        limitChild(c.seconds);
        MemResult const m = loadIn(c.files.front().second, dir.path(), out);
        std::string const fields = std::to_string(m.rc) + '\0' + m.report + '\0' + m.owned;
        std::fwrite(fields.data(), 1, fields.size(), stdout);
    });
    EXPECT_EQ(child.status, 0) << (child.status == kTimedOut ? "the run-time entry took longer than its bound" : "");
    std::string const fields = std::to_string(want.rc) + '\0' + want.report + '\0';
    EXPECT_EQ(child.out, fields);
    EXPECT_EQ(listDir(out), before) << "the run-time entry wrote into the output directory";

    std::vector<std::string> argv = {cliPath(), "-o", "out", "s.zyl"};
    argv.insert(argv.begin() + 1, c.options.begin(), c.options.end());
    ProcessResult const r = runProgram(argv, dir.path(), [&c] { limitChild(c.seconds); });
    EXPECT_EQ(r.status, want.status) << (r.status == kTimedOut ? "the batch entry took longer than its bound" : "");
    for (std::string const user : {"h_coll.c", "h_udf.c"})
        EXPECT_EQ(readFile(out + "/" + user), kUserText) << user;
    if (want.status == 0) {
        EXPECT_EQ(r.out.compare(0, 22, "Compiled successfully:"), 0) << r.out;
        std::vector<std::string> const written = {"h.c", "h.h", "h_coll.c", "h_udf.c"};
        EXPECT_EQ(listDir(out), written);
    } else {
        EXPECT_EQ(r.err, want.err);
        EXPECT_EQ(r.out, want.out);
        EXPECT_EQ(listDir(out), before) << "a failed compile left a file behind";
    }
}

INSTANTIATE_TEST_SUITE_P(Robustness, Hostile, ::testing::ValuesIn(hostileCases()),
                         [](::testing::TestParamInfo<Case> const& info) {
                             std::string name;
                             for (char c : info.param.name)
                                 name += std::isalnum(static_cast<unsigned char>(c)) ? std::string(1, c)
                                         : name.empty() || name.back() == '_'         ? ""
                                                                                      : "_";
                             return name;
                         });

// A read-only current directory: "." is the run-time entry's default
// output and include directory, and it must neither write there nor end
// the process. Root may create files in any directory whatever its mode;
// it gets /proc, where nobody can.
TEST(Robustness, ReadOnlyCurrentDirectoryForTheRunTimeEntry) {
    TempDir dir;
    std::string ro = dir.file("ro");
    mkdir(ro.c_str(), 0555);
    if (access(ro.c_str(), W_OK) == 0)
        ro = "/proc";
    std::vector<std::string> const before = ro == "/proc" ? std::vector<std::string>() : listDir(ro);
    ProcessResult const r = runInChild([&] {
        if (chdir(ro.c_str()) != 0)
            _exit(3);
        MemResult const good = loadIn(kGood, ".", ".");
        MemResult const bad = loadIn("declare database h;\nclass A { nosuch x; };\n", ".", ".");
        MemResult const include = loadIn("declare database h;\n#include \"nosuch.zyl\"\n", ".", ".");
        // Null parameters mean "." for both directories.
        zyl_dictionary_t* dict = nullptr;
        int const none = zyl_db_load_dictionary(kGood.c_str(), nullptr, &dict, nullptr, nullptr, nullptr, nullptr,
                                                nullptr);
        dictmem::releaseAll();
        std::printf("%d %d %d %d\n%s\n", good.rc, bad.rc, include.rc, none, include.report.c_str());
    });
    char cwd[4096];
    std::string const where = realpath(ro.c_str(), cwd) != nullptr ? cwd : ro;
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "0 1005 1005 0\n<membuf>:2:0: current directory is " + where +
                         ", cannot open include file \"nosuch.zyl\"\n");
    if (ro != "/proc") {
        EXPECT_EQ(listDir(ro), before);
    }
}

// A successful call hands out the dictionary's memory and nothing more,
// over the corpus and switches that change its shape (load checks it).
TEST(Robustness, DictionaryMemoryIsExactlyWhatTheCallerOwns) {
    std::string const corpus = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/corpus/";
    void (*const switches[])(zyl_dict_load_params_t&) = {
        [](zyl_dict_load_params_t&) {},
        [](zyl_dict_load_params_t& p) { p.keepFieldOrder = p.wideOffsets = 1; },
        [](zyl_dict_load_params_t& p) { p.compactDefault = p.prefixNames = p.hideAllClasses = 1; },
    };
    int checked = 0;
    for (std::string const& name : listDir(corpus)) {
        std::string const text = readFile(corpus + name);
        // A piece that another schema includes is no schema of its own.
        for (int i = 0; i < 3 && text.find("declare database") != std::string::npos; i++, checked++) {
            zyl_dict_load_params_t p = {};
            p.includeDir = corpus.c_str();
            switches[i](p);
            MemResult const m = load(text, p);
            EXPECT_EQ(m.rc, 0) << name << ", switches " << i << ": " << m.report;
            EXPECT_EQ(m.owned, "") << name << ", switches " << i;
        }
    }
    EXPECT_GT(checked, 60);

    // A null deallocator is free(): in a child, whose block records go with
    // it, and where the sanitizers stop a wrong or a second free.
    ProcessResult const child = runInChild([] {
        zyl_dictionary_t* dict = nullptr;
        int const rc = zyl_db_load_dictionary(kGood.c_str(), nullptr, &dict, nullptr, nullptr, nullptr, nullptr,
                                              nullptr);
        zyl_dict_free(dict, nullptr);
        std::printf("%d", rc);
    });
    EXPECT_EQ(child.status, 0) << child.err;
    EXPECT_EQ(child.out, "0");
}

}  // namespace
