#include "depfile.h"

#include <algorithm>
#include <cstdio>

namespace {

// A path as a make rule spells it.
std::string escaped(std::string const& path) {
    std::string out;
    for (char c : path) {
        if (c == ' ' || c == '\t' || c == '#')
            out += '\\';
        else if (c == '$')
            out += '$';
        out += c;
    }
    return out;
}

}  // namespace

std::string depfileText(std::vector<std::string> const& targets, std::vector<std::string> const& prerequisites) {
    // A file included twice (behind an #ifndef guard, say) is named once.
    std::vector<std::string> unique;
    for (std::string const& p : prerequisites) {
        if (std::find(unique.begin(), unique.end(), p) == unique.end())
            unique.push_back(p);
    }

    std::string text;
    for (size_t i = 0; i < targets.size(); i++)
        text += (i == 0 ? "" : " ") + escaped(targets[i]);
    text += ":";
    for (std::string const& p : unique)
        text += " \\\n  " + escaped(p);
    text += "\n";
    for (size_t i = 1; i < unique.size(); i++)
        text += "\n" + escaped(unique[i]) + ":\n";
    return text;
}

bool writeDepfile(std::string const& path, std::vector<std::string> const& targets,
                  std::vector<std::string> const& prerequisites) {
    std::string text = depfileText(targets, prerequisites);
    FILE* f = std::fopen(path.c_str(), "w");
    if (f == nullptr)
        return false;
    bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    // A short file would look complete to the build tool: better none.
    if (std::fclose(f) != 0 || !written) {
        std::remove(path.c_str());
        return false;
    }
    return true;
}
