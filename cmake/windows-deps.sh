#!/usr/bin/env bash
# windows-deps.sh PREFIX: fills PREFIX with the static libraries that Debian has for Linux only, built for 64-bit
# Windows from Debian's sources. Asks for nothing where they stand already.
set -euo pipefail
cmake=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$1"
prefix=$(cd "$1" && pwd)
work=$prefix/work

# Package lists of our own: the system's stay as they are. Only of the main suite, since the sources of an update may
# be gone while its packages are still there.
private_apt() {
    apt-get -qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$work/apt/parts" \
        -o Dir::State::Lists="$work/apt/lists" -o Dir::Cache="$work/apt/cache" -o APT::Sandbox::User=root "$@"
}

list_sources() {
    mkdir -p "$work"/apt/{parts,lists/partial,cache/archives/partial}
    if [[ -f /etc/apt/sources.list.d/debian.sources ]]; then
        awk 'BEGIN { RS = "" } /(^|\n)Types:/ { print; exit }' /etc/apt/sources.list.d/debian.sources |
            sed -E 's/^Types:.*/Types: deb-src/; s/^Suites: *([^ ]+).*/Suites: \1/' >"$work/apt/parts/main.sources"
    else
        sed -n 's/^deb /deb-src /p' /etc/apt/sources.list | head -n 1 >"$work/apt/parts/main.list"
    fi
    private_apt update
}

# fetch NAME: the sources of a Debian package, in $work/NAME
fetch() {
    [[ -d $work/apt/lists/partial ]] || list_sources
    mkdir -p "$work/download"
    (
        cd "$work/download"
        private_apt source --download-only --only-source "$1"
        rm -rf "$work/$1"
        dpkg-source --no-check -x "$1"_*.dsc "$work/$1"
    )
}

# configure DIRECTORY CMAKE_OPTIONS...: made ready in DIRECTORY/build
configure() {
    local source=$1
    shift
    cmake -G Ninja -S "$source" -B "$source/build" -DCMAKE_TOOLCHAIN_FILE="$cmake/mingw-w64-x86_64.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -Wno-dev "$@"
}

# install_from DIRECTORY CMAKE_OPTIONS...
install_from() {
    configure "$@"
    cmake --build "$1/build" --target install
}

build_expat() {
    fetch expat
    # Debian's sources ask for "XML_DTD == 1", and their CMake files define XML_DTD as nothing.
    sed -i -E 's/^#cmakedefine (XML_DTD|XML_NS)$/#cmakedefine \1 1/' "$work/expat/expat/expat_config.h.cmake"
    install_from "$work/expat/expat" -DEXPAT_SHARED_LIBS=OFF -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF \
        -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF -DEXPAT_BUILD_PKGCONFIG=OFF
}

# C++20 here too: its printers of some types exist only then.
build_gtest() {
    cp -r /usr/src/googletest "$work/gtest"
    install_from "$work/gtest" -DCMAKE_CXX_STANDARD=20 -DBUILD_GMOCK=OFF
}

# The static library alone: Debian leaves out what the shared one is made of for Windows, and nothing shall link that.
build_zlib() {
    fetch zlib
    configure "$work/zlib"
    cmake --build "$work/zlib/build" --target zlibstatic
    mkdir -p "$prefix"/{lib,include}
    cp "$work/zlib/build/libzlibstatic.a" "$prefix/lib/libz.a"
    cp "$work/zlib/zlib.h" "$work/zlib/build/zconf.h" "$prefix/include"
}

# With no cipher and no compression but zlib's.
build_libzip() {
    fetch libzip
    install_from "$work/libzip" -DZLIB_INCLUDE_DIR="$prefix/include" -DZLIB_LIBRARY="$prefix/lib/libz.a" \
        -DBUILD_SHARED_LIBS=OFF -DENABLE_COMMONCRYPTO=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF \
        -DENABLE_OPENSSL=OFF -DENABLE_WINDOWS_CRYPTO=OFF -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF \
        -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF
}

# The library alone, which takes the zlib that stands there.
build_libpng() {
    fetch libpng1.6
    install_from "$work/libpng1.6" -DZLIB_INCLUDE_DIR="$prefix/include" -DZLIB_LIBRARY="$prefix/lib/libz.a" \
        -DPNG_SHARED=OFF -DPNG_STATIC=ON -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF
}

# provide NAME: runs build_NAME unless it succeeded before; what that says is shown only when it fails.
provide() {
    local log=$prefix/$1.log status
    [[ ! -f $prefix/$1.ready ]] || return 0
    mkdir -p "$work"
    set +e # "if ! build" would also switch off the -e inside
    (set -e; "build_$1") >"$log" 2>&1
    status=$?
    set -e
    if [[ $status -ne 0 ]]; then
        tail -n 60 "$log" >&2
        echo "Building $1 for Windows failed (all of it: $log)" >&2
        exit 1
    fi
    touch "$prefix/$1.ready"
}

rm -rf "$work" # what is left of a run that failed
provide expat
provide gtest
provide zlib
provide libzip
provide libpng
rm -rf "$work"
