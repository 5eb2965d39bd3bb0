#!/usr/bin/env bash
# Installs the build into a temporary prefix and uses it as a project would:
# checks the installed files, builds examples/cmake-consumer against the
# prefix with find_package(zylcomp CONFIG) and zylcomp_generate(), checks
# that a change to a file the schema #includes compiles the schema again,
# tries zylcomp_generate's other arguments, links a program to
# zylcomp::libzylcomp, and asks pkg-config for the flags.
#
# Run by CTest (tests/CMakeLists.txt passes the arguments):
#   install_test.sh BUILD_DIR SOURCE_DIR GENERATOR MAKE_PROGRAM C_COMPILER \
#                   BINDIR LIBDIR INCLUDEDIR MANDIR VERSION SOVERSION
set -euo pipefail

if [ $# -ne 11 ]; then
    echo "usage: $0 BUILD_DIR SOURCE_DIR GENERATOR MAKE_PROGRAM C_COMPILER BINDIR LIBDIR INCLUDEDIR MANDIR VERSION SOVERSION" >&2
    exit 2
fi
build=$1 source=$2 generator=$3 make_program=$4 cc=$5
bindir=$6 libdir=$7 includedir=$8 mandir=$9 version=${10} soversion=${11}

work=$(mktemp -d "${TMPDIR:-/tmp}/zylcomp-install.XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

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

# A CMake project in $1, built in $2, configured against the prefix.
configure() {
    cmake -S "$1" -B "$2" -G "$generator" -DCMAKE_MAKE_PROGRAM="$make_program" -DCMAKE_C_COMPILER="$cc" \
        -DCMAKE_PREFIX_PATH="$prefix" "${@:3}" >"$work/configure.log" 2>&1 ||
        { cat "$work/configure.log"; die "configuring $1"; }
}
# Builds $1 and keeps the log in $work/build.log.
build() {
    cmake --build "$1" >"$work/build.log" 2>&1 || { cat "$work/build.log"; die "building $1"; }
}
ran_zylcomp() { grep -q "Compiling schema schema/inventory.zyl with zylcomp" "$work/build.log"; }

step "install into $prefix"
cmake --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1 || { cat "$work/install.log"; die "cmake --install"; }

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

# The installed program finds its library through its run path, not through
# the build tree.
out=$(env -u LD_LIBRARY_PATH "$prefix/$bindir/zylcomp" --version) || fail "installed zylcomp --version failed"
[ "$out" = "$(printf 'zylcomp %s\ndictionary format 8.1 build 1800' "$version")" ] ||
    fail "installed zylcomp --version printed: $out"

step "consumer project ($generator)"
cp -R "$source/examples/cmake-consumer" "$work/consumer"
schema=$work/consumer/schema
out=$work/consumer-build/zylcomp/inventory
configure "$work/consumer" "$work/consumer-build" -DZYL_RUNTIME_INCLUDE_DIR="$source/tests/runtime"
build "$work/consumer-build"
ran_zylcomp || fail "the first build did not run zylcomp"
for f in inventory.h inventory.c inventory.d; do
    [ -f "$out/$f" ] || fail "the build generated no $f"
done
objects=$(find "$work/consumer-build" -name '*.o' | sort)
grep -q "inventory\.c\.o$" <<<"$objects" || fail "the generated inventory.c was not compiled: $objects"
grep -q "main\.c\.o$" <<<"$objects" || fail "main.c, which includes inventory.h, was not compiled: $objects"
inventory_o=$(grep "inventory\.c\.o$" <<<"$objects")

step "dependency file"
expected="$out/inventory.h $out/inventory.c: \\
  $schema/inventory.zyl \\
  $schema/units.zyl \\
  $schema/limits.zyl

$schema/units.zyl:

$schema/limits.zyl:"
[ "$(cat "$out/inventory.d")" = "$expected" ] || fail "inventory.d holds:
$(cat "$out/inventory.d")
expected:
$expected"

step "a build with nothing changed"
build "$work/consumer-build"
ran_zylcomp && fail "zylcomp ran again though nothing changed"

step "an #include of an #include changes"
cp "$out/inventory.c" "$work/inventory.c.before"
sleep 1 # a clear step in modification times, even on coarse file systems
sed -i 's/NAME_LENGTH 40/NAME_LENGTH 64/' "$schema/limits.zyl"
build "$work/consumer-build"
ran_zylcomp || fail "a change to limits.zyl did not compile the schema again"
cmp -s "$out/inventory.c" "$work/inventory.c.before" && fail "inventory.c did not change with limits.zyl"
[ "$inventory_o" -nt "$schema/limits.zyl" ] || fail "inventory.c was not compiled again"

step "touching a direct #include"
sleep 1
touch "$schema/units.zyl"
build "$work/consumer-build"
ran_zylcomp || fail "touching units.zyl did not compile the schema again"
[ "$out/inventory.h" -nt "$schema/units.zyl" ] || fail "inventory.h is older than units.zyl"
build "$work/consumer-build"
ran_zylcomp && fail "zylcomp ran again though nothing changed since"

step "zylcomp::libzylcomp, and zylcomp_generate's other arguments"
mkdir "$work/uselib"
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

# store.zyl declares database shop; the files go where the project says.
add_library(store OBJECT)
target_include_directories(store PRIVATE ${ZYL_RUNTIME_INCLUDE_DIR})
zylcomp_generate(store SCHEMA store.zyl DATABASE ${STORE_DATABASE} OUTPUT_DIR generated
                 OPTIONS --cpp --xml-schema)
EOF
cp "$source/examples/shop.zyl" "$work/uselib/store.zyl"
configure "$work/uselib" "$work/uselib-build" -DZYL_RUNTIME_INCLUDE_DIR="$source/tests/runtime" -DSTORE_DATABASE=shop
build "$work/uselib-build"
out=$(env -u LD_LIBRARY_PATH "$work/uselib-build/uselib") || fail "the program linked to zylcomp::libzylcomp failed"
[ "$out" = "/ 1800 messages" ] || fail "the program linked to zylcomp::libzylcomp printed: $out"
for f in shop.h shop.c shop.hpp shop.xml; do
    [ -f "$work/uselib-build/generated/$f" ] || fail "DATABASE shop and OUTPUT_DIR generated gave no generated/$f"
done
find "$work/uselib-build" -name 'shop.c.o' | grep -q . || fail "the generated shop.c was not compiled"

# A DATABASE that the schema does not declare fails the build, and says why.
configure "$work/uselib" "$work/uselib-build" -DSTORE_DATABASE=store
if cmake --build "$work/uselib-build" >"$work/build.log" 2>&1; then
    fail "a DATABASE that the schema does not declare built"
elif ! tr -s ' \n' '  ' <"$work/build.log" | grep -q "store.zyl does not declare database 'store'"; then
    cat "$work/build.log"
    fail "a DATABASE that the schema does not declare failed without saying why"
fi

step "pkg-config"
if command -v pkg-config >/dev/null; then
    export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
    flags=$(pkg-config --cflags --libs zylcomp | sed "s/ *$//") || fail "pkg-config does not find zylcomp"
    [ "$flags" = "-I$prefix/$includedir -L$prefix/$libdir -lzylcomp" ] || fail "pkg-config --cflags --libs gives: $flags"
    [ "$(pkg-config --modversion zylcomp)" = "$version" ] || fail "pkg-config --modversion is not $version"
    # shellcheck disable=SC2086 # the flags are words
    "$cc" -o "$work/uselib-pc" "$work/uselib/uselib.c" $flags -Wl,-rpath,"$prefix/$libdir" ||
        fail "cannot build with the pkg-config flags"
    [ "$(env -u LD_LIBRARY_PATH "$work/uselib-pc")" = "/ 1800 messages" ] ||
        fail "the program built with the pkg-config flags does not run"
else
    echo "pkg-config is not installed: its check is skipped"
fi

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "all checks passed"
