#!/usr/bin/env bash
# Programs take the sources in, in the ways that the guide tells, and print the id of this PC.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
export XDG_DATA_HOME=$work/share

# build SOURCES NAME [OPTION]...
build() {
    cmake -G Ninja -S "$1" -B "$work/$2" "${@:3}" && cmake --build "$work/$2"
} >&2
built() { "$work/$1/consumer" | grep -x '1-5-[-0-9a-f]\{36\}'; }

build tests/hosts cloned "-DSOURCES=$PWD" "-DCOMMIT=$(git rev-parse HEAD)"
built cloned

folders=(-DCMAKE_INSTALL_{BINDIR=tools,LIBDIR=lib/of/ours,INCLUDEDIR=headers/of/ours})
build tests/hosts static "-DSOURCES=$PWD" -DBUILD_SHARED_LIBS=OFF -DDEVICEID_INSTALL=ON "${folders[@]}"
built static
cmake --install "$work/static" --prefix "$work/moved" >&2
mv "$work/moved" "$work/usr"
lib=$work/usr/lib/of/ours
names=$(nm --defined-only --extern-only --format=posix "$lib/libdeviceid.a" | grep -c ' . ')
[[ $names == 5 ]] || { echo "the static library shows $names names" && exit 1; }
build tests/consumer found "-Ddeviceid_DIR=$lib/cmake/deviceid"
built found
export PKG_CONFIG_PATH=$lib/pkgconfig
# shellcheck disable=SC2046
gcc tests/consumer/consumer.c $(pkg-config --cflags --libs deviceid) -o "$work/found/consumer"
built found
