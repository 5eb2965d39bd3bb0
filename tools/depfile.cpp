#include "depfile.h"

#include <algorithm>
#include <cstdio>

#include "foundation/outfile.h"
#include "foundation/outstream.h"

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
    // Written beside its name and moved over it whole, as the outputs are:
    // a build tool never reads half a rule, and a link is not followed.
    InterruptCleanup interrupts;
    OutFileSet files;
    int error = 0;
    IOutStream* out = files.open(path.c_str(), error);
    if (out != nullptr) {
        out->write(text);
        delete out;
        mstring failed;
        if (files.firstError(failed) == 0 && files.commit(failed) == 0)
            return true;
    }
    // The rule of an earlier compile would name what this one did not.
    std::remove(path.c_str());
    return false;
}
