#include "foundation/outfile.h"

#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

#include "foundation/outstream.h"

// ---------------------------------------------------------------------------
// The temporaries that exist, for the interrupt handler
//
// The handler may run at any instruction, so it can take no lock and
// allocate nothing: the temporaries stand in a list that only ever grows,
// each node published whole by an atomic store before anyone can see it.
// A node is reused once its file is gone, so a process that compiles again
// and again does not grow the list for ever; the nodes free for that wait
// in a second list, under a lock, which the handler never reads.

enum : int { kFree = 0, kBusy = 1, kLive = 2 };

struct TempNode {
    std::atomic<int> state{kBusy};  // kLive: path names a temporary that exists
    TempNode* next = nullptr;       // fixed before the node is published
    TempNode* nextFree = nullptr;   // in the free list, under its lock
    size_t cap = 0;
    char* path = nullptr;  // cap bytes
    pid_t pid = 0;         // of the process that made it: a forked child leaves it alone
};

namespace {

std::atomic<TempNode*> g_temps{nullptr};
std::mutex g_freeMutex;
TempNode* g_free = nullptr;

// A node of at least `size` bytes, taken for the caller (kBusy).
TempNode* takeNode(size_t size) {
    {
        std::lock_guard<std::mutex> lock(g_freeMutex);
        if (g_free != nullptr && g_free->cap >= size) {
            TempNode* n = g_free;
            g_free = n->nextFree;
            n->state.store(kBusy);
            return n;
        }
    }
    TempNode* n = new TempNode();
    n->cap = size < 256 ? 256 : size;
    n->path = new char[n->cap];
    n->path[0] = '\0';
    n->next = g_temps.load();
    while (!g_temps.compare_exchange_weak(n->next, n)) {
    }
    return n;
}

void releaseNode(TempNode* n) {
    n->state.store(kFree);
    std::lock_guard<std::mutex> lock(g_freeMutex);
    n->nextFree = g_free;
    g_free = n;
}

// SIGINT and SIGTERM held back in this thread while one lives.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGINT);
        sigaddset(&set, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &set, &m_old);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &m_old, nullptr); }

private:
    sigset_t m_old;
};

// Async-signal-safe: no lock, no allocation.
void removeLiveTemps() {
    pid_t const self = ::getpid();
    for (TempNode* n = g_temps.load(); n != nullptr; n = n->next)
        if (n->state.load() == kLive && n->pid == self)
            ::unlink(n->path);
}

// A compile that ends the process midway, by an internal fault or
// exhausted memory, leaves no temporary either.
extern "C" void removeTempsAtExit() { removeLiveTemps(); }

extern "C" void removeTempsAndDie(int sig) {
    removeLiveTemps();
    // Blocked while this handler runs, the signal is delivered again, now
    // with its default action, as soon as the handler returns.
    ::signal(sig, SIG_DFL);
    ::raise(sig);
}

int const kSignals[] = {SIGINT, SIGTERM};

std::mutex g_handlersMutex;
int g_cleanupUsers = 0;
struct sigaction g_previous[2];
bool g_installed[2] = {false, false};

// Six characters for a temporary's name, different from call to call and
// from process to process.
void randomSuffix(char* out) {
    static std::atomic<std::uint64_t> counter{0};
    timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    std::uint64_t x = counter.fetch_add(1) * 0x9E3779B97F4A7C15ull ^
                      static_cast<std::uint64_t>(ts.tv_nsec) ^
                      (static_cast<std::uint64_t>(ts.tv_sec) << 30) ^
                      (static_cast<std::uint64_t>(::getpid()) << 20);
    x ^= x >> 31;
    x *= 0xBF58476D1CE4E5B9ull;
    x ^= x >> 27;
    x *= 0x94D049BB133111EBull;
    x ^= x >> 31;
    static char const kChars[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    for (int i = 0; i < 6; i++, x /= 62)
        out[i] = kChars[x % 62];
}

}  // namespace

// ---------------------------------------------------------------------------
// The stream of one output file

class OutFileStream : public ZylOFstream {
public:
    OutFileStream(FILE* f, OutFile* owner) : ZylOFstream(f), m_owner(owner) {}
    ~OutFileStream() override { m_owner->closed(finish()); }

private:
    OutFile* m_owner;
};

// ---------------------------------------------------------------------------
// One output file

OutFile::~OutFile() { discard(); }

int OutFile::open(IOutStream*& stream) {
    stream = nullptr;
    // What opening the final name for writing would have refused.
    struct stat st;
    if (::lstat(m_path.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode))
            return EISDIR;
    } else if (errno != ENOENT) {
        return errno;
    }

    std::string const path = m_path.c_str();
    size_t const slash = path.rfind('/');
    std::string const dir = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    // ".", the name, "." and six characters must still be a file name.
    if (base.size() + 8 > NAME_MAX)
        base.resize(NAME_MAX - 8);
    std::string const temp = dir + "." + base + ".XXXXXX";

    static bool const atExit = std::atexit(removeTempsAtExit) == 0;
    (void)atExit;

    TempNode* node = takeNode(temp.size() + 1);
    std::memcpy(node->path, temp.c_str(), temp.size() + 1);
    char* suffix = node->path + temp.size() - 6;
    int fd = -1;
    int error = 0;
    {
        // An interrupt between creating the file and marking it live would
        // leave it behind.
        SignalsHeld held;
        for (int tries = 0; tries < 100; tries++) {
            randomSuffix(suffix);
            // O_EXCL creates a new file or fails; it never follows a link.
            fd = ::open(node->path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (fd >= 0 || errno != EEXIST)
                break;
        }
        if (fd >= 0) {
            node->pid = ::getpid();
            node->state.store(kLive);
        }
        else
            error = errno;
    }
    if (fd < 0) {
        releaseNode(node);
        return error;
    }
    m_temp = node;

    FILE* f = ::fdopen(fd, "w");
    if (f == nullptr) {
        error = errno;
        ::close(fd);
        discard();
        return error;
    }
    OutFileStream* s = new OutFileStream(f, this);
    // Generated files run to hundreds of megabytes: a large buffer writes
    // them in a few hundred system calls instead of one per 4 KiB.
    s->setBuffer(1 << 20);
    m_open = true;
    stream = s;
    return 0;
}

void OutFile::closed(int error) {
    m_open = false;
    if (m_error == 0)
        m_error = error;
}

int OutFile::commit() {
    if (m_temp == nullptr || m_open)
        return EBADF;
    if (::rename(m_temp->path, m_path.c_str()) != 0)
        return errno;
    releaseNode(m_temp);
    m_temp = nullptr;
    return 0;
}

void OutFile::discard() {
    if (m_temp == nullptr)
        return;
    ::unlink(m_temp->path);
    releaseNode(m_temp);
    m_temp = nullptr;
}

namespace {

// The path with its directory resolved, the last name left as it is: a
// name that does not exist, or is a link, still has one spelling.
std::string entryOf(char const* path) {
    std::string const p = path;
    size_t const slash = p.rfind('/');
    std::string const dir = slash == std::string::npos ? "." : slash == 0 ? "/" : p.substr(0, slash);
    std::string const base = slash == std::string::npos ? p : p.substr(slash + 1);
    char resolved[PATH_MAX];
    if (::realpath(dir.c_str(), resolved) == nullptr)
        return p;
    return std::string(resolved) + "/" + base;
}

}  // namespace

bool OutFile::sameFile(mstring const& a, mstring const& b) {
    struct stat sa, sb;
    if (::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
        sa.st_ino == sb.st_ino)
        return true;
    return entryOf(a.c_str()) == entryOf(b.c_str());
}

// ---------------------------------------------------------------------------
// The files of one compile

IOutStream* OutFileSet::open(mstring const& path, int& error) {
    OutFile* file = new OutFile(path);
    IOutStream* stream = nullptr;
    error = file->open(stream);
    if (error != 0) {
        delete file;
        return nullptr;
    }
    v_files.push_back(file);
    return stream;
}

int OutFileSet::firstError(mstring& path) const {
    for (OutFile const* f : v_files) {
        if (f->error() != 0) {
            path = f->path();
            return f->error();
        }
    }
    return 0;
}

int OutFileSet::commit(mstring& path) {
    SignalsHeld held;
    for (OutFile* f : v_files) {
        if (int error = f->commit()) {
            path = f->path();
            return error;
        }
    }
    return 0;
}

void OutFileSet::discard() {
    for (OutFile* f : v_files)
        delete f;
    v_files.clear();
}

// ---------------------------------------------------------------------------
// Interrupts

InterruptCleanup::InterruptCleanup() {
    std::lock_guard<std::mutex> lock(g_handlersMutex);
    if (g_cleanupUsers++ > 0)
        return;
    for (int i = 0; i < 2; i++) {
        g_installed[i] = false;
        if (::sigaction(kSignals[i], nullptr, &g_previous[i]) != 0)
            continue;
        // A signal that is ignored, or that the program handles itself,
        // is left to the program.
        if ((g_previous[i].sa_flags & SA_SIGINFO) != 0 || g_previous[i].sa_handler != SIG_DFL)
            continue;
        struct sigaction action;
        std::memset(&action, 0, sizeof action);
        action.sa_handler = removeTempsAndDie;
        sigemptyset(&action.sa_mask);
        sigaddset(&action.sa_mask, SIGINT);
        sigaddset(&action.sa_mask, SIGTERM);
        g_installed[i] = ::sigaction(kSignals[i], &action, nullptr) == 0;
    }
}

InterruptCleanup::~InterruptCleanup() {
    std::lock_guard<std::mutex> lock(g_handlersMutex);
    if (--g_cleanupUsers > 0)
        return;
    for (int i = 0; i < 2; i++)
        if (g_installed[i])
            ::sigaction(kSignals[i], &g_previous[i], nullptr);
}
