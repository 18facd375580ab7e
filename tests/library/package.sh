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

# One version everywhere: the header's.
version=$(printf '#include <Kelm.h>\nKELM_VERSION_MAJOR.KELM_VERSION_MINOR.KELM_VERSION_PATCH\n' |
    "$compiler" -std=c++17 -x c++ -E -P "${flags[@]:0:1}" - | tail -n 1 | tr -d ' ')
root=$(cd "$(dirname "$0")/../.." && pwd)
told="$(pkg-config --modversion kelm) $(sed -nE '1s/kelm \((.*)\).*/\1/p' "$root/debian/changelog") $(basename "$(readlink -f "$libdir/libkelm.so")") \
$(objdump -p "$libdir/libkelm.so" | awk '/SONAME/ {print $2}')"
[[ $told == "$version $version libkelm.so.$version libkelm.so.${version%%.*}" ]] ||
    { echo "the header is of $version, the rest says $told"; exit 1; }

if configure refused -DKELM_WANTED=2 >"$work/refused.log" 2>&1; then
    echo "version 2 was not refused"
    exit 1
fi
grep -q 'requested version "2"' "$work/refused.log"

# With its sources, in a project of its user's: nothing but the library is built, by the user's flags.
configure by-folder -DKELM_SOURCE="$root"
configure fetched -DKELM_SOURCE="$root" -DKELM_FETCHED=ON -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror"
"$cmake" --build "$work/fetched"
"$work/fetched/consumer"
for folder in by-folder fetched; do
    "$cmake" --build "$work/$folder" --target help | grep -E 'kelm_tests|words' &&
        { echo "$folder: tests or examples come along"; exit 1; }
done

# A distribution stages what it installs, in folders of its own choice, and builds with what it staged.
stage=$work/stage
staged() { # staged LIBDIR INCLUDEDIR [OPTION...]
    rm -rf "$work/told" "$stage"
    "$cmake" -G "$generator" -S "$root" -B "$work/told" -DCMAKE_CXX_COMPILER="$compiler" \
        -DKELM_BUILD_TESTS=OFF -DKELM_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX=/usr "${@:3}" >"$work/told.log"
    cp -a "$build"/libkelm.so* "$work/told"
    DESTDIR=$stage "$cmake" --install "$work/told" >>"$work/told.log"
    PKG_CONFIG_PATH=$stage$1/pkgconfig
    export PKG_CONFIG_SYSROOT_DIR=$stage
    read -ra flags <<<"$(pkg-config --cflags --libs kelm)"
    [[ $(realpath "${flags[0]#-I}" "${flags[1]#-L}") == "$(realpath "$stage$2" "$stage$1")" ]] ||
        { echo "${flags[*]} instead of $2 and $1"; exit 1; }
    "$compiler" -std=c++11 "$consumer/main.cpp" "${flags[@]}" -Wl,-rpath,"$stage$1" -o "$work/by-stage"
    "$work/by-stage"
}
staged /opt/kelm/lib /usr/include -DCMAKE_INSTALL_LIBDIR=/opt/kelm/lib
staged /usr/lib/x86_64-linux-gnu /opt/kelm/include -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu \
    -DCMAKE_INSTALL_INCLUDEDIR=/opt/kelm/include
