#!/bin/sh
# The main job: builds the project in release mode and starts the pond, the
# reference rendering program (examples/pond/), against the library.
#
# On a desktop (DISPLAY or WAYLAND_DISPLAY set) the pond opens there with a
# demo practice of seventeen lotuses in a throw-away data folder, and the
# job ends when you close it or choose "Quit" in the tray menu.
#
# Without one, the pond runs on a virtual desktop (scripts/with-desktop.sh)
# for 600 frames, prints its frame figures and leaves a screenshot,
# build/release/pond.png; then the minimal example renderer
# (examples/MinimalRenderer.c) plays the library headless, and the pond's
# and the library's benchmarks run briefly.
#
# The minimal renderer
# It gets a throw-away data folder holding a user who has finished
# onboarding, and a few topics typed on its standard input at a human pace,
# so its output shows the snapshots it pulls changing with each noticing.
# Arguments go to the benchmark program (for example --benchmark_filter=).
# Installs missing Debian packages first.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-dependencies.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_TESTS=OFF
cmake --build build/release --parallel "$(nproc)"
pond=build/release/examples/pond/pond

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    POND=$pond exec ./examples/pond/run.sh
fi

echo "== The pond on a virtual desktop: 600 frames, its figures, then a screenshot"
POND=$pond ./scripts/with-desktop.sh ./examples/pond/run.sh --frames 600 --screenshot build/release/pond.png --after 600

data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
mkdir -p "$data/app.velmora.mac"
cat >"$data/app.velmora.mac/practice.json" <<'JSON'
{"version":1,"onboarded":true,"selected":["doomscrolling","phone","smoking"],"lotuses":{"smoking":{"moments":12}},"practiceDays":["2025-01-06","2025-01-07"],"language":"system","hintSeen":true,"reminderEnabled":false,"reminderHour":20,"reminderMinute":0,"waterSoundEnabled":true,"bellSoundEnabled":true}
JSON

echo "== The minimal renderer, noticing smoking, phone, smoking, then alcohol (not chosen, so refused)"
{
    sleep 1
    for topic in smoking phone smoking alcohol; do
        echo "$topic"
        sleep 0.5
    done
} | XDG_DATA_HOME="$data" ./build/release/examples/MinimalRenderer ./build/release/VelmoraMac/Exports/libVelmoraNative.so.0

echo "== The pond's frame: 17 lotuses, 100,000 frames"
"$pond" --benchmark --frames 100000

echo "== Benchmarks"
./build/release/benchmarks/VelmoraBenchmarks --benchmark_min_time=0.05 "$@"
