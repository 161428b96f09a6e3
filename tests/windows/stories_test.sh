#!/bin/bash
# Plays the stories that need nothing but files and flags with the real DLL, each on a fresh PC, and
# holds id, files and decisions against those of the native build.
#
#   stories_test.sh BUILD_DIR NATIVE_DIR   exits 77 where no Wine can run
set -euo pipefail

wine=$(dirname "$(realpath "$0")")/../../tools/wine/wine_root.sh
"$wine" why-not || exit
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
dmi=/sys/class/dmi/id
pc=(--serial 1234ABCD --file $dmi/product_serial PF0XYZ --file $dmi/board_serial BOARD7
    --nic 00:1a:2b:c3:d4:0f)
flags=([1]=SkipDateCheck [2]=ForceRandomHid [4]=UseEmulatedHardwareIds)

decisions() { tr -d '\r' < "$1" | cut -c17- | grep '^\[Info\]' || true; }
# The record without its date, and the date.
undated() { [[ ! -e $1 ]] || (head -c 55 "$1" && tail -c +64 "$1"); }
date_of() { if [[ -e $1 ]]; then od -An -td8 -j55 -N8 "$1"; else echo 0; fi; }

play() {
    local story=$1 native=$1/after/ProgramData/BrindleQuayWorks arguments=(--format 2.0 --log) late
    local flag=${flags[$(< "$story/flags")]:-}
    [[ -z $flag ]] || arguments+=(--flags "$flag")
    mkdir "$story/got"
    "$wine" run "${pc[@]}" --before "$story/before" --after "$story/got" \
        "$build/deviceid.exe" "${arguments[@]}" > "$story/got.id" 2> "$story/got.log" || true
    local dll=$story/got/ProgramData/BrindleQuayWorks
    late=$(($(date_of "$dll/hid_settings") - $(date_of "$native/hid_settings")))
    [[ $(tr -d '\r' < "$story/got.id") == "$(< "$story/id")" ]] &&
        [[ ! -s $story/id || $(decisions "$story/got.log") == "$(decisions "$story/log")" ]] &&
        diff -r -x hid_settings "$native" "$dll" &&
        cmp <(undated "$native/hid_settings") <(undated "$dll/hid_settings") &&
        ((late >= 0 && late < 600))
}

build=$(realpath "$1")
DEVICEID_STORIES_OUT=$work "$2/resolution_test" --gtest_filter='*EveryOutcome' > /dev/null
played=0
for story in "$work"/*; do
    play "$story" || { echo "FAILED: ${story##*/}" && cat "$story/got.log" && exit 1; }
    played=$((played + 1))
done
echo "$played stories played"
((played > 15))
