# What the tests of an installed tree share. They set $work and $cmake, and $CXX in the environment.
consumer=$(dirname "$0")/consumer

# build_and_run DIRECTORY CMAKE_ARGUMENT...
build_and_run() {
    directory=$1
    shift
    "$cmake" -G Ninja -S "$consumer" -B "$directory" "$@" > "$directory.log" 2>&1 &&
        "$cmake" --build "$directory" >> "$directory.log" 2>&1 || { cat "$directory.log"; exit 1; }
    "$directory/consumer"
}

# consume_installed PREFIX builds and runs the consumer with the library in PREFIX and no other.
consume_installed() {
    echo "== installed, with CMake"
    build_and_run "$work/with-cmake" -DCMAKE_PREFIX_PATH="$1"
    grep -q "^tarn_DIR:PATH=$1/" "$work/with-cmake/CMakeCache.txt"

    echo "== installed, with pkg-config"
    libdir=$(dirname "$(find "$1" -name 'libtarn-utils.so' -print -quit)")
    export PKG_CONFIG_LIBDIR="$libdir/pkgconfig"
    # shellcheck disable=SC2046,SC2086 # lists of flags
    "$CXX" -std=c++17 ${CXXFLAGS:-} $(pkg-config --cflags tarn-utils) "$consumer/consumer.cpp" \
        $(pkg-config --libs tarn-utils) -Wl,-rpath,"$libdir" -o "$work/with-pkg-config"
    unset PKG_CONFIG_LIBDIR
    "$work/with-pkg-config"
}
