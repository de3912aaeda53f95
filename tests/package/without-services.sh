#!/bin/sh
# Usage: without-services.sh SOURCE_TREE WORK_DIRECTORY CMAKE CTEST
# Builds the library without its services, shared and static, while what the services need cannot be
# found. Runs the tests, installs the library, and builds and runs a consumer with it.
set -eu
source=$1 work=$2 cmake=$3 ctest=$4
programs="consumer document"
. "$(dirname "$0")/consume.sh"

rm -rf "$work"
mkdir -p "$work"
# pkg-config finds only what consume_installed adds, so not minizip.
export PKG_CONFIG_LIBDIR="$work"
absent="-DCMAKE_DISABLE_FIND_PACKAGE_RapidJSON=ON -DCMAKE_DISABLE_FIND_PACKAGE_CppMicroServices=ON"

# build_and_install NAME CMAKE_ARGUMENT...
build_and_install() {
    name=$1
    shift
    # shellcheck disable=SC2086 # a list of options
    { "$cmake" -G Ninja -S "$source" -B "$work/$name" -DTARN_SERVICES=OFF -DTARN_BUILD_TOOLS=OFF \
        -DTARN_TEST_KERNELS=OFF -DCMAKE_CXX_FLAGS_RELEASE=-O1 $absent "$@" &&
        "$cmake" --build "$work/$name" &&
        "$cmake" --install "$work/$name" --prefix "$work/$name-installed"; } > "$work/$name.log" 2>&1 ||
        { cat "$work/$name.log"; exit 1; }
}

build_and_install shared
"$ctest" --test-dir "$work/shared" --output-on-failure --no-tests=error
# The tests use pkg-config, to find libxml2. The library itself must not.
build_and_install static -DBUILD_SHARED_LIBS=OFF -DTARN_BUILD_TESTS=OFF -DTARN_BUILD_EXAMPLES=OFF \
    -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON

for name in shared static; do
    prefix=$work/$name-installed
    if (cd "$prefix" && find include lib*) | grep -e services -e framework; then exit 1; fi
    consume_installed "$prefix" "$name"
done
