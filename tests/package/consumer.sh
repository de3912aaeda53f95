#!/bin/sh
# Usage: consumer.sh SOURCE_TREE BUILD_TREE WORK_DIRECTORY CMAKE
# Builds and runs a consumer against an installed tree, with CMake and with pkg-config, and against the
# source tree as a subdirectory, with the library shared and static.
set -eu
source=$1 build=$2 work=$3 cmake=$4
here=$(dirname "$0")/consumer
export CTEST_OUTPUT_ON_FAILURE=1

build_and_run() {
    directory=$1
    shift
    "$cmake" -G Ninja -S "$here" -B "$directory" "$@" > "$directory.log" 2>&1 &&
        "$cmake" --build "$directory" >> "$directory.log" 2>&1 || { cat "$directory.log"; exit 1; }
    "$directory/consumer"
}

rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$work/installed" > "$work/install.log"
# What is installed must not depend on where it was installed to.
mv "$work/installed" "$work/moved"

echo "== installed, with CMake"
build_and_run "$work/with-cmake" -DCMAKE_PREFIX_PATH="$work/moved"

echo "== installed, with pkg-config"
libdir=$(dirname "$(find "$work/moved" -name 'libtarn-utils.*' -print -quit)")
export PKG_CONFIG_PATH="$libdir/pkgconfig"
# shellcheck disable=SC2046,SC2086 -- lists of flags
"$CXX" -std=c++17 ${CXXFLAGS:-} $(pkg-config --cflags tarn-utils) "$here/consumer.cpp" \
    $(pkg-config --libs tarn-utils) -Wl,-rpath,"$libdir" -o "$work/with-pkg-config"
"$work/with-pkg-config"

for shared in ON OFF; do
    echo "== subdirectory, BUILD_SHARED_LIBS=$shared"
    build_and_run "$work/subdirectory-$shared" -DTARN_SOURCE="$source" -DBUILD_SHARED_LIBS=$shared
done

echo "== installed static library"
"$cmake" -G Ninja -S "$source" -B "$work/static" -DBUILD_SHARED_LIBS=OFF -DTARN_BUILD_TESTS=OFF \
    -DTARN_BUILD_TOOLS=OFF > "$work/static.log"
"$cmake" --build "$work/static" >> "$work/static.log"
"$cmake" --install "$work/static" --prefix "$work/static-installed" >> "$work/static.log"
build_and_run "$work/with-static" -DCMAKE_PREFIX_PATH="$work/static-installed"
