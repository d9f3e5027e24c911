#!/usr/bin/env bash
# Builds the library and the demo: one process writes a measured surface to a file, another reads and checks it.
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"

preset=release
input=data/afm_gwyddion_text_export.txt
output=build/$preset/demo_surface.dataset
for file in examples/demo_surface.cpp "$input"; do
    if [[ ! -f $file ]]; then
        echo "The demo is not there yet: $file is missing" >&2
        exit 1
    fi
done

install_packages "${packages[@]}"
build_preset "$preset" demo_surface
"build/$preset/bin/demo_surface" write "$input" "$output"
"build/$preset/bin/demo_surface" check "$input" "$output"
