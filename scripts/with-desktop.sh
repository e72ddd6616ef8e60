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
# The window manager has taken the display over once it names itself on the
# root window; the tests count on its placement and focus from their start.
waited=0
until xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; do
    waited=$((waited + 1))
    if [ "$waited" -gt 600 ]; then
        echo "with-desktop: the window manager did not take the display" >&2
        exit 1
    fi
    sleep 0.05
done
status=0
"$@" || status=$?
kill "$window_manager" 2>/dev/null || true
exit "$status"
