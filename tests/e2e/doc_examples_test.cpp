// The examples of the manual (doc/*.md) run through the real compiler, by
// the convention of its fenced blocks:
//   ```zyl-error [OPTIONS]  a schema that must be refused; the ```text block
//                           right after it holds all of standard error
//   ```zyl [OPTIONS]        a schema that must compile; a ```text block right
//                           after it holds its warnings; the generated {db}.c
//                           (and {db}.hpp under --cpp) must compile cleanly
//   ```zyl file=NAME        written as NAME beside the next compiled block
//   ```zyl-fragment         not compiled
// Each schema is s.zyl in a fresh directory, run as `zylcomp [OPTIONS] s.zyl`.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"

namespace {

std::string const kDoc = std::string(ZYLCOMP_TESTS_DIR) + "/../doc";

struct Block {
    int line;  // of the opening fence
    std::string tag;
    std::vector<std::string> args;
    std::string text;
    bool adjacent;  // only blank lines stand between it and the block before
};

std::vector<std::string> words(std::string const& s) {
    std::istringstream in(s);
    std::vector<std::string> out;
    for (std::string w; in >> w;)
        out.push_back(w);
    return out;
}

// The fenced blocks of a markdown text, with the line each opens on.
std::vector<Block> blocks(std::string const& md) {
    std::vector<Block> out;
    std::istringstream in(md);
    Block* open = nullptr;
    int n = 0;
    bool adjacent = false;
    for (std::string line; std::getline(in, line);) {
        ++n;
        if (line.compare(0, 3, "```") != 0) {
            if (open)
                open->text += line + "\n";
            else if (line.find_first_not_of(" \t") != std::string::npos)
                adjacent = false;
            continue;
        }
        if (open) {
            open = nullptr;
            adjacent = true;
            continue;
        }
        std::vector<std::string> w = words(line.substr(3));
        out.push_back({n, w.empty() ? "" : w[0], {}, "", adjacent});
        if (!w.empty())
            out.back().args.assign(w.begin() + 1, w.end());
        open = &out.back();
    }
    return out;
}

std::string trimmed(std::string s) {
    while (!s.empty() && s.back() == '\n')
        s.pop_back();
    return s;
}

// Compiles a generated file with the flags of the access-interface tests;
// gives what the compiler printed when it failed or warned.
std::string compileFailure(std::vector<std::string> argv, std::string const& dir) {
    for (char const* flag : {"-Wall", "-I" ZYLCOMP_TESTS_DIR "/runtime", "-I" ZYLCOMP_TESTS_DIR "/../include"})
        argv.push_back(flag);
    ProcessResult r = runProgram(argv, dir);
    return r.status == 0 && r.err.find("warning:") == std::string::npos ? "" : argv[0] + ": " + r.err;
}

// Runs one compiled block; gives the reasons it fails, or nothing.
std::string run(Block const& b, Block const* text, std::vector<std::pair<std::string, std::string>> const& files) {
    TempDir dir;
    for (auto const& f : files)
        dir.write(f.first, f.second);
    std::vector<std::string> argv = {cliPath()};
    argv.insert(argv.end(), b.args.begin(), b.args.end());
    dir.write("s.zyl", b.text);
    argv.push_back("s.zyl");
    ProcessResult r = runProgram(argv, dir.path());
    std::string expected = text ? trimmed(text->text) : "";
    std::string why;
    if (b.tag == "zyl-error" && r.status == 0)
        why += "the schema compiled\n";
    if (b.tag == "zyl" && r.status != 0)
        why += "status " + std::to_string(r.status) + "\n";
    if (trimmed(r.err) != expected)
        why += "standard error:\n" + r.err + "\nexpected:\n" + expected + "\n";
    if (b.tag == "zyl-error" || !why.empty() || ::access(ZYLCOMP_TEST_CC, X_OK) != 0)
        return why;
    std::string db;  // {db}.h is the one header written
    for (std::string const& name : dir.list())
        if (std::filesystem::path(name).extension() == ".h")
            db = std::filesystem::path(name).stem().string();
    if (db.empty())
        return "no {db}.h was written\n";
    why += compileFailure({ZYLCOMP_TEST_CC, "-std=c99", "-c", db + ".c"}, dir.path());
    if (std::find(b.args.begin(), b.args.end(), "--cpp") != b.args.end())
        why += compileFailure({ZYLCOMP_TEST_CXX, "-std=c++11", "-fsyntax-only", "-x", "c++", db + ".hpp"}, dir.path());
    return why;
}

}  // namespace

TEST(DocExamples, EveryBlockOfTheManual) {
    std::vector<std::string> docs;
    for (auto const& entry : std::filesystem::directory_iterator(kDoc))
        if (entry.path().extension() == ".md")
            docs.push_back(entry.path().string());
    std::sort(docs.begin(), docs.end());
    ASSERT_FALSE(docs.empty());
    int ran = 0;
    for (std::string const& doc : docs) {
        std::vector<Block> const all = blocks(readFile(doc));
        std::vector<std::pair<std::string, std::string>> files;  // for the next compiled block
        for (size_t i = 0; i < all.size(); ++i) {
            Block const& b = all[i];
            std::string where = std::filesystem::path(doc).filename().string() + ":" + std::to_string(b.line);
            if (b.tag == "zyl" && !b.args.empty() && b.args[0].compare(0, 5, "file=") == 0) {
                files.emplace_back(b.args[0].substr(5), b.text);
                continue;
            }
            if (b.tag != "zyl" && b.tag != "zyl-error")
                continue;
            bool const answered = i + 1 < all.size() && all[i + 1].tag == "text" && all[i + 1].adjacent;
            Block const* text = answered ? &all[i + 1] : nullptr;
            if (b.tag == "zyl-error" && text == nullptr) {
                ADD_FAILURE() << where << ": a zyl-error block must be followed by a text block";
                continue;
            }
            std::string why = run(b, text, files);
            EXPECT_TRUE(why.empty()) << where << ": " << why;
            files.clear();
            ++ran;
        }
    }
    EXPECT_GT(ran, 0);
}
