#!/usr/bin/env bash
# examples_test.sh HOST LIBRARY COMMAND...: the example that COMMAND runs prints the id that HOST
# prints, and tells in one line why there is none.
set -u
host=("$1" "$2" 1.5) example=("${@:3}")
LD_LIBRARY_PATH=$(dirname "$2")
export LD_LIBRARY_PATH

# Where no hardware can be read, each call makes another id, of which only the layout can be compared.
comparable() {
    if [ "$("${host[@]}")" = "$("${host[@]}")" ]; then cat; else tr '0-9a-f' x; fi
}

wanted=$("${host[@]}" | comparable)
got=$("${example[@]}" 1.5 2>&1 | comparable)
[[ -n $wanted && $got == "$wanted" ]] || { echo "$got, not $wanted" && exit 1; }

complaint=$("${example[@]}" 9.9 2>&1 >/dev/full)
[[ $? -ne 0 && $complaint == *9.9* && $complaint != *$'\n'* ]] || { echo "$complaint" && exit 1; }
