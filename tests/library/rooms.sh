#!/usr/bin/env bash
# Includes run downwards: a source of the platform takes headers of its own room and of rooms on
# lower floors, the classes take the one header of a room that has its name.
# Usage: rooms.sh SOURCE_FOLDER
set -euo pipefail
cd "$1"
declare -A floor=([src]=5 [print]=4 [multibyte]=3 [wide]=3 [pages]=2 [search]=2 [lanes]=1 [.]=1)

shopt -s nullglob
failed=0 seen=0
reject() {
    echo "$1"
    failed=1
}

room_of() { # room_of INCLUDED: the room that a name between quotes leads to
    if [[ $1 == */* ]]; then
        echo "${1%%/*}"
    elif [[ -f platform/$1 ]]; then
        echo .
    else
        echo src
    fi
}

for source in platform/*.{h,cpp} platform/*/*.{h,cpp}; do
    room=$(dirname "${source#platform/}")
    [[ -n ${floor[$room]-} ]] || reject "$source: no room of that name"
    for included in $(sed -nE 's/^ *# *include "([^"]+)".*/\1/p' "$source"); do
        seen=$((seen + 1))
        below=$(room_of "$included")
        [[ $below == "$room" || ${floor[$below]-9} -lt ${floor[$room]-0} ]] ||
            reject "$source: includes $included, which is not below its room"
    done
done
for source in src/*.{h,cpp}; do
    for included in $(sed -nE 's/^ *# *include "([a-z0-9_]+\/[^"]+)".*/\1/p' "$source"); do
        [[ $included == "${included%%/*}/${included%%/*}.h" ]] ||
            reject "$source: includes $included, which is the room's own"
    done
done
((seen > 0)) || reject "no include was read"
exit $failed
