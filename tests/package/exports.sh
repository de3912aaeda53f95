#!/bin/sh
# Usage: exports.sh LIBRARY LIST
# Fails unless LIBRARY exports exactly the symbols in LIST.
set -eu
library=$1 list=$2
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
# A symbol of type A is the name of the interface's version.
nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' |
    LC_ALL=C sort -u > "$actual"
LC_ALL=C sort -u "$list" | diff -u --label "symbols in $list" --label "symbols in $library" - "$actual"
