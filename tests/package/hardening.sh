#!/bin/sh
# Usage: hardening.sh FILE...
# Fails unless the linked FILEs have the protections of TARN_HARDENING: addresses are resolved at the
# start and read-only afterwards, the stack is checked and not executable, and code is not relocated.
set -eu
failed=""

# expect|refuse WHAT PATTERN TEXT
expect() {
    printf '%s\n' "$3" | grep -Eq "$2" || { echo "$file: no $1"; failed=yes; }
}
refuse() {
    ! printf '%s\n' "$3" | grep -Eq "$2" || { echo "$file: $1"; failed=yes; }
}

for file in "$@"; do
    segments=$(readelf -W -l "$file")
    dynamic=$(readelf -W -d "$file")
    symbols=$(nm -D --undefined-only "$file")
    expect "GNU_RELRO segment" GNU_RELRO "$segments"
    expect "BIND_NOW" 'BIND_NOW|FLAGS_1.*NOW' "$dynamic"
    expect "stack protector" __stack_chk_fail "$symbols"
    expect "GNU_STACK segment" GNU_STACK "$segments"
    refuse "executable stack" 'GNU_STACK.* RWE ' "$segments"
    refuse "writable code" '^ *LOAD.* RWE ' "$segments"
    refuse "relocated code" TEXTREL "$dynamic"
done
[ -z "$failed" ]
