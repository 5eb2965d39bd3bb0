// Loads a schema file through zyl_db_load_dictionary and prints how long
// the call took and how many bytes of dictionary it allocated:
//
//   bench_load_dictionary SCHEMA-FILE
//
// prints "SECONDS BYTES CPU-SECONDS": the wall time of the call, the
// dictionary's bytes and the processor time of the call. Only the call is
// timed, not the reading of the file. #include looks beside the schema, as
// in a batch compile.
#include <time.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "zylcomp.h"

namespace {

size_t dictionaryBytes = 0;

void printReport(int type, char const* message, char const* file, int line, int pos, void*) {
    std::fprintf(stderr, "%s:%d:%d: %s: %s\n", file, line, pos, type == 1 ? "error" : "warning", message);
}

}  // namespace

// The dictionary's allocators, counted: these take the place of the
// library's weak defaults, as a database runtime's would.
extern "C" void* zyl_sys_malloc(size_t size) {
    dictionaryBytes += size;
    return std::malloc(size);
}
extern "C" void* zyl_sys_calloc(size_t count, size_t size) {
    dictionaryBytes += count * size;
    return std::calloc(count, size);
}

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_load_dictionary SCHEMA-FILE\n");
        return 2;
    }
    std::string const path = argv[1];
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        std::perror(path.c_str());
        return 1;
    }
    std::string text;
    char buf[65536];
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;)
        text.append(buf, n);
    std::fclose(f);

    std::string::size_type slash = path.rfind('/');
    std::string const dir = slash == std::string::npos ? "." : path.substr(0, slash);
    zyl_dict_load_params_t params = {};
    params.includeDir = dir.c_str();

    zyl_dictionary_t* dict = nullptr;
    size_t dictSize = 0;
    char dbName[256];
    size_t dbNameSize = sizeof dbName;
    timespec cpuStart = {}, cpuEnd = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpuStart);
    auto start = std::chrono::steady_clock::now();
    int rc = zyl_db_load_dictionary(text.c_str(), &params, &dict, &dictSize, dbName, &dbNameSize, printReport,
                                    nullptr);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpuEnd);
    double cpu = static_cast<double>(cpuEnd.tv_sec - cpuStart.tv_sec) +
                 static_cast<double>(cpuEnd.tv_nsec - cpuStart.tv_nsec) * 1e-9;
    if (rc != ZYL_DICT_LOAD_OK) {
        std::fprintf(stderr, "bench_load_dictionary: the schema was refused (%d)\n", rc);
        return 1;
    }
    std::printf("%.6f %zu %.6f\n", seconds, dictionaryBytes, cpu);
    return 0;
}
