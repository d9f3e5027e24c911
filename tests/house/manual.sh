#!/usr/bin/env bash
# manual.sh TIVOR: the manual page is one for its formatter, where that is installed, and knows each command; the
# completion completes.
set -euo pipefail
tivor=$1

page=$("$tivor" --man)
source <("$tivor" --completion)

# completes WORDS... EXPECTED: what completion makes of the words, the last of them unfinished
completes() {
    COMP_WORDS=(tivor "${@:1:$#-1}")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _tivor
    if [[ ${COMPREPLY[*]} != "${*: -1}" ]]; then
        echo "Expected ${*: -1} for ${COMP_WORDS[*]}, found ${COMPREPLY[*]}" >&2
        exit 1
    fi
}

completes conv convert
completes convert --for --force
completes crop a b --dim "--dim1 --dim2"
completes info "$0" "$0"
for command in $(compgen -W "$(sed -n "s/.*compgen -W '\([^']*\)'.*/\1/p" <("$tivor" --completion))"); do
    grep -q "^\.SS $command " <<<"$page " || grep -q "^\.SS $command$" <<<"$page"
    "$tivor" "$command" --help >/dev/null
done
if command -v groff >/dev/null; then
    complaints=$(groff -man -ww -z <<<"$page" 2>&1)
    [[ -z $complaints ]] || { echo "$complaints" >&2; exit 1; }
fi
