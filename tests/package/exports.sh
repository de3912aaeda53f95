#!/bin/sh
# Usage: exports.sh LIBRARY NM LIST
# Fails unless LIBRARY exports exactly the symbols in LIST.
set -eu
library=$1 nm=$2 list=$3
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
# A symbol of type A is the name of the interface's version.
"$nm" -D --defined-only --without-symbol-versions "$library" | awk '$2 != "A" { print $3 }' |
    LC_ALL=C sort -u > "$actual"
LC_ALL=C sort -u "$list" | diff -u --label "symbols in $list" --label "symbols in $library" - "$actual"
