# Sourced by ./run and ./test.

# need_packages PACKAGE...: makes sure that the Debian packages are there. As root it installs those
# that are missing; otherwise it names the one command that does, and ends the script. All output
# goes to standard error.
need_packages() {
    local package missing=()
    command -v dpkg-query >/dev/null || return 0 # not Debian: the build says what it misses
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q ' installed$' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if [ "$(id -u)" -ne 0 ]; then
        echo "$0: packages are missing; run: sudo apt-get install ${missing[*]}" >&2
        exit 1
    fi
    {
        apt-get update
        DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
    } >&2
}

# The host program and what it is built from. CMake looks for what tests and benchmarks need as well.
readonly build_packages=(
    cmake ninja-build g++ libc6-dev libcli11-dev nlohmann-json3-dev libgtest-dev libgmock-dev
    libbenchmark-dev
)

# The DLL and the environment that it runs in here.
readonly windows_packages=(
    g++-mingw-w64-i686 binutils-mingw-w64-i686 llvm mmdebstrap iproute2 util-linux python3-pefile
)

# What the tests need beside those.
readonly test_packages=(
    python3 python3-jsonschema python3-matplotlib clang clang-format clang-tidy
    chromium chromium-driver python3-selenium lld mono-mcs mono-runtime libjna-java unzip pkg-config
    strace zsh
)

# What makes the archives.
readonly package_packages=(
    g++-mingw-w64-x86-64 dpkg-dev file python3 git
    clang lld wasi-libc libc++-14-dev-wasm32 libc++abi-14-dev-wasm32 libclang-rt-14-dev-wasm32
)

# build_preset NAME [TARGET...]: configures and builds one preset.
build_preset() {
    local preset=$1 target targets=()
    shift
    for target in "$@"; do targets+=(--target "$target"); done
    cmake --preset "$preset" -Wno-dev # each time: what it looks for may be there by now
    cmake --build --preset "$preset" "${targets[@]}"
}
