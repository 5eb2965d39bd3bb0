// Each output is written beside its name and moved over it once the whole
// compile has succeeded: a failed write leaves nothing, a link is replaced,
// never written through, and an interrupt leaves the earlier outputs.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "support/process.h"

namespace {

using std::filesystem::is_symlink;
std::string const kVictim = "a file outside the output directory\n";

// `n` classes of a dozen fields and two indexes each.
std::string classes(int n) {
    std::string text = "declare database h;\n";
    for (int i = 0; i < n; i++)
        text += "class C" + std::to_string(i) +
                " {\n  signed<4> a; string b; unsigned<8> c; double d; char<16> e; boolean f;\n"
                "  float g; signed<2> h; date i; nullable signed<4> j; vector<signed<4>> k; nstring l;\n"
                "  unique tree<a> byA; hash<b> byB[1000];\n};\n";
    return text;
}

}  // namespace

// Output that does not fit (a file size limit; a full disk fails the same
// write): status 255 and no output, temporary or earlier output left.
TEST(OutputFiles, AWriteThatFailsIsAnError) {
    TempDir dir;
    dir.write("s.zyl", classes(200));
    mkdir(dir.file("out").c_str(), 0755);
    dir.write("out/h.c", "/* an earlier output */\n");
    auto const limit = [] {  // writes past the limit fail with EFBIG instead of a signal
        signal(SIGXFSZ, SIG_IGN);
        rlimit const small = {64 * 1024, 64 * 1024};
        setrlimit(RLIMIT_FSIZE, &small);
    };
    ProcessResult const r =
        runProgram({cliPath(), "--cpp", "--cs", "--java", "--xml-schema", "-o", "out", "s.zyl"}, dir.path(), limit);
    EXPECT_EQ(r.status, 255);
    EXPECT_EQ(r.err, "File s.zyl; error: cannot write output file \"out/h.h\": File too large\n\n");
    EXPECT_EQ(r.out, "Error executing DDL compiler\n");
    EXPECT_EQ(listDir(dir.file("out")), std::vector<std::string>());
}

// A link named like an output is replaced, its target left alone, by a
// complete compile and a failed one. A link named like a skeleton, even a
// dangling one, is a person's skeleton: ".new" is written beside it.
TEST(OutputFiles, LinksAreReplacedNotFollowed) {
    std::string const good = "declare database h;\nclass A { string s; userdef tree<s> u; };\n";
    for (bool const complete : {true, false}) {
        SCOPED_TRACE(complete ? "complete" : "failed");
        TempDir dir;
        dir.write("s.zyl", complete ? good : good + "class B { NoSuchType x; };\n");
        dir.write("victim.h", kVictim);
        dir.write("victim.d", kVictim);
        mkdir(dir.file("out").c_str(), 0755);
        ASSERT_EQ(symlink("../victim.h", dir.file("out/h.h").c_str()), 0);
        ASSERT_EQ(symlink("../victim.d", dir.file("out/h.d").c_str()), 0);
        ASSERT_EQ(symlink("../nowhere_udf.c", dir.file("out/h_udf.c").c_str()), 0);

        ProcessResult const r = runProgram({cliPath(), "-o", "out", "--depfile", "out/h.d", "s.zyl"}, dir.path());
        EXPECT_EQ(readFile(dir.file("victim.h")), kVictim);
        EXPECT_EQ(readFile(dir.file("victim.d")), kVictim);
        // No nowhere_udf.c either.
        EXPECT_EQ(dir.list(), (std::vector<std::string>{"out", "s.zyl", "victim.d", "victim.h"}));
        EXPECT_TRUE(is_symlink(dir.file("out/h_udf.c")));
        if (complete) {
            EXPECT_EQ(r.status, 0) << r.err;
            EXPECT_EQ(r.err, "warning: file h_udf.c exists, generate h_udf.c.new\n");
            EXPECT_EQ(listDir(dir.file("out")),
                      (std::vector<std::string>{"h.c", "h.d", "h.h", "h_udf.c", "h_udf.c.new"}));
            EXPECT_FALSE(is_symlink(dir.file("out/h.h")) || is_symlink(dir.file("out/h.d")));
            EXPECT_NE(readFile(dir.file("out/h.h")).find("#define __ZYL__h__H__"), std::string::npos);
        } else {
            EXPECT_EQ(r.status, 255);
            // The links of the outputs went with the outputs.
            EXPECT_EQ(listDir(dir.file("out")), std::vector<std::string>{"h_udf.c"});
        }
    }
}

// SIGINT or SIGTERM mid-compile: the earlier outputs stay byte for byte, no
// temporary is left.
TEST(OutputFiles, AnInterruptLeavesTheEarlierOutputs) {
    TempDir dir;
    dir.write("s.zyl", classes(3000));
    mkdir(dir.file("out").c_str(), 0755);
    std::vector<std::string> const argv = {cliPath(), "--cpp", "-o", "out", "s.zyl"};
    ProcessResult const first = runProgram(argv, dir.path());
    ASSERT_EQ(first.status, 0) << first.err;
    std::vector<std::string> const names = {"h.c", "h.h", "h.hpp"};
    ASSERT_EQ(listDir(dir.file("out")), names);
    std::vector<std::string> before;
    for (std::string const& name : names)
        before.push_back(readFile(dir.file("out/" + name)));

    for (int sig : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(strsignal(sig));
        pid_t const pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            if (chdir(dir.path().c_str()) != 0)
                _exit(126);
            // As a shell runs a command in the foreground.
            signal(SIGINT, SIG_DFL);
            signal(SIGTERM, SIG_DFL);
            if (std::freopen("/dev/null", "w", stdout) == nullptr)
                _exit(125);
            execProgram(argv);
        }
        // Once the first temporary is there the outputs are being written.
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (listDir(dir.file("out")).size() == names.size() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        kill(pid, sig);
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == sig) << "status " << status;
        EXPECT_EQ(listDir(dir.file("out")), names);
        for (size_t i = 0; i < names.size(); i++)
            EXPECT_TRUE(readFile(dir.file("out/" + names[i])) == before[i]) << names[i] << " changed";
    }
}
