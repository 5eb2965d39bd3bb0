// Code or programs run in a child process, with what they print, so that
// tests can check the exact diagnostics and exit status of code that ends
// the process; and the temporary directories they run in.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct ProcessResult {
    std::string out, err;  // standard output and error
    int status = -1;       // exit status, or 128 + signal number
};

// Runs `body` in a forked child; a body that returns exits with status 0.
ProcessResult runInChild(std::function<void()> const& body);

// Runs a program in `cwd` (empty: the current directory); `inChild` runs in
// the child just before it starts, to set limits that it inherits.
ProcessResult runProgram(std::vector<std::string> const& argv, std::string const& cwd = "",
                         std::function<void()> const& inChild = {});

// In a forked child: becomes the program, or exits with 127.
[[noreturn]] void execProgram(std::vector<std::string> const& argv);

inline std::string cliPath() { return ZYLCOMP_CLI; }  // the built command-line compiler

// The names in a directory, sorted, dot files included; none when it cannot
// be read.
std::vector<std::string> listDir(std::string const& path);

// A fresh, empty directory, removed with all it holds by the destructor.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& path() const { return m_path; }
    std::string file(std::string const& name) const { return m_path + "/" + name; }
    std::string write(std::string const& name, std::string const& text) const;  // returns the file's path
    std::vector<std::string> list() const { return listDir(m_path); }  // the names in it, sorted

private:
    std::string m_path;
};

std::string readFile(std::string const& path);
