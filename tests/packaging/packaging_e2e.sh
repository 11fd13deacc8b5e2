#!/bin/bash
# Installs the library into a folder of its own and links a program with it in the two ways that users do.
set -u
build=$1
here=$(cd "$(dirname "$0")" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
prefix=$folder/prefix
failed=0

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
compiler=$(cached CMAKE_CXX_COMPILER)
library_dir=$prefix/$(cached CMAKE_INSTALL_LIBDIR)
variant=default
[ "$(cached MORVAQNDS_CHECKED)" != ON ] || variant=checked

verdict() {  # verdict NAME WHY: an empty WHY is success
    if [ -z "$2" ]; then
        echo "ok $1"
    else
        echo "FAILED $1: $2"
        [ ! -s "$folder/log" ] || sed 's/^/    /' "$folder/log"
        failed=1
    fi
}

# why_not PROGRAM: prints what is wrong with the linked consumer, nothing if it works.
why_not() {
    local said
    said=$("$1" 2>&1)
    [ "$said" = "$variant" ] || echo "says '$said' instead of '$variant'"
    said=$("$1" ends here 2>&1)
    [ "$said" = "consumer: ends" ] || echo "says '$said' at its fatal end"
}

installed_files() {
    cmake --install "$build" --prefix "$prefix" >"$folder/log" 2>&1 || { echo "cmake --install fails"; return; }
    diff <(ls "$here/../../include") <(ls "$prefix/include/morvaqnds") >"$folder/log" || echo "headers differ"
    local dynamic
    dynamic=$(readelf -d "$library_dir/libmorvaqnds.so")
    grep -q 'SONAME.*\[libmorvaqnds\.so\.1\]' <<<"$dynamic" || echo "wrong SONAME"
    ! grep -q SYMBOLIC <<<"$dynamic" || echo "linked with -Bsymbolic"
}
verdict InstalledFilesAreComplete "$(installed_files)"

whole_library_header() {
    local macros header guard
    macros=$(echo '#include <morvaqnds.h>' |
        "$compiler" -x c++ -E -dM -I"$prefix/include/morvaqnds" - 2>"$folder/log") || { echo "does not compile"; return; }
    for header in "$prefix"/include/morvaqnds/*.h; do
        guard=$(sed -n 's/^#ifndef //p' "$header" | head -n 1)
        grep -q "^#define $guard\b" <<<"$macros" || echo "${header##*/} is missing"
    done
}
verdict TheWholeLibraryHeaderBringsEveryHeader "$(whole_library_header)"

with_cmake() {
    { cmake -G Ninja -S "$here" -B "$folder/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" &&
        cmake --build "$folder/cmake"; } >"$folder/log" 2>&1 || { echo "does not build"; return; }
    why_not "$folder/cmake/consumer"
}
verdict FindPackageLinksAProgram "$(with_cmake)"

with_pkg_config() {
    local flags
    export PKG_CONFIG_PATH=$library_dir/pkgconfig LD_LIBRARY_PATH=$library_dir
    flags=$(pkg-config --cflags --libs morvaqnds 2>"$folder/log") || { echo "pkg-config fails"; return; }
    # shellcheck disable=SC2086
    "$compiler" "$here/consumer.cxx" $flags -o "$folder/consumer" >"$folder/log" 2>&1 || { echo "does not build"; return; }
    why_not "$folder/consumer"
}
verdict PkgConfigLinksAProgram "$(with_pkg_config)"
exit $failed
