#!/bin/sh
# The main job: builds the project in release mode, plays a rendering
# program against the library, then runs the benchmarks briefly.
#
# The rendering program is the minimal example (examples/MinimalRenderer.c).
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

echo "== Benchmarks"
./build/release/benchmarks/VelmoraBenchmarks --benchmark_min_time=0.05 "$@"
