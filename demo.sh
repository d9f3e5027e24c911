#!/usr/bin/env bash
# Builds the library and its tool: one process imports a measured surface, another checks every sample, others change
# one value, and nothing but that value is different then. Then the surface becomes XML, and that a binary file again.
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"

preset=release
text=data/afm_gwyddion_text_export.txt
file=build/$preset/demo_surface.dataset
xml=build/$preset/demo_surface.qordml
again=build/$preset/demo_surface_again.dataset
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

echo
show convert --force "$file" "$xml"
{ head -n 6 "$xml" && echo ... && tail -n 12 "$xml"; } | cut -c -110
echo
show convert --force "$xml" "$again"
show import --check "$text" "$again"
if ! cmp "$file" "$again"; then
    echo "Expected the binary file that was made of the XML to be the one that the XML was made of" >&2
    exit 1
fi
echo "Success: $(stat -c %s "$file") bytes as a binary file, $(stat -c %s "$xml") as XML, and the way back loses none"
