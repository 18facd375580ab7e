#!/usr/bin/env bash
# Every exported public member with a name of its own is called by a fuzz target.
# Usage: fuzzed.sh EXPORTS SOURCE...
set -euo pipefail
# The protected members; the public ones above them reach them.
protected='Init|AllocBuffer|FreeData|CopyBeforeWrite|AllocBeforeWrite|AssignCopy|AllocCopy|MoveAssign|ConcatCopy|ConcatInPlace|GetFormattedLength|VFormat|FormatV|AppendFormatV|_FromCodePage|FindWhitespace|FindChar|operator|GetData|CopyUnshared|DestroyUnshared'
missing=0
for name in $(grep -oE '::[A-Za-z_]+[(<]' "$1" | tr -d ':(<' | sort -u | grep -vxE "$protected"); do
    if ! grep -qE "\b$name[(<&{ ]" "${@:2}"; then
        echo "no fuzz target calls $name"
        missing=1
    fi
done
exit $missing
