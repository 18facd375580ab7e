#!/usr/bin/env bash
# Installs, moves what was installed, and uses it from there as a client does by CMake and by
# pkg-config. Usage: package.sh CMAKE GENERATOR BUILD_FOLDER COMPILER
set -euo pipefail
cmake=$1 generator=$2 build=$3 compiler=$4
consumer=$(cd "$(dirname "$0")/consumer" && pwd)
work=$build/package
rm -rf "$work"
mkdir -p "$work"

"$cmake" --install "$build" --prefix "$work/installed" >"$work/install.log"
mv "$work/installed" "$work/moved"
libdir=$(dirname "$(find "$work/moved" -name libkelm.so)")

configure() { # configure FOLDER [OPTION...]
    "$cmake" -G "$generator" -S "$consumer" -B "$work/$1" -DCMAKE_PREFIX_PATH="$work/moved" \
        -DCMAKE_CXX_COMPILER="$compiler" "${@:2}"
}

configure by-cmake
"$cmake" --build "$work/by-cmake"
"$work/by-cmake/consumer"

export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs kelm)"
"$compiler" -std=c++11 "$consumer/main.cpp" "${flags[@]}" -Wl,-rpath,"$libdir" -o "$work/by-pkg-config"
"$work/by-pkg-config"

if configure refused -DKELM_WANTED=2 >"$work/refused.log" 2>&1; then
    echo "version 2 was not refused"
    exit 1
fi
grep -q 'requested version "2"' "$work/refused.log"
