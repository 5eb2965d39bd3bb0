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

std::string const kRegress = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/regress/";
std::string const kUserText = "/* a person's own code */\n";

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

struct Outcome {
    int status;          // of the batch compile: 0 (complete) or 255
    std::string err;     // its standard error when it fails
    int rc;              // of the run-time entry: 0 or 1005
    std::string report;  // the run-time entry's error as "file:line:pos: message", if any
};

Outcome completes() { return {0, "", 0, ""}; }

Outcome refused(int line, std::string const& msg, std::string const& file = "s.zyl") {
    std::string const memFile = file == "s.zyl" ? "<membuf>" : file;
    return {255, "File " + file + ";  line " + std::to_string(line) + ": error: " + msg + "\n\n", 1005,
            memFile + ":" + std::to_string(line) + ":0: " + msg};
}

// Each entry's compile of a case gets this long, unless the case says less.
unsigned const kSeconds = 60;

struct Case {
    std::string name;
    Files files;
    Outcome expected;
    // Makes what the files cannot hold (a FIFO, a link) in the case's directory.
    std::function<void(TempDir const&)> prepare = nullptr;
    unsigned seconds = kSeconds;
};

// A failure names the case, not its bytes.
void PrintTo(Case const& c, std::ostream* os) { *os << c.name; }

// s.zyl includes i1.zyl, which includes i2.zyl, ... down to i{depth}.zyl,
// which includes `last` when it is not empty.
Files nestedIncludes(int depth, std::string const& last) {
    Files files = {{"s.zyl", "declare database h;\n#include \"i1.zyl\"\nclass A { signed<4> x; tree<x> t; };\n"}};
    for (int i = 1; i <= depth; i++) {
        std::string const next = i < depth ? "#include \"i" + std::to_string(i + 1) + ".zyl\"\n" : last;
        files.push_back({"i" + std::to_string(i) + ".zyl", next + "struct S" + std::to_string(i) + " { signed<4> x; };\n"});
    }
    return files;
}

// M0 names M1, ..., and the last one the type.
std::string macroChain(int macros) {
    std::string text = "declare database h;\n";
    for (int i = 0; i + 1 < macros; i++)
        text += "#define M" + std::to_string(i) + " M" + std::to_string(i + 1) + "\n";
    text += "#define M" + std::to_string(macros - 1) + " signed<4>\n";
    return text + "class A { M0 x; tree<x> t; };\n";
}

std::string manyClasses(int n) {
    std::string text = "declare database h;\n";
    for (int i = 0; i < n; i++)
        text += "class C" + std::to_string(i) + " { signed<4> x; tree<x> t; };\n";
    return text;
}

// S0 holds S1 by value, ..., down to the last of `depth` structs.
std::string nestedStructs(int depth) {
    std::string text = "declare database h;\n";
    for (int i = 0; i + 1 < depth; i++)
        text += "struct S" + std::to_string(i) + " { S" + std::to_string(i + 1) + " x; signed<4> y; };\n";
    text += "struct S" + std::to_string(depth - 1) + " { signed<4> y; };\n";
    return text + "class A { S0 s; signed<4> k; tree<k> t; };\n";
}

std::string withClass(std::string const& decl) { return "declare database h;\n" + decl + "\n"; }

// Ten macros, each naming the next ten times: A0 would be 10^10 names.
std::string macroBomb() {
    std::string text = "declare database h;\n#define A9 x x x x x x x x x x\n";
    for (int i = 8; i >= 0; i--) {
        text += "#define A" + std::to_string(i);
        for (int k = 0; k < 10; k++)
            text += " A" + std::to_string(i + 1);
        text += "\n";
    }
    return text + "class A { A0 x; };\n";
}

std::string repeated(std::string const& text, int n) {
    std::string out;
    for (int i = 0; i < n; i++)
        out += text;
    return out;
}

// Line 4 expands to 1 MiB and `extra` characters: every name is put with a
// blank on either side, so C's 1025 names B, each 1018 characters twice
// wrapped, and the blanks between and around them come to 1025 * 1023 + 1.
std::string expandedToTheLimit(int extra) {
    return "declare database h;\n#define B " + std::string(1018, 'x') + "\n#define C B" + repeated(" B", 1024) +
           "\nC" + std::string(extra, ';') + "\n";
}

// s.zyl including `name`, which is not a regular file.
Files includes(std::string const& name) {
    return {{"s.zyl", "declare database h;\n#include \"" + name + "\"\nclass A { signed<4> x; tree<x> t; };\n"}};
}

Outcome notRegular(std::string const& name) {
    return refused(2, "cannot include \"" + name + "\": not a regular file");
}

std::vector<Case> const& hostileCases() {
    static std::vector<Case> const cases = {
        {"garbage after the declaration", {{"s.zyl", "declare database h;\n" + garbage(1, 2000)}},
         {255, "File s.zyl;  line 2, position 2: error: Unrecognized Symbol \"~\"\n\n", 1005,
          "<membuf>:2:1: Unrecognized Symbol \"~\""}},
        // A NUL cuts its line for the batch entry, which reads on; for the
        // run-time entry, which takes a C string, the text ends there.
        {"a NUL byte inside a class",
         {{"s.zyl", std::string("declare database h;\nclass A {\0 signed<4> x; };\nclass B { signed<4> y; };\n",
                                72)}},
         {255, "File s.zyl;  line 3: error: expected ',' or ';'\n\n", 1005,
          "<membuf>:2:0: identifier expected, found \"#1\""}},
        {"a NUL byte ending the declaration",
         {{"s.zyl", std::string("declare database h;\0\nclass A { signed<4> x; tree<x> t; };\n", 58)}},
         completes()},
        // A line is read in pieces of 5,000 bytes, each a line of its own.
        {"a line of 12,000 blanks",
         {{"s.zyl", "declare database h;\n" + std::string(12000, ' ') + "\nclass A { signed<4> x; tree<x> t; };\n"}},
         completes()},
        {"a comment line of 20,000 bytes",
         {{"s.zyl", "declare database h;\n// " + std::string(20000, 'x') + "\nclass A { signed<4> x; };\n"}},
         refused(3, "unexpected token: \"" + std::string(4999, 'x') + "\"")},
        {"an identifier of 6,000 bytes",
         {{"s.zyl", "declare database h;\nclass A { signed<4> " + std::string(6000, 'a') + "; };\n"}},
         refused(3, "expected ',' or ';'")},
        {"a string of 7,000 bytes",
         {{"s.zyl", "declare database h;\n#define S \"" + std::string(7000, 's') + "\"\nclass A { signed<4> x; };\n"}},
         refused(3, "non-terminated string literal")},
        // More than 100 open files below the current one is taken for a loop.
        {"101 nested includes", nestedIncludes(101, ""), completes()},
        {"102 nested includes", nestedIncludes(101, "#include \"i102.zyl\"\n"),
         refused(1, "recursion in #include", "i101.zyl")},
        {"an include cycle",
         {{"s.zyl", "declare database h;\n#include \"a.zyl\"\nclass A { signed<4> x; };\n"},
          {"a.zyl", "#include \"b.zyl\"\n"},
          {"b.zyl", "#include \"a.zyl\"\n"}},
         refused(1, "recursion in #include", "a.zyl")},
        // Macro depth: an expansion 21 deep is taken for a loop.
        {"21 macros in a chain", {{"s.zyl", macroChain(21)}}, completes()},
        {"22 macros in a chain", {{"s.zyl", macroChain(22)}}, refused(24, "recursion in macro")},
        // Numbers past 32 bits wrap around; a refusal where the wrapped value
        // is out of range.
        {"an array size past 32 bits", {{"s.zyl", withClass("class A { signed<4> a[4294967297]; list; };")}},
         completes()},
        {"an array size past 64 bits",
         {{"s.zyl", withClass("class A { signed<4> a[99999999999999999999]; list; };")}},
         refused(2, "array size must be between 1 and 65535")},
        {"characters past 31 bits", {{"s.zyl", withClass("class A { char<4294967295> a; signed<4> b; list; };")}},
         completes()},
        {"a hash estimate past 31 bits",
         {{"s.zyl", withClass("class A { signed<4> k; hash<k> h[4294967295]; };")}},
         refused(2, "estimated count value is not valid for the hash index h")},
        {"the largest hash estimate", {{"s.zyl", withClass("class A { signed<4> k; hash<k> h[2147483647]; };")}},
         completes()},
        {"an autoid estimate past 31 bits", {{"s.zyl", withClass("class A { autoid[2147483648]; signed<4> k; };")}},
         refused(2, "estimated count value is not valid for the autoid")},
        {"oid and auto_oid estimates past 31 bits",
         {{"s.zyl", withClass("declare oid K[4294967295];\ndeclare auto_oid[2147483648];\nstruct K { signed<4> id; };\n"
                              "class A { oid; signed<4> k; tree<k> t; };")}},
         completes()},
        {"enum values past 32 and 64 bits",
         {{"s.zyl", withClass("enum E { A = 2147483647, B = -2147483648, C = 99999999999999999999,\n"
                              "  D = -99999999999999999999, F = 0xffffffffffffffffff, G = 077777777777777777777777 };\n"
                              "class A { E e; list; };")}},
         completes()},
        {"initial values past their types",
         {{"s.zyl", withClass("enum E { A = 2147483647 };\nclass A {\n  E e = A;\n  signed<4> i = 99999999999999999999;\n"
                              "  signed<8> j = 9999999999999999999999;\n  double d = " + std::string(400, '9') +
                              ".0;\n  float f = 1" + std::string(50, '0') + ".5;\n  signed<2> s = 100000;\n"
                              "  unsigned<1> u = -5;\n  unsigned<8> w = -1;\n  date t = 99999999999;\n"
                              "  signed<4> a[3] = {99999999999, -99999999999, 5};\n  list;\n};")}},
         completes()},
        {"a decimal width past 32 bits", {{"s.zyl", withClass("class A { numeric<4294967315, 2> n; list; };")}},
         completes()},
        {"an empty file", {{"s.zyl", ""}}, refused(0, "schema name is not defined")},
        {"10,000 classes", {{"s.zyl", manyClasses(10000)}}, completes()},
        // Struct layout recurses; unbounded, it once overflowed the stack, a
        // sanitized build's at 5,000 levels.
        {"1,000 nested structs", {{"s.zyl", nestedStructs(1000)}}, completes()},
        {"1,001 nested structs", {{"s.zyl", nestedStructs(1001)}},
         {255, "File s.zyl; error: structures nested more than 1000 deep at \"S1000\"\n\n", 1005,
          "<memory buffer>:0:0: structures nested more than 1000 deep at \"S1000\""}},
        {"5,000 nested structs", {{"s.zyl", nestedStructs(5000)}},
         {255, "File s.zyl; error: structures nested more than 1000 deep at \"S1000\"\n\n", 1005,
          "<memory buffer>:0:0: structures nested more than 1000 deep at \"S1000\""}},
        // Only regular files are included: a FIFO once waited for a writer,
        // /dev/zero was read for ever.
        {"an include of a FIFO", includes("fifo.zyl"), notRegular("fifo.zyl"),
         [](TempDir const& dir) { ASSERT_EQ(mkfifo(dir.file("fifo.zyl").c_str(), 0644), 0); }, 10},
        {"an include of /dev/zero", includes("zero.zyl"), notRegular("zero.zyl"),
         [](TempDir const& dir) { ASSERT_EQ(symlink("/dev/zero", dir.file("zero.zyl").c_str()), 0); }, 10},
        {"a macro bomb", {{"s.zyl", macroBomb()}}, refused(12, "macro expansion of this line exceeds 1048576 characters"),
         nullptr, 10},
        {"a line expanded to 1 MiB", {{"s.zyl", expandedToTheLimit(0)}},
         refused(4, "unexpected token: \"" + std::string(1018, 'x') + "\"")},
        {"a line expanded one past 1 MiB", {{"s.zyl", expandedToTheLimit(1)}},
         refused(4, "macro expansion of this line exceeds 1048576 characters")},
        // Each nesting level once cost as much as all those below it.
        {"200,000 nested #ifdef",
         {{"s.zyl", "declare database h;\n#define X\n" + repeated("#ifdef X\n", 200000) +
                        "class A { signed<4> x; tree<x> t; };\n" + repeated("#endif\n", 200000)}},
         completes(), nullptr, 10},
    };
    return cases;
}

// The output directory with a person's skeletons in it.
std::string prepareOutput(TempDir const& dir) {
    std::string const out = dir.file("out");
    mkdir(out.c_str(), 0755);
    dir.write("out/h_udf.c", kUserText);
    dir.write("out/h_coll.c", kUserText);
    return out;
}

// /proc changes with every process: nothing to compare there.
std::vector<std::string> stableListing(std::string const& path) {
    return path == "/proc" ? std::vector<std::string>() : listDir(path);
}

bool exists(std::string const& path) { return access(path.c_str(), F_OK) == 0; }

struct MemResult {
    int rc;
    std::string report;  // the first error
    std::string owned;   // what dictmem::checkOwnedBy says of a dictionary made
};

void collectFirst(int type, char const* message, char const* file, int line, int pos, void* context) {
    MemResult* r = static_cast<MemResult*>(context);
    if (type == 1 && r->report.empty())
        r->report = std::string(file) + ":" + std::to_string(line) + ":" + std::to_string(pos) + ": " + message;
}

MemResult loadText(std::string const& text, std::string const& includeDir, std::string const& outputDir) {
    dictmem::forgetAll();
    zyl_dict_load_params_t p = {};
    p.includeDir = includeDir.c_str();
    p.outputDir = outputDir.c_str();
    zyl_dictionary_t* dict = nullptr;
    size_t dictSize = 0;
    char name[64];
    size_t nameSize = sizeof name;
    MemResult r;
    r.rc = zyl_db_load_dictionary(text.c_str(), &p, &dict, &dictSize, name, &nameSize, collectFirst, &r);
    if (r.rc == 0) {
        r.owned = dictmem::checkOwnedBy(dict);
        std::size_t wrong = 0;
        dictmem::freeDictionary(dict, &wrong);
        if (wrong != 0)
            r.owned += std::to_string(wrong) + " blocks freed that were not the dictionary's";
        EXPECT_EQ(r.owned, "");
    }
    dictmem::releaseAll();
    return r;
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

// loadText in a child under limitChild; *status is the child's.
MemResult loadBounded(std::string const& text, std::string const& includeDir, std::string const& outputDir,
                      unsigned seconds, int* status) {
    ProcessResult const r = runInChild([&] {
        limitChild(seconds);
        MemResult const m = loadText(text, includeDir, outputDir);
        std::string const fields = std::to_string(m.rc) + '\0' + m.report + '\0' + m.owned;
        std::fwrite(fields.data(), 1, fields.size(), stdout);
    });
    *status = r.status;
    MemResult m = {-1, "", ""};
    std::size_t const a = r.out.find('\0');
    std::size_t const b = a == std::string::npos ? a : r.out.find('\0', a + 1);
    if (b != std::string::npos) {
        m.rc = std::atoi(r.out.substr(0, a).c_str());
        m.report = r.out.substr(a + 1, b - a - 1);
        m.owned = r.out.substr(b + 1);
    }
    return m;
}

// One case through both entries, in a directory of its own.
void runCase(std::string const& name, Files const& files, Outcome const& want,
             std::function<void(TempDir const&)> const& prepare = nullptr, unsigned seconds = kSeconds) {
    SCOPED_TRACE(name);
    TempDir dir;
    for (auto const& f : files)
        dir.write(f.first, f.second);
    if (prepare)
        prepare(dir);
    std::string const out = prepareOutput(dir);

    int status = -1;
    MemResult const mem = loadBounded(files.front().second, dir.path(), out, seconds, &status);
    EXPECT_EQ(status, 0) << (status == kTimedOut ? "the run-time entry took longer than its bound" : "");
    EXPECT_EQ(mem.rc, want.rc);
    EXPECT_EQ(mem.report, want.report);
    EXPECT_EQ(mem.owned, "");
    std::vector<std::string> const untouched = {"h_coll.c", "h_udf.c"};
    EXPECT_EQ(listDir(out), untouched) << "the run-time entry wrote into the output directory";

    ProcessResult const r =
        runProgram({cliPath(), "-o", out, "s.zyl"}, dir.path(), [seconds] { limitChild(seconds); });
    EXPECT_EQ(r.status, want.status) << (r.status == kTimedOut ? "the batch entry took longer than its bound" : "");
    for (std::string const& user : untouched)
        EXPECT_EQ(readFile(out + "/" + user), kUserText) << user;
    if (want.status == 0) {
        EXPECT_EQ(r.out.compare(0, 22, "Compiled successfully:"), 0) << r.out;
        std::vector<std::string> const written = {"h.c", "h.h", "h_coll.c", "h_udf.c"};
        EXPECT_EQ(listDir(out), written);
    } else {
        EXPECT_EQ(r.err, want.err);
        EXPECT_EQ(r.out, "Error executing DDL compiler\n");
        EXPECT_EQ(listDir(out), untouched) << "a failed compile left a file behind";
    }
}

class Hostile : public ::testing::TestWithParam<Case> {};

TEST_P(Hostile, ThroughBothEntries) {
    Case const& c = GetParam();
    runCase(c.name, c.files, c.expected, c.prepare, c.seconds);
}

INSTANTIATE_TEST_SUITE_P(Robustness, Hostile, ::testing::ValuesIn(hostileCases()),
                         [](::testing::TestParamInfo<Case> const& info) {
                             std::string name;
                             for (char c : info.param.name)
                                 if (std::isalnum(static_cast<unsigned char>(c)))
                                     name += c;
                                 else if (!name.empty() && name.back() != '_')
                                     name += '_';
                             return name;
                         });

// A late failure, after every output and the ".new" skeletons are open.
TEST(Robustness, ALateFailureRemovesItsFilesAndKeepsAPersonsSkeletons) {
    runCase("late failure",
            {{"s.zyl", "declare database h;\nclass A {\n  string s;\n  string t;\n  blob b[2];\n"
                       "  userdef tree<s> u;\n  tree<t collate latin> c;\n};\n"}},
            {255,
             "warning: file h_udf.c exists, generate h_udf.c.new\n"
             "warning: file h_coll.c exists, generate h_coll.c.new\n"
             "File s.zyl; error: Blob cannot be element of array\n\n",
             1005, "<memory buffer>:0:0: Blob cannot be element of array"});
}

// Sizes of 2^31 bytes and more, multiplied by array lengths and added up
// into offsets, overflowed int: found by the sanitizers and the fuzzers.
TEST(Robustness, RegressionCases) {
    for (char const* file : {"array_size_overflow.zyl", "offset_overflow.zyl", "oid_size_overflow.zyl",
                             "direct_size_overflow.zyl", "direct_holder_overflow.zyl"})
        runCase(file, {{"s.zyl", readFile(kRegress + file)}}, completes());
}

// Root may create files in any directory whatever its mode; it gets /proc,
// where nobody can.
std::string unwritableDir(TempDir const& dir, bool withUserFiles) {
    std::string const path = dir.file("ro");
    mkdir(path.c_str(), 0755);
    if (withUserFiles) {
        dir.write("ro/h_udf.c", kUserText);
        dir.write("ro/h_coll.c", kUserText);
    }
    chmod(path.c_str(), 0555);
    std::string const probe = path + "/probe";
    FILE* f = std::fopen(probe.c_str(), "w");
    if (f == nullptr)
        return path;
    std::fclose(f);
    std::remove(probe.c_str());
    return "/proc";
}

std::string const kGood = "declare database h;\nclass A { signed<4> x; tree<x> t; };\n";

TEST(Robustness, UnwritableOutputDirectory) {
    TempDir dir;
    dir.write("s.zyl", kGood);
    std::string const ro = unwritableDir(dir, true);
    std::vector<std::string> const before = stableListing(ro);

    // An output that cannot be opened ends the compile at once, no closing line.
    ProcessResult const r = runProgram({cliPath(), "-o", ro, "s.zyl"}, dir.path());
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err, "error: Cannot open file " + ro + "/h.h\n");
    EXPECT_EQ(r.out, "");
    EXPECT_FALSE(exists(ro + "/h.h"));
    EXPECT_EQ(stableListing(ro), before);
    if (ro != "/proc") {
        for (char const* user : {"h_udf.c", "h_coll.c"})
            EXPECT_EQ(readFile(ro + "/" + user), kUserText);
    }

    // The run-time entry writes nothing, so it does not mind.
    EXPECT_EQ(loadText(kGood, dir.path(), ro).rc, 0);
}

// {db}.hpp of a 253-character name cannot be opened, after {db}.h and
// {db}.c were: the compile ends at once and those go with it.
TEST(Robustness, AnOutputThatCannotBeOpenedAfterOthers) {
    std::string const db(253, 'd');
    TempDir dir;
    dir.write("s.zyl", "declare database " + db + ";\nclass A { signed<4> x; tree<x> t; };\n");
    mkdir(dir.file("out").c_str(), 0755);
    ProcessResult const r = runProgram({cliPath(), "--cpp", "-o", "out", "s.zyl"}, dir.path());
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err, "error: Cannot open file out/" + db + ".hpp\n");
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(listDir(dir.file("out")), std::vector<std::string>());

    EXPECT_EQ(loadText(readFile(dir.file("s.zyl")), dir.path(), dir.file("out")).rc, 0);
}

// A read-only current directory: "." is the run-time entry's default
// output and include directory, and it must neither write there nor end
// the process.
TEST(Robustness, ReadOnlyCurrentDirectoryForTheRunTimeEntry) {
    TempDir dir;
    std::string const ro = unwritableDir(dir, false);
    std::vector<std::string> const before = stableListing(ro);
    ProcessResult const r = runInChild([&] {
        if (chdir(ro.c_str()) != 0)
            _exit(3);
        MemResult const good = loadText(kGood, ".", ".");
        MemResult const bad = loadText("declare database h;\nclass A { nosuch x; };\n", ".", ".");
        MemResult const include = loadText("declare database h;\n#include \"nosuch.zyl\"\n", ".", ".");
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
    EXPECT_EQ(stableListing(ro), before);
}

// A successful call hands out the dictionary's memory and nothing more,
// over the corpus and switches that change its shape; zyl_dict_free gives
// back exactly that, each block once.
TEST(Robustness, DictionaryMemoryIsExactlyWhatTheCallerOwns) {
    std::string const corpus = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/corpus/";
    struct {
        char const* what;
        void (*set)(zyl_dict_load_params_t&);
    } const switches[] = {
        {"defaults", [](zyl_dict_load_params_t&) {}},
        {"declared order, wide offsets",
         [](zyl_dict_load_params_t& p) { p.keepFieldOrder = p.wideOffsets = 1; }},
        {"compact, prefixed, hidden",
         [](zyl_dict_load_params_t& p) { p.compactDefault = p.prefixNames = p.hideAllClasses = 1; }},
    };
    int checked = 0;
    for (std::string const& name : listDir(corpus)) {
        std::string const text = readFile(corpus + name);
        if (text.find("declare database") == std::string::npos)
            continue;  // a piece that another schema includes
        for (auto const& s : switches) {
            dictmem::releaseAll();
            zyl_dict_load_params_t p = {};
            p.includeDir = corpus.c_str();
            s.set(p);
            zyl_dictionary_t* dict = nullptr;
            int const rc =
                zyl_db_load_dictionary(text.c_str(), &p, &dict, nullptr, nullptr, nullptr, nullptr, nullptr);
            ASSERT_EQ(rc, 0) << name << ", " << s.what;
            EXPECT_EQ(dictmem::checkOwnedBy(dict), "") << name << ", " << s.what;
            std::size_t const owned = dictmem::live();
            EXPECT_GT(owned, 1u) << name;
            std::size_t wrong = 0;
            EXPECT_EQ(dictmem::freeDictionary(dict, &wrong), owned) << name << ", " << s.what;
            EXPECT_EQ(wrong, 0u) << name << ", " << s.what;
            EXPECT_EQ(dictmem::live(), 0u) << name << ", " << s.what;
            checked++;
        }
    }
    EXPECT_GT(checked, 60);

    // A null deallocator is free(): in a child, whose block records go with
    // it, and where the sanitizers stop a wrong or a second free.
    std::size_t wrong = 0;
    EXPECT_EQ(dictmem::freeDictionary(nullptr, &wrong), 0u);
    EXPECT_EQ(wrong, 0u);
    ProcessResult const child = runInChild([] {
        zyl_dictionary_t* dict = nullptr;
        int const rc = zyl_db_load_dictionary(kGood.c_str(), nullptr, &dict, nullptr, nullptr, nullptr, nullptr,
                                              nullptr);
        zyl_dict_free(dict, nullptr);
        std::printf("%d", rc);
    });
    EXPECT_EQ(child.status, 0) << child.err;
    EXPECT_EQ(child.out, "0");

    // Refused after tables were handed out: *dict stays as it was.
    zyl_dictionary_t* dict = nullptr;
    int const rc = zyl_db_load_dictionary(
        "declare database h;\nclass A { string s; string t; blob b[2]; tree<s> u; };\n", nullptr, &dict, nullptr,
        nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(rc, 1005);
    EXPECT_EQ(dict, nullptr);
    dictmem::releaseAll();
}

}  // namespace
