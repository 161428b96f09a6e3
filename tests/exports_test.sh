#!/usr/bin/env bash
# exports_test.sh LIBRARY: the library shows exactly the five names, undecorated, and the DLL needs
# nothing that Windows does not bring along.
set -euo pipefail

readonly expected='GetHIDVersion GetHardwareId GetHardwareIdEx GetHardwareIdMod RecheckHardwareId'
readonly system_dlls='advapi32 iphlpapi kernel32 msvcrt ole32 oleaut32 setupapi shell32'

case $1 in
*.dll)
    table=$(i686-w64-mingw32-objdump -p "$1")
    names=$(sed -n '/Ordinal\/Name Pointer/,/^$/s/^\t\[ *[0-9]*\] //p' <<<"$table")
    for dll in $(sed -n 's/^\tDLL Name: //p' <<<"$table" | tr '[:upper:]' '[:lower:]'); do
        [[ " $system_dlls " == *" ${dll%.dll} "* ]] || { echo "imports $dll" && exit 1; }
    done
    ;;
*)
    names=$(nm --dynamic --defined-only --format=posix "$1" | cut -d' ' -f1)
    ;;
esac

names=$(sort <<<"$names" | xargs)
[ "$names" = "$expected" ] || { echo "exports $names" && exit 1; }
