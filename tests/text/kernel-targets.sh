#!/bin/sh
# Usage: kernel-targets.sh SOURCE_TREE
# Fails if a kernel is compiled for a feature of the processor for which text/kernel_level.cpp does not ask at
# the level of the kernel: it would end programs on a processor without that feature.
set -eu
cd "$1"
failed=""

# check LEVEL END: the kernels in the files of LEVEL. What is asked for stands before the line with END.
check() {
    asked=$(sed "/$2/,\$d" text/kernel_level.cpp | grep -o 'supports("[^"]*"' | cut -d '"' -f 2)
    kernels=$(grep -hos 'gnu::target("[^"]*"' text/*_"$1".cpp tarn/xml/*_"$1".cpp | cut -d '"' -f 2 | tr , '\n')
    [ -n "$kernels" ] || { echo "No kernels for $1 are found." >&2; failed=yes; }
    for feature in $(echo "$kernels" | sort -u); do
        echo "$asked" | grep -qx "$feature" && continue
        echo "The kernels for $1 need $feature, and nobody asks the processor for it." >&2
        failed=yes
    done
}

check ssse3 'level == KernelLevel::Avx2'
check avx2 'return canRun(KernelLevel::Avx2)'
check avx512 'bool canUse'
[ -z "$failed" ]
