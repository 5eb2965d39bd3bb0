// The two JSON forms of a dictionary, as the library's dumper prints them:
// the one gcc builds from a generated {db}.c (tests/runtime/dictjson.c) and
// the one the run-time entry builds (zylcomp --dump-dictionary).
#pragma once

#include <string>
#include <vector>

std::vector<std::string> jsonLines(std::string const& text);
std::string joined(std::vector<std::string> const& lines);

// Brings both forms to the same text where they may differ, so that what
// is left to compare must agree.
void acceptDifferences(std::vector<std::string>& c, std::vector<std::string>& mem);
