#!/bin/sh
# Makes one locale, unless another build folder has.
# Usage: make_locale.sh LOCALE SOURCE CHARMAP BYTE_ORDER    "LITTLE_ENDIAN" or "BIG_ENDIAN"
set -eu
[ ! -f "$1.stamp" ] || exit 0
mkdir -p "$(dirname "$1")"
# The exit status is 1 for warnings alone (Shift_JIS has no backslash), so what counts is whether
# the locale is there.
order=--little-endian
[ "$4" != BIG_ENDIAN ] || order=--big-endian
localedef $order --quiet --no-archive --force -i "$2" -f "$3" "$1" || test -f "$1/LC_CTYPE"
touch "$1.stamp"
