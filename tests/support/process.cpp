#include "support/process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

// What a file written by the child holds, from its start; closes it.
std::string drain(FILE* f) {
    std::string s;
    char buf[4096];
    std::rewind(f);
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;)
        s.append(buf, n);
    std::fclose(f);
    return s;
}

}  // namespace

ProcessResult runInChild(std::function<void()> const& child) {
    std::fflush(stdout);
    std::fflush(stderr);
    // Files, not pipes: a child that prints a lot must not block on a full pipe.
    FILE* outFile = std::tmpfile();
    FILE* errFile = std::tmpfile();
    pid_t const pid = outFile && errFile ? fork() : -1;
    if (pid < 0)
        throw std::runtime_error("tmpfile or fork failed");
    if (pid == 0) {
        dup2(fileno(outFile), 1);
        dup2(fileno(errFile), 2);
        child();
        std::fflush(stdout);
        std::fflush(stderr);
        _exit(0);
    }
    int wstatus = 0;
    waitpid(pid, &wstatus, 0);
    ProcessResult r;
    r.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : 128 + WTERMSIG(wstatus);
    r.out = drain(outFile);
    r.err = drain(errFile);
    return r;
}

ProcessResult runProgram(std::vector<std::string> const& argv, std::string const& cwd,
                         std::function<void()> const& inChild) {
    return runInChild([&] {
        if (!cwd.empty() && chdir(cwd.c_str()) != 0)
            _exit(126);
        if (inChild)
            inChild();
        execProgram(argv);
    });
}

void execProgram(std::vector<std::string> const& argv) {
    std::vector<char*> args;
    for (std::string const& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    execv(args[0], args.data());
    _exit(127);
}

TempDir::TempDir() : m_path("/tmp/zylcomp-test-XXXXXX") {
    if (mkdtemp(&m_path[0]) == nullptr)
        throw std::runtime_error("mkdtemp failed");
}

TempDir::~TempDir() {
    // Leftovers in /tmp are harmless: a failure is no matter.
    std::string const cmd = "chmod -R u+w '" + m_path + "' 2>/dev/null; rm -rf '" + m_path + "'";
    (void)!std::system(cmd.c_str());
}

std::string TempDir::write(std::string const& name, std::string const& text) const {
    std::ofstream(file(name), std::ios::binary) << text;
    return file(name);
}

std::vector<std::string> listDir(std::string const& path) {
    std::vector<std::string> names;
    std::error_code ec;
    for (auto const& e : std::filesystem::directory_iterator(path, ec))
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string readFile(std::string const& path) {
    std::ostringstream ss;
    ss << std::ifstream(path, std::ios::binary).rdbuf();
    return ss.str();
}
