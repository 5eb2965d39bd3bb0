// Random schemas drawn from the grammar of the schema language, with random
// command lines, for the property test of tests/e2e/schema_gen_test.cpp and
// the on-demand runs of tests/schemagen/run.sh. A seed gives the same case
// on every platform: the generator has its own random numbers, and no
// expression of it draws twice where C++ leaves the order open.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// splitmix64: small, fast and the same everywhere, unlike the standard
// library's distributions.
class SchemaRng {
public:
    explicit SchemaRng(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t next();
    // A number from 0 to n - 1; n must be above 0.
    unsigned below(unsigned n) { return static_cast<unsigned>(next() % n); }
    // True with the chance percent / 100.
    bool chance(unsigned percent) { return below(100) < percent; }
    template <class T>
    T const& pick(std::vector<T> const& v) { return v[below(static_cast<unsigned>(v.size()))]; }

private:
    std::uint64_t m_state;
};

struct SchemaCase {
    enum Expect {
        Valid,    // drawn within the rules: the compile must succeed
        Invalid,  // one rule broken on purpose (see `fault`): it must be refused
        Either,   // a random edit of a valid text: either outcome, as long as it is a clean one
    };

    std::uint64_t seed = 0;
    std::string db;                                            // the database name
    std::string schema;                                        // the text of s.zyl
    std::vector<std::pair<std::string, std::string>> includes;  // further files: name, text
    std::vector<std::string> options;                          // command-line options, before s.zyl
    Expect expect = Valid;
    std::string fault;  // what was broken or edited

    // Generated text that could not compile, which the compiler refuses at
    // the declaration at fault (see kRefusals of api_compile_test.cpp); drawn,
    // not avoided, so that the counts show how often they come.
    bool mayFailDirectPrefix = false;  // a field holding a direct struct under --prefix-names
    bool mayFailKeywordIndex = false;  // a thick tree over a string under --cpp
    bool mayFailColumnsOnly = false;   // a class of sequences without a sequence field under --cpp
    // The generated text the system keeps as it writes it (see kModes of
    // api_compile_test.cpp); a flagged case's compile may fail only with
    // every error line naming its fault.
    bool mayFailRelativeCodes = false;  // C: --relative-class-codes
    // Neither: under --cpp-runtime-header a field named like a member
    // function of another field ("a_get" beside "a") gets a property of
    // that name, which clashes with the function in {db}.hpp.
    bool mayFailPropertyName = false;

    // The run-time entry refuses a sequence of structs, which the batch
    // compile accepts, so the two dictionaries cannot be compared then.
    bool sequenceOfStructs = false;
    // A direct struct held by value is placed by the C compiler in {db}.c
    // and like any other field in memory, so offsets differ between them.
    bool holdsDirect = false;

    bool has(char const* option) const;
};

SchemaCase generateSchema(std::uint64_t seed);

// The case as a reader can reproduce it: seed, command line, files.
std::string describe(SchemaCase const& c);
