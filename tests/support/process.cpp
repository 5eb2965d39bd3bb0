#include "support/process.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

std::string drain(int fd) {
    std::string s;
    char buf[4096];
    ssize_t n;
    while ((n = read(fd, buf, sizeof buf)) > 0)
        s.append(buf, static_cast<size_t>(n));
    return s;
}

ProcessResult runForked(std::function<void()> const& child) {
    std::fflush(stdout);
    std::fflush(stderr);
    // Files, not pipes: a child that prints a lot must not block on a full pipe.
    FILE* outFile = std::tmpfile();
    FILE* errFile = std::tmpfile();
    if (!outFile || !errFile)
        throw std::runtime_error("tmpfile failed");
    pid_t pid = fork();
    if (pid < 0)
        throw std::runtime_error("fork failed");
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
    lseek(fileno(outFile), 0, SEEK_SET);
    lseek(fileno(errFile), 0, SEEK_SET);
    r.out = drain(fileno(outFile));
    r.err = drain(fileno(errFile));
    std::fclose(outFile);
    std::fclose(errFile);
    return r;
}

}  // namespace

ProcessResult runInChild(std::function<void()> const& body) { return runForked(body); }

ProcessResult runProgram(std::vector<std::string> const& argv, std::string const& cwd,
                         std::function<void()> const& inChild) {
    return runForked([&] {
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

std::string cliPath() {
#ifdef ZYLCOMP_CLI
    return ZYLCOMP_CLI;
#else
    return "";
#endif
}

TempDir::TempDir() {
    std::string tmpl = "/tmp/zylcomp-test-XXXXXX";
    std::vector<char> buf(tmpl.begin(), tmpl.end());
    buf.push_back('\0');
    if (mkdtemp(buf.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    m_path = buf.data();
}

TempDir::~TempDir() {
    std::string cmd = "chmod -R u+w '" + m_path + "' 2>/dev/null; rm -rf '" + m_path + "'";
    if (std::system(cmd.c_str()) != 0) {
        // Leftovers in /tmp are harmless; nothing to do.
    }
}

std::string TempDir::write(std::string const& name, std::string const& text) const {
    std::string p = file(name);
    std::ofstream f(p, std::ios::binary);
    f << text;
    return p;
}

std::vector<std::string> listDir(std::string const& path) {
    std::vector<std::string> names;
    if (DIR* d = opendir(path.c_str())) {
        while (dirent* e = readdir(d)) {
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
                names.push_back(e->d_name);
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> TempDir::list() const { return listDir(m_path); }

std::string readFile(std::string const& path) {
    std::ifstream f(path, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}
