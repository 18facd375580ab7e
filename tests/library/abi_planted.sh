#!/usr/bin/env bash
# The check of the ABI turns red where two private members of the tokenizer have changed places.
# Usage: abi_planted.sh ROOT FOLDER COMPILER
set -euo pipefail
root=$1 folder=$2
rm -rf "$folder"
mkdir -p "$folder"
cp -r "$root"/{include,src,platform,abi,tools} "$folder"
cd "$folder"
sed -i '/^    int m_nStart;$/{h;d};/^    int m_nEnd;$/{G}' include/Kelm.h
"$3" -std=c++20 -g -shared -fPIC -fvisibility=hidden -Iinclude -Iplatform src/*.cpp \
    -Wl,--version-script=src/kelm.map -Wl,-soname,libkelm.so.1 -o libkelm.so
if tools/abi "$PWD/libkelm.so" >log; then
    echo "the changed layout is not told"
    exit 1
fi
grep -q "m_nStart.*offset changed" log || { cat log; exit 1; }
