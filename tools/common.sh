# shellcheck shell=bash
# Sourced by the tools: goes to the root of the tree and gets what they need.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

missing=()

# need PACKAGE COMMAND...: notes the package unless the command succeeds.
need() {
    "${@:2}" >/dev/null 2>&1 || missing+=("$1")
}

# Installs what was noted; where nothing is missing it needs neither the network nor rights.
install_missing() {
    ((${#missing[@]})) || return 0
    echo "== installing ${missing[*]}"
    local as_root=(env DEBIAN_FRONTEND=noninteractive)
    ((EUID == 0)) || as_root=(sudo "${as_root[@]}")
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" apt-get install -qy --no-install-recommends -o Acquire::Retries=3 "${missing[@]}"
    missing=()
}

need_build() {
    need cmake command -v cmake
    need ninja-build command -v ninja
    need g++ command -v g++
}

need_tests() {
    need_build
    need libgtest-dev test -f /usr/include/gtest/gtest.h
    need locales test -f /usr/share/i18n/locales/ja_JP
    need pkg-config command -v pkg-config
    need python3 command -v python3
    need libfmt-dev test -f /usr/include/fmt/format.h
    need gdb command -v gdb
    need python3-clang /usr/bin/python3 -c 'import clang.cindex'
    need valgrind command -v valgrind
    need abigail-tools command -v abidiff
    # Newer releases keep the rarer converters of the C library in a package of their own.
    if apt-cache show libc-gconv-modules-extra >/dev/null 2>&1; then
        need libc-gconv-modules-extra dpkg -s libc-gconv-modules-extra
    fi
}

# build PRESET [OPTION...]
build() {
    cmake --preset "$1" >/dev/null && cmake --build --preset "$@"
}
