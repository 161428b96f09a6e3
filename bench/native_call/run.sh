#!/usr/bin/env bash
# Times the native library against a program that reads each of its sources once, on this machine
# and with 250 pairs of adapters. Needs root; stores nothing outside of its own namespaces.
#
#   bench/native_call/run.sh [LIBRARY]
set -euo pipefail
cd "$(dirname "$0")/../.."

library=$(realpath "${1:-build/linux/libdeviceid.so}")
bench=$(mktemp)
trap 'rm -f "$bench"' EXIT
gcc -O2 -Wall -Wextra -Iinclude bench/native_call/bench.c -ldl -o "$bench"
export library bench

unshare -m bash -ec '
    mount -t tmpfs none /var/lib
    echo "this machine: $("$bench" "$library" 100 200)"'
unshare -mn bash -ec '
    mount -t tmpfs none /var/lib
    mount -t sysfs none /sys
    for pair in {1..250}; do echo "link add pair$pair type veth peer name peer$pair"; done | ip -batch -
    echo "with 250 pairs: $("$bench" "$library" 60 5)"'
