#!/bin/sh
# Usage: run.sh EXAMPLE PROGRAM [ARGUMENT]...
# Runs PROGRAM with EXAMPLE.input, if there is such a file, on its standard input. Fails unless it prints
# EXAMPLE.expected and, if that is an XML document, unless xmllint accepts it.
set -eu
example=$1
shift
input=$example.input
[ -e "$input" ] || input=/dev/null
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT

"$@" < "$input" > "$actual"
diff -u --label "$example.expected" --label "what it printed" "$example.expected" "$actual"
case $(head -c 5 "$actual") in
"<?xml") xmllint --noout "$actual" ;;
esac
