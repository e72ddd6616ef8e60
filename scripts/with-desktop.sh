#!/bin/sh
# Runs a command on a throw-away desktop: a virtual X display (Xvfb), a
# private session bus and a window manager (openbox), so that the desktop
# platform's windows, tray item and notifications can be tested on a
# machine without a screen. The command's exit status is this script's.
#
#   scripts/with-desktop.sh ctest --test-dir build/normal
set -eu

if [ -z "${VELMORA_DESKTOP_INNER:-}" ]; then
    export VELMORA_DESKTOP_INNER=1
    # No accessibility bus here; GTK would wait for it.
    export NO_AT_BRIDGE=1
    exec xvfb-run -a -s "-screen 0 1440x900x24 -nolisten tcp" dbus-run-session -- "$0" "$@"
fi

openbox --sm-disable >/dev/null 2>&1 &
window_manager=$!
# The window manager takes over the display within moments; tests that need
# it wait for their own windows' state anyway.
sleep 0.5
status=0
"$@" || status=$?
kill "$window_manager" 2>/dev/null || true
exit "$status"
