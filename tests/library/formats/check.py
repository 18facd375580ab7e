#!/usr/bin/env -S python3 -B
"""Formats checked by compilers or by the tool: each planted mistake is told with its number and
fault, and of calls that are right nothing is, which print what they print without the check.

Usage: check.py INCLUDE_FOLDER LIBRARY WORK_FOLDER COMPILER...    a compiler, or the tool
"""

import json
import os
import pathlib
import random
import re
import subprocess
import sys

INCLUDE, LIBRARY, WORK = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
PLANTED = pathlib.Path(__file__).resolve().with_name("planted.cpp")
CHECKED = ["-std=c++20", f"-I{INCLUDE}", "-include", "KelmCheck.h"]
LINE = re.compile(r"planted\.cpp:(\d+):\d+:(?: +in 'constexpr'| error: call to consteval)")
FAULT = re.compile(r"(?:call to non-'constexpr'|note: non-constexpr) function '(?:void KelmCheck::)?"
                   r"(Conversion|Argument)\w*(?:<(\d+)(?:, KelmCheck::Fault::(\w+))?>"
                   r"|\(\) \[with int Number = (\d+)(?:; .*::(\w+))?\])'")
TOLD = re.compile(r".*planted\.cpp:(\d+): (?:conversion (\d+) '%.*'|argument \d+): ([^,\n]*)")
ROWS = [  # prefixes, conversions, arguments
    (["", "h", "l", "I32", "F", "L", "N"], "diouxX",
     ["i", "'x'", "true", "kRed", "u'x'", "7U", "Members::kMost", "m.bits", "short{5}", "sizeof(int) > 2"]),
    (["I64"], "diouxX", ["5LL", "std::uint64_t{7}", "static_cast<long long>(sizeof i)", "-i * 5LL"]),
    (["", "l", "h", "L", "I64"], "efgG", ["1.5", "2.5F", "i * 0.5"]),
    (["", "h", "F", "I32"], "s", ["\"text\"", "array", "nullptr", "k.constBuffer()", "i == 7 ? \"a\" : \"bcd\"",
                                  "reinterpret_cast<const unsigned char*>(array)"]),
    (["l"], "sS", ["u\"wide\"", "w.constBuffer()", "nullptr"]),
    ([""], "S", ["u\"wide\"", "static_cast<const char16_t*>(w)"]),
    (["", "h"], "c", ["'x'", "65", "*array", "k[0]"]),
    (["h"], "C", ["'x'", "i + 60"]),
    (["l", ""], "C", ["u'x'", "L'x'", "66"]),
    (["", "I64"], "p", ["reinterpret_cast<void*>(16)", "nullptr"]),
    ([""], "n", ["&i", "nullptr"]),
]
RIGHT = """#include <Kelm.h>
#include <cstdio>
enum Colour { kRed };
struct Members { static const int kMost = 5; unsigned bits : 3; };
static constexpr char kFormat[] = "%d %s";
static const char kPlain[] = "%d";
struct Wide : WString {
    static int Next(Kelm& k, int n, ...) { va_list l; va_start(l, n); k.Format("%d", va_arg(l, int)); va_end(l); return n; }
    Wide() { Format(u"%d", 7); AppendFormat(u"%s", u"x"); std::puts((FromFormat(u"%c", u'y') + *this).ToKelm()); }
};
int main() {
    Wide wide; Kelm k("text"); int i = Wide::Next(k, 7, 8); char array[] = "array"; const char* pointer = "%d"; char buffer[] = "%d %d";
    Members m{}; Kelm format("%s"); std::puts(k); WString w(u"wide");
    k.Format(pointer, i); k.AppendFormat(buffer, i, i); std::puts(k);
    k.FormatMsg(2, format, array); k.AppendFormat(kFormat, i, "text"); std::puts(k);
    k.Format(+(i == 7 ? "%d" : "%u"), i); k.AppendFormat(+kPlain, i); k.AppendFormat("none"); std::puts(k);
"""


def output(*command):
    done = subprocess.run(command, capture_output=True, text=True, errors="backslashreplace", env={**os.environ, "LC_ALL": "C"})
    return done.returncode, done.stdout + done.stderr


def right_calls():
    chance = random.Random(1)
    lines = [RIGHT]
    for _ in range(200):
        formats, arguments = [], []
        for prefixes, letters, candidates in chance.choices(ROWS, k=chance.randint(1, 4)):
            width = chance.choice(["", "", "5", "*"])
            precision = chance.choice(["", "", ".3", ".", ".*"])
            arguments += ["9"] * (width + precision).count("*") + [chance.choice(candidates)]
            flags = "".join(chance.sample("-+ 0#", chance.choice([0, 0, 1, 2])))
            formats.append("%" + flags + width + precision + chance.choice(prefixes) + chance.choice(letters))
        text = chance.choice([" ", "%%", "\\n", "\\u20ac"]).join(formats)
        lines.append(f'k = Kelm::FromFormat("{text}", {", ".join(arguments)}); std::puts(k);\n')
    return "".join(lines) + "}\n"


def by_tool(tool, source):
    (WORK / "compile_commands.json").write_text(json.dumps([{
        "directory": str(WORK), "file": str(source), "command": f"c++ -std=c++17 -I{INCLUDE} -c {source}"}]))
    status, text = output(tool, WORK)
    return [status, *text.strip().split("\n")]


def compare(title, found, wanted):
    missed, extra = (sorted(set(one) - set(other), key=str) for one, other in ((wanted, found), (found, wanted)))
    print(f"{title}: {len(found)} of {len(wanted)}", *(f"\n  not told: {row}" for row in missed),
          *(f"\n  told: {row}" for row in extra))
    return found == wanted


def check_tool(tool, planted, right):
    status, *lines = by_tool(tool, PLANTED)
    told = [(int(row[1]), int(row[2] or 0), row[3]) for row in map(TOLD.match, lines) if row]
    return compare(f"{tool}, planted", [status, *told], [1, *planted]) & compare(
        f"{tool}, right calls", by_tool(tool, right), [0, "1 sources, 209 formats, 0 doubtful"])


def check_compiler(compiler, planted, right):
    wanted = [(line, number, re.sub(r"\W", "", "".join(word[0].upper() + word[1:] for word in
                                                     re.split("[ -]", fault)))) for line, number, fault in planted]
    every = "-ferror-limit=0" if "clang" in compiler else "-fmax-errors=0"
    found, line = [], 0
    for text in output(compiler, *CHECKED, "-w", every, "-fsyntax-only", PLANTED)[1].split("\n"):
        if place := LINE.search(text):
            line = int(place[1])
        if fault := FAULT.search(text):
            number = int(fault[2] or fault[4]) if fault[1] == "Conversion" else 0
            found.append((line, number, fault[3] or fault[5] or "IsTakenByNoConversion"))
    printed = []
    for flags in CHECKED, CHECKED[:2]:
        failed, told = output(compiler, *flags, "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror", right,
                              LIBRARY, f"-Wl,-rpath,{LIBRARY.parent}", "-o", WORK / "right")
        printed.append((told if failed else output(WORK / "right")[1]).split("\n"))
    return compare(f"{compiler}, planted", found, wanted) & compare(f"{compiler}, right calls", *printed)


def main():
    WORK.mkdir(parents=True, exist_ok=True)
    planted = [(line, int(row[1]), row[2]) for line, text in enumerate(PLANTED.read_text().split("\n"), 1)
               if (row := re.search(r"// (\d) (.*)", text))]
    right = WORK / "right.cpp"
    right.write_text(right_calls())
    return all([(check_tool if command.endswith("check-formats") else check_compiler)(command, planted, right)
                for command in sys.argv[4:]])


sys.exit(0 if main() else 1)
