#!/usr/bin/env bash
# Builds the library and its tool. A confocal scan of a bullet's land, an X3P file, becomes a data set, is stored as a
# binary and as an XML data file, opened again and compared byte by byte; a block of it is turned and written as X3P. One
# process imports another surface, from text, another checks every sample, others change one value, and nothing but that
# value is different then. Then the surface becomes XML, and that a binary file again; a
# block of it is turned, and turned on until it is as it was. Two profiles, one with a fixed spacing and one with
# positions of its own, go the same way.
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"

preset=release
scan=data/bullet_sample-land.x3p
text=data/afm_gwyddion_text_export.txt
profiles=(data/profile_xy-4.txt data/profile_nonuniform.asc)
file=build/$preset/demo_surface.dataset
change=(Comments Review Checks)
tivor=build/$preset/bin/tivor

install_packages "${packages[@]}"
build_preset "$preset" tivor-tool plug-ins

# show ARGUMENT...: prints the command line, then runs it
show() {
    echo "> tivor $*"
    "$tivor" "$@"
    echo
}

# there_and_back TEXT FILE: makes XML of a binary file, a binary file of that, and compares: with the text each sample,
# with the first file each byte
there_and_back() {
    xml=${2%.dataset}.qordml again=${2%.dataset}_again.dataset
    show convert --force "$2" "$xml"
    show convert --force "$xml" "$again"
    show import --check "$1" "$again"
    same "$2" "$again" "the binary file that was made of the XML to be the one that the XML was made of"
}

# same FILE OTHER WHAT: ends the demonstration unless both are each byte the same
same() {
    if ! cmp "$1" "$2"; then
        echo "Expected $3" >&2
        exit 1
    fi
}

# losing ARGUMENT...: as show, of a command that tells of what the target's format has no place for
losing() {
    local status=0
    echo "> tivor $*"
    "$tivor" "$@" || status=$?
    echo
    [[ $status -eq 1 ]] || exit 2
}

kept=build/$preset/demo_bullet
show convert --force "$scan" "$kept.dataset" # what deviates from the format is told
show info "$kept.dataset"
show convert --force "$kept.dataset" "$kept.qordml"
show convert --force "$kept.qordml" "${kept}_again.dataset"
same "$kept.dataset" "${kept}_again.dataset" "the samples, positions, units and metadata of the XML to be those of the binary file"
show ls "${kept}_again.dataset"
echo "Success: opened from the binary and from the XML file, samples, positions, units and metadata are the same"
echo
show crop --force "$kept.dataset" "${kept}_block.dataset" --dim1 50:200 --dim2 300:700
losing convert --force "${kept}_block.dataset" "${kept}_block.x3p"
show rotate --force "${kept}_block.x3p" "${kept}_turned.x3p"
show info "${kept}_turned.x3p"
"$tivor" rotate --force "${kept}_turned.x3p" "${kept}_back.x3p" --by 270 >/dev/null
same "${kept}_block.x3p" "${kept}_back.x3p" "a block that was turned by 90 and by 270 degrees to be what it was"
echo "Success: the turned block is X3P; turned on by 270 degrees it is each byte what it was"
echo

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
there_and_back "$text" "$file"
{ head -n 6 "$xml" && echo ... && tail -n 12 "$xml"; } | cut -c -110
echo "Success: $(stat -c %s "$file") bytes as a binary file, $(stat -c %s "$xml") as XML, and the way back loses none"
echo
show info "$again"
show get "$again" Surface PositionFunction

block=build/$preset/demo_block.dataset turned=build/$preset/demo_turned.dataset
show crop --force "$file" "$block" --dim1 96:160 --dim2 :200
show rotate --force "$block" "$turned"
"$tivor" rotate --force "$turned" "$turned.again" --by 270 >/dev/null
same "$block" "$turned.again" "a block that was turned by 90 and by 270 degrees to be what it was"
echo "Success: turned on by 270 degrees, the block is each byte what it was"
echo

for text in "${profiles[@]}"; do
    file=build/$preset/demo_$(basename "${text%.*}").dataset
    show import --force "$text" "$file"
    there_and_back "$text" "$file"
    show ls "$again" Profile
    echo "> tivor get $again Profile PositionFunction"
    "$tivor" get "$again" Profile PositionFunction | sed '4,$d'
    echo
done
echo "Success: samples and positions of both profiles came back as they were measured"
