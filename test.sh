#!/usr/bin/env bash
# Builds everything that has tests and runs them.
#   ./test.sh                                   the libraries as they ship: optimised, with NDEBUG (preset release)
#   ./test.sh --preset asan                     another preset
#   ./test.sh [--preset NAME] -R Container      all else goes to ctest
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"

preset=release
if [[ ${1-} == --preset ]]; then
    preset=$2
    shift 2
fi

install_packages "${packages[@]}"
build_preset "$preset" tests
# Thousands of passing tests are one summary; everything else is shown.
ctest --preset "$preset" --parallel "$(nproc)" "$@" |
    { grep -vE '^ *(Start +[0-9]+: |[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed )' || true; }
