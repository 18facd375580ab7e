#!/usr/bin/env bash
# What gdb and lldb show of values, in a running program and in a core file.
# Usage: debuggers.sh COMPILER SOURCE_FOLDER BUILD_FOLDER WORK_FOLDER
set -euo pipefail
compiler=$1 root=$2 build=$3 work=$4
library=$build/libkelm.so
here=$(cd "$(dirname "$0")" && pwd)
script=$root/debug/kelm_debug.py
rm -rf "$work"
mkdir -p "$work"
"$compiler" -g -std=c++17 -I"$root/include" "$here/debuggers/main.cpp" "$library" \
    -Wl,--enable-new-dtags,-rpath,"$build" -o "$work/program"

names=(row shared list locked nothing longer damaged token)
see() { # see WHAT FILE: every expected line is in what a debugger has said
    local missing=0
    while read -r line; do
        grep -qF -- "$line" "$2" || { echo "$1 does not show: $line"; missing=1; }
    done <<'LINES'
"a\0\"ä\xff", length 6, capacity 6, private
u"€x", length 2, capacity 2, private
"two hold this", length 13, capacity 13, shared by 2
"kept", length 4, capacity 4, locked
"", length 0, capacity 0, empty
xxxx"... (800 more), length 1000, capacity 1000, private
: holders 7, length 9, capacity 3>
"hold" at 4 of 13
LINES
    ((missing == 0)) || { cat "$2"; exit 1; }
}

export LC_ALL=C.UTF-8 PYTHONIOENCODING=utf-8
prints=()
for name in "${names[@]}"; do
    prints+=(-ex "print $name")
done
gdb -nx -batch -iex "set debuginfod enabled off" \
    -ex "set print frame-arguments all" -ex "source $script" -ex "break look" \
    -ex run -ex "backtrace 1" \
    -ex up "${prints[@]}" -ex "generate-core-file $work/core" "$work/program" >"$work/gdb" 2>&1
see gdb "$work/gdb"
grep -q '^#0 .*look (text="a\\0.*length 6' "$work/gdb" || { echo "no value in a frame"; exit 1; }
gdb -nx -batch -ex "source $script" -ex up "${prints[@]}" "$work/program" "$work/core" >"$work/gdb-core" 2>&1
see "gdb with a core file" "$work/gdb-core"

# Installed, it needs no command.
cmake -G Ninja -S "$root" -B "$work/told" -DKELM_BUILD_TESTS=OFF -DKELM_BUILD_EXAMPLES=OFF \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_INSTALL_PREFIX="$work/usr" >"$work/told.log"
cp -a "$build"/libkelm.so* "$work/told"
cmake --install "$work/told" >>"$work/told.log"
gdb -nx -batch -iex "set debuginfod enabled off" -iex "add-auto-load-safe-path $work" \
    -iex "set auto-load scripts-directory $work/usr/share/gdb/auto-load" -ex "break look" \
    -ex "set environment LD_LIBRARY_PATH $(dirname "$(find "$work/usr" -name libkelm.so)")" \
    -ex run -ex up "${prints[@]}" "$work/program" >"$work/gdb-installed" 2>&1
see "gdb with what is installed" "$work/gdb-installed"

command -v lldb >/dev/null || { echo "no lldb here to try"; exit 0; }
# The lldb of some distributions does not find its own modules.
PYTHONPATH=$(find /usr/lib/llvm-*/lib/python3* -maxdepth 1 -name '*-packages' 2>/dev/null | sort -V | paste -sd:)
export PYTHONPATH
for name in "${names[@]}"; do
    shows+=(-o "frame variable $name")
done
for from in run core; do
    what=(-o "target create $work/program" -o "breakpoint set --name look" -o run)
    [[ $from == run ]] || what=(-o "target create $work/program --core $work/core")
    lldb --no-lldbinit --batch -o "command script import $script" "${what[@]}" -o up \
        "${shows[@]}" >"$work/lldb-$from" 2>&1 || true
    see "lldb ($from)" "$work/lldb-$from"
done
