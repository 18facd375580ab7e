#!/usr/bin/env bash
# Compiles the code in the tables of a porting guide: what stands under "Here", "Write" and "Compiles"
# has to compile, a name alone to be a type or a word of the header, and what stands under "Ambiguous"
# to be so. Usage: tables.sh COMPILER INCLUDE GUIDE
set -euo pipefail
compiler=$1 include=$2 guide=$3
declare -i right=0 wrong=0 faults=0

# KIND LINE CODE for each piece of code.
pieces() {
    awk -F ' *[|] *' '
        /^[|] *---/ { next }
        !/^[|]/ { isTable = 0; next }
        !isTable { isTable = 1; split("", kind)
            for (i = 2; i < NF; ++i) {
                kind[i] = $i ~ /^(Here|Write|Compiles)$/ ? "right" : $i == "Ambiguous" ? "wrong" : ""
            }
            next }
        { for (i = 2; i < NF; ++i) {
            for (cell = kind[i] == "" ? "" : $i; match(cell, /`+[^`]+`+/);
                    cell = substr(cell, RSTART + RLENGTH)) {
                code = substr(cell, RSTART, RLENGTH); gsub(/`/, "", code)
                print kind[i], FNR, code } } }' "$guide"
}

# compile NUMBER CODE...: NUMBER is the type of n.
compile() {
    "$compiler" -std=c++20 -fsyntax-only -pedantic-errors -I"$include" -include KelmCheck.h -x c++ - 2>&1 <<END
#include <Kelm.h>
#include <cerrno>
#include <map>
using T = int;
void Use(Kelm s, Kelm k, Kelm text, WString w, Kelm::Token token, const char* x, char c, int i, $1 n) {
${*:2}
}
END
}

fail() {
    echo "${guide##*/}:$1: $2"
    faults+=1
}

all=
while read -r kind line code; do
    if [[ $kind == wrong ]]; then
        wrong+=1
        said=$(compile long "$code;") && fail "$line" "$code is not ambiguous"
        [[ $said == *ambiguous* ]] || fail "$line" "$code: $said"
        continue
    fi
    right+=1
    if [[ $code =~ ^(Kelm::|Token::)*[A-Z][A-Za-z]*$|^operator ]]; then
        grep -qF -- "${code##*::}" "$include/Kelm.h" || fail "$line" "$code is not in the header"
    elif [[ $code =~ ^if ]]; then
        all+=$'\n'"#line $line \"${guide##*/}\""$'\n'"$code {}"
    elif [[ $code =~ ^[a-z0-9_:]+(\ long|\ int)*(\<.*\>)?$ && $code != errno && $code != s ]]; then
        all+=$'\n'"#line $line \"${guide##*/}\""$'\n'"{ $code named{}; }"
    else
        all+=$'\n'"#line $line \"${guide##*/}\""$'\n'"(void)($code);"
    fi
done < <(pieces)
compile int "$all" || fail 0 "code that does not compile"
echo "$right right, $wrong ambiguous, $faults faults"
((faults == 0 && right > 30 && wrong > 9))
