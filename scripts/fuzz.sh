#!/bin/sh
# Builds a libFuzzer target with clang and runs it for a while:
#
#     ./scripts/fuzz.sh [fuzzer [seconds]]
#
# (by default PracticeStateFuzzer for 60 seconds). It fuzzes a scratch copy
# of the committed corpus, so the repository is never changed; new inputs
# collect in build/fuzz/corpus/<fuzzer>/ and any crashing input is saved in
# build/fuzz/findings/<fuzzer>/. Copy a finding into fuzz/corpus/ once it is
# fixed, so that every test run replays it. One process only: the machine is
# shared. Installs missing Debian packages first.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-dependencies.sh

fuzzer=${1:-PracticeStateFuzzer}
seconds=${2:-60}
corpus=fuzz/corpus/${fuzzer%Fuzzer}
dictionary=fuzz/$fuzzer.dict
scratch=build/fuzz/corpus/$fuzzer
findings=build/fuzz/findings/$fuzzer

if [ ! -d "$corpus" ]; then
    echo "fuzz: no corpus folder $corpus for $fuzzer" >&2
    exit 1
fi

# Optimised, but with assertions on: a failed assertion in the JSON library
# is a finding too.
CC=clang CXX=clang++ cmake -S . -B build/fuzz -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g" \
    -DVELMORA_FUZZ=ON -DVELMORA_BUILD_BENCHMARKS=OFF
cmake --build build/fuzz --target "$fuzzer" --parallel "$(nproc)"

rm -rf "$scratch"
mkdir -p "$scratch" "$findings"
cp "$corpus"/* "$scratch"/

set -- -max_total_time="$seconds" -artifact_prefix="$findings/" -print_final_stats=1
if [ -f "$dictionary" ]; then
    set -- "$@" -dict="$dictionary"
fi
"./build/fuzz/fuzz/$fuzzer" "$@" "$scratch"
