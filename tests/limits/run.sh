#!/usr/bin/env bash
# run.sh LIBRARY [CALLS]: no account loses its id by a call at the limit of its descriptors, on a full
# disk or on one that is read-only.
#
# Root and an ordinary account call from 8 processes of 8 threads, with a record that is due to be
# compared. Needs root; everything is in a mount namespace of its own.
set -euo pipefail
[[ $(id -u) == 0 ]] || { echo "only root can mount" && exit 77; }
library=$(realpath "$1") calls=${2:-20} here=$(dirname "$(realpath "$0")")
if [[ ${3:-} != inside ]]; then exec unshare --mount "$0" "$library" "$calls" inside; fi

work=$(mktemp -d) common=/var/lib/BrindleQuayWorks
chmod 755 "$work"
mount -t tmpfs -o size=256k,mode=755 tmpfs /var/lib
mount -t tmpfs -o size=256k,uid=65534 tmpfs /mnt
gcc -O2 "$here/many_calls.c" -ldl -pthread -o "$work/many_calls"
cp "$library" "$work/library.so"

as() { # ACCOUNT COMMAND...
    local home=/var/lib
    [[ $1 == root ]] || home=/mnt
    HOME=$home XDG_DATA_HOME='' setpriv --reuid="$1" --clear-groups "${@:2}"
}
id_of() {
    as "$1" /usr/bin/python3 - "$work/library.so" <<'PYTHON'
import ctypes, sys
text = ctypes.create_string_buffer(41)
result = ctypes.CDLL(sys.argv[1]).GetHardwareId(text, 41, b"2.0", None, 0)
print(result, text.value.decode())
PYTHON
}
make_due() { # The date of a record stands behind its version, its id and its type.
    python3 - "$@" <<'PYTHON'
import struct, sys, time
for path in sys.argv[1:]:
    with open(path, "r+b") as record:
        record.seek(55)
        record.write(struct.pack("<q", int(time.time()) - 11 * 86400))
PYTHON
}
failures=0
play() { # NAME DESCRIPTORS BEFORE AFTER FOLDER ACCOUNT...
    local name=$1 descriptors=$2 before=$3 after=$4 folder=$5 account i
    shift 5
    local -A ids=()
    for account in "$@"; do ids[$account]=$(id_of "$account"); done
    make_due "$folder/hid_settings"
    eval "$before"
    for i in {1..8}; do
        account=${!#}
        ((i % 2)) && account=$1
        as "$account" "$work/many_calls" "$work/library.so" 8 "$calls" "$descriptors" &
    done >> "$work/results"
    wait
    eval "$after"
    for account in "$@"; do
        [[ $(id_of "$account") == "${ids[$account]}" ]] && continue
        echo "$name: $account had ${ids[$account]} and has $(id_of "$account")"
        failures=$((failures + 1))
    done
    echo "$name: $(tr ';' '\n' < "$work/results" | awk '{n[$3] += $1} END {for (r in n) if (r != "") printf "%d times %s; ", n[r], r}')"
    rm "$work/results"
}

fill() { dd if=/dev/zero of="$1/filler" bs=1k 2> /dev/null || true; }
for folder in /var/lib /mnt; do
    accounts=(root 65534)
    # Of the ordinary account alone, while nothing is in the common folder.
    [[ $folder == /var/lib ]] || { accounts=(65534) && rm -r "$common" /mnt/.local; }
    state=$folder/BrindleQuayWorks
    [[ $folder == /var/lib ]] || state=/mnt/.local/share/BrindleQuayWorks
    [[ $(id_of "${accounts[0]}") == "0 2-0-"* ]]
    play "few descriptors, ${accounts[*]}" 8 : : "$state" "${accounts[@]}"
    play "full disk, ${accounts[*]}" 1024 "fill $folder" "rm $folder/filler" "$state" "${accounts[@]}"
    play "read-only disk, ${accounts[*]}" 1024 "mount -o remount,ro $folder" \
        "mount -o remount,rw $folder" "$state" "${accounts[@]}"
done
exit $((failures > 0))
