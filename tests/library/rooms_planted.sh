#!/usr/bin/env bash
# The check of the rooms sees each way to break their order. Usage: rooms_planted.sh CHECK FOLDER
set -euo pipefail
check=$1
cd "$(mktemp -d -p "$2")"
trap 'rm -rf "$PWD"' EXIT

plant() { # plant SOURCE INCLUDED
    rm -rf platform src && mkdir -p platform/pages src
    echo '#include "lanes/vectors.h"' >platform/pages/right.h
    mkdir -p "$(dirname "$1")"
    printf '#include "%s"\n' "$2" >"$1"
}

plant src/a.cpp pages/pages.h
"$check" .
for fault in "platform/lanes/a.h search/scan.h" "platform/pages/a.cpp search/scan.h" \
    "platform/wide/a.h multibyte/multibyte.h" "platform/print/a.cpp storage.h" \
    "platform/a.cpp pages/pages.h" "platform/attic/a.h lanes/vectors.h" \
    "src/a.cpp pages/utf8.h" "src/a.h lanes/vectors.h"; do
    # shellcheck disable=SC2086
    plant $fault
    if "$check" . >/dev/null; then
        echo "not seen: $fault"
        exit 1
    fi
done
