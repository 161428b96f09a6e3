#!/usr/bin/env bash
# exports_test.sh LIBRARY: the shared library shows exactly the five names.
set -euo pipefail

readonly expected='GetHIDVersion GetHardwareId GetHardwareIdEx GetHardwareIdMod RecheckHardwareId'

names=$(nm --dynamic --defined-only --format=posix "$1" | cut -d' ' -f1 | sort | xargs)
[ "$names" = "$expected" ] || { echo "exports $names" && exit 1; }
