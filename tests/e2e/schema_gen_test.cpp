// Random schemas (tests/support/schema_gen.cpp) through the command line. An
// accepted one's files compile against tests/runtime (gcc, g++, javac, mcs)
// and the dictionary of {db}.c equals the one --dump-dictionary builds; a
// refused one has a located message, status 255 and no file left; none ends
// in "internal error". The suite runs seeds 1 to 200;
// ZYLCOMP_SCHEMAGEN_SEEDS=FROM:TO runs others, ZYLCOMP_SCHEMAGEN_KEEP=DIR
// writes each failing case to DIR/{seed}.txt (see tests/schemagen/README.md).
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "support/dict_json.h"
#include "support/process.h"
#include "support/schema_gen.h"

namespace {

using Args = std::vector<std::string>;

std::string const kRuntime = std::string(ZYLCOMP_TESTS_DIR) + "/runtime";

Args operator+(Args a, Args const& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

bool contains(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

Args linesWith(std::string const& text, char const* mark) {
    Args found;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (contains(line, mark))
            found.push_back(line);
    return found;
}

// The first line that holds `mark`, or else the first line.
std::string firstLine(std::string const& text, char const* mark) {
    Args const found = linesWith(text, mark);
    return found.empty() ? text.substr(0, text.find('\n')) : found[0];
}

// A program on the PATH, or empty.
std::string tool(char const* name) {
    std::string const path = runProgram({"/bin/sh", "-c", std::string("command -v ") + name}).out;
    return path.substr(0, path.find('\n'));
}

// Generated text that cannot compile, accepted only in a case flagged for
// it (by SchemaCase::Known, in its order): refused at the declaration at
// fault (kRefusals of api_compile_test.cpp), or kept as written (kModes
// there) when each error line of the C or C++ compile names it.
struct Known { char const* name; char const* refusal; bool cxx; Args errors; };
Known const kKnown[] = {
    {"--prefix-names with a direct struct", "holds direct struct", false, {"_d_aligned_to_1", "zyl.h:"}},
    {"thick tree of a string", "define search_all twice", true, {"redefinition of"}},
    {"sequences without a sequence field", "would name Sequence without its header", true, {"does not name a type"}},
    {"--relative-class-codes", nullptr, false, {"class_code_origin", "undeclared"}},
    // Under --cpp-runtime-header a field named like a member function of
    // another ("a_get" beside "a") gets a property that clashes with it.
    {"property named like a function", nullptr, true, {"a_get", "a_length", "s_fixed", "v_size", "t_find"}},
};

// The known fault the first error line names, when each one names a fault
// the case may show; else empty.
std::string knownFault(SchemaCase const& c, std::string const& err, bool cxx) {
    std::string first;
    for (std::string const& line : linesWith(err, "error:")) {
        char const* name = nullptr;
        for (SchemaCase::Known f : c.mayFail)
            for (std::string const& e : kKnown[f].errors)
                name = !name && kKnown[f].cxx == cxx && contains(line, e) ? kKnown[f].name : name;
        if (!name)
            return "";
        first = first.empty() ? name : first;
    }
    return first;
}

struct Checker {
    Checker() {
        // The JSON printer is compiled once; each case links it with its
        // {db}.o, whose dictionary function it reaches by another name.
        ProcessResult dj = runProgram({cc, "-std=c99", "-c", "-I" + kRuntime, "-I" ZYLCOMP_INCLUDE_DIR,
                                       "-DGET_DICTIONARY=gen_get_dictionary", kRuntime + "/dictjson.c", "-o", "dj.o"},
                                      root.path());
        EXPECT_EQ(dj.status, 0) << dj.err;
        if (javac.empty() || mcs.empty())
            return;
        Args decl;
        for (auto const& e : std::filesystem::directory_iterator(kRuntime + "/java/com/tarnwell/quorabase"))
            decl.push_back(e.path().string());
        bindings = runProgram(Args{javac, "-d", "decl"} + decl, root.path()).status == 0 &&
                   runProgram({mcs, "-target:library", "-out:decl/Quorabase.dll", kRuntime + "/cs/Quorabase.cs"},
                              root.path()).status == 0;
        EXPECT_TRUE(bindings);
    }

    TempDir root;
    std::string cc = ZYLCOMP_TEST_CC, cxx = ZYLCOMP_TEST_CXX, javac = tool("javac"), mcs = tool("mcs");
    char const* keep = std::getenv("ZYLCOMP_SCHEMAGEN_KEEP");
    bool bindings = false;
    std::map<std::string, int> counts;          // what run.sh adds up
    Args javaFiles, csFiles;                    // kept for compileBindings
    std::map<std::uint64_t, SchemaCase> kept;  // their cases

    void count(std::string const& what, size_t n = 1) { counts[what] += static_cast<int>(n); }

    void fault(std::string const& kind, SchemaCase const& c, std::string const& detail) {
        std::string const report = "FAULT " + kind + "\n" + detail + "\n" + describe(c);
        count("FAULT " + kind);
        ADD_FAILURE() << report;
        if (keep)
            std::ofstream(std::string(keep) + "/" + std::to_string(c.seed) + ".txt") << report;
    }

    void check(SchemaCase const& c) {
        static char const* const kDrawn[] = {"drawn valid", "drawn with a broken rule", "drawn with an edit"};
        count(kDrawn[c.expect]);
        TempDir dir;
        dir.write("s.zyl", c.schema);
        for (auto const& inc : c.includes)
            dir.write(inc.first, inc.second);
        ProcessResult const r = runProgram(Args{cliPath()} + c.options + Args{"s.zyl"}, dir.path());
        if (contains(r.err, "internal error"))
            return fault("internal error", c, r.err);
        count("zylcomp warnings", linesWith(r.err, "warning:").size());
        if (r.status == 0)
            accepted(c, dir);
        else
            refused(c, dir, r);
    }

    void refused(SchemaCase const& c, TempDir const& dir, ProcessResult const& r) {
        count("refused");
        bool known = false;
        for (SchemaCase::Known f : c.mayFail)
            known = known || (kKnown[f].refusal && contains(r.err, kKnown[f].refusal));
        if (c.expect == SchemaCase::Valid && !known)
            return fault("valid schema refused", c, firstLine(r.err, "error:"));
        if (r.status != 255)
            return fault("refused with status " + std::to_string(r.status), c, r.err);
        // File NAME;  line N[, position P]: error: ...   or, from the
        // dictionary and layout, which name no line: File NAME; error: ...
        static std::regex const located("(^|\n)File ([^;]+);(  line (-?\\d+)(, position \\d+)?:)? error: ");
        std::smatch m;
        if (!std::regex_search(r.err, m, located))
            return fault("refused without a place", c, r.err);
        std::string text = m[2] == "s.zyl" ? c.schema : "";
        std::set<std::string> files = {"s.zyl"};
        for (auto const& inc : c.includes) {
            text = inc.first == m[2] ? inc.second : text;
            files.insert(inc.first);
        }
        if (!m[3].matched)
            count("refused without a line");
        else if (std::stoi(m[4]) < 1 || std::stoi(m[4]) > std::count(text.begin(), text.end(), '\n') + 1)
            return fault("refused at a line the file does not have", c, firstLine(r.err, "error:"));
        if (dir.list() != Args(files.begin(), files.end()))
            fault("files left after a refusal", c, ::testing::PrintToString(dir.list()));
    }

    bool compile(SchemaCase const& c, Args const& argv, std::string const& cwd, std::string const& what) {
        ProcessResult const r = runProgram(argv, cwd);
        count(what + " compiles");
        if (r.status == 0)  // warnings are counted, not failed
            return count(what + " warnings", linesWith(r.err, "warning").size()), true;
        std::string const known = knownFault(c, r.err, what == "C++");
        if (known.empty())
            fault(what + " does not compile", c, firstLine(r.err, "error:"));
        else
            count(what + " known fault: " + known);
        return false;
    }

    void accepted(SchemaCase const& c, TempDir const& dir) {
        count("accepted");
        if (c.expect == SchemaCase::Invalid)
            return fault("broken rule accepted", c, c.fault);
        Args const list = dir.list();
        std::set<std::string> const files(list.begin(), list.end());
        // An edit may have renamed the database: {db}.h is the one header.
        std::string db;
        for (std::string const& name : files)
            if (std::filesystem::path(name).extension() == ".h")
                db = std::filesystem::path(name).stem().string();
        if (db.empty() || !files.count(db + ".c"))
            return fault("accepted without its files", c, ::testing::PrintToString(list));

        Args flags = {"-Wall", "-I" + kRuntime, "-I" ZYLCOMP_INCLUDE_DIR};
        if (c.has("--dll-spec"))
            flags.push_back("-D__declspec(x)=");  // the export marks belong to another platform's compiler
        // Sections of their own let the link for the dictionary drop the
        // access functions, whose runtime calls it does not have.
        bool const cOk =
            compile(c, Args{cc, "-std=c99", "-ffunction-sections", "-c", db + ".c"} + flags, dir.path(), "C");
        for (char const* skeleton : {"_udf.c", "_coll.c"})
            if (files.count(db + skeleton))
                compile(c, Args{cc, "-std=c99", "-c", db + skeleton} + flags, dir.path(), "C skeleton");
        if (c.has("--cpp"))
            compile(c, Args{cxx, "-std=c++11", "-fsyntax-only", "-x", "c++", db + ".hpp"} + flags, dir.path(), "C++");
        std::string const to = root.file("s" + std::to_string(c.seed));
        for (std::string const& name : files) {
            std::string const ext = std::filesystem::path(name).extension().string();
            if (bindings && (ext == ".java" || ext == ".cs")) {
                std::filesystem::create_directories(to);
                std::filesystem::copy_file(dir.file(name), to + "/" + name);
                (ext == ".java" ? javaFiles : csFiles).push_back(to + "/" + name);
                kept[c.seed] = c;
            }
        }
        if (cOk)
            dictionary(c, dir.path(), db);
    }

    void dictionary(SchemaCase const& c, std::string const& dir, std::string const& db) {
        if (c.holdsDirect)
            return count("dictionary not compared: a direct struct held by value");
        ProcessResult const mem = runProgram(Args{cliPath(), "--dump-dictionary"} + c.options + Args{"s.zyl"}, dir);
        if (mem.status != 0 && c.sequenceOfStructs && contains(mem.err, "does not support sequence of structs"))
            return count("dictionary not compared: a sequence of structs");
        if (mem.status != 0)
            return fault("the run-time entry refuses an accepted schema", c, mem.err);
        ProcessResult const link =
            runProgram({cc, root.file("dj.o"), db + ".o", "-Wl,--defsym=gen_get_dictionary=" + db + "_get_dictionary",
                        "-Wl,--gc-sections", "-L" ZYLCOMP_LIB_DIR, "-lzylcomp", "-Wl,-rpath," ZYLCOMP_LIB_DIR,
                        "-o", "json"}, dir);
        if (link.status != 0)
            return fault("the dictionary of {db}.c does not link", c, firstLine(link.err, "undefined"));
        ProcessResult const fromC = runProgram({dir + "/json"});
        if (fromC.status != 0)
            return fault("the dictionary of {db}.c cannot be printed", c, fromC.err);
        Args cj = jsonLines(fromC.out), mj = jsonLines(mem.out);
        acceptDifferences(cj, mj);
        count("dictionaries compared");
        auto const d = std::mismatch(cj.begin(), cj.end(), mj.begin(), mj.end());
        if (d.first != cj.end() || d.second != mj.end())
            fault("dictionaries differ", c,
                  "first difference:\n  C:      " + (d.first == cj.end() ? "(end)" : *d.first) +
                      "\n  memory: " + (d.second == mj.end() ? "(end)" : *d.second));
    }

    // Compiles the Java and C# files kept so far, all cases at once.
    void compileBindings() {
        auto run = [&](Args& files, Args const& head, std::string const& what) {
            if (files.empty())
                return;
            ProcessResult const r = runProgram(head + files, root.path());
            std::string const out = r.out + r.err;
            count(what + " compiles", files.size());
            count(what + " warnings", linesWith(out, "warning").size());
            files.clear();
            if (r.status == 0)
                return;
            // Each error names its file, which names its case: the first one of a case counts.
            std::regex const inCase("^" + root.path() + "/s(\\d+)/.*error");
            std::set<std::uint64_t> failed;
            std::smatch m;
            for (std::string const& line : linesWith(out, "error"))
                if (std::regex_search(line, m, inCase) && failed.insert(std::stoull(m[1])).second)
                    fault(what + " does not compile", kept.at(std::stoull(m[1])), line);
            if (failed.empty())
                ADD_FAILURE() << "FAULT " << what << " failed:\n" << out;
        };
        run(javaFiles, {javac, "-Xmaxerrs", "100000", "-cp", "decl", "-d", "classes"}, "Java");
        run(csFiles, {mcs, "-target:library", "-out:t.dll", "-r:decl/Quorabase.dll"}, "C#");
        kept.clear();
    }
};

}  // namespace

TEST(SchemaGen, GeneratedSchemasCompileOrAreRefusedCleanly) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0 || ::access(ZYLCOMP_TEST_CXX, X_OK) != 0)
        GTEST_SKIP() << "no C or C++ compiler";
    std::uint64_t first = 1, last = 200;  // under a minute alone on two cores
    char const* range = std::getenv("ZYLCOMP_SCHEMAGEN_SEEDS");
    ASSERT_TRUE(!range || std::sscanf(range, "%" SCNu64 ":%" SCNu64, &first, &last) == 2)
        << "ZYLCOMP_SCHEMAGEN_SEEDS=FROM:TO";
    Checker checker;
    for (std::uint64_t seed = first; seed <= last; seed++) {
        checker.check(generateSchema(seed));
        if ((seed - first) % 200 == 199 || seed == last)
            checker.compileBindings();
    }
    std::cout << "schemagen seeds " << first << ".." << last << "\n";
    for (auto const& n : checker.counts)
        std::cout << "  " << n.first << ": " << n.second << "\n";
    // A property test that drew nothing would prove nothing; a range of a
    // few seeds, to look at one case again, may well draw one kind only.
    if (last - first >= 50) {
        EXPECT_GT(checker.counts["accepted"], 0);
        EXPECT_GT(checker.counts["refused"], 0);
        EXPECT_GT(checker.counts["dictionaries compared"], 0);
    }
}
