// Random schemas drawn from the grammar, with random command lines, for
// tests/e2e/schema_gen_test.cpp and tests/schemagen/run.sh. The generator
// has its own random numbers (splitmix64) and never draws twice in an
// expression whose order C++ leaves open: a seed gives the same case on
// every platform.
#pragma once

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

struct SchemaCase {
    // Invalid: one rule broken on purpose; Either: a random edit of a valid
    // text, which may go either way as long as it does so cleanly.
    enum Expect { Valid, Invalid, Either };
    // Faults of the generated text that the case may show: drawn, not
    // avoided, so that the counts show how often they come (see kKnown of
    // schema_gen_test.cpp).
    enum Known { DirectPrefix, KeywordIndex, ColumnsOnly, RelativeCodes, PropertyName };

    std::uint64_t seed = 0;
    std::string schema;                                         // the text of s.zyl
    std::vector<std::pair<std::string, std::string>> includes;  // further files: name, text
    std::vector<std::string> options;                           // command-line options, before s.zyl
    Expect expect = Valid;
    std::string fault;  // what was broken or edited
    std::set<Known> mayFail;
    // The run-time entry refuses a sequence of structs, and a direct struct
    // held by value lies elsewhere in memory than the C compiler puts it in
    // {db}.c: their dictionaries cannot be compared.
    bool sequenceOfStructs = false, holdsDirect = false;

    bool has(char const* option) const { return std::find(options.begin(), options.end(), option) != options.end(); }
};

SchemaCase generateSchema(std::uint64_t seed);

// The case as a reader can reproduce it: seed, command line, files.
std::string describe(SchemaCase const& c);
