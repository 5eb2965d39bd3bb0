// Fuzzes the run-time entry, zyl_db_load_dictionary, with any bytes as
// schema text. Whatever the text, the call returns 0 or 1005 and the
// process lives; a refusal reaches the callback as an error; nothing is
// written into the output directory; and the memory handed out through
// zyl_sys_malloc and zyl_sys_calloc is exactly the dictionary's, which
// zyl_dict_free gives back whole, each block once. What a refused call left
// behind is freed here too, so the leak checker sees only what the compiler
// itself lost.
#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/switches.h"
#include "support/dict_memory.h"
#include "zylcomp.h"

namespace {

std::string outputDir;

[[noreturn]] void fail(char const* what, std::string const& detail = "") {
    std::fprintf(stderr, "load_dictionary_fuzzer: %s%s%s\n", what, detail.empty() ? "" : ": ", detail.c_str());
    std::abort();
}

bool isEmptyDir(std::string const& path) {
    DIR* d = opendir(path.c_str());
    if (d == nullptr)
        return false;
    bool empty = true;
    while (dirent* e = readdir(d))
        if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
            empty = false;
    closedir(d);
    return empty;
}

struct Reports {
    int errors = 0;
    int malformed = 0;
};

void onReport(int type, char const* message, char const* file, int, int, void* context) {
    Reports* r = static_cast<Reports*>(context);
    if (message == nullptr || file == nullptr || (type != 0 && type != 1))
        r->malformed++;
    if (type == 1)
        r->errors++;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    char tmpl[] = "/tmp/zylcomp-fuzz-out-XXXXXX";
    if (mkdtemp(tmpl) == nullptr)
        fail("no temporary directory");
    outputDir = tmpl;
    std::atexit([] { rmdir(outputDir.c_str()); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    // The entry takes NUL-terminated text: a NUL byte ends the schema.
    std::string const text(reinterpret_cast<char const*>(data), size);
    zyl_dict_load_params_t const params = FuzzSwitches(text).params(outputDir.c_str(), ZYLCOMP_FUZZ_INCLUDE_DIR);

    zyl_dictionary_t* dict = nullptr;
    size_t dictSize = 0;
    char dbName[64];
    size_t dbNameSize = sizeof dbName;
    Reports reports;
    int const rc =
        zyl_db_load_dictionary(text.c_str(), &params, &dict, &dictSize, dbName, &dbNameSize, onReport, &reports);

    if (reports.malformed != 0)
        fail("a report with a null text or an unknown kind");
    if (rc == ZYL_DICT_LOAD_OK) {
        if (dict == nullptr || dictSize != sizeof(zyl_dictionary_t))
            fail("return code 0 without a dictionary");
        if (dbNameSize > sizeof dbName || (dbNameSize > 0 && dbName[dbNameSize - 1] != '\0'))
            fail("a database name without its NUL");
        std::string const owned = dictmem::checkOwnedBy(dict);
        if (!owned.empty())
            fail("dictionary memory", owned);
        std::size_t const live = dictmem::live();
        std::size_t wrong = 0;
        std::size_t const freed = dictmem::freeDictionary(dict, &wrong);
        if (wrong != 0)
            fail("zyl_dict_free passed a pointer that was no live block", std::to_string(wrong));
        if (freed != live)
            fail("zyl_dict_free left blocks", std::to_string(live - freed));
    } else if (rc == ZYL_DICT_LOAD_REFUSED) {
        if (dict != nullptr)
            fail("a dictionary stored on a refusal");
        if (reports.errors == 0)
            fail("a refusal that reported no error");
    } else {
        fail("return code", std::to_string(rc));
    }
    if (!isEmptyDir(outputDir))
        fail("a file written into the output directory", outputDir);
    dictmem::releaseAll();
    return 0;
}
