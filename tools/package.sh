#!/usr/bin/env bash
# package.sh [BUILD_FOLDER [PRESET...]]: builds the library for all systems and puts the archives that users
# download into BUILD_FOLDER/packages, which is build/packages if none is named. The same sources give
# the same archives, to the byte, whatever the folder is called. Their sums go to standard output.
set -euo pipefail
cd "$(dirname "$0")/.."
source tools/setup/packages.sh
umask 022

build=$(realpath -m "${1:-build}")
presets=("${@:2}")
[[ ${#presets[@]} -gt 0 ]] || presets=(linux windows-x86 windows-x64)

need_packages "${build_packages[@]}" "${windows_packages[@]}" "${package_packages[@]}"
for preset in "${presets[@]}"; do
    cmake --preset "$preset" -B "$build/$preset" -Wno-dev "-DDEVICEID_PAGE=$build/linux/explain.html" \
        "-DDEVICEID_COMPLETIONS=$build/linux/tools/completions"
    cmake --build "$build/$preset" --target deviceid_shipped
    (cd "$build/$preset" && cpack -B "$build/packages")
done >&2
rm -r "$build/packages/_CPack_Packages"
(cd "$build/packages" && sha256sum deviceid*)
