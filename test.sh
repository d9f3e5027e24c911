#!/usr/bin/env bash
# Builds everything that has tests and runs them.
#   ./test.sh                                   the libraries as they ship: optimised, with NDEBUG (preset release)
#   ./test.sh --preset asan                     another preset
#   ./test.sh --windows                         built for 64-bit Windows, run by Wine
#   ./test.sh [--preset NAME] -R Container      all else goes to ctest
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"

preset=release
if [[ ${1-} == --preset ]]; then
    preset=$2
    shift 2
elif [[ ${1-} == --windows ]]; then
    preset=windows
    shift
fi

# The programs share one server, with a home of its own, which is gone at the end.
start_windows() {
    install_packages "${packagesForWindows[@]}"
    cmake/windows-deps.sh build/windows-deps
    WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/tivor-wine.XXXXXX")
    export WINEPREFIX
    trap 'cmake/wine-server.sh stop; rm -rf "$WINEPREFIX"' EXIT
    cmake/wine-server.sh start
}

install_packages "${packages[@]}"
[[ $preset != windows ]] || start_windows
targets=tests
[[ " $* " != *" -L threads "* ]] || targets=threaded-tests
build_preset "$preset" "$targets"
# Thousands of passing tests are one summary; everything else is shown.
ctest --preset "$preset" --parallel "$(nproc)" "$@" |
    { grep -vE '^ *(Start +[0-9]+: |[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed )' || true; }
