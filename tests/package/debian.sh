#!/bin/sh
# Usage: debian.sh SOURCE_TREE WORK_DIRECTORY CMAKE
# Makes the Debian packages and compares their dependencies and contents with debian.txt. Unpacks them
# into an empty root, builds and runs a consumer with the libraries there, and runs json2xml from there.
set -eu
source=$1 work=$2 cmake=$3
here=$(dirname "$0")
. "$here/consume.sh"

env -u CXXFLAGS "$source/scripts/package"

root=$work/root
rm -rf "$work"
mkdir -p "$root"
for package in "$source"/build/package/*.deb; do
    echo "$(dpkg-deb -f "$package" Package): $(dpkg-deb -f "$package" Depends | sed 's/ (>= [^)]*)//g')"
    dpkg-deb -c "$package" | awk '!/^d/ { $1 = $2 = $3 = $4 = $5 = ""; print }' | sed 's/^ */    /'
    dpkg-deb -x "$package" "$root"
done > "$work/contents.txt"
version=$(sed -n 's/^project(tarn VERSION \([^ ]*\).*/\1/p' "$source/CMakeLists.txt")
sed "s/$version/VERSION/g" "$work/contents.txt" | diff -u "$here/debian.txt" -

# Installed, the libraries are where every program looks.
export LD_LIBRARY_PATH="$root/usr/lib/x86_64-linux-gnu"
consume_installed "$root/usr" unpacked

echo "== json2xml"
echo '{"key": [1, true, null]}' | "$root/usr/bin/json2xml" | xmllint --noout -
man --warnings -E UTF-8 -l "$root/usr/share/man/man1/json2xml.1.gz" > "$work/manual.txt" 2> "$work/warnings.txt"
cat "$work/warnings.txt"
[ ! -s "$work/warnings.txt" ]
for option in $("$root/usr/bin/json2xml" --help | grep -o -e '--[a-z-]*' | sort -u); do
    grep -q -e "$option" "$work/manual.txt" || { echo "the manual does not mention $option"; exit 1; }
done
