# Sourced by test.sh, demo.sh and .ci/run: the way from a bare Debian 12 to a build. Works in the tree's top directory.
cd "$(dirname "${BASH_SOURCE[0]}")/.."

packages=(g++ cmake ninja-build pkg-config python3 libboost-dev libxxhash-dev libexpat1-dev
    libzip-dev libcli11-dev nlohmann-json3-dev libgtest-dev libudunits2-dev libxml2-utils libpng-dev libdeflate-dev)
packagesForWindows=("${packages[@]}" g++-mingw-w64-x86-64-posix dpkg-dev googletest wine64)
packagesForLanes=("${packagesForWindows[@]}" clang-14 clang-format-14 libclang-rt-14-dev llvm-14 libbenchmark-dev
    libeigen3-dev libopencv-core-dev chromium)

# install_packages NAME...: installs what is missing, and asks for nothing when nothing is.
install_packages() {
    command -v dpkg-query >/dev/null || return 0 # not Debian: cmake says what it misses
    local name missing=() root=()
    for name; do
        dpkg-query -W -f='${Status}' "$name" 2>/dev/null | grep -q 'ok installed' || missing+=("$name")
    done
    [[ ${#missing[@]} -gt 0 ]] || return 0
    if [[ $EUID -ne 0 ]]; then
        if ! command -v sudo >/dev/null; then
            echo "These packages are missing, and installing them takes root: apt-get install ${missing[*]}" >&2
            return 1
        fi
        root=(sudo)
    fi
    echo "Installing ${missing[*]}"
    logged build/install.log "${root[@]}" apt-get -q -o DPkg::Lock::Timeout=300 update &&
        logged build/install.log "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get -q -y -o DPkg::Lock::Timeout=300 install --no-install-recommends "${missing[@]}"
}

# logged LOG COMMAND...: runs quietly; what the command said is shown only when it fails.
logged() {
    local log=$1
    shift
    mkdir -p "$(dirname "$log")"
    if ! "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        echo "Failed: $* (all of it: $log)" >&2
        return 1
    fi
}

# build_preset PRESET TARGET...
build_preset() {
    local preset=$1
    shift
    logged "build/$preset-configure.log" cmake --preset "$preset" &&
        logged "build/$preset-build.log" cmake --build --preset "$preset" --parallel "$(nproc)" --target "$@"
}
