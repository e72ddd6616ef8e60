#!/bin/sh
# Fails when a C or C++ source of ours is not as clang-format (.clang-format)
# would write it, naming each place. To format them all:
#
#     ./scripts/check-format.sh --fix
set -eu
cd "$(dirname "$0")/.."

sources=$(git ls-files -- VelmoraCore VelmoraMac include tests benchmarks examples fuzz | grep -E '\.(c|cpp|h)$')
if [ "${1:-}" = "--fix" ]; then
    # shellcheck disable=SC2086 # one file name a word
    clang-format -i $sources
else
    # shellcheck disable=SC2086 # as above
    clang-format --dry-run -Werror $sources
fi
