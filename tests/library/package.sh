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

# The folders that pkg-config tells, wherever a distribution puts them.
told() { # told EXPECTED_LIBDIR EXPECTED_INCLUDEDIR [OPTION...]
    "$cmake" -G "$generator" -S "$root" -B "$work/told" -DCMAKE_CXX_COMPILER="$compiler" \
        -DKELM_BUILD_TESTS=OFF -DKELM_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX=/usr "${@:3}" >"$work/told.log"
    mkdir -p "$work/stage$1/pkgconfig"
    cp "$work/told/kelm.pc" "$work/stage$1/pkgconfig"
    local variable expected folder
    while read -r variable expected; do
        folder=$(PKG_CONFIG_PATH=$work/stage$1/pkgconfig pkg-config --variable="$variable" kelm)
        folder=$(realpath -m "$folder")
        [[ ${folder#"$(realpath "$work")/stage"} == "$expected" ]] ||
            { echo "$variable is $folder instead of $expected"; exit 1; }
    done <<<"libdir $1
includedir $2"
}
root=$(cd "$(dirname "$0")/../.." && pwd)
told /usr/lib/x86_64-linux-gnu /usr/include -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu
told /opt/kelm/lib /opt/kelm/include -DCMAKE_INSTALL_LIBDIR=/opt/kelm/lib \
    -DCMAKE_INSTALL_INCLUDEDIR=/opt/kelm/include
