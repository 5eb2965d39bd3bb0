// Reads generated schema texts of growing size through the token reader
// and prints the time per line, so that the cost is seen to stay linear.
//
//   bench_read_lines [lines ...]      default: 10000 100000 1000000
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "frontend/diagnostics.h"
#include "frontend/parser.h"

namespace {

// Field-like declarations with macros, line and block comments, a comment
// over two lines and a hex constant, repeated in a cycle of 8 lines.
std::string makeSchema(long lines) {
    std::string text = "#define STR_LEN 64\n#define ID_TYPE uint8\n";
    for (long i = 2; i < lines; i++) {
        std::string n = std::to_string(i);
        switch (i % 8) {
        case 0:
            text += "class c" + n + " {\n";
            break;
        case 1:
            text += "    ID_TYPE id" + n + ";  // identifier\n";
            break;
        case 2:
            text += "    char<STR_LEN> name" + n + ";\n";
            break;
        case 3:
            text += "    int4 count" + n + "; /* counted */\n";
            break;
        case 4:
            text += "    /* a comment\n";
            break;
        case 5:
            text += "       over two lines */ double ratio" + n + " = 0X1F;\n";
            break;
        case 6:
            text += "    tree<id" + n + "> by_id" + n + ";\n";
            break;
        default:
            text += "};\n";
            break;
        }
    }
    return text;
}

struct Result {
    long tokens = 0;
    double seconds = 0;
};

Result readAll(std::string const& dir, std::string const& path) {
    FILE* f = std::fopen(path.c_str(), "r");
    if (f == nullptr) {
        std::perror(path.c_str());
        std::exit(1);
    }
    ErrReporter reporter;  // the first error ends the run with its message
    Result r;
    auto start = std::chrono::steady_clock::now();
    {
        Parser parser(f, "bench.zyl", &reporter, dir.c_str(), dir.c_str());
        while (!parser.get().empty())
            r.tokens++;
    }
    r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::fclose(f);
    return r;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<long> sizes;
    for (int i = 1; i < argc; i++)
        sizes.push_back(std::atol(argv[i]));
    if (sizes.empty())
        sizes = {10000, 100000, 1000000};

    char dirBuf[] = "/tmp/zylcomp-bench-XXXXXX";
    if (mkdtemp(dirBuf) == nullptr) {
        std::perror("mkdtemp");
        return 1;
    }
    std::string dir = dirBuf;
    std::string path = dir + "/bench.zyl";

    std::printf("%10s %10s %10s %10s\n", "lines", "tokens", "ms", "ns/line");
    for (long lines : sizes) {
        std::string text = makeSchema(lines);
        FILE* out = std::fopen(path.c_str(), "w");
        if (out == nullptr || std::fwrite(text.data(), 1, text.size(), out) != text.size()) {
            std::perror(path.c_str());
            return 1;
        }
        std::fclose(out);

        // Best of three, to keep the page cache and the first touch out.
        Result best;
        for (int run = 0; run < 3; run++) {
            Result r = readAll(dir, path);
            if (run == 0 || r.seconds < best.seconds)
                best = r;
        }
        std::printf("%10ld %10ld %10.1f %10.1f\n", lines, best.tokens, best.seconds * 1e3,
                    best.seconds * 1e9 / static_cast<double>(lines));
        unlink(path.c_str());
    }
    rmdir(dir.c_str());
    return 0;
}
