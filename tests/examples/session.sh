#!/usr/bin/env bash
# Runs the commands of a recorded session in a terminal again and compares what they print.
# Usage: session.sh PROGRAMS SESSION [--update]    PROGRAMS: the folder of the examples
#
# A command stands behind "$ " and goes on in the next line where it ends with a backslash. What
# follows is its output, up to the next command or a line that begins with "# ". In a page of the
# documentation only blocks marked ```console count. Commands run in the root of the tree, and behind
# a "cd" where that led; $TREE is the root, $SCRATCH an empty
# folder of the session's own.
set -u
PATH=$(cd "$1" && pwd):$PATH
session=$(cd "$(dirname "$2")" && pwd)/${2##*/}
cd "$(dirname "$0")/../.." || exit
own=$(mktemp -d) || exit
trap 'rm -rf "$own"' EXIT
mkdir "$own/scratch"
export SCRATCH=$own/scratch TREE=$PWD

run() {
    (trap 'pwd >"$own/folder"' EXIT && eval "$1") </dev/null 2>&1
    local status=$?
    ((status == 0)) || echo "[status $status]"
    cd "$(<"$own/folder")" || exit
}

record() {
    local inside=0 skipping=0 line more
    [[ $session == *.md ]] || inside=1
    while IFS= read -r line; do
        if [[ $line == '```'* && $session == *.md ]]; then
            [[ $line == '```console' ]] && inside=1 || inside=0
            skipping=0
        elif [[ $line == '# '* ]]; then
            skipping=0
        fi
        if ((inside)) && [[ $line == '$ '* ]]; then
            skipping=1
            while [[ $line == *\\ ]] && IFS= read -r more; do
                line+=$'\n'$more
            done
            printf '%s\n' "$line"
            run "${line#??}"
        elif ((!skipping)); then
            printf '%s\n' "$line"
        fi
    done
}

if [[ ${3-} == --update ]]; then
    record <"$session" >"$session.new" && mv "$session.new" "$session"
else
    diff -u --label recorded --label now "$session" <(record <"$session")
fi
