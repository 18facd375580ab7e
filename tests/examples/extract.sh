#!/usr/bin/env bash
# Takes the C++ examples out of the header and the documents: FOLDER/NAME-N.inc holds the Nth of
# the file NAME, .cpp where it is a whole program. TEST must include each of the former.
# Usage: extract.sh FOLDER TEST FILE...
set -euo pipefail
folder=$1 test=$2
rm -rf "$folder"
mkdir -p "$folder"
awk -v folder="$folder" '
    function write(line) { print line > out }
    function start() { out = folder "/" name "-" ++blocks ".inc" }
    function finish() { close(out); out = "" }
    FNR == 1 { name = FILENAME; sub(".*/", "", name); blocks = 0; out = "" }
    /^```cpp$/ { start(); next }
    /^```[a-z]+$/ { other = 1; next }
    /^```/ {
        if (!other && out == "") { print FILENAME ":" FNR ": a fence without a language"; exit 1 }
        if (out != "") { finish() }
        other = 0
        next
    }
    name ~ /\.h$/ && match($0, /^ *\/\/\/     /) {
        if (out == "") { start() }
        write(substr($0, RLENGTH + 1))
        next
    }
    name ~ /\.h$/ && out != "" { finish() }
    out != "" { write($0) }
' "${@:3}"
for example in "$folder"/*.inc; do
    name=${example##*/}
    if grep -q '^int main' "$example"; then
        mv "$example" "${example%.inc}.cpp"
    elif ! grep -qF "\"$name\"" "$test"; then
        echo "$test does not run $name"
        exit 1
    fi
done
