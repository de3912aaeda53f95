# Functions that the tests of an installed tree share. A test sets $work, $cmake and $CXX, and $programs
# if it does not want all programs of the consumer.
consumer=$(dirname "$0")/consumer
: "${programs:=consumer document services}"

# build_and_run DIRECTORY CMAKE_ARGUMENT...
build_and_run() {
    directory=$1
    shift
    # shellcheck disable=SC2086 # a list of targets
    "$cmake" -G Ninja -S "$consumer" -B "$directory" "$@" > "$directory.log" 2>&1 &&
        "$cmake" --build "$directory" -t $programs >> "$directory.log" 2>&1 ||
        { cat "$directory.log"; exit 1; }
    for program in $programs; do "$directory/$program"; done
}

# consume_installed PREFIX NAME builds and runs the consumer with the library in PREFIX and no other. The
# names of its files begin with NAME.
consume_installed() {
    echo "== $2, with CMake"
    build_and_run "$work/$2-with-cmake" -DCMAKE_PREFIX_PATH="$1"
    grep -q "^tarn_DIR:PATH=$1/" "$work/$2-with-cmake/CMakeCache.txt"

    echo "== $2, with pkg-config"
    libdir=$(dirname "$(find "$1" -name 'libtarn-utils.so' -o -name 'libtarn-utils.a')")
    export PKG_CONFIG_PATH="$libdir/pkgconfig"
    for program in $programs; do
        package=tarn-utils
        [ "$program" != document ] || package=tarn-document
        [ "$(pkg-config --variable=libdir $package | xargs realpath)" = "$(realpath "$libdir")" ]
        # pkg-config escapes the blanks in names of directories for the shell.
        eval '"$CXX" -std=c++17' "${CXXFLAGS:-} $(pkg-config --cflags $package)" '"$consumer/$program.cpp"' \
            "$(pkg-config --libs $package)" '-Wl,-rpath,"$libdir" -o "$work/$2-$program"'
        "$work/$2-$program"
    done
    unset PKG_CONFIG_PATH
}
