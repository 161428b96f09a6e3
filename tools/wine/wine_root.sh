#!/bin/bash
# Runs 32-bit and 64-bit Windows programs in Wine, in a small Debian that fills a folder of its own:
# $DEVICEID_WINE_ROOT, or build/wine of this repository.
#
#   wine_root.sh why-not   is silent, or tells in one line why it cannot work here and fails with 77,
#                          or with 1 if $DEVICEID_REQUIRE_WINDOWS is 1
#   wine_root.sh setup     makes the folder, if it is not there yet
#   wine_root.sh run [OPTION]... PROGRAM [ARGUMENT...]
#
# PROGRAM, an .exe or .bat file, runs in C:\deviceid among copies of the .exe and .dll files beside
# it; so does a script of the Debian's own shell (.sh), which can run several of them by "wine". Every run is a PC of its own: files, registry and processes end with it, and several can run
# at a time.
#
#   --serial HEX8      the volume serial of C:
#   --file PATH TEXT   writes a file of the Debian first: C: is /wine/drive_c, the other serials are
#                      /sys/class/dmi/id/{product,board}_serial
#   --before FOLDER    copies what it holds to C: first
#   --after FOLDER     copies C:\ProgramData and the user's AppData\Roaming to it at the end
#   --no-network       no network adapter
#   --nic MAC          one network adapter, and a second one behind it
set -euo pipefail

self=$(realpath "$0")
root=$(realpath -m "${DEVICEID_WINE_ROOT:-$(dirname "$self")/../../build/wine}")
pc=/run/pc
net=()

fail() { echo "wine_root.sh: $*" >&2 && exit 1; }

# Calls a function of this file. Its mounts and processes end with it, however it ends: no delete of
# the folder can reach the host's /dev, and no Wine server stays behind.
isolated() { exec unshare --mount --pid --fork --kill-child "${net[@]}" "$self" inside "$@"; }

why_not() {
    [[ $(id -u) == 0 ]] || fail "only root can run Windows programs"
    [[ $(uname -m) == x86_64 ]] || fail "a $(uname -m) machine runs no 64-bit x86 programs"
    local keys=/usr/share/keyrings/debian-archive-keyring.gpg
    [[ -e $root/.ready || -x /usr/bin/mmdebstrap && -e $keys ]] ||
        fail "the package mmdebstrap or debian-archive-keyring is missing"
    (isolated make_pc "$(dirname "$self")") > /dev/null 2>&1 ||
        fail "private mounts are not permitted here (unshare, tmpfs, overlay)"
}

setup() {
    [[ ! -e $root/.ready ]] || return 0
    # The lock file also tells a half made folder from one that is not ours to delete.
    [[ -e $root.lock || -z $(ls -A "$root" 2> /dev/null) ]] || fail "$root holds something else"
    mkdir -p "$root"
    exec 9> "$root.lock"
    flock 9
    [[ ! -e $root/.ready ]] || return 0
    echo "Making $root, once: it takes a minute or two and 3 GB, of which 1.7 GB stay" >&2
    (isolated make_root) > "$root.log" 2>&1 || fail "cannot make $root, see $root.log"
}

make_root() {
    pc=$root
    rm -rf --one-file-system "$pc"
    mkdir "$pc"
    # What serves apt serves mmdebstrap: its proxies, and its mirror if this is a Debian.
    eval "$(apt-config shell http_proxy Acquire::http::Proxy https_proxy Acquire::https::Proxy)"
    export http_proxy https_proxy
    # shellcheck disable=SC1091,SC2016
    mapfile -t mirror < <(source /etc/os-release
        apt-get indextargets --format 'debian $(RELEASE) $(COMPONENT) $(REPO_URI)' |
            sed -n "s/^$ID ${VERSION_CODENAME:-sid} main //p" | head -n 1)
    mmdebstrap --variant=essential --architectures=amd64,i386 --include=wine,wine32,wine64 \
        --dpkgopt=force-unsafe-io bookworm "$pc" "${mirror[@]:-http://deb.debian.org/debian}"
    enter_pc / sh -c "wineboot -i && wineserver -w"
    # Half of the folder would be the copies that Wine made of its own DLLs.
    hardlink --quiet --content "$pc/usr/lib" "$pc/wine"
    touch "$pc/.ready"
}

# Shows a folder as $pc, under a layer of memory that takes all changes.
make_pc() {
    mount -t tmpfs tmpfs /run
    mkdir /run/{lower,upper,work,pc}
    mount --bind "$1" /run/lower
    mount -t overlay -o lowerdir=/run/lower,upperdir=/run/upper,workdir=/run/work overlay "$pc"
}

# Without Wine's debugger, which makes status 0 of a crash.
enter_pc() {
    mount -t proc proc "$pc/proc"
    mount --bind /dev "$pc/dev"
    chroot "$pc" env -i --chdir="$1" PATH=/usr/bin:/bin HOME=/root USER=root WINEPREFIX=/wine \
        WINEDEBUG=-all WINEDLLOVERRIDES=winedbg.exe=d "${@:2}"
}

run() {
    local home=/wine/drive_c/deviceid dmi=$pc/sys/class/dmi/id start=(wine) after='' name status=0
    make_pc "$root"
    # Wine overlooks a serial number if one of the texts that stand before it is missing.
    mkdir -p "$pc$home" "$dmi"
    for name in sys_vendor product_{name,version,serial} board_{vendor,name,version,serial}; do
        echo "Test $name" > "$dmi/$name"
    done
    while [[ ${1:-} == --* ]]; do
        case $1 in
            --serial) set -- --file /wine/drive_c/.windows-serial "${@:2}" ;;
            --file) mkdir -p "$(dirname "$pc$2")"; echo "$3" > "$pc$2"; shift 3 ;;
            --before) cp -r "$2/." "$pc/wine/drive_c"; shift 2 ;;
            --after) after=$2; shift 2 ;;
            --no-network) shift ;;
            # Of a pair, the peer is made first and so is listed first.
            --nic) ip link add other address 02:00:00:00:00:01 type veth peer name nic address "$2"; shift 2 ;;
            *) fail "no option $1" ;;
        esac
    done
    case ${1:?PROGRAM is missing} in
        *.bat) start+=(cmd /c) ;;
        *.sh) start=(sh) ;;
    esac
    find "$(dirname "$1")" -maxdepth 1 \( -name '*.exe' -o -name '*.dll' -o -samefile "$1" \) \
        -exec cp -t "$pc$home" {} +
    enter_pc "$home" "${start[@]}" "$(basename "$1")" "${@:2}" || status=$?
    [[ -z $after ]] || cp -r "$pc"/wine/drive_c/{ProgramData,users/root/AppData/Roaming} "$after"
    return "$status"
}

case ${1:-} in
    why-not) (why_not) 2>&1 || exit $((${DEVICEID_REQUIRE_WINDOWS:-0} == 1 ? 1 : 77)) ;;
    setup) setup ;;
    run)
        (setup)
        [[ " $* " != *" --"@(nic|no-network)" "* ]] || net=(--net)
        isolated run "${@:2}"
        ;;
    # As anything but the first process of a namespace this would mount things on the host.
    inside) [[ $$ == 1 ]] && "${@:2}" ;;
    *) fail "usage: wine_root.sh why-not | setup | run [OPTION]... PROGRAM [ARGUMENT...]" ;;
esac
