#!/usr/bin/env bash
# exports_test.sh LIBRARY: what programs and systems see of the shared library: five names, a small file,
# and that it needs nothing but a glibc of the age that the guide names.
set -euo pipefail
guide=$(dirname "$0")/../docs/guide.md
fail() { echo "$*" && exit 1; }

names=$(nm --dynamic --defined-only --format=posix "$1" | cut -d' ' -f1 | sort | xargs)
[[ $names == 'GetHIDVersion GetHardwareId GetHardwareIdEx GetHardwareIdMod RecheckHardwareId' ]] ||
    fail "exports $names"
needed=$(readelf --dynamic "$1" | sed -n '/NEEDED/s/.*\[\(.*\)\]/\1/p' | grep -v '^libm\.' | xargs)
[[ $needed == libc.so.6 ]] || fail "needs $needed"
version=$(objdump --dynamic-syms "$1" | grep -o 'GLIBC_[0-9.]*' | sort -V | tail -n 1)
promised=$(grep -o 'needs glibc [0-9.]*[0-9]' "$guide")
[[ $(printf '%s\n' "$version" "GLIBC_${promised##* }" | sort -V | tail -n 1) == "GLIBC_${promised##* }" ]] ||
    fail "needs $version, and the guide says: $promised"
bytes=$(size "$1" | awk 'END { print $4 }')
[[ $bytes -le 300000 ]] || fail "has $bytes bytes of code and data: streams alone would double them"
# Of a unique symbol the loader keeps one for all, and the library with it.
! readelf --wide --symbols "$1" | grep ' UNIQUE ' || fail "has unique symbols"
