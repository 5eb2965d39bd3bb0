// Running code or programs in a child process and capturing what they print,
// so tests can check exact diagnostics and exit statuses of code that ends
// the process.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct ProcessResult {
    std::string out;  // standard output
    std::string err;  // standard error
    int status = -1;  // exit status, or 128 + signal number
};

// Runs `body` in a forked child; a body that returns exits with status 0.
ProcessResult runInChild(std::function<void()> const& body);

// Runs a program with arguments in `cwd` (empty: the current directory).
// `inChild`, when given, runs in the child just before the program starts,
// to set limits that the program inherits.
ProcessResult runProgram(std::vector<std::string> const& argv, std::string const& cwd = "",
                         std::function<void()> const& inChild = {});

// In a forked child: becomes the program, or exits with 127.
[[noreturn]] void execProgram(std::vector<std::string> const& argv);

// The path of the built command-line compiler.
std::string cliPath();

// A fresh, empty directory for one test; removed with everything in it by
// the destructor.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& path() const { return m_path; }
    std::string file(std::string const& name) const { return m_path + "/" + name; }
    // Writes `text` to `name` inside the directory and returns its path.
    std::string write(std::string const& name, std::string const& text) const;
    // The names of the files in the directory, sorted.
    std::vector<std::string> list() const;

private:
    std::string m_path;
};

std::string readFile(std::string const& path);

// The names in a directory, sorted, dot files included; none when it
// cannot be read.
std::vector<std::string> listDir(std::string const& path);
