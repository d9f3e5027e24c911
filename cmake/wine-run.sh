#!/usr/bin/env bash
# wine-run.sh PROGRAM.exe ARGUMENTS...: runs a Windows program without a screen; the exit status is the program's.
# What it runs prints something in any case, but for lists of tests, which may be empty. So one that prints nothing was
# never started: once in a great while Wine ends before the program's first instruction, with any exit status. It is then
# started again, twice at most.
set -u
: "${WINEPREFIX:=${TMPDIR:-/tmp}/tivor-wine-$(id -u)}"
# With -all alone a library that is missing would be a silent exit status 53.
: "${WINEDEBUG:=-all,err+module}"
: "${WINEDLLOVERRIDES:=mscoree,mshtml=;winemenubuilder.exe=d}"
# Names of files pass through the locale, and time zones of this system mean others there.
LC_ALL=C.UTF-8
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES LC_ALL
unset DISPLAY WAYLAND_DISPLAY TZ

printed=$(mktemp)
trap 'rm -f "$printed"' EXIT
for attempt in 1 2 3; do
    /usr/lib/wine/wine64 "$@" </dev/null | tee "$printed"
    status=${PIPESTATUS[0]}
    [[ ! -s $printed && ! ($status -eq 0 && $* == *--gtest_list_tests*) ]] || exit "$status"
    echo "wine-run.sh: $1 was not started (exit status $status, attempt $attempt of 3)" >&2
done
exit 1
