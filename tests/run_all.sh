#!/usr/bin/env bash
# Every test of the project, as the README's test command and CI run it:
#   1. the suite of the default build;
#   2. the same suite built with AddressSanitizer and UndefinedBehaviorSanitizer
#      (preset "sanitize"), where a fault or a leak fails the test that met it;
#   3. the same suite built with ThreadSanitizer (preset "tsan"), where a data
#      race fails the test that met it (the concurrent calls of the run-time
#      entry above all);
#   4. where clang is installed, the libFuzzer targets (preset "fuzz"): every
#      seed and regression case once, then a bounded run of each target
#      (ZYLCOMP_FUZZ_SECONDS, 60 by default).
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset default && cmake --build --preset default && ctest --preset default
cmake --preset sanitize && cmake --build --preset sanitize && ctest --preset sanitize
cmake --preset tsan && cmake --build --preset tsan && ctest --preset tsan

if ! command -v clang++ >/dev/null 2>&1; then
    echo "run_all: clang++ not found: the fuzz targets are not built or run" >&2
    exit 0
fi
probe=$(mktemp -d "${TMPDIR:-/tmp}/zylcomp-probe.XXXXXX")
trap 'rm -rf "$probe"' EXIT
echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' >"$probe/p.cpp"
if ! clang++ -fsanitize=fuzzer,address,undefined "$probe/p.cpp" -o "$probe/p" >"$probe/log" 2>&1; then
    cat "$probe/log" >&2
    echo "run_all: clang++ cannot link libFuzzer and the sanitizers; install them (Debian: libclang-rt-dev)" >&2
    exit 1
fi
cmake --preset fuzz -DZYLCOMP_FUZZ_SECONDS="${ZYLCOMP_FUZZ_SECONDS:-60}" &&
    cmake --build --preset fuzz && ctest --preset fuzz
