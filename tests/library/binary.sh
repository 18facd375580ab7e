#!/usr/bin/env bash
# What must hold of the built library besides its names.
# Usage: binary.sh CONFIGURATION LIBRARY OBJECT...
set -euo pipefail
configuration=$1 library=$2
shift 2
failed=0
reject() { # reject WHAT TEXT: a text that is not empty is a finding
    [[ -z $2 ]] || { printf '%s:\n%s\n' "$1" "$2"; failed=1; }
}

sections=$(readelf -SW "$@")
dynamic=$(readelf -dW "$library")
segments=$(readelf -lW "$library")

# Loading and unloading do no work: the only entries are the start-up files' own.
reject "initialisers in the objects" "$(grep -E '\.(init|fini)_array|\.[cd]tors' <<<"$sections" || true)"
reject "work at exit" "$(nm -A "$@" | grep -E '_GLOBAL__sub_[ID]|__cxa_(thread_)?atexit' || true)"
reject "initialisers in the library" "$(grep -E '(INIT|FINI)_ARRAYSZ' <<<"$dynamic" | grep -v ' 8 (bytes)' || true)"

reject "libraries besides the compiler's and the C library's" \
    "$(grep NEEDED <<<"$dynamic" | grep -vE 'lib(stdc\+\+|m|c|gcc_s)\.so|ld-linux' || true)"
# Nothing that sets a locale, keeps state or works at exit comes in unseen. The list is of x86-64,
# by g++ and by clang++; a build for coverage or a sanitizer is not looked at.
imports=$(dirname "$0")/../../src/imports.txt
[[ -s $imports ]] || reject "imports" "no list"
reject "imports that src/imports.txt does not have" "$(nm -D --undefined-only "$library" |
    sed -E 's/.* //; s/@.*//' | LC_ALL=C sort -u | comm -23 - <(LC_ALL=C sort -u "$imports"))"
grep SONAME <<<"$dynamic" | grep -qF '[libkelm.so.1]' || reject "name" "not libkelm.so.1"
reject "an executable stack" "$(grep GNU_STACK <<<"$segments" | grep E || true)"
grep -q GNU_RELRO <<<"$segments" || reject "hardening" "no read-only relocations"
grep -q BIND_NOW <<<"$dynamic" || reject "hardening" "lazy binding"
symbols=$(nm -D "$library")
code=$(objdump -d --no-show-raw-insn "$library")
grep -q __stack_chk_fail <<<"$symbols" || reject "hardening" "no stack protector"
if [[ $configuration == Release ]]; then
    grep -q '__.*_chk@' <<<"$symbols" || reject "hardening" "no fortified functions"
    grep -q __glibcxx_assert_fail <<<"$symbols" || reject "hardening" "no assertions of the library's"
    # A stack is probed by what nothing else does.
    grep -qE 'or[ql] +\$0x0,.*\(%[re]sp\)' <<<"$code" || [[ $(uname -m) != x86_64 ]] ||
        reject "hardening" "no probes of the stack"
fi
# Whoever calls an export lands on a landing pad.
[[ $(uname -m) != x86_64 ]] || reject "exports without a landing pad" "$(
    awk 'NR == FNR { if ($2 ~ /^[TW]$/) wanted[$1]; next }
        /^[0-9a-f]+ <.*>:$/ { at = $1; name = $2; getline; if (at in wanted) { ++seen; if (!/endbr64/) print name } }
        END { if (seen < 200) print "only " seen " exports seen" }' \
        <(nm -D --defined-only "$library") - <<<"$code"
)"
exit $failed
