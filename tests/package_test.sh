#!/usr/bin/env bash
# package_test.sh BUILD: the archives that users download come out the same from another build, and
# hosts are built and run from what they hold, by CMake, by the commands of the guide and by linkers.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1 moved=0 wine=$PWD/tools/wine/wine_root.sh consumer=$PWD/tests/consumer
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
export XDG_DATA_HOME=$work/share

# The second build leaves out the DLL for 64 bits, whose sources and compiler are those of the other one.
sums=$(tools/package.sh "$build")
again=$(umask 077 && tools/package.sh "$build/again" linux windows-x86)
[[ $(grep -v x64 <<< "$sums") == "$again" ]] || { printf '%s\nin another build:\n%s\n' "$sums" "$again" && exit 1; }

for name in $(grep -o 'deviceid[-_][0-9][^`]*\(zip\|gz\|deb\)' docs/guide.md); do
    [[ -e $build/packages/$name ]] || { echo "the guide names $name" && exit 1; }
done
for zip in "$build"/packages/*.zip; do unzip -q "$zip" -d "$work"; done
tar xf "$build"/packages/*.tar.gz -C "$work"
dpkg-deb -x "$build"/packages/*.deb "$work/deb"
for file in "$work"/*-linux-*/share/{bash-completion/completions/deviceid,zsh/site-functions/_deviceid} \
    "$work"/deb/usr/share/zsh/vendor-completions/_deviceid "$work"/*-windows-x{86,64}/share/powershell/deviceid.ps1; do
    [[ -s $file ]] || { echo "there is no $file" && exit 1; }
done

# consumer FOLDER [OPTION]...: a program that is made from the library in that folder
consumer() {
    cmake -G Ninja -S "$consumer" -B "$1/build" "-DCMAKE_PREFIX_PATH=$1" "${@:2}"
    cmake --build "$1/build"
    cmake --install "$1/build" --prefix "$1/build/installed"
    mv "$1/build/installed" "$work/moved-$((++moved))"
} >&2
cd "$work"/*-linux-*/
wanted=$(bin/deviceid --format 1.5)
# Where no hardware can be read, each call for format 1.5 makes another id.
[[ $(bin/deviceid --format 1.5) == "$wanted" ]] || wanted='1-5-*'
# shellcheck disable=SC2046,SC2053
for folder in "$PWD" "$work/deb/usr"; do
    consumer "$folder"
    [[ $("$folder/build/consumer") == $wanted ]]
    [[ $(mv "$folder/lib" "$folder/away"; "$work/moved-$moved/bin/consumer") == $wanted ]]
    mv "$folder/away" "$folder/lib"
    PKG_CONFIG_PATH=$folder/lib/pkgconfig
    export PKG_CONFIG_PATH
    gcc "$consumer/consumer.c" $(pkg-config --cflags --libs deviceid) -o "$work/by_gcc"
    [[ $(LD_LIBRARY_PATH=$folder/lib "$work/by_gcc") == $wanted ]]
done

# Each command of the guide that is no preparation prints the same id, on a PC of its own.
guide=share/doc/deviceid/guide.md
sed -n '0,/^```c$/d; /^```$/q; p' $guide > my.c
sed -n '/^With an archive/,/^### Windows/s/^    //p' $guide | grep -v "dotnet\|^cp " > "$work/commands"
command -v javac > /dev/null || sed -i '/java /d' "$work/commands" # a mere runtime takes no source
own=(env)
[[ $(id -u) != 0 ]] || own=(unshare --mount sh -c 'mount -t tmpfs tmpfs /var/lib && exec "$@"' sh)
"${own[@]}" bash -e "$work/commands" > "$work/ids"
[[ $(wc -l < "$work/ids") -ge 6 && $(sort -u "$work/ids") =~ ^2-0-[^[:space:]]{36}$ ]] ||
    { cat "$work/commands" "$work/ids" && exit 1; }

for bits in x86:i686 x64:x86_64; do
    cd "$work"/*-windows-"${bits%:*}"
    consumer "$PWD" "-DCMAKE_TOOLCHAIN_FILE=$consumer/../../cmake/windows-${bits%:*}.cmake"
    clang "--target=${bits#*:}-windows-msvc" -ffreestanding -Iinclude -c "$consumer/bare.c" -o bare.o
    lld-link /out:bin/bare.exe /subsystem:console /entry:start bare.o lib/deviceid.lib
    cp "$work/moved-$moved"/bin/* bin
    "${bits#*:}-w64-mingw32-gcc" -Iinclude share/doc/deviceid/examples/host.c -o bin/host.exe
    "${bits#*:}-w64-mingw32-g++" -static -Iinclude share/doc/deviceid/examples/cpp/main.cc \
        lib/deviceid.lib -o bin/cpp.exe
    printf '@%s\n@echo %%errorlevel%%\n' consumer 'host deviceid.dll 1.5' 'cpp 1.5' 'deviceid --format 1.5' bare \
        > bin/all.bat
    echo '@exit 0' >> bin/all.bat
done
"$consumer/../windows/setup.sh" || exit
said=$(for all in "$work"/*/bin/all.bat; do "$wine" run "$all"; done | tr -d '\r' | xargs)
id=${said:0:40}
one="$id 0 $id 0 $id 0 $id 0 42"
[[ $id == 1-5-* && $said == "$one $one" ]] || { echo "$said" && exit 1; }
