// The manual's examples (doc/*.md, see support/doc_examples.h) through the
// real compiler: a refused one prints its text block and leaves no file, an
// accepted one prints its warnings and its {db}.c (and {db}.hpp under --cpp)
// compile cleanly. The catalogue of messages, the language reference and the
// tour keep up with the compiler too.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "frontend/diagnostics.h"
#include "support/doc_examples.h"
#include "support/process.h"

namespace {

std::string const kRoot = std::string(ZYLCOMP_TESTS_DIR) + "/../", kDoc = kRoot + "doc";

// Compiles a generated file with the flags of the access-interface tests;
// gives what the compiler printed when it failed or warned.
std::string compileFailure(std::vector<std::string> argv, std::string const& dir) {
    argv.insert(argv.end(), {"-Wall", "-I" ZYLCOMP_TESTS_DIR "/runtime", "-I" ZYLCOMP_TESTS_DIR "/../include"});
    ProcessResult r = runProgram(argv, dir);
    return r.status == 0 && r.err.find("warning:") == std::string::npos ? "" : argv[0] + ": " + r.err;
}

// Runs one example; gives the reasons it fails, or nothing.
std::string run(DocExample const& e) {
    TempDir dir;
    std::vector<std::string> inputs = {"s.zyl"};
    for (auto const& f : e.files) {
        dir.write(f.first, f.second);
        inputs.push_back(f.first);
    }
    dir.write("s.zyl", e.schema);
    std::vector<std::string> argv = {cliPath()};
    argv.insert(argv.end(), e.args.begin(), e.args.end());
    argv.push_back("s.zyl");
    ProcessResult r = runProgram(argv, dir.path());
    std::string why;
    if (e.refused != (r.status != 0))
        why += "status " + std::to_string(r.status) + "\n";
    std::string err = r.err;
    if (err.erase(err.find_last_not_of('\n') + 1) != e.err)
        why += "standard error:\n" + r.err + "\nexpected:\n" + e.err + "\n";
    if (r.status == 255) {  // a refused compile, not the front end's own refusals
        if (r.out != "Error executing DDL compiler\n")
            why += "standard output: " + r.out;
        std::sort(inputs.begin(), inputs.end());
        if (dir.list() != inputs)
            why += "files were left\n";
    }
    if (e.refused || !why.empty() || ::access(ZYLCOMP_TEST_CC, X_OK) != 0)
        return why;
    std::string db;  // {db}.h is the one header written
    for (std::string const& name : dir.list())
        if (std::filesystem::path(name).extension() == ".h")
            db = std::filesystem::path(name).stem().string();
    if (db.empty())
        return "no {db}.h was written\n";
    why += compileFailure({ZYLCOMP_TEST_CC, "-std=c99", "-c", db + ".c"}, dir.path());
    if (std::find(e.args.begin(), e.args.end(), "--cpp") != e.args.end())
        why += compileFailure({ZYLCOMP_TEST_CXX, "-std=c++11", "-fsyntax-only", "-x", "c++", db + ".hpp"}, dir.path());
    return why;
}

}  // namespace

TEST(DocExamples, EveryBlockOfTheManual) {
    std::vector<DocExample> const all = docExamples();
    ASSERT_GT(all.size(), 150u);
    for (DocExample const& e : all) {
        EXPECT_TRUE(e.answered || !e.refused) << e.where << ": a zyl-error block must be followed by a text block";
        std::string const why = run(e);
        EXPECT_TRUE(why.empty()) << e.where << ": " << why;
    }
}

namespace {

// Parameters, "#1" in the code and "{name}" in the catalogue, become one
// wildcard character on both sides.
std::string normalised(std::string const& s) {
    std::string out = std::regex_replace(s, std::regex(R"(#\d|\{[a-z][a-z0-9]*\})"), "\x01");
    size_t const b = out.find_first_not_of(" \n"), e = out.find_last_not_of(" \n");
    return b == std::string::npos ? "" : out.substr(b, e - b + 1);
}

std::string unescaped(std::string const& literal) {
    std::string out;
    for (size_t i = 0; i < literal.size(); i++)
        out += literal[i] != '\\' ? literal[i] : literal[++i] == 'n' ? '\n' : literal[i];
    return out;
}

std::string translated(std::string const& key) {
    for (char const* const* m = ZYL_MESSAGES; *m != nullptr; ++m) {
        std::string const entry = *m;
        size_t const eq = entry.find('=');
        if (entry.substr(0, eq) == key)
            return entry.substr(eq + 1);
    }
    return key;
}

}  // namespace

// Every text of the message table, and every literal the code reports,
// stands in doc/diagnostics.md. A report call is one of the functions below
// whose first argument (after a place, a reporter or a condition) is a
// literal: `error1("...", x)`, `errorAt(at, "...")`, `err(c ? "..." : "...")`.
// A literal that the code extends with `+` ("recursive definition of \"" +
// name + ...) is looked for as a prefix. Texts printed by fprintf in
// tools/zylcomp.cpp are not scanned.
TEST(DocExamples, CatalogueHoldsEveryMessage) {
    std::string const doc = normalised(readFile(kDoc + "/diagnostics.md"));
    auto expectListed = [&doc](std::string const& text, std::string const& where) {
        std::string const n = normalised(text);
        EXPECT_TRUE(n.empty() || doc.find(n) != std::string::npos) << where << ": doc/diagnostics.md lacks \"" << text << "\"";
    };
    for (char const* const* m = ZYL_MESSAGES; *m != nullptr; ++m)
        expectListed(translated(std::string(*m).substr(0, std::string(*m).find('='))), "ZYL_MESSAGES");

    std::string const lit = R"x("((?:[^"\\]|\\.)*)")x";
    std::regex const call(R"(\b(?:error[1-4]?|errorAt|err[1-4]?|warning1?|panic|dictPanic|fail)\s*\(\s*)"
                          R"((?:[\w.\[\]>-]+\s*,\s*|[\w.]+\s*\?\s*)?(?:mstring\()?)" + lit +
                          R"(\)?\s*(?:\+|:\s*)" + lit + ")?");
    int found = 0;
    for (char const* dir : {"host/zylcomp", "frontend", "target/zylcomp", "driver", "foundation", "tools"}) {
        for (auto const& entry : std::filesystem::directory_iterator(kRoot + dir)) {
            if (entry.path().extension() != ".cpp")
                continue;
            std::string const text = readFile(entry.path().string());
            for (std::sregex_iterator it(text.begin(), text.end(), call), end; it != end; ++it, ++found)
                for (int group : {1, 2})
                    if ((*it)[group].matched)
                        expectListed(translated(unescaped((*it)[group])), entry.path().filename().string());
        }
    }
    EXPECT_GT(found, 150);
}

namespace {

// The words no schema may use as a name (the first list of reserved.cpp),
// and the other words the grammar reads in their places.
TEST(DocReference, EveryWordOfTheLanguageIsInTheReference) {
    std::string const reserved = readFile(kRoot + "host/zylcomp/reserved.cpp");
    std::string const words = reserved.substr(0, reserved.find("sqlWords[]")) + R"(
        "sequence" "rect" "rectangle" "point" "patricia" "kdtree" "rtree" "trigram" "inclusive" "thick" "nullable"
        "atomic" "nonatomic" "TTL_count" "TTL_clock_time" "sec" "ms" "us" "server" "device" "router" "auto_oid"
        "AUTO_OID" "HA" "autoid_t" "numeric" "decimal" "boolean" "blob" "varbinary" "updated_bitmap")";
    std::string const doc = readFile(kRoot + "doc/language.md");
    std::regex const quoted("\"(\\w+)\"");
    int n = 0;
    for (std::sregex_iterator it(words.begin(), words.end(), quoted), end; it != end; ++it, ++n)
        EXPECT_NE(doc.find("`" + (*it)[1].str() + "`"), std::string::npos) << (*it)[1];
    EXPECT_GE(n, 87);
}

TEST(DocTour, ProgramCompiles) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0)
        GTEST_SKIP() << "no C compiler";
    TempDir dir;
    ProcessResult gen = runProgram({cliPath(), "-q", "-o", dir.path(), kRoot + "examples/tour/hotel.zyl"});
    ASSERT_EQ(gen.status, 0) << gen.err;
    EXPECT_EQ(gen.err, "");
    EXPECT_EQ(compileFailure({ZYLCOMP_TEST_CC, "-std=c99", "-Werror", "-c", "-I" + dir.path(),
                              kRoot + "examples/tour/main.c", "hotel.c"}, dir.path()), "");
}

}  // namespace
