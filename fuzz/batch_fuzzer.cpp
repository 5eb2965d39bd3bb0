// Fuzzes the batch entry, Job::run, which ends the process at the first
// error, so each input is compiled in a child process. The outcome must be
// one of two: a complete compile (run returns, {db}.h and {db}.c exist), or
// the diagnostic on standard error, "Error executing DDL compiler" on
// standard output, status 255 and no file of the compile left behind.
// Files a person owns in the output directory ({db}_udf.c, {db}_coll.c)
// must come through either way unchanged.
//
// The child's coverage dies with it, so the same bytes also go through the
// run-time entry in this process: the front end that both share is what
// guides the fuzzer.
#include <dirent.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <sanitizer/common_interface_defs.h>

#include "driver/job.h"
#include "fuzz/switches.h"
#include "support/dict_memory.h"
#include "zylcomp.h"

namespace {

std::string root;       // holds the schema, the child's output and the output directory
std::string schema;     // root/s.zyl
std::string outputDir;  // root/out

char const kUserText[] = "/* written by a person */\n";

bool inChild = false;

[[noreturn]] void fail(char const* what, std::string const& detail = "") {
    std::fprintf(stderr, "batch_fuzzer: %s%s%s\n", what, detail.empty() ? "" : ":\n", detail.c_str());
    std::abort();
}

std::string readFile(std::string const& path) {
    std::ifstream f(path, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

void writeFile(std::string const& path, std::string const& text) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    f << text;
    if (!f)
        fail("cannot write", path);
}

std::set<std::string> listDir(std::string const& path) {
    std::set<std::string> names;
    if (DIR* d = opendir(path.c_str())) {
        while (dirent* e = readdir(d))
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
                names.insert(e->d_name);
        closedir(d);
    }
    return names;
}

void clearDir(std::string const& path) {
    for (std::string const& name : listDir(path))
        if (std::remove((path + "/" + name).c_str()) != 0)
            fail("cannot clean the output directory", name);
}

// The name a "declare database" statement most likely gives, for placing
// a person's skeletons where this compile would write its own.
std::string likelyDbName(std::string const& text) {
    static std::regex const decl("database\\s+([A-Za-z_][A-Za-z0-9_]*)");
    std::smatch m;
    if (text.size() < 4096 && std::regex_search(text, m, decl))
        return m[1];
    return "";
}

void runChild(FuzzSwitches const& switches) {
    inChild = true;
    // libFuzzer takes an exit during an input for a finding and turns it
    // into its own status; holding the crash state first makes its exit
    // and crash handlers stand aside in the child. The sanitizers still
    // report and end the child with their own status.
    __sanitizer_acquire_crash_state();
    alarm(20);  // a compile that hangs ends as a signal, which is reported
    if (std::freopen((root + "/stdout").c_str(), "w", stdout) == nullptr ||
        std::freopen((root + "/stderr").c_str(), "w", stderr) == nullptr)
        _exit(120);
    Job job;
    job.inputFile = schema.c_str();
    job.outputDir = outputDir.c_str();
    job.includeDir = ZYLCOMP_FUZZ_INCLUDE_DIR;
    switches.apply(job);
    unsigned const done = job.run();
    std::fflush(stdout);
    std::fflush(stderr);
    _exit(done == 1 ? 0 : 121);
}

// At the end of a run; a child, which exits through the same handlers,
// leaves everything to its parent.
void removeRoot() {
    if (inChild)
        return;
    for (std::string const& dir : {outputDir, root})
        for (std::string const& name : listDir(dir))
            std::remove((dir + "/" + name).c_str());
    rmdir(outputDir.c_str());
    rmdir(root.c_str());
}

}  // namespace

// The batch path ends the process with its objects in place on purpose,
// which is no leak; the leak check stays on for this process.
extern "C" int __lsan_is_turned_off() { return inChild ? 1 : 0; }

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    char tmpl[] = "/tmp/zylcomp-fuzz-batch-XXXXXX";
    if (mkdtemp(tmpl) == nullptr)
        fail("no temporary directory");
    root = tmpl;
    schema = root + "/s.zyl";
    outputDir = root + "/out";
    if (mkdir(outputDir.c_str(), 0755) != 0)
        fail("no output directory");
    std::atexit(removeRoot);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    std::string const text(reinterpret_cast<char const*>(data), size);
    FuzzSwitches const switches(text);

    // Guidance: the run-time entry over the text as it reads it, to the NUL.
    zyl_dict_load_params_t const params = switches.params(outputDir.c_str(), ZYLCOMP_FUZZ_INCLUDE_DIR);
    zyl_dictionary_t* dict = nullptr;
    int const rc = zyl_db_load_dictionary(text.c_str(), &params, &dict, nullptr, nullptr, nullptr, nullptr, nullptr);
    dictmem::releaseAll();
    if (rc != ZYL_DICT_LOAD_OK && rc != ZYL_DICT_LOAD_REFUSED)
        fail("run-time entry return code", std::to_string(rc));

    // The batch entry reads the file, NUL bytes and all.
    clearDir(outputDir);
    writeFile(schema, text);
    std::string const db = likelyDbName(text);
    std::set<std::string> userFiles;
    if (!db.empty()) {
        for (char const* suffix : {"_udf.c", "_coll.c"}) {
            userFiles.insert(db + suffix);
            writeFile(outputDir + "/" + db + suffix, kUserText);
        }
    }

    std::fflush(stdout);
    std::fflush(stderr);
    pid_t const pid = fork();
    if (pid < 0)
        fail("fork");
    if (pid == 0)
        runChild(switches);
    int wstatus = 0;
    while (waitpid(pid, &wstatus, 0) < 0)
        if (errno != EINTR)
            fail("waitpid");

    std::string const out = readFile(root + "/stdout");
    std::string const err = readFile(root + "/stderr");
    std::string const report = "stdout:\n" + out + "stderr:\n" + err;
    if (!WIFEXITED(wstatus))
        fail(("the compile ended by signal " + std::to_string(WTERMSIG(wstatus))).c_str(), report);
    int const status = WEXITSTATUS(wstatus);

    std::set<std::string> left = listDir(outputDir);
    for (std::string const& name : userFiles) {
        if (readFile(outputDir + "/" + name) != kUserText)
            fail("a person's file was changed or removed", name + "\n" + report);
        left.erase(name);
    }
    if (status == 0) {
        if (err.find("error: ") != std::string::npos)
            fail("a complete compile that reported an error", report);
        bool header = false, source = false;
        for (std::string const& name : left) {
            header = header || (name.size() > 2 && name.compare(name.size() - 2, 2, ".h") == 0);
            source = source || (name.size() > 2 && name.compare(name.size() - 2, 2, ".c") == 0);
        }
        if (!header || !source)
            fail("a complete compile without {db}.h and {db}.c", report);
    } else if (status == 255) {
        if (err.find("error: ") == std::string::npos)
            fail("status 255 without a diagnostic", report);
        // An output file that cannot be opened (a database name too long
        // for the file system, say) ends the process at once, by design
        // without the closing line and without removing the outputs opened
        // before it. All outputs are opened before any is written, so those
        // are empty.
        bool const unopenable = err.compare(0, 24, "error: Cannot open file ") == 0;
        if (!unopenable && out.find("Error executing DDL compiler\n") == std::string::npos)
            fail("status 255 without the closing line", report);
        for (std::string const& name : left)
            if (!unopenable || !readFile(outputDir + "/" + name).empty())
                fail("a failed compile left a file behind", name + "\n" + report);
    } else {
        fail(("status " + std::to_string(status)).c_str(), report);
    }
    return 0;
}
