#!/usr/bin/env bash
# wine-server.sh start | stop
# start: makes $WINEPREFIX if it is new, and keeps one server and its services alive. Otherwise each program would wait
# for them to start, and they would inherit the first program's output, whose reader then waits for them to end.
set -euo pipefail
: "${WINEPREFIX:=${TMPDIR:-/tmp}/tivor-wine-$(id -u)}"
export WINEPREFIX WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d" LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY TZ
wine=/usr/lib/wine/wine64
server=/usr/lib/wine/wineserver64

quiet() { "$@" </dev/null >/dev/null 2>&1; }

make_prefix() {
    mkdir -p "$WINEPREFIX"
    quiet timeout 300 "$wine" wineboot -i
    quiet timeout 60 "$wine" winecfg -v win10 || true
    quiet timeout 120 "$server" -w || true # until everything is written
    touch "$WINEPREFIX/.ready"
}

case "${1-}" in
start)
    [[ -f $WINEPREFIX/.ready ]] || make_prefix
    quiet "$server" -p || true # stays until told to stop
    quiet timeout 120 "$wine" cmd /c exit
    ;;
stop)
    quiet "$server" -k || true
    quiet timeout 60 "$server" -w || true
    ;;
*)
    echo "usage: wine-server.sh start | stop" >&2
    exit 2
    ;;
esac
