#!/usr/bin/env bash
# Shows the example programs at work on texts that every Debian has and on those of examples/data.
# Usage: examples/demo.sh PROGRAMS [CHAPTER]...    PROGRAMS: the folder of the built examples;
#        CHAPTER: words, table, recode or million; all of them without one
set -euo pipefail
PATH=$(cd "$1" && pwd):$PATH
chapters=${*:2}
cd "$(dirname "$0")"
[[ $(locale charmap 2>/dev/null) == UTF-8 ]] || export LC_ALL=C.UTF-8

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
licenses=/usr/share/common-licenses
zones=/usr/share/zoneinfo

say() { printf '\n\n--- %s\n' "$*"; }

# Shows a command, runs it and shows its status where it is not 0.
show() {
    printf '\n$ %s\n' "$1"
    local status=0
    eval "$1" || status=$?
    ((status == 0)) || echo "[status $status]"
}

words_chapter() {
    say 'Real texts: the words of the licences that Debian carries'
    show "words --top 12 $licenses/{Apache-2.0,GPL-2,GPL-3,LGPL-2.1,MPL-2.0}:65001"
    say 'Three code pages in one report: bytes in the file, bytes in UTF-8, 16-bit units'
    show 'words --top 10 data/letter-65001.txt:65001 data/markt-1252.txt:1252 data/eki-932.txt:932'
    say 'Searching in any case'
    show "words --find 'patent licen' $licenses/{Apache-2.0,GPL-3}:65001"
    show 'words --find ÄPFEL data/markt-1252.txt:1252'
    say 'Words that are alike: misspellings stand out'
    show 'words --alike 0.85 data/letter-65001.txt:65001'
    say 'What cannot be read is said, and the rest goes on'
    show 'words --top 3 no-such-file data/markt-1252.txt:4711 data/noise.bin:65001 data/eki-932.txt:932'
}

table_chapter() {
    local customers='data/customers-{932.txt:932:pipe,1252.csv:1252:semicolon,65001.csv:65001:comma}'
    say 'The time zone data: islands among the countries'
    show "table --comment '#' --names code,country --keep country~island --sort country \\
    $zones/iso3166.tab:65001"
    say 'Zones of America south of the equator, edited, sorted by two fields'
    show "table --comment '#' --names 'codes,place,zone,comments?' \\
    --keep zone~america/ --keep 'place<0' --replace 'zone|_| ' --remove 'zone|America/' \\
    --sort codes --sort zone:down --fields zone,codes,place,comments --width 36 \\
    $zones/zone1970.tab:65001"
    say 'Zones whose comments are alike'
    show "table --comment '#' --names 'codes,place,zone,comments?' --keep 'comments!=' \\
    --alike comments:0.75 --first 10 $zones/zone1970.tab:65001"
    say 'Three code pages, three delimiters, one table; bad rows are told by line'
    show "table --header --keep 'active?' --tabs 4 --sort orders:number:down \\
    --fields name,city,orders,note,id $customers"
    say 'Customers who may be the same'
    show "table --header --problems 0 --alike name:0.75 $customers"
    say 'Rows in another code page, and what it cannot express; the end of the pipe reads them again'
    show "table --header --fields id,city,name --out 1252:semicolon data/customers-65001.csv:65001:comma |
    table --header /dev/stdin:1252:semicolon"
    say 'What is not there'
    show 'table data/customers-932.txt:4711 data/no-such-file'
    show 'table --header --sort nmae data/customers-1252.csv:1252:semicolon'
}

recode_chapter() {
    mkdir "$work/letters" && cp data/*-* "$work/letters"
    say 'A folder of several code pages, first dry, then in place'
    cd "$work"
    show 'recode --dry-run --from 65001,932,1252 letters'
    show 'recode --from 932 letters/{customers,eki}-932.txt; cat letters/eki-932.txt'
    cd "$OLDPWD"
}

million_chapter() {
    local rows=$work/rows
    say 'A million rows'
    awk 'BEGIN { for (i = 1; i <= 1000000; ++i)
        printf "%d;Kunde %d;%s;%d;%s\n", i, i * 7919 % 1000003, i % 3 ? "K\366ln" : "L\374beck",
            i * 31 % 10007, i % 2 ? "yes" : "no" }' >"$rows"
    du -h --apparent-size "$rows" | awk '{ print $1 "B in code page 1252" }'
    show 'time table --names id,name,city,orders,active --keep active? --keep city=LÜBECK \
    --sort orders:number:down --sort name --first 8 "$rows":1252:semicolon'
}

for chapter in ${chapters:-words table recode million}; do
    "${chapter}_chapter"
done
