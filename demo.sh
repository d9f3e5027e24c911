#!/usr/bin/env bash
# Builds the library and its tool: one process imports a measured surface, another checks every sample, others change
# one value, and nothing but that value is different then.
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"

preset=release
text=data/afm_gwyddion_text_export.txt
file=build/$preset/demo_surface.dataset
change=(Comments Review Checks)
tivor=build/$preset/bin/tivor

install_packages "${packages[@]}"
build_preset "$preset" tivor-tool

# show ARGUMENT...: prints the command line, then runs it
show() {
    echo "> tivor $*"
    "$tivor" "$@"
    echo
}

show import --force "$text" "$file"
show ls "$file"
show import --check "$text" "$file"

"$tivor" get --json "$file" >"$file.before"
show set "$file" "${change[@]}" 1
show get "$file" "${change[@]}"
"$tivor" get --json "$file" >"$file.after"

# What differs must be the one line of that value.
differs=$(diff "$file.before" "$file.after") && status=0 || status=$?
if [[ $status -ne 1 || $(grep -c '^[<>]' <<<"$differs") -ne 2 ||
    $(grep '^[<>]' <<<"$differs" | tr -d ' ') != $'<"Checks":0\n>"Checks":1' ]]; then
    echo "Expected one changed value, ${change[*]} from 0 to 1; found: $differs" >&2
    exit 1
fi
echo "Success: of $(wc -l <"$file.after") lines of values, the one that was set is the only one that changed"
