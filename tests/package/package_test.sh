#!/bin/sh
# Uses the installed library or the packages as a new user does, in a directory that is moved after the installation.
# Usage: package_test.sh library|archives BUILD
set -eu
sources=$(cd "$(dirname "$0")/../.." && pwd)
outside=$sources/tests/package/outside
build=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export CXXFLAGS=-O0 CMAKE_GENERATOR=Ninja

# says PROGRAM: fails unless the program prints the right result.
says() {
    [ "$(LD_LIBRARY_PATH=$folder/moved/lib "$1")" = "a 0.50" ] || { echo "$1: wrong output" >&2; exit 1; }
}

library() {
    cmake --install "$build" --prefix "$folder/installed" >/dev/null
    mv installed moved

    cmake -S "$outside" -B found -DCMAKE_PREFIX_PATH="$folder/moved" >/dev/null
    cmake --build found
    says found/outside

    (cd moved/include && find Kelbase Vellora -name '*.h' | sed 's/.*/#include <&>/') >every.h
    # shellcheck disable=SC2046 # each flag is one argument
    c++ -std=c++17 -Wall -Wextra -Werror -include ./every.h "$outside/main.cpp" -o plain \
        $(PKG_CONFIG_PATH=moved/lib/pkgconfig pkg-config --cflags --libs kelbase)
    says ./plain

    cmake -S "$outside" -B beside -DKELBASE_SOURCES="$sources" >/dev/null
    cmake --build beside
    says beside/outside
}

# ends_in LINE COMMAND...: fails unless the last line that the command prints begins with LINE.
ends_in() {
    line=$1
    shift
    "$@" >report.txt
    tail -n 1 report.txt | grep -q "^$line" || { cat report.txt >&2; exit 1; }
}

# tool FOLDER: fails unless the tool in FOLDER runs the plug-in of FOLDER with the libraries of FOLDER.
tool() {
    ends_in 'DONE 5 changes' "$1/bin/xcodhost" run "$1/lib/kelbase/PostInstall.bundle" --product 4900 --language 11
    ends_in PASS "$1/bin/xcodhost" validate "$1/lib/kelbase/PostInstall.bundle"
    ldd "$1/bin/xcodhost" | grep -q "$(realpath "$1")/.*/libmacplatform" || { ldd "$1/bin/xcodhost" >&2; exit 1; }
}

archives() {
    (cd "$build" && cpack -B "$folder") >/dev/null
    tar -xzf kelbase-*.tar.gz
    rm -r _CPack_Packages
    tool "$(echo kelbase-*-Linux)"
    dpkg-deb --extract kelbase_*.deb system
    tool system/usr
}

"$1"
