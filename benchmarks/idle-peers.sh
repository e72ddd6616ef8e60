#!/bin/sh
# What the pond costs while it sits there, beside two programs of the same
# kind that live in the tray: on one virtual desktop, in one run, the pond
# shown, then the same pond hidden, and Workrave and Safe Eyes idle beside
# the shown pond, each for a minute, and for each its CPU per minute, its
# wake-ups per second and its resident and proportional memory, read from
# /proc. It prints figures and judges none.
#
#   benchmarks/idle-peers.sh [SECONDS]
#
# SECONDS is the measured time, 60 unless given. POND names the pond
# program (by default the release build's); the peers are Debian's
# workrave and safeeyes (scripts/install-dependencies.sh installs them).
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-60}
pond=${POND:-build/release/examples/pond/pond}
if [ ! -x "$pond" ]; then
    echo "idle-peers: no pond at $pond; build it first (scripts/run.sh does)" >&2
    exit 1
fi
if [ -z "${VELMORA_DESKTOP_INNER:-}" ]; then
    exec ./scripts/with-desktop.sh "$0" "$@"
fi

scratch=$(mktemp -d)
pids=""
cleanup() {
    for pid in $pids; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in $pids; do
        wait "$pid" 2>/dev/null || true
    done
    rm -rf "$scratch"
}
trap cleanup EXIT

# Polls `command` every tenth of a second until it succeeds; fails after
# `limit` seconds.
wait_for() {
    limit=$1
    shift
    tries=0
    until "$@" >/dev/null 2>&1; do
        tries=$((tries + 1))
        if [ "$tries" -gt $((limit * 10)) ]; then
            echo "idle-peers: gave up waiting for: $*" >&2
            tail -n 5 "$scratch"/*.log >&2
            return 1
        fi
        sleep 0.1
    done
}

# Each program gets a home of its own, so nothing of a person's settings is
# read or written, and its output goes to a log beside it.
start() {
    name=$1
    shift
    mkdir -p "$scratch/$name/home" "$scratch/$name/data"
    HOME="$scratch/$name/home" XDG_CONFIG_HOME="$scratch/$name/home/.config" XDG_DATA_HOME="$scratch/$name/data" \
        "$@" >"$scratch/$name.log" 2>&1 &
    started=$!
    pids="$pids $started"
}

# The tray item's D-Bus name of process `pid`, once it has one.
tray_item() {
    gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
        --method org.freedesktop.DBus.ListNames | grep -o "org.kde.StatusNotifierItem-$1-[0-9]*" | head -n 1
}
shown_window() {
    xdotool search --onlyvisible --pid "$1"
}
not_shown() {
    ! shown_window "$1"
}

ticks_per_second=$(getconf CLK_TCK)
# utime + stime of the whole process, in clock ticks: fields 14 and 15,
# counted after the command name, which may hold spaces.
cpu_ticks() {
    sed 's/^.*) //' "/proc/$1/stat" | awk '{ print $12 + $13 }'
}
# Context switches of all its threads: each one a wake-up or a preemption.
switches() {
    cat /proc/"$1"/task/*/status 2>/dev/null | awk '/^(voluntary|nonvoluntary)_ctxt_switches:/ { sum += $2 } END { print sum + 0 }'
}
# Measures the processes named by `names` (shell variables holding pids)
# over the same `seconds`, leaving each one's figures in a line of
# $scratch/figures.
measure() {
    for name in "$@"; do
        eval "pid=\$$name"
        eval "cpu_$name=$(cpu_ticks "$pid")"
        eval "switches_$name=$(switches "$pid")"
    done
    sleep "$seconds"
    for name in "$@"; do
        eval "pid=\$$name"
        eval "cpu=\$((\$(cpu_ticks "$pid") - cpu_$name))"
        eval "woke=\$((\$(switches "$pid") - switches_$name))"
        awk -v label="$name" -v cpu="$cpu" -v hz="$ticks_per_second" -v woke="$woke" -v seconds="$seconds" '
            /^Rss:/ { rss = $2 }
            /^Pss:/ { pss = $2 }
            END { printf "%-12s %14.0f %12.1f %10.1f %10.1f\n", label, cpu * 1000 / hz * 60 / seconds, woke / seconds, rss / 1024, pss / 1024 }
        ' "/proc/$pid/smaps_rollup" >>"$scratch/figures"
    done
}

# One pond a session: the library lets one run per desktop session, so the
# same pond is measured shown, then hidden, while the peers are measured in
# the first of the two minutes.
"$pond" --seed-demo "$scratch/pond/data" >/dev/null
start pond "$pond"
pond_shown=$started
pond_hidden=$started
start workrave workrave
workrave=$started
start safeeyes safeeyes
safeeyes=$started

wait_for 120 shown_window "$pond_shown"
wait_for 120 tray_item "$pond_shown"
# Start-up is over (fonts, caches, the first snapshot) well before this.
sleep 10
measure pond_shown workrave safeeyes
# A left click on the tray item hides a shown pond.
gdbus call --session --dest "$(tray_item "$pond_hidden")" --object-path /StatusNotifierItem \
    --method org.kde.StatusNotifierItem.Activate 0 0 >/dev/null
wait_for 10 not_shown "$pond_hidden"
sleep 2
measure pond_hidden

printf '%-12s %14s %12s %10s %10s\n' program "CPU ms/min" "wakeups/s" "RSS MB" "PSS MB"
cat "$scratch/figures"
echo "(CPU: user + system time over ${seconds} s, scaled to a minute; a core is 60000 ms/min)"
