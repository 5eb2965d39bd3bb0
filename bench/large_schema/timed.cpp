// Runs a command and writes its wall time and peak memory to a file:
//
//   bench_timed RESULT-FILE COMMAND [ARG ...]
//
// writes "SECONDS MAX-RSS-KB EXIT-STATUS CPU-SECONDS" to RESULT-FILE: wall
// time, peak resident memory, exit status, and user plus system time. The
// command's own output passes through. Finer than the 10 ms of
// /usr/bin/time.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: bench_timed RESULT-FILE COMMAND [ARG ...]\n");
        return 2;
    }
    auto start = std::chrono::steady_clock::now();
    pid_t pid = fork();
    if (pid < 0) {
        std::perror("fork");
        return 1;
    }
    if (pid == 0) {
        execvp(argv[2], argv + 2);
        std::perror(argv[2]);
        _exit(127);
    }
    int status = 0;
    struct rusage usage = {};
    if (wait4(pid, &status, 0, &usage) != pid) {
        std::perror("wait4");
        return 1;
    }
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    FILE* out = std::fopen(argv[1], "w");
    if (out == nullptr) {
        std::perror(argv[1]);
        return 1;
    }
    double cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                 static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    std::fprintf(out, "%.6f %ld %d %.6f\n", seconds, usage.ru_maxrss, code, cpu);
    std::fclose(out);
    return code;
}
