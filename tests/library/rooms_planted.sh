#!/usr/bin/env bash
# The check of the rooms sees each way to break their order. Usage: rooms_planted.sh CHECK FOLDER
set -euo pipefail
check=$1
cd "$(mktemp -d -p "$2")"
trap 'rm -rf "$PWD"' EXIT

plant() { # plant SOURCE INCLUDED
    rm -rf platform && mkdir -p "platform/$(dirname "$1")"
    printf '#include "%s"\n' "$2" >"platform/$1"
}

plant pages/a.cpp lanes/vectors.h
"$check" .
for fault in "lanes/a.h search/scan.h" "pages/a.cpp search/scan.h" "wide/a.h multibyte/multibyte.h" \
    "print/a.cpp storage.h" "a.cpp pages/pages.h" "attic/a.h lanes/vectors.h"; do
    # shellcheck disable=SC2086
    plant $fault
    if "$check" . >/dev/null; then
        echo "not seen: $fault"
        exit 1
    fi
done
