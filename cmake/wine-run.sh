#!/bin/sh
# wine-run.sh PROGRAM.exe ARGUMENTS...: runs a Windows program without a screen; the exit status is the program's.
: "${WINEPREFIX:=${TMPDIR:-/tmp}/tivor-wine-$(id -u)}"
# With -all alone a library that is missing would be a silent exit status 53.
: "${WINEDEBUG:=-all,err+module}"
: "${WINEDLLOVERRIDES:=mscoree,mshtml=;winemenubuilder.exe=d}"
# Names of files pass through the locale, and time zones of this system mean others there.
LC_ALL=C.UTF-8
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES LC_ALL
unset DISPLAY WAYLAND_DISPLAY TZ
exec /usr/lib/wine/wine64 "$@" </dev/null
