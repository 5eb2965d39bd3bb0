// The dependency file of --depfile: one make rule that tells a build tool
// (make, Ninja, CMake's DEPFILE) which files a compile read, so that a
// change to any #include file of the schema makes it compile again.
#pragma once

#include <string>
#include <vector>

// The rule as text: every target, a colon, then the prerequisites, each
// once in the order given. Every prerequisite but the first (the schema)
// also gets an empty rule of its own, so that make does not stop when an
// included file is deleted later. Blanks, '#' and '$' in paths are escaped.
std::string depfileText(std::vector<std::string> const& targets, std::vector<std::string> const& prerequisites);

// Writes depfileText() to `path`; false when the file cannot be written.
bool writeDepfile(std::string const& path, std::vector<std::string> const& targets,
                  std::vector<std::string> const& prerequisites);
