#!/usr/bin/env bash
# run.sh: prints what loading and unloading the libraries costs over empty ones, natively and in Wine.
# The presets linux, windows-x86 and windows-x64 are built first.
set -euo pipefail
cd "$(dirname "$0")/../.."
here=bench/load
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

gcc -O2 $here/load.c -ldl -o "$work/load"
echo 'void nothing(void) {}' | gcc -O2 -shared -fPIC -xc - -o "$work/libempty.so"
"$work/load" "$PWD/build/linux/libdeviceid.so" "$work/libempty.so"

for pair in x86:i686 x64:x86_64; do
    bits=${pair%:*} triple=${pair#*:}-w64-mingw32
    mkdir "$work/$bits"
    cp "build/windows-$bits/deviceid.dll" "$work/$bits"
    $here/empty_dll.py "$work/$bits/deviceid.dll" "$triple" "$work/$bits"
    "$triple-gcc" -O2 $here/load.c -o "$work/$bits/load.exe"
    echo "$bits in Wine:"
    tools/wine/wine_root.sh run "$work/$bits/load.exe" deviceid.dll empty.dll | tr -d '\r'
done
