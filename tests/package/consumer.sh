#!/bin/sh
# Usage: consumer.sh SOURCE_TREE BUILD_TREE WORK_DIRECTORY CMAKE
# Builds and runs a consumer against an installed tree, with CMake and with pkg-config, and against the
# source tree as a subdirectory, with the library shared and static.
set -eu
source=$1 build=$2 work=$3 cmake=$4
. "$(dirname "$0")/consume.sh"

rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$work/installed" > "$work/install.log"
# The installed files must not depend on their prefix.
mv "$work/installed" "$work/moved"

consume_installed "$work/moved" installed

# As a subdirectory: static, unless the parent project wants it shared.
echo "== subdirectory"
build_and_run "$work/subdirectory" -DTARN_SOURCE="$source"
[ -e "$work/subdirectory/tarn/tarn/libtarn-utils.a" ]
[ -e "$work/subdirectory/tarn/tarn/libtarn-document.a" ]
if grep '^BUILD_SHARED_LIBS:' "$work/subdirectory/CMakeCache.txt"; then exit 1; fi
echo "== subdirectory, BUILD_SHARED_LIBS=ON"
build_and_run "$work/subdirectory-shared" -DTARN_SOURCE="$source" -DBUILD_SHARED_LIBS=ON
[ -e "$work/subdirectory-shared/tarn/tarn/libtarn-utils.so" ]
[ -e "$work/subdirectory-shared/tarn/tarn/libtarn-document.so" ]

"$cmake" -G Ninja -S "$source" -B "$work/static" -DBUILD_SHARED_LIBS=OFF -DTARN_BUILD_TESTS=OFF \
    -DTARN_BUILD_TOOLS=OFF -DTARN_BUILD_EXAMPLES=OFF > "$work/static.log"
"$cmake" --build "$work/static" >> "$work/static.log"
"$cmake" --install "$work/static" --prefix "$work/static-installed" >> "$work/static.log"
consume_installed "$work/static-installed" static
