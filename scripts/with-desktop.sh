#!/bin/sh
# Runs a command on a throw-away desktop: a virtual X display (Xvfb), a
# private session bus, a window manager (openbox) and a sound server
# (PulseAudio) whose one sink plays into nothing, so that the desktop
# platform's windows, tray item and notifications, and the pond's sounds,
# can be tested on a machine without a screen or speakers. The sink's
# monitor, the default source, hears what was played. The command's exit
# status is this script's.
#
#   scripts/with-desktop.sh ctest --test-dir build/normal
#
# With VELMORA_DESKTOP=xfce the session has real components instead of
# room for mocks: xfce4-panel with its system tray (a StatusNotifierItem
# host that also serves the watcher) on the session bus, and dunst, which
# the bus starts at the first notification.
set -eu

if [ -z "${VELMORA_DESKTOP_INNER:-}" ]; then
    export VELMORA_DESKTOP_INNER=1
    # No accessibility bus here; GTK would wait for it.
    export NO_AT_BRIDGE=1
    exec xvfb-run -a -s "-screen 0 1440x900x24 -nolisten tcp" dbus-run-session -- "$0" "$@"
fi

openbox --sm-disable >/dev/null 2>&1 &
window_manager=$!

# The sound server gets a runtime folder of its own, so that desktops run
# side by side each hear only their own sounds.
sound_folder=$(mktemp -d)
export XDG_RUNTIME_DIR="$sound_folder" PULSE_RUNTIME_PATH="$sound_folder/pulse" PULSE_STATE_PATH="$sound_folder/state" PULSE_COOKIE="$sound_folder/cookie"
sound_server=
if command -v pulseaudio >/dev/null; then
    pulseaudio --daemonize=no --exit-idle-time=-1 -n --load="module-null-sink sink_name=silence" --load=module-native-protocol-unix >/dev/null 2>&1 &
    sound_server=$!
    tries=0
    until pactl info >/dev/null 2>&1; do
        tries=$((tries + 1))
        if [ "$tries" -gt 100 ]; then
            echo "with-desktop: the sound server did not start; sounds go unheard" >&2
            break
        fi
        sleep 0.1
    done
fi
# The window manager has taken the display over once it names itself on the
# root window; the tests count on its placement and focus from their start.
# One that ended before (the display was not ready for it) starts again.
waited=0
until xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; do
    if ! kill -0 "$window_manager" 2>/dev/null; then
        openbox --sm-disable >/dev/null 2>&1 &
        window_manager=$!
    fi
    waited=$((waited + 1))
    if [ "$waited" -gt 1200 ]; then
        echo "with-desktop: the window manager did not take the display" >&2
        exit 1
    fi
    sleep 0.05
done
panel=""
if [ "${VELMORA_DESKTOP:-}" = xfce ]; then
    config=$(mktemp -d /tmp/velmora-xfce.XXXXXX)
    mkdir -p "$config/xfce4/xfconf/xfce-perchannel-xml"
    cat >"$config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml" <<'EOF'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
EOF
    XDG_CONFIG_HOME=$config xfce4-panel --disable-wm-check >"$config/panel.log" 2>&1 &
    panel=$!
    # The tests wait for the watcher's name themselves.
fi
status=0
"$@" || status=$?
if [ -n "$panel" ]; then
    kill "$panel" 2>/dev/null || true
fi
kill "$window_manager" 2>/dev/null || true
if [ -n "$sound_server" ]; then
    kill "$sound_server" 2>/dev/null || true
    wait "$sound_server" 2>/dev/null || true
fi
rm -rf "$sound_folder"
exit "$status"
