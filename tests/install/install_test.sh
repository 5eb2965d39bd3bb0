#!/usr/bin/env bash
# Installs the build into a temporary prefix, moves the prefix elsewhere, and
# uses it from there as a project would: checks the installed files, builds
# examples/cmake-consumer against it with find_package(zylcomp CONFIG) and
# zylcomp_generate(), with both the Unix Makefiles and the Ninja generator
# (the schema has a user-defined index and a collation, so skeletons are
# written too), checks that a change to a file the schema #includes
# compiles the schema again and that nothing else does, tries
# zylcomp_generate's other arguments, links a program to
# zylcomp::libzylcomp, and builds and runs one with pkg-config's flags.
#
# Run by CTest (tests/CMakeLists.txt passes the arguments):
#   install_test.sh BUILD_DIR SOURCE_DIR GENERATOR MAKE_PROGRAM C_COMPILER \
#                   BINDIR LIBDIR INCLUDEDIR MANDIR VERSION SOVERSION
# GENERATOR and MAKE_PROGRAM are those of the build; the consumer project is
# built with each generator whose tool is installed.
set -euo pipefail

if [ $# -ne 11 ]; then
    echo "usage: $0 BUILD_DIR SOURCE_DIR GENERATOR MAKE_PROGRAM C_COMPILER BINDIR LIBDIR INCLUDEDIR MANDIR VERSION SOVERSION" >&2
    exit 2
fi
build=$1 source=$2 generator=$3 make_program=$4 cc=$5
bindir=$6 libdir=$7 includedir=$8 mandir=$9 version=${10} soversion=${11}

work=$(mktemp -d "${TMPDIR:-/tmp}/zylcomp-install.XXXXXX")
trap 'rm -rf "$work"' EXIT
# Installed here, then moved to $prefix: nothing may remember the first place.
installed=$work/installed
prefix=$work/moved/prefix

failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
# Stops at once: what follows depends on it.
die() {
    echo "FAIL: $*" >&2
    exit 1
}
step() { echo "== $*"; }

# configure GENERATOR MAKE_PROGRAM SOURCE BUILD [ARGS...]: a CMake project
# configured against the prefix.
configure() {
    cmake -S "$3" -B "$4" -G "$1" -DCMAKE_MAKE_PROGRAM="$2" -DCMAKE_C_COMPILER="$cc" \
        -DCMAKE_PREFIX_PATH="$prefix" "${@:5}" >"$work/configure.log" 2>&1 ||
        { cat "$work/configure.log"; die "configuring $3 ($1)"; }
}
# Builds $1 and keeps the log in $work/build.log.
build() {
    cmake --build "$1" >"$work/build.log" 2>&1 || { cat "$work/build.log"; die "building $1"; }
}
ran_zylcomp() { grep -q "Compiling schema schema/inventory.zyl with zylcomp" "$work/build.log"; }

step "install into $installed, then move it to $prefix"
cmake --install "$build" --prefix "$installed" >"$work/install.log" 2>&1 ||
    { cat "$work/install.log"; die "cmake --install"; }
mkdir -p "$(dirname "$prefix")"
mv "$installed" "$prefix"
if grep -rlF "$installed" "$prefix" >"$work/remembered"; then
    fail "installed files name the place they were installed at: $(cat "$work/remembered")"
fi

step "installed files"
[ -x "$prefix/$bindir/zylcomp" ] || fail "no executable $bindir/zylcomp"
real=libzylcomp.so.$version
[ -f "$prefix/$libdir/$real" ] && [ ! -L "$prefix/$libdir/$real" ] || fail "no library $libdir/$real"
[ "$(readlink "$prefix/$libdir/libzylcomp.so.$soversion")" = "$real" ] ||
    fail "$libdir/libzylcomp.so.$soversion is not a link to $real"
[ "$(readlink "$prefix/$libdir/libzylcomp.so")" = "libzylcomp.so.$soversion" ] ||
    fail "$libdir/libzylcomp.so is not a link to libzylcomp.so.$soversion"
if command -v readelf >/dev/null; then
    readelf -d "$prefix/$libdir/$real" | grep -q "Library soname: \[libzylcomp.so.$soversion\]" ||
        fail "the soname of $real is not libzylcomp.so.$soversion"
fi
for f in "$includedir/zylcomp.h" "$includedir/zyldict.h" \
    "$libdir/cmake/zylcomp/zylcompConfig.cmake" "$libdir/cmake/zylcomp/zylcompConfigVersion.cmake" \
    "$libdir/cmake/zylcomp/zylcompTargets.cmake" "$libdir/cmake/zylcomp/zylcompGenerate.cmake" \
    "$libdir/pkgconfig/zylcomp.pc" "$mandir/man1/zylcomp.1"; do
    [ -f "$prefix/$f" ] || fail "no $f"
done
grep -q "^\.TH ZYLCOMP 1 .*zylcomp $version" "$prefix/$mandir/man1/zylcomp.1" ||
    fail "the man page's title line does not name version $version"
if command -v groff >/dev/null; then
    warnings=$(groff -man -ww -z "$prefix/$mandir/man1/zylcomp.1" 2>&1)
    [ -z "$warnings" ] || fail "groff warns about the man page: $warnings"
fi

# The installed program finds its library through its run path, relative to
# itself: not through the build tree, nor the place it was installed at.
out=$(env -u LD_LIBRARY_PATH "$prefix/$bindir/zylcomp" --version) || fail "installed zylcomp --version failed"
[ "$out" = "$(printf 'zylcomp %s\ndictionary format 8.1 build 1800' "$version")" ] ||
    fail "installed zylcomp --version printed: $out"

# consumer GENERATOR MAKE_PROGRAM: the example project, in a copy of its own
# since the checks edit its schema.
consumer() {
    local gen=$1 make=$2
    local src=$work/consumer-${1// /-} bin=$work/consumer-${1// /-}-build
    local schema=$src/schema out=$bin/zylcomp/inventory

    step "consumer project ($gen)"
    cp -R "$source/examples/cmake-consumer" "$src"
    configure "$gen" "$make" "$src" "$bin" -DZYL_RUNTIME_INCLUDE_DIR="$source/tests/runtime"
    build "$bin"
    ran_zylcomp || fail "$gen: the first build did not run zylcomp"
    for f in inventory.h inventory.c inventory.d inventory_udf.c inventory_coll.c; do
        [ -f "$out/$f" ] || fail "$gen: the build generated no $f"
    done
    local objects inventory_o
    objects=$(find "$bin" -name '*.o' | sort)
    grep -q "inventory\.c\.o$" <<<"$objects" || fail "$gen: the generated inventory.c was not compiled: $objects"
    grep -q "main\.c\.o$" <<<"$objects" || fail "$gen: main.c, which includes inventory.h, was not compiled: $objects"
    inventory_o=$(grep "inventory\.c\.o$" <<<"$objects")

    # The rule's targets are the outputs the build declares; the skeletons,
    # which belong to the project once written, are not among them.
    local expected="$out/inventory.h $out/inventory.c: \\
  $schema/inventory.zyl \\
  $schema/units.zyl \\
  $schema/limits.zyl

$schema/units.zyl:

$schema/limits.zyl:"
    [ "$(cat "$out/inventory.d")" = "$expected" ] || fail "$gen: inventory.d holds:
$(cat "$out/inventory.d")
expected:
$expected"

    # Nothing changed: the build succeeds and compiles no schema.
    echo "/* filled in by the project */" >"$out/inventory_udf.c"
    build "$bin"
    ran_zylcomp && fail "$gen: zylcomp ran again though nothing changed"

    # A change to an #include of an #include compiles the schema again; the
    # filled-in skeleton stays, and the new one goes beside it.
    cp "$out/inventory.c" "$work/inventory.c.before"
    sleep 1 # a clear step in modification times, even on coarse file systems
    sed -i 's/NAME_LENGTH 40/NAME_LENGTH 64/' "$schema/limits.zyl"
    build "$bin"
    ran_zylcomp || fail "$gen: a change to limits.zyl did not compile the schema again"
    cmp -s "$out/inventory.c" "$work/inventory.c.before" && fail "$gen: inventory.c did not change with limits.zyl"
    [ "$inventory_o" -nt "$schema/limits.zyl" ] || fail "$gen: inventory.c was not compiled again"
    [ "$(cat "$out/inventory_udf.c")" = "/* filled in by the project */" ] ||
        fail "$gen: the compile overwrote the filled-in inventory_udf.c"
    [ -f "$out/inventory_udf.c.new" ] || fail "$gen: no inventory_udf.c.new beside the filled-in skeleton"

    # And with the .new skeletons there, nothing to do again.
    build "$bin"
    ran_zylcomp && fail "$gen: zylcomp ran again though nothing changed since"
    return 0
}

if command -v make >/dev/null; then
    consumer "Unix Makefiles" "$(command -v make)"
else
    echo "make is not installed: the consumer project is not built with Unix Makefiles"
fi
if command -v ninja >/dev/null; then
    consumer Ninja "$(command -v ninja)"
else
    echo "ninja is not installed: the consumer project is not built with Ninja"
fi

step "zylcomp::libzylcomp, and zylcomp_generate's other arguments"
mkdir -p "$work/uselib/inc"
cat >"$work/uselib/uselib.c" <<'EOF'
#include <stdio.h>
#include <stdlib.h>

#include <zylcomp.h>
#include <zyldict.h>

/* The library's run-time entry allocates through the database runtime;
   with no runtime here, the program stands in for it. */
void* zyl_sys_malloc(size_t size) { return malloc(size); }
void* zyl_sys_calloc(size_t count, size_t size) { return calloc(count, size); }

int main(void)
{
    printf("%s %d %s\n", OS_SEP, ZYL_DICT_VERSION_BUILD, ZYL_MESSAGES[0] != NULL ? "messages" : "none");
    return 0;
}
EOF
cat >"$work/uselib/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.25)
project(uselib LANGUAGES C)
find_package(zylcomp 0.1 CONFIG REQUIRED)
add_executable(uselib uselib.c)
target_link_libraries(uselib PRIVATE zylcomp::libzylcomp)

# store.zyl declares database shop; the files go where the project says,
# every language is asked for, and inc/ is searched before the schema's
# directory.
add_library(store OBJECT)
target_include_directories(store PRIVATE ${ZYL_RUNTIME_INCLUDE_DIR})
zylcomp_generate(store SCHEMA store.zyl DATABASE ${STORE_DATABASE} OUTPUT_DIR generated/shop
                 INCLUDE_DIR inc ${PROJECT_SOURCE_DIR}
                 OPTIONS --cpp --xml-schema --cs --java)
EOF
sed 's/^declare database shop;/&\n#include "extra.zyl"/' "$source/examples/shop.zyl" >"$work/uselib/store.zyl"
echo "struct Extra { unsigned<4> first; };" >"$work/uselib/inc/extra.zyl"
echo "struct Extra { unsigned<4> second; };" >"$work/uselib/extra.zyl"
# uselib GENERATOR MAKE_PROGRAM
uselib() {
    local gen=$1 make=$2 bin=$work/uselib-${1// /-}
    local generated=$bin/generated/shop
    configure "$gen" "$make" "$work/uselib" "$bin" \
        -DZYL_RUNTIME_INCLUDE_DIR="$source/tests/runtime" -DSTORE_DATABASE=shop
    build "$bin"
    out=$(env -u LD_LIBRARY_PATH "$bin/uselib") || fail "$gen: the program linked to zylcomp::libzylcomp failed"
    [ "$out" = "/ 1800 messages" ] || fail "$gen: the program linked to zylcomp::libzylcomp printed: $out"
    for f in shop.h shop.c shop.hpp shop.xml shop.cs shop.java shop.d; do
        [ -f "$generated/$f" ] || fail "$gen: DATABASE shop and OUTPUT_DIR generated/shop gave no generated/shop/$f"
    done
    grep -qF "$work/uselib/inc/extra.zyl" "$generated/shop.d" || fail "$gen: INCLUDE_DIR inc was not searched first"
    find "$bin" -name 'shop.c.o' | grep -q . || fail "$gen: the generated shop.c was not compiled"
    build "$bin"
    grep -q "Compiling schema" "$work/build.log" && fail "$gen: zylcomp ran again for store.zyl though nothing changed"
    return 0
}
command -v make >/dev/null && uselib "Unix Makefiles" "$(command -v make)"
command -v ninja >/dev/null && uselib Ninja "$(command -v ninja)"

# A DATABASE that the schema does not declare fails the build, and says why.
configure "$generator" "$make_program" "$work/uselib" "$work/uselib-build" \
    -DZYL_RUNTIME_INCLUDE_DIR="$source/tests/runtime" -DSTORE_DATABASE=store
if cmake --build "$work/uselib-build" >"$work/build.log" 2>&1; then
    fail "a DATABASE that the schema does not declare built"
elif ! tr -s ' \n' '  ' <"$work/build.log" | grep -q "store.zyl does not declare database 'store'"; then
    cat "$work/build.log"
    fail "a DATABASE that the schema does not declare failed without saying why"
fi

step "pkg-config, from the moved prefix"
if command -v pkg-config >/dev/null; then
    export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
    flags=$(pkg-config --cflags --libs zylcomp) || fail "pkg-config does not find zylcomp"
    [[ "$flags" == *"-Wl,-rpath,"* ]] || fail "pkg-config --libs gives no run path: $flags"
    [ "$(pkg-config --modversion zylcomp)" = "$version" ] || fail "pkg-config --modversion is not $version"
    pc_prefix=$(pkg-config --variable=prefix zylcomp)
    [ "$(cd "$pc_prefix" && pwd -P)" = "$(cd "$prefix" && pwd -P)" ] ||
        fail "pkg-config's prefix is $pc_prefix, not the moved $prefix"
    # shellcheck disable=SC2086 # the flags are words
    "$cc" -o "$work/uselib-pc" "$work/uselib/uselib.c" $flags || fail "cannot build with the pkg-config flags"
    [ "$(env -u LD_LIBRARY_PATH "$work/uselib-pc")" = "/ 1800 messages" ] ||
        fail "the program built with the pkg-config flags does not find the library at run time"
else
    echo "pkg-config is not installed: its check is skipped"
fi

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "all checks passed"
