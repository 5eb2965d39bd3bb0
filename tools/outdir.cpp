#include "outdir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// The directories made, parents first.
std::vector<std::string> made;
bool keep = false;

bool isDir(std::string const& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Deepest first; rmdir leaves a directory that has something in it.
void removeMade() {
    for (auto it = made.rbegin(); it != made.rend(); ++it)
        ::rmdir(it->c_str());
    made.clear();
}

void removeAtExit() {
    if (!keep)
        removeMade();
}

}  // namespace

bool makeOutputDir(std::string const& path, std::string& error) {
    if (path.empty() || isDir(path))
        return true;
    static bool registered = false;
    if (!registered) {
        std::atexit(removeAtExit);
        registered = true;
    }
    // Every prefix that ends before a separator, then the whole path.
    for (size_t end = 1; end <= path.size(); end++) {
        if (end < path.size() && (path[end] != '/' || path[end - 1] == '/'))
            continue;
        if (end == path.size() && path[end - 1] == '/')
            break;
        std::string const dir = path.substr(0, end);
        if (::mkdir(dir.c_str(), 0777) == 0) {
            made.push_back(dir);
            continue;
        }
        int const cause = errno;
        if (isDir(dir))
            continue;
        error = "cannot create the output directory '" + path + "': ";
        if (cause == EEXIST)
            error += "'" + dir + "' is in the way and is not a directory";
        else
            error += std::strerror(cause);
        removeMade();
        return false;
    }
    return true;
}

void keepOutputDir() { keep = true; }
