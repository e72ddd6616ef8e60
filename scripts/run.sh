#!/bin/sh
# The main job: builds the project in release mode and runs the benchmarks,
# which exercise the practice core end to end on realistic data.
# Installs missing Debian packages first.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-dependencies.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_TESTS=OFF
cmake --build build/release --parallel "$(nproc)"
./build/release/benchmarks/VelmoraBenchmarks "$@"
