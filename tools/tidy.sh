#!/usr/bin/env bash
# tidy.sh BUILD [--all]: runs clang-tidy over each file of the library and of the host program, built in
# BUILD, that has changed since it passed. A change of a header or of the checks concerns all of them.
# Files that include the header-only JSON and CLI11 libraries take half a minute each: --all checks them, too.
set -euo pipefail
cd "$(dirname "$0")/.."
export passed=$1/tidy
mkdir -p "$passed"

# clang-tidy does not know all options of the compiler that the project is built with.
sed 's/ -fno-gnu-unique//' "$1/compile_commands.json" > "$passed/new"
cmp -s "$passed/new" "$passed/compile_commands.json" || mv "$passed/new" "$passed/compile_commands.json"
touch -r "$(find src tools include .clang-tidy "$passed/compile_commands.json" -type f ! -name '*.cc' \
    -printf '%T@ %p\n' | sort -n | tail -n 1 | cut -d' ' -f2-)" "$passed/headers"

check() {
    ! grep -Eq "$slow" "$1" || return 0
    local stamp=$passed/${1//\//.}
    [[ ! $stamp -nt $1 || ! $stamp -nt $passed/headers ]] || return 0
    touch "$stamp.begun"
    clang-tidy --quiet -p "$passed" "$1" && mv "$stamp.begun" "$stamp"
}
export -f check
export slow='#include .*(nlohmann|CLI/)'
[[ ${2:-} != --all ]] || slow='no such line'
python3 -c 'import json, sys; print(*{x["file"] for x in json.load(sys.stdin)}, sep="\n")' \
    < "$passed/compile_commands.json" | grep -E "^$PWD/(src|tools)/" | xargs -P "$(nproc)" -I {} bash -c 'check {}'
