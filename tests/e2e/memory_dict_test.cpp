// The run-time entry, zyl_db_load_dictionary: its dictionary against the
// one the generated {db}.c builds, its return codes, parameters and
// reports, and every row of the batch message tables.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "frontend/diagnostics.h"
#include "support/dict_json.h"
#include "support/dict_memory.h"
#include "support/doc_examples.h"
#include "support/message_rows.h"
#include "support/process.h"
#include "zylcomp.h"

namespace {

std::string const kCorpus = std::string(ZYLCOMP_TESTS_DIR) + "/schemas/corpus/";
std::string const kRuntime = std::string(ZYLCOMP_TESTS_DIR) + "/runtime";

struct CorpusCase {
    char const* db;  // tests/schemas/corpus/{db}.zyl; a {db}.h beside it is forced into the C build
    std::vector<std::string> options;
};

void PrintTo(CorpusCase const& k, std::ostream* os) {
    *os << k.db;
    for (std::string const& o : k.options)
        *os << " " << o;
}

class Corpus : public ::testing::TestWithParam<CorpusCase> {};

TEST_P(Corpus, BothFormsOfTheDictionaryAgree) {
    if (::access(ZYLCOMP_TEST_CC, X_OK) != 0)
        GTEST_SKIP() << "no C compiler";
    CorpusCase const& k = GetParam();
    std::string const schema = kCorpus + k.db + ".zyl";

    TempDir memDir;
    std::vector<std::string> argv = {cliPath(), "--dump-dictionary"};
    argv.insert(argv.end(), k.options.begin(), k.options.end());
    argv.push_back(schema);
    ProcessResult mem = runProgram(argv, memDir.path());
    ASSERT_EQ(mem.status, 0) << mem.err;
    EXPECT_EQ(memDir.list(), std::vector<std::string>{}) << "the run-time entry wrote files";

    TempDir out;
    argv.erase(argv.begin() + 1);
    argv.insert(argv.end() - 1, {"-o", out.path()});
    ProcessResult batch = runProgram(argv);
    ASSERT_EQ(batch.status, 0) << batch.err;
    std::vector<std::string> cc = {ZYLCOMP_TEST_CC, "-std=c99", "-Wall", "-Werror", "-I" + kRuntime,
                                   "-I" ZYLCOMP_INCLUDE_DIR, "-DGET_DICTIONARY=" + std::string(k.db) +
                                   "_get_dictionary", "-ffunction-sections", "-Wl,--gc-sections"};
    cc.insert(cc.end(), {kRuntime + "/dictjson.c", std::string(k.db) + ".c", "-L" ZYLCOMP_LIB_DIR, "-lzylcomp",
                         "-Wl,-rpath," ZYLCOMP_LIB_DIR, "-o", "json"});
    ProcessResult built = runProgram(cc, out.path());
    ASSERT_EQ(built.status, 0) << built.err;
    ProcessResult fromC = runProgram({out.file("json")});
    ASSERT_EQ(fromC.status, 0) << fromC.err;

    std::vector<std::string> c = jsonLines(fromC.out), m = jsonLines(mem.out);
    acceptDifferences(c, m);
    EXPECT_EQ(joined(m), joined(c));
}

// What SchemaGen's random schemas leave out: direct structs held by value,
// an oid of an 8-byte integer and wide characters, no class, all hidden.
INSTANTIATE_TEST_SUITE_P(Schemas, Corpus,
                         ::testing::Values(CorpusCase{"direct", {"-c"}}, CorpusCase{"direct", {"--dynamic-dict"}},
                                           CorpusCase{"oidy", {"-c"}}, CorpusCase{"empty", {}},
                                           CorpusCase{"hidden", {"-c", "--hide-all"}}));

// ---------------------------------------------------------------------------
// The C function itself

struct Report {
    int type;
    std::string msg, file;
    int line, pos;
};

void collect(int type, char const* msg, char const* file, int line, int pos, void* context) {
    static_cast<std::vector<Report>*>(context)->push_back({type, msg, file, line, pos});
}

// Frees its dictionary, checking that each block is one the call handed
// out and not yet freed.
struct Loaded {
    // Loads `schema` with a name buffer of `nameBuffer` bytes.
    explicit Loaded(std::string const& schema, zyl_dict_load_params_t const* params = nullptr, size_t nameBuffer = 64)
        : nameSize(nameBuffer) {
        std::string buffer(nameBuffer, 'x');
        rc = zyl_db_load_dictionary(schema.c_str(), params, &dict, &dictSize, &buffer[0], &nameSize, collect, &reports);
        name = buffer.c_str();
    }
    Loaded(Loaded const&) = delete;
    Loaded& operator=(Loaded const&) = delete;
    ~Loaded() {
        std::size_t wrong = 0;
        dictmem::freeDictionary(dict, &wrong);
        EXPECT_EQ(wrong, 0u);
    }

    int rc;
    zyl_dictionary_t* dict = nullptr;
    size_t dictSize = 0;
    std::string name;  // what the buffer holds afterwards
    size_t nameSize;
    std::vector<Report> reports;
};

// A report as the batch compiler prints it for s.zyl, to compare with the
// message tables; one without a place names no line.
std::string batchText(Report const& r) {
    std::string text = "File s.zyl; ";
    if (r.file != "<memory buffer>" || r.line != 0 || r.pos != 0) {
        text = "File " + (r.file == "<membuf>" ? std::string("s.zyl") : r.file) + ";  line " +
               std::to_string(r.line) + (r.pos >= 1 ? ", position " + std::to_string(r.pos + 1) : "") + ": ";
    }
    return text + (r.type == 1 ? "error: " : "warning: ") + r.msg + "\n\n";
}

TEST(MemoryDict, ReturnCodesAndTheDatabaseName) {
    std::string const schema = "declare database shop;\nclass A { signed<4> a; tree<a> t; };\n";
    Loaded ok(schema);
    EXPECT_EQ(ok.rc, 0);
    ASSERT_NE(ok.dict, nullptr);
    EXPECT_EQ(ok.dictSize, 152u);
    EXPECT_EQ(ok.dict->n_class_codes, 1);
    EXPECT_TRUE(ok.reports.empty());
    // The name goes out only with room to spare.
    struct { size_t buffer; char const* name; size_t size; } const names[] = {
        {6, "shop", 5}, {5, "xxxxx", 0}, {0, "", 0}};
    for (auto const& n : names) {
        Loaded r(schema, nullptr, n.buffer);
        EXPECT_EQ(r.rc, 0);
        EXPECT_EQ(r.name, n.name) << n.buffer;
        EXPECT_EQ(r.nameSize, n.size) << n.buffer;
    }

    // Refused: the callback has the message, *dict stays as it was.
    Loaded bad("class A { signed<4> a; };");
    EXPECT_EQ(bad.rc, 1005);
    EXPECT_EQ(bad.dict, nullptr);
    ASSERT_EQ(bad.reports.size(), 1u);
    EXPECT_EQ(batchText(bad.reports[0]), "File s.zyl;  line 1: error: schema name is not defined\n\n");
    EXPECT_EQ(zyl_db_load_dictionary("class A {", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              1005);

    // No temporary file: 71 before anything else happens.
    ProcessResult r = runInChild([] {
        rlimit const few = {8, 8};
        setrlimit(RLIMIT_NOFILE, &few);
        while (dup(0) >= 0) {
        }
        std::vector<Report> reports;
        std::printf("%d %zu", zyl_db_load_dictionary("declare database a;", nullptr, nullptr, nullptr, nullptr,
                                                     nullptr, collect, &reports),
                    reports.size());
    });
    EXPECT_EQ(r.out, "71 0");
}

// The JSON dump is what both forms of the dictionary are compared by, so
// its own edges are checked against known values: a real number that
// needs all 15 digits (its 17-digit form differs), a class whose struct is
// the last of the table, and the last control character in a name.
TEST(MemoryDict, JsonDumpAtItsEdges) {
    Loaded l("declare database j;\nclass A { double w = 0.333333333333333; signed<4> n; };\n");
    ASSERT_EQ(l.rc, 0);
    auto dump = [](zyl_dictionary_t const* d) {
        char* buf = nullptr;
        size_t len = 0;
        FILE* out = open_memstream(&buf, &len);
        EXPECT_EQ(zyl_dict_write_json(d, out), 0);
        std::fclose(out);
        std::string text(buf, len);
        std::free(buf);
        return text;
    };
    std::string const json = dump(l.dict);
    EXPECT_NE(json.find("\"init_d_data\": [0.333333333333333]"), std::string::npos) << json;
    EXPECT_NE(json.find("\"struct_ptr\": " + std::to_string(l.dict->n_structs - 1)), std::string::npos) << json;
    zyl_dictionary_t renamed = *l.dict;
    char const* names[] = {nullptr, "A\x1f\x20\"\\"};
    renamed.str_class_names = names;
    EXPECT_NE(dump(&renamed).find("\"A\\u001f \\\"\\\\\""), std::string::npos) << dump(&renamed);
}

// Each parameter that changes the dictionary: its flags, the class's
// flags and name, and where the double d lies.
TEST(MemoryDict, ParametersReachTheCompile) {
    std::string const schema = "declare database p;\nclass A { signed<1> a; double d; tree<a> t; };\n";
    TempDir out;
    using P = zyl_dict_load_params_t;
    struct {
        int P::*set;
        char const* expected;
    } const cases[] = {
        {nullptr, "0 0x2010 A 0"},  // zero everywhere: classes are nonatomic, 8-byte scalars on 4
        {&P::atomicDefault, "0 0x10 A 0"},      {&P::keepFieldOrder, "2 0x2010 A 8"},
        {&P::wideOffsets, "1 0x2010 A 0"},      {&P::compactDefault, "0 0x2018 A 0"},
        {&P::persistentDefault, "0 0x2030 A 0"}, {&P::prefixNames, "0 0x2010 p_A 0"},
    };
    for (auto const& c : cases) {
        P p = {};
        p.outputDir = out.path().c_str();
        if (c.set)
            p.*c.set = 1;
        Loaded r(schema, &p);
        ASSERT_EQ(r.rc, 0) << c.expected;
        zyl_dict_struct_t const& s = *r.dict->v_class_info[1].struct_ptr;
        unsigned offsetOfD = ~0u;
        for (unsigned i = 0; i < s.n_fields; i++)
            offsetOfD = std::string(s.fields[i].name) == "d" ? s.fields[i].layout.u_offset : offsetOfD;
        char got[64];
        std::snprintf(got, sizeof got, "%u %#x %s %u", unsigned(r.dict->flags), unsigned(r.dict->v_class_info[1].flags),
                      r.dict->str_class_names[1], offsetOfD);
        EXPECT_STREQ(got, c.expected);
    }
}

// Null directories mean "."; an error in an included file names that file;
// and no call leaves a file behind, in the output directory or the current
// one, whatever output it is asked for.
TEST(MemoryDict, DirectoriesIncludedFilesAndNoFilesWritten) {
    TempDir dir;
    dir.write("inc.zyl", "struct S { signed<4> x; };\n");
    dir.write("bad.zyl", "struct T {\n  signed<4> x;\n  signed<3> y;\n};\n");
    dir.write("s.zyl", "declare database i;\n#include \"bad.zyl\"\n");
    zyl_dict_load_params_t p = {};
    p.includeDir = dir.path().c_str();
    Loaded bad("declare database i;\n#include \"bad.zyl\"\n", &p);
    EXPECT_EQ(bad.rc, 1005);
    ASSERT_EQ(bad.reports.size(), 1u);
    EXPECT_EQ(batchText(bad.reports[0]), runProgram({cliPath(), "s.zyl"}, dir.path()).err);
    ProcessResult dump = runProgram({cliPath(), "--dump-dictionary", "s.zyl"}, dir.path());
    EXPECT_EQ(dump.err, "bad.zyl:3:0: error: illegal size: allowed sizes are 1,2,4,8\n");
    EXPECT_EQ(dump.status, 1);

    ProcessResult r = runInChild([&dir] {
        if (chdir(dir.path().c_str()) != 0)
            return;
        TempDir out;
        // The caller's own files of that database survive a refused schema.
        out.write("w.h", "mine");
        out.write("w.c", "mine");
        zyl_dict_load_params_t all = {};
        all.compiledFunctions = all.xmlSchema = all.cppWrappers = all.csharpOutput = all.javaOutput = 1;
        all.cppRuntimeHeader = all.dynamicDictTables = all.xmlAccess = all.jsonAccess = all.prefixNames = 1;
        all.outputDir = out.path().c_str();
        all.csharpNamespace = "ns";
        all.javaPackage = "pkg";
        std::string const schema = "declare database w;\n#include \"inc.zyl\"\nclass A { S s; char<4> c;\n"
                                   "userdef tree<s.x> u; tree<c collate k> t; };\n";
        std::printf("%d %d %d ", Loaded("declare database n;\n#include \"inc.zyl\"\n").rc, Loaded(schema, &all).rc,
                    Loaded(schema + "class B { oid; };\n", &all).rc);
        for (std::string const& f : out.list())
            std::printf("%s ", f.c_str());
        for (std::string const& f : dir.list())
            std::printf("%s ", f.c_str());
    });
    EXPECT_EQ(r.out, "0 0 1005 w.c w.h bad.zyl inc.zyl s.zyl ");
}

// The manual's text blocks end without their last line feeds.
std::string trimmed(std::string s) { return s.erase(s.find_last_not_of('\n') + 1); }

// Every schema the manual's examples and the batch tables refuse is refused
// here with the same message, internal faults included; the accepted ones
// are accepted. Refusals of generated text alone are not this entry's, nor
// the examples under options it has no parameter for.

TEST(MemoryDict, EveryRefusalOfTheManualAndTheMessageTables) {
    std::vector<MessageRow> rows = grammarRows();
    for (auto const* more : {&finishRows(), &dictionaryRows()})
        rows.insert(rows.end(), more->begin(), more->end());
    std::vector<DocExample> docs = docExamples();
    for (DocExample& e : docs) {
        if (!e.files.empty() || e.args.size() > 1 || e.schema.find("#include") != std::string::npos ||
            e.err.find("would define") != std::string::npos || e.err.find("ZYL_SEQ_MAX") != std::string::npos)
            continue;
        if (e.err.compare(0, 9, "warning: ") == 0)
            e.err.clear();  // the warnings of generation
        rows.push_back({e.schema.c_str(), e.err.c_str(),
                        e.args.empty() ? nullptr : e.args[0].c_str()});
    }
    TempDir out;  // where a failure removes the files of its database
    for (MessageRow const& row : rows) {
        zyl_dict_load_params_t p = {};
        p.outputDir = out.path().c_str();
        p.atomicDefault = 1;
        std::string const option = row.option ? row.option : "";
        if (option == "--sql-reserved-words")
            p.sqlReservedWords = 1;
        else if (!option.empty())
            continue;  // the size type is fixed at 8 bytes here, and no Java file is written
        Loaded r(row.schema, &p);
        std::string text;
        for (Report const& rep : r.reports)
            text += batchText(rep);
        // A panic reaches the caller as an error without a place.
        std::string expected = row.err;
        if (expected.compare(0, 16, "internal error: ") == 0)
            expected = "File s.zyl; error: " + expected.substr(16, expected.size() - 17) + "\n\n";
        EXPECT_EQ(trimmed(text), trimmed(expected)) << row.schema;
        EXPECT_EQ(r.rc, row.status() == 0 ? 0 : 1005) << row.schema;
    }
    // Still alive, with the panic path of the batch compiler back in place.
    EXPECT_EQ(IErrReporter::setPanicHook({nullptr, nullptr}).handler, nullptr);
    EXPECT_EQ(Loaded("declare database after;").rc, 0);
}

}  // namespace

// The dictionary is built class by class only where that cannot change
// which error comes first. An index over two keys in one vector is refused
// before any record is built.
TEST(MemoryDict, TheFirstErrorOfTheDictionaryBuild) {
    std::string const part = "declare database eo;\nstruct Part { unsigned<4> no; char<6> code; };\n";
    std::string const twoKeys = "class A { vector<Part> parts; tree<parts.no, parts.code> both; };\n";
    std::string const blobArray = "class B { blob data[2]; };\n";
    char const* const index = "index both of class A: keys parts.no and parts.code both lie in a vector or array, "
                              "only one key may";
    struct { std::string schema; char const* message; } const cases[] = {
        {part + twoKeys + blobArray, index},
        {part + blobArray + twoKeys, index},
        {part + "class C { signed<4> c; tree<c> byC; };\n" + blobArray + "class A { signed<4> a; tree<a> byA; };\n",
         "Blob cannot be element of array"},
    };
    for (auto const& k : cases) {
        Loaded r(k.schema);
        EXPECT_EQ(r.rc, 1005) << k.schema;
        ASSERT_EQ(r.reports.size(), 1u) << k.schema;
        EXPECT_EQ(r.reports[0].msg, k.message) << k.schema;
    }
}
