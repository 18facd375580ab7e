#!/usr/bin/env bash
# What must hold of the built library besides its names. Usage: binary.sh LIBRARY OBJECT...
set -euo pipefail
library=$1
shift
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
exit $failed
