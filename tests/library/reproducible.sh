#!/usr/bin/env bash
# The library is the same bytes from a folder of another name. Usage: reproducible.sh CMAKE ROOT
# LIBRARY FOLDER COMPILER
set -euo pipefail
n=0 cmake=$1 root=$2 library=$3 folder=$4
rm -rf "$folder"
mkdir -p "$folder/source"
cp -r "$root"/{CMakeLists.txt,cmake,debug,include,platform,src} "$folder/source"
"$cmake" -G Ninja -S "$folder/source" -B "$folder/elsewhere" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$5" -DKELM_DEBUG_INFO=ON -DKELM_BUILD_TESTS=OFF -DKELM_BUILD_EXAMPLES=OFF >/dev/null
"$cmake" --build "$folder/elsewhere" --target kelm >/dev/null
# Debug information names the folders that it was made in, and the build's identity has it in it.
for copy in "$library" "$folder/elsewhere/libkelm.so"; do
    objcopy --strip-debug --remove-section=.note.gnu.build-id "$copy" "$folder/$((++n)).so"
done
cmp "$folder/1.so" "$folder/2.so"
