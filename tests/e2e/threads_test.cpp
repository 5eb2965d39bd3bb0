// The run-time entry from many threads at once gives exactly what each call
// gives alone: return code, reports, database name and every byte of the
// dictionary. The tsan preset runs it under ThreadSanitizer.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "support/dict_memory.h"
#include "support/process.h"
#include "zylcomp.h"

namespace {

std::string const kCorpus = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/corpus/";

struct Input {
    std::string text;
    zyl_dict_load_params_t params;
};

void collect(int type, char const* message, char const* file, int line, int pos, void* context) {
    *static_cast<std::string*>(context) += std::to_string(type) + " " + file + ":" + std::to_string(line) + ":" +
                                           std::to_string(pos) + " " + message + "\n";
}

std::atomic<int> strayFrees{0};

// The test runtime's deallocator, which knows every block it handed out.
void release(void* block) {
    if (!dictmem::release(block))
        strayFrees++;
}

// What one call gave, all of it as text: return code, reports, database
// name and the dictionary's JSON dump.
std::string load(Input const& in) {
    zyl_dictionary_t* dict = nullptr;
    size_t dictSize = 0;
    char name[64];
    size_t nameSize = sizeof name;
    std::string r;
    int const rc = zyl_db_load_dictionary(in.text.c_str(), &in.params, &dict, &dictSize, name, &nameSize, collect, &r);
    r = std::to_string(rc) + "\n" + r;
    if (rc == ZYL_DICT_LOAD_OK) {
        char* buf = nullptr;
        size_t len = 0;
        FILE* out = open_memstream(&buf, &len);
        zyl_dict_write_json(dict, out);
        std::fclose(out);
        r += std::string(name, nameSize) + "\n" + std::string(buf, len);
        std::free(buf);
        zyl_dict_free(dict, release);
    }
    return r;
}

// A schema of `classes` classes, each with an index; the last one refers to
// an undefined type when `refused`.
std::string generated(int classes, bool refused) {
    std::string s = "declare database g" + std::to_string(classes) + ";\n";
    for (int i = 0; i < classes; i++)
        s += "class c" + std::to_string(i) + " {\n  signed<4> a;\n  string b;\n  char<8> n;\n  tree<a> ka;\n};\n";
    if (refused)
        s += "class bad {\n  undefined_t x;\n};\n";
    return s;
}

std::vector<Input> inputs() {
    std::vector<Input> v;
    zyl_dict_load_params_t p = {};
    p.includeDir = kCorpus.c_str();
    for (std::string const& n : listDir(kCorpus))
        if (n.size() > 4 && n.compare(n.size() - 4, 4, ".zyl") == 0)
            v.push_back({readFile(kCorpus + n), p});
    for (int classes : {1, 40, 300})
        for (bool refused : {false, true})
            v.push_back({generated(classes, refused), p});
    // Refused by each stage: reading, grammar, finishing, layout.
    v.push_back({"declare database r;\n#include \"missing.zyl\"\n", p});
    v.push_back({"declare database r;\nclass c { signed<4> a; ", p});
    v.push_back({"declare database r;\nclass c { signed<4> a; tree<b> k; };\n", p});
    v.push_back({"declare database r;\nstruct s { s inner; };\nclass c { s x; };\n", p});
    zyl_dict_load_params_t wide = p;
    wide.wideOffsets = 1;
    wide.keepFieldOrder = 1;
    v.push_back({v[0].text, wide});
    return v;
}

}  // namespace

TEST(Threads, ConcurrentLoadsGiveTheSerialResults) {
    std::vector<Input> const in = inputs();
    std::vector<std::string> serial;
    int refused = 0;
    for (Input const& i : in) {
        serial.push_back(load(i));
        refused += serial.back().compare(0, 2, "0\n") != 0;
    }
    // The three generated schemas with a bad class, the four above, and the
    // corpus's include file, which declares no database.
    ASSERT_EQ(refused, 8);

    std::atomic<int> first{-1};  // the first input whose result differed
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; t++) {
        threads.emplace_back([&, t] {
            for (int c = 0; c < 200; c++) {
                std::size_t const k = (static_cast<std::size_t>(t) * 37 + static_cast<std::size_t>(c) * 11) % in.size();
                int none = -1;
                if (load(in[k]) != serial[k])
                    first.compare_exchange_strong(none, static_cast<int>(k));
            }
        });
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(first.load(), -1) << (first.load() >= 0 ? in[first.load()].text.substr(0, 200) : "");
    // A legal schema still loads afterwards; every block freed was live.
    EXPECT_EQ(load(in[0]), serial[0]);
    EXPECT_EQ(strayFrees.load(), 0);
}
