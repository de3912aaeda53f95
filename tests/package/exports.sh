#!/bin/sh
# Usage: exports.sh LIBRARY LIST...
# Fails unless LIBRARY exports exactly the symbols in the LISTs, each with its version.
set -eu
library=$1
shift
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
# A symbol of type A is the name of a version.
nm -D --defined-only "$library" | awk '$2 != "A" { print $3 }' | LC_ALL=C sort -u > "$actual"
cat "$@" | LC_ALL=C sort -u | diff -u --label "symbols in $*" --label "symbols in $library" - "$actual"
