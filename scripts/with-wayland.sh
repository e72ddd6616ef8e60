#!/bin/sh
# Runs a command on a throw-away Wayland desktop: a headless sway (wlroots)
# with waybar, whose tray is a real StatusNotifierItem host, on a private
# session bus. The command's exit status is this script's.
#
#   scripts/with-wayland.sh ctest --test-dir build/normal --label-regex wayland
#
# sway refuses to run as root: as root the compositor, its bar and the
# session bus run as an unprivileged user of their own (made here when
# missing), and the command as the caller, who may connect to them all. The
# command sees WAYLAND_DISPLAY (a full path), SWAYSOCK, GDK_BACKEND=wayland
# and no DISPLAY; wtype, grim and swaymsg work from it.
set -eu

user=velmora-wayland
scratch=$(mktemp -d /tmp/velmora-wayland.XXXXXX)
chmod 0755 "$scratch"
pids=""

# shellcheck disable=SC2317 # run by the trap
finish() {
    for pid in $pids; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in $pids; do
        wait "$pid" 2>/dev/null || true
    done
    rm -rf "$scratch"
}
trap finish EXIT
trap 'exit 130' INT TERM

if [ "$(id -u)" -eq 0 ]; then
    if ! id "$user" >/dev/null 2>&1; then
        useradd --system --no-create-home --home-dir /nonexistent --shell /usr/sbin/nologin "$user"
    fi
    # Always run in the background: the shell's child becomes the program,
    # so that its process number is the program's.
    as_user() {
        exec setpriv --reuid="$user" --regid="$user" --clear-groups --reset-env -- "$@"
    }
else
    as_user() { exec "$@"; }
fi

home="$scratch/home"
runtime="$scratch/runtime"
mkdir -p "$home/.config/sway" "$home/.config/waybar" "$runtime"
chmod 0700 "$runtime"

cat >"$home/.config/sway/config" <<'EOF'
output HEADLESS-1 resolution 1440x900
default_border normal
bar {
    swaybar_command waybar
}
EOF
cat >"$home/.config/waybar/config" <<'EOF'
{ "layer": "top", "position": "top", "height": 26, "modules-right": ["tray"], "tray": { "icon-size": 18, "spacing": 4 } }
EOF
if [ "$(id -u)" -eq 0 ]; then
    chown -R "$user:" "$home" "$runtime"
fi

environment="PATH=/usr/local/bin:/usr/bin:/bin HOME=$home XDG_RUNTIME_DIR=$runtime XDG_CONFIG_HOME=$home/.config"

# A session bus like the standard one, that the caller may join as well.
cat >"$scratch/bus.conf" <<EOF
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN" "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:path=$runtime/bus</listen>
  <auth>EXTERNAL</auth>
  <standard_session_servicedirs/>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
EOF
bus="unix:path=$runtime/bus"
# shellcheck disable=SC2086 # the environment is deliberately split into words
as_user env -i $environment dbus-daemon --config-file="$scratch/bus.conf" --nofork --nopidfile >"$scratch/dbus.log" 2>&1 &
pids="$pids $!"
waited=0
until [ -S "$runtime/bus" ]; do
    waited=$((waited + 1))
    if [ "$waited" -gt 200 ]; then
        echo "with-wayland: the session bus did not come" >&2
        cat "$scratch/dbus.log" >&2
        exit 1
    fi
    sleep 0.05
done

# shellcheck disable=SC2086 # the environment is deliberately split into words
as_user env -i $environment DBUS_SESSION_BUS_ADDRESS="$bus" \
    WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman \
    sway --config "$home/.config/sway/config" >"$scratch/sway.log" 2>&1 &
pids="$pids $!"

waited=0
until socket=$(find "$runtime" -maxdepth 1 -name 'wayland-*' -type s | head -n 1) && [ -n "$socket" ] \
    && sway_socket=$(find "$runtime" -maxdepth 1 -name 'sway-ipc.*.sock' -type s | head -n 1) && [ -n "$sway_socket" ]; do
    waited=$((waited + 1))
    if [ "$waited" -gt 400 ]; then
        echo "with-wayland: sway did not start" >&2
        cat "$scratch/sway.log" >&2
        exit 1
    fi
    sleep 0.05
done

# wtype makes a keymap of the keys each run names, in their order; GTK 3
# finds a key's code from the first keymap it was given and never again, so
# every run names the same keys first (releasing them, which types nothing).
export VELMORA_WTYPE_KEYMAP="-p Tab -p space -p Escape -p f -p Return"
# A headless seat has no keyboard, and GTK counts a window active only
# while a keyboard's focus is in it: a virtual keyboard stands in for the
# user's for as long as the command runs (wtype makes one, then sleeps).
# shellcheck disable=SC2086 # the environment is deliberately split into words
as_user env -i $environment WAYLAND_DISPLAY="$socket" wtype $VELMORA_WTYPE_KEYMAP -s 86400000 >/dev/null 2>&1 &
pids="$pids $!"

# The caller's own runtime folder: GTK and its kin keep files there.
client_runtime="$scratch/client-runtime"
mkdir -p "$client_runtime"
chmod 0700 "$client_runtime"

status=0
env -u DISPLAY \
    WAYLAND_DISPLAY="$socket" SWAYSOCK="$sway_socket" GDK_BACKEND=wayland \
    XDG_RUNTIME_DIR="$client_runtime" DBUS_SESSION_BUS_ADDRESS="$bus" \
    XDG_CURRENT_DESKTOP=sway VELMORA_DESKTOP=sway \
    "$@" || status=$?
if [ "$status" -ne 0 ] && [ -n "${VELMORA_WAYLAND_LOG:-}" ]; then
    cat "$scratch/sway.log" >&2
fi
exit "$status"
