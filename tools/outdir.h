// The output directory of -o, made when it is missing, as `mkdir -p` does.
#pragma once

#include <string>

// Makes `path` with every missing parent. On failure `error` says why, and
// no directory made here is left behind.
bool makeOutputDir(std::string const& path, std::string& error);

// A compile that does not complete leaves no output, and so no directory
// that makeOutputDir made for it either: at exit those still empty are
// removed, unless this was called first.
void keepOutputDir();
