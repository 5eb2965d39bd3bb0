// The schema examples of the manual (doc/*.md), read by the convention of
// its fenced blocks:
//   ```zyl-error [OPTIONS]  a schema that must be refused; the ```text block
//                           right after it holds all of standard error
//   ```zyl [OPTIONS]        a schema that must compile; a ```text block right
//                           after it holds its warnings
//   ```zyl file=NAME        written as NAME beside the next compiled block
//   ```zyl-fragment         not compiled
// Each schema is s.zyl in a fresh directory, run as `zylcomp [OPTIONS] s.zyl`.
#pragma once

#include <string>
#include <utility>
#include <vector>

struct DocExample {
    std::string where;  // file:line of the opening fence
    bool refused;       // zyl-error
    std::vector<std::string> args;
    std::string schema;
    std::string err;    // the text block after it, without trailing line feeds
    bool answered;      // a text block follows right after it
    std::vector<std::pair<std::string, std::string>> files;  // name, text
};

// Every compiled example of every doc/*.md, in file order.
std::vector<DocExample> docExamples();
