// Random schemas from the grammar (tests/support/schema_gen.cpp), through
// the command line. Each one either compiles, and then every file written
// compiles too (gcc, g++, javac, mcs against tests/runtime) and the
// dictionary of {db}.c agrees with the one --dump-dictionary builds; or it
// is refused with a located message, status 255 and no file left. No case
// may end in "internal error".
//
// The suite runs a fixed range of seeds. For other ranges:
//     ZYLCOMP_SCHEMAGEN_SEEDS=FROM:TO build/tests/zylcomp_tests --gtest_filter='SchemaGen.*'
// (tests/schemagen/run.sh runs thousands in the background and counts).
// ZYLCOMP_SCHEMAGEN_KEEP=DIR writes each failing case to DIR/{seed}.txt.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/dict_json.h"
#include "support/process.h"
#include "support/schema_gen.h"

namespace {

using Args = std::vector<std::string>;

std::string const kRuntime = std::string(ZYLCOMP_TESTS_DIR) + "/runtime";
// The range the suite runs: under a minute alone on two cores.
std::uint64_t const kFirstSeed = 1, kLastSeed = 200;

Args operator+(Args a, Args const& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

bool contains(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

// A program on the PATH, or empty.
std::string tool(std::string const& name) {
    std::string const path = runProgram({"/bin/sh", "-c", "command -v " + name}).out;
    return path.substr(0, path.find('\n'));
}

int countLines(std::string const& text, char const* mark) {
    int n = 0;
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1))
        n++;
    return n;
}

// The line that holds `mark`, or the first line when none does.
std::string firstLine(std::string const& text, char const* mark) {
    size_t const at = text.find(mark), begin = at == std::string::npos ? 0 : text.rfind('\n', at) + 1;
    return text.substr(begin, text.find('\n', begin) - begin);
}

// Counts of what the cases came to, and the faults with their cases.
struct Tally {
    std::map<std::string, int> counts;
    std::map<std::string, int> faults;
    std::vector<std::string> reports;
    std::string keep = std::getenv("ZYLCOMP_SCHEMAGEN_KEEP") ? std::getenv("ZYLCOMP_SCHEMAGEN_KEEP") : "";

    void count(std::string const& what, int n = 1) { counts[what] += n; }
    void fault(std::string const& kind, SchemaCase const& c, std::string const& detail) {
        // The whole case for the first few of a kind, the seed for the rest.
        bool const whole = faults[kind]++ < 3;
        std::string report = "FAULT " + kind + ": seed " + std::to_string(c.seed) + "\n" + detail + "\n";
        if (whole)
            report += describe(c);
        reports.push_back(report);
        if (!keep.empty())
            std::ofstream(keep + "/" + std::to_string(c.seed) + ".txt")
                << "FAULT " << kind << "\n" << detail << "\n" << describe(c);
    }
};

// The compile of a generated file may fail only with the faults the case
// may show, each error line naming one of them or lying in the runtime's
// header, whose macros the faulty text expands. Returns the fault of the
// first error line, or empty when some error is none of them.
std::string knownFault(SchemaCase const& c, std::string const& err, bool cxx) {
    std::vector<std::pair<bool, char const*>> known = {{c.mayFailDirectPrefix, "_d_aligned_to_1"},
                                                       {c.mayFailDirectPrefix, "zyl.h:"},
                                                       {c.mayFailRelativeCodes, "class_code_origin"},
                                                       {c.mayFailRelativeCodes, "undeclared"}};
    if (cxx) {
        known = {{c.mayFailKeywordIndex, "redefinition of"}, {c.mayFailColumnsOnly, "does not name a type"}};
        // Every error of the clash names the field's name.
        for (char const* name : {"a_get", "a_length", "s_fixed", "v_size", "t_find"})
            known.push_back({c.mayFailPropertyName, name});
    }
    std::string found;
    std::istringstream in(err);
    for (std::string line; std::getline(in, line);) {
        if (!contains(line, "error:"))
            continue;
        auto const k =
            std::find_if(known.begin(), known.end(), [&](auto const& k) { return k.first && contains(line, k.second); });
        if (k == known.end())
            return "";
        found = found.empty() ? k->second : found;
    }
    return found;
}

struct Checker {
    explicit Checker(Tally& tally) : t(tally) {
        // The JSON printer is compiled once; each case links it with its
        // {db}.o, whose dictionary function it reaches by another name.
        ProcessResult dj = runProgram({cc, "-std=c99", "-c", "-I" + kRuntime, "-I" ZYLCOMP_INCLUDE_DIR,
                                       "-DGET_DICTIONARY=gen_get_dictionary", kRuntime + "/dictjson.c", "-o", "dj.o"},
                                      root.path());
        EXPECT_EQ(dj.status, 0) << dj.err;
        if (!javac.empty() && !mcs.empty()) {
            std::vector<std::string> decl;
            for (auto const& e : std::filesystem::directory_iterator(kRuntime + "/java/com/tarnwell/quorabase"))
                decl.push_back(e.path().string());
            bindings = runProgram(Args{javac, "-d", "decl"} + decl, root.path()).status == 0 &&
                       runProgram({mcs, "-target:library", "-out:decl/Quorabase.dll", kRuntime + "/cs/Quorabase.cs"},
                                  root.path()).status == 0;
            EXPECT_TRUE(bindings);
        }
    }

    Tally& t;
    TempDir root;
    std::string cc = ZYLCOMP_TEST_CC, cxx = ZYLCOMP_TEST_CXX, javac = tool("javac"), mcs = tool("mcs");
    bool bindings = false;
    std::map<std::string, SchemaCase> javaFiles, csFiles;  // file -> its case

    void check(SchemaCase const& c) {
        TempDir dir;
        dir.write("s.zyl", c.schema);
        for (auto const& inc : c.includes)
            dir.write(inc.first, inc.second);
        ProcessResult const r = runProgram(Args{cliPath()} + c.options + Args{"s.zyl"}, dir.path());
        t.count("cases");
        if (contains(r.err, "internal error"))
            return t.fault("internal error", c, r.err);
        t.count("zylcomp warnings", countLines(r.err, "warning:"));
        if (r.status == 0)
            accepted(c, dir, r);
        else
            refused(c, dir, r);
    }

    void refused(SchemaCase const& c, TempDir const& dir, ProcessResult const& r) {
        t.count("refused");
        // What the generated text could not compile is refused at its place.
        bool const known = (c.mayFailDirectPrefix && contains(r.err, "holds direct struct")) ||
                           (c.mayFailKeywordIndex && contains(r.err, "define search_all twice")) ||
                           (c.mayFailColumnsOnly && contains(r.err, "would name Sequence without its header"));
        if (c.expect == SchemaCase::Valid && !known)
            return t.fault("valid schema refused", c, firstLine(r.err, "error:"));
        if (r.status != 255)
            return t.fault("refused with status " + std::to_string(r.status), c, r.err);
        // File NAME;  line N[, position P]: error: ...   or, from the
        // dictionary and layout, which name no line: File NAME; error: ...
        std::smatch m;
        std::regex const located("(^|\n)File ([^;]+);(  line (-?\\d+)(, position \\d+)?:)? error: ");
        if (!std::regex_search(r.err, m, located))
            return t.fault("refused without a place", c, r.err);
        std::string text = m[2] == "s.zyl" ? c.schema : "";
        for (auto const& inc : c.includes)
            text = inc.first == m[2] ? inc.second : text;
        if (!m[3].matched)
            t.count("refused without a line");
        else if (std::stoi(m[4]) < 1 || std::stoi(m[4]) > countLines(text, "\n") + 1)
            return t.fault("refused at a line the file does not have", c, firstLine(r.err, "error:"));
        if (r.out != "Error executing DDL compiler\n")
            t.fault("refused without its last line", c, r.out);
        Args expected = {"s.zyl"};
        for (auto const& inc : c.includes)
            expected.push_back(inc.first);
        std::sort(expected.begin(), expected.end());
        if (dir.list() != expected)
            t.fault("files left after a refusal", c, ::testing::PrintToString(dir.list()));
    }

    bool compile(SchemaCase const& c, Args const& argv, std::string const& cwd, char const* what, bool isCxx) {
        ProcessResult const r = runProgram(argv, cwd);
        t.count(std::string(what) + " compiles");
        if (r.status == 0) {
            countWarnings(what, r.err);
            return true;
        }
        std::string const known = knownFault(c, r.err, isCxx);
        if (!known.empty())
            t.count(std::string(what) + " known fault: " + known);
        else
            t.fault(std::string(what) + " does not compile", c, firstLine(r.err, "error:"));
        return false;
    }

    // Warnings are counted by the option that names them, not failed.
    void countWarnings(std::string const& what, std::string const& err) {
        std::regex const option("warning: .*\\[(-W[^\\]]+)\\]");
        std::istringstream in(err);
        for (std::string line; std::getline(in, line);) {
            std::smatch m;
            if (std::regex_search(line, m, option))
                t.count(what + " warning " + m[1].str());
            else if (contains(line, "warning:"))
                t.count(what + " warning: " + line.substr(line.find("warning:") + 9, 60));
        }
    }

    void accepted(SchemaCase const& c, TempDir const& dir, ProcessResult const& r) {
        t.count("accepted");
        if (c.expect == SchemaCase::Invalid)
            return t.fault("broken rule accepted", c, c.fault);
        if (r.out.compare(0, 22, "Compiled successfully:") != 0)
            t.fault("accepted without its last line", c, r.out);
        Args const files = dir.list();
        auto has = [&files](std::string const& f) { return std::find(files.begin(), files.end(), f) != files.end(); };
        // An edit may have renamed the database: {db}.h is the one header.
        std::string db;
        for (std::string const& name : files)
            if (std::filesystem::path(name).extension() == ".h")
                db = std::filesystem::path(name).stem().string();
        if (db.empty() || !has(db + ".c"))
            return t.fault("accepted without its files", c, ::testing::PrintToString(files));

        Args flags = {"-Wall", "-I" + kRuntime, "-I" ZYLCOMP_INCLUDE_DIR};
        if (c.has("--dll-spec"))
            flags.push_back("-D__declspec(x)=");  // the export marks belong to another platform's compiler
        // Sections of their own let the link for the dictionary drop the
        // access functions, whose runtime calls it does not have.
        bool const cOk = compile(c, Args{cc, "-std=c99", "-ffunction-sections", "-c", db + ".c"} + flags, dir.path(),
                                 "C", false);
        for (char const* skeleton : {"_udf.c", "_coll.c"})
            if (has(db + skeleton))
                compile(c, Args{cc, "-std=c99", "-c", db + skeleton} + flags, dir.path(), "C skeleton", false);
        if (c.has("--cpp"))
            compile(c, Args{cxx, "-std=c++11", "-fsyntax-only", "-x", "c++", db + ".hpp"} + flags, dir.path(), "C++",
                    true);
        if (bindings) {
            std::string const keep = root.file("s" + std::to_string(c.seed));
            for (std::string const& name : files) {
                std::string const ext = std::filesystem::path(name).extension().string();
                if (ext != ".java" && ext != ".cs")
                    continue;
                std::filesystem::create_directories(keep);
                std::filesystem::copy_file(dir.file(name), keep + "/" + name);
                (ext == ".java" ? javaFiles : csFiles).emplace(keep + "/" + name, c);
            }
        }
        if (cOk)
            dictionary(c, dir.path(), db);
    }

    void dictionary(SchemaCase const& c, std::string const& dir, std::string const& db) {
        if (c.holdsDirect)
            return t.count("dictionary not compared: a direct struct held by value");
        ProcessResult const mem = runProgram(Args{cliPath(), "--dump-dictionary"} + c.options + Args{"s.zyl"}, dir);
        if (mem.status != 0) {
            if (c.sequenceOfStructs && contains(mem.err, "does not support sequence of structs"))
                return t.count("dictionary not compared: a sequence of structs");
            return t.fault("the run-time entry refuses an accepted schema", c, mem.err);
        }
        ProcessResult const link =
            runProgram({cc, root.file("dj.o"), db + ".o", "-Wl,--defsym=gen_get_dictionary=" + db + "_get_dictionary",
                        "-Wl,--gc-sections", "-L" ZYLCOMP_LIB_DIR, "-lzylcomp", "-Wl,-rpath," ZYLCOMP_LIB_DIR,
                        "-o", "json"}, dir);
        if (link.status != 0)
            return t.fault("the dictionary of {db}.c does not link", c, firstLine(link.err, "undefined"));
        ProcessResult const fromC = runProgram({dir + "/json"});
        if (fromC.status != 0)
            return t.fault("the dictionary of {db}.c cannot be printed", c, fromC.err);
        std::vector<std::string> cj = jsonLines(fromC.out), mj = jsonLines(mem.out);
        acceptDifferences(cj, mj);
        t.count("dictionaries compared");
        if (cj != mj) {
            size_t i = 0;
            while (i < cj.size() && i < mj.size() && cj[i] == mj[i])
                i++;
            t.fault("dictionaries differ", c,
                    "first difference:\n  C:      " + (i < cj.size() ? cj[i] : "(end)") +
                        "\n  memory: " + (i < mj.size() ? mj[i] : "(end)"));
        }
    }

    // Compiles the Java and C# files kept so far, all cases at once.
    void compileBindings() {
        auto run = [&](std::map<std::string, SchemaCase>& files, Args const& head, char const* what) {
            if (files.empty())
                return;
            Args argv = head;
            for (auto const& f : files)
                argv.push_back(f.first);
            ProcessResult const r = runProgram(argv, root.path());
            std::string const out = r.out + r.err;
            t.count(std::string(what) + " compiles", static_cast<int>(files.size()));
            // javac: "{file}:{line}: warning: ...", mcs: "{file}({line},{col}): warning CS{n}: ..."
            std::regex const warning(": warning( CS\\d+)?: (.{0,50})");
            std::istringstream lines(out);
            for (std::string line; std::getline(lines, line);) {
                std::smatch m;
                if (std::regex_search(line, m, warning))
                    t.count(std::string(what) + " warning" + m[1].str() + ": " + m[2].str());
            }
            if (r.status != 0) {
                // Each error names its file, and so its case: the first one of each case counts.
                std::map<std::uint64_t, std::pair<std::string, SchemaCase const*>> failed;
                std::istringstream in(out);
                for (std::string line; std::getline(in, line);)
                    for (auto const& f : files)
                        if (contains(line, "error") && line.compare(0, f.first.size(), f.first) == 0)
                            failed.emplace(f.second.seed, std::make_pair(line, &f.second));
                for (auto const& f : failed)
                    t.fault(std::string(what) + " does not compile", *f.second.second, f.second.first);
                if (failed.empty())
                    t.reports.push_back(std::string("FAULT ") + what + " failed:\n" + out);
            }
            files.clear();
        };
        run(javaFiles, {javac, "-Xmaxerrs", "100000", "-cp", "decl", "-d", "classes"}, "Java");
        run(csFiles, {mcs, "-target:library", "-out:t.dll", "-r:decl/Quorabase.dll"}, "C#");
    }
};

}  // namespace

TEST(SchemaGen, GeneratedSchemasCompileOrAreRefusedCleanly) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0 || ::access(ZYLCOMP_TEST_CXX, X_OK) != 0)
        GTEST_SKIP() << "no C or C++ compiler";
    std::uint64_t first = kFirstSeed, last = kLastSeed;
    if (char const* range = std::getenv("ZYLCOMP_SCHEMAGEN_SEEDS")) {
        char* colon = nullptr;
        first = std::strtoull(range, &colon, 10);
        ASSERT_EQ(*colon, ':') << "ZYLCOMP_SCHEMAGEN_SEEDS=FROM:TO";
        last = std::strtoull(colon + 1, nullptr, 10);
    }
    auto const start = std::chrono::steady_clock::now();
    Tally tally;
    {
        Checker checker(tally);
        for (std::uint64_t seed = first; seed <= last; seed++) {
            SchemaCase const c = generateSchema(seed);
            tally.count(c.expect == SchemaCase::Valid     ? "drawn valid"
                        : c.expect == SchemaCase::Invalid ? "drawn with a broken rule"
                                                          : "drawn with an edit");
            checker.check(c);
            if ((seed - first) % 200 == 199)
                checker.compileBindings();
        }
        checker.compileBindings();
    }
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    std::ostringstream summary;
    summary << "schemagen seeds " << first << ".." << last << " in " << seconds.count() << " s\n";
    for (auto const& n : tally.counts)
        summary << "  " << n.first << ": " << n.second << "\n";
    for (auto const& n : tally.faults)
        summary << "  FAULT " << n.first << ": " << n.second << "\n";
    std::cout << summary.str();
    for (std::string const& report : tally.reports)
        ADD_FAILURE() << report;
    // A property test that drew nothing would prove nothing; a range of a
    // few seeds, to look at one case again, may well draw one kind only.
    if (last - first >= 50) {
        EXPECT_GT(tally.counts["accepted"], 0);
        EXPECT_GT(tally.counts["refused"], 0);
        EXPECT_GT(tally.counts["dictionaries compared"], 0);
    }
}
