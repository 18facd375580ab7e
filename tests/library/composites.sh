#!/usr/bin/env bash
# Builds and runs a source, without a warning, by every compiler, library and standard that there is.
# Usage: composites.sh SOURCE INCLUDE_FOLDER LIBRARY WORK_FOLDER
set -euo pipefail
source=$1 include=$2 library=$3 work=$4
mkdir -p "$work"
ran=0
while read -r -a command; do
    command -v "${command[0]}" >/dev/null || continue
    echo 'int main() {}' | "${command[@]}" -x c++ -o "$work/probe" - 2>/dev/null || continue
    for standard in 11 14 17 20 2b "20 -fno-exceptions -fno-rtti"; do
        read -ra flags <<<"-std=c++$standard"
        "${command[@]}" "${flags[@]}" -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
            -I"$include" "$source" "$library" -Wl,-rpath,"$(dirname "$library")" -o "$work/composites" ||
            { echo "${command[*]} -std=c++$standard: does not compile"; exit 1; }
        "$work/composites" || { echo "${command[*]} -std=c++$standard"; exit 1; }
        ran=$((ran + 1))
    done
    # What including it costs, without a clock: less than one header of the standard library.
    lines() { echo "#include <$1>" | "${command[@]}" -std=c++17 -I"$include" -x c++ -E -P - | wc -l; }
    (($(lines Kelm.h) < $(lines string_view))) || { echo "${command[*]}: a costly header"; exit 1; }
done <<'COMPILERS'
g++
clang++
clang++-19
clang++-19 -stdlib=libc++
COMPILERS
echo "$ran builds"
((ran >= 4))
