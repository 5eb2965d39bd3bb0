// Writes a large schema and its FlatBuffers equivalent, for timing the
// compiler against flatc on the same shape.
//
//   bench_gen_schema CLASSES FIELDS OUT-DIR
//
// gives OUT-DIR/bench.zyl and OUT-DIR/bench.fbs. Every class has FIELDS
// fields of mixed kinds (a cycle of 20), a unique tree on its first field
// and a hash index on its second; every fifth class also holds a struct of
// its own. The FlatBuffers schema has one table per class with the same
// fields, one struct per struct, and the first field as the table's key.
// A hash index has no counterpart there.
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

struct Kind {
    char const* zyl;    // declaration in front of the name, e.g. "unsigned<8>"
    char const* suffix; // after the name, e.g. "[4]"
    char const* fbs;    // FlatBuffers type
};

// The first two kinds carry the indexes: the tree key and the hash key.
Kind const kinds[] = {
    {"signed<4>", "", "int"},
    {"string", "", "string"},
    {"unsigned<8>", "", "ulong"},
    {"double", "", "double"},
    {"char<16>", "", "string"},
    {"boolean", "", "bool"},
    {"float", "", "float"},
    {"signed<2>", "", "short"},
    {"unsigned<1>", "", "ubyte"},
    {"Color", "", "Color"},
    {"date", "", "uint"},
    {"nullable signed<4>", "", "int = null"},
    {"vector<signed<4>>", "", "[int]"},
    {"signed<8>", "", "long"},
    {"unsigned<2>", "", "ushort"},
    {"datetime", "", "ulong"},
    {"nstring", "", "string"},
    {"numeric<10,2>", "", "long"},
    {"unsigned<4>", "[4]", "[uint]"},
    {"varbinary", "", "[ubyte]"},
};
int const kindCount = sizeof kinds / sizeof kinds[0];

bool writeFile(std::string const& path, std::string const& text) {
    FILE* f = std::fopen(path.c_str(), "w");
    if (f == nullptr || std::fwrite(text.data(), 1, text.size(), f) != text.size() || std::fclose(f) != 0) {
        std::perror(path.c_str());
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: bench_gen_schema CLASSES FIELDS OUT-DIR\n");
        return 2;
    }
    long const classes = std::atol(argv[1]);
    long const fields = std::atol(argv[2]);
    std::string const dir = argv[3];
    if (classes < 1 || fields < 2) {
        std::fprintf(stderr, "bench_gen_schema: at least 1 class and 2 fields\n");
        return 2;
    }

    std::string zyl = "// " + std::to_string(classes) + " classes of " + std::to_string(fields) +
                      " fields, made by bench_gen_schema.\ndeclare database bench;\n\n"
                      "enum Color { RED, GREEN, BLUE };\n\n";
    std::string fbs = "// The same " + std::to_string(classes) + " tables, made by bench_gen_schema.\n"
                      "namespace bench;\n\nenum Color : byte { RED, GREEN, BLUE }\n\n";

    for (long c = 0; c < classes; c += 5) {
        std::string const n = std::to_string(c);
        zyl += "struct Pos" + n + " { signed<4> x; signed<4> y; double z; };\n";
        fbs += "struct Pos" + n + " { x:int; y:int; z:double; }\n";
    }

    for (long c = 0; c < classes; c++) {
        std::string const n = std::to_string(c);
        zyl += "\nclass C" + n + " {\n";
        fbs += "\ntable C" + n + " {\n";
        for (long f = 0; f < fields; f++) {
            Kind const& k = kinds[f % kindCount];
            std::string const name = "f" + std::to_string(f);
            zyl += std::string("    ") + k.zyl + " " + name + k.suffix + ";\n";
            fbs += "    " + name + ":" + k.fbs + (f == 0 ? " (key)" : "") + ";\n";
        }
        if (c % 5 == 0) {
            zyl += "    Pos" + n + " pos;\n";
            fbs += "    pos:Pos" + n + ";\n";
        }
        zyl += "\n    unique tree<f0> byF0;\n    hash<f1> byF1[1000];\n};\n";
        fbs += "}\n";
    }
    fbs += "\nroot_type C0;\n";

    return writeFile(dir + "/bench.zyl", zyl) && writeFile(dir + "/bench.fbs", fbs) ? 0 : 1;
}
