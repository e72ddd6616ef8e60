#!/bin/sh
# Shows the pond against a data folder, on the display you are on.
#
#   examples/pond/run.sh [DATA_HOME] [pond options...]
#
# DATA_HOME is what $XDG_DATA_HOME is for the library: the practice is read
# from DATA_HOME/app.velmora.mac/practice.json and saved there. Without it,
# a new folder under /tmp gets a demo practice of seventeen lotuses, so your
# own practice is never touched. Options go to the program (for example
# --screenshot pond.png). Set POND to use another build of the program.
#
# Without a display, wrap it: xvfb-run -a dbus-run-session -- examples/pond/run.sh
set -eu
here=$(cd "$(dirname "$0")" && pwd)
pond=${POND:-$here/../../build/pond/examples/pond/pond}
if [ ! -x "$pond" ]; then
    echo "run.sh: no program at $pond; build it first:" >&2
    echo "  cmake -S . -B build/pond -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELMORA_BUILD_BENCHMARKS=OFF" >&2
    echo "  cmake --build build/pond --target pond" >&2
    exit 1
fi
case "${1:-}" in
'' | -*)
    data=$(mktemp -d /tmp/pond-demo-XXXXXX)
    "$pond" --seed-demo "$data"
    ;;
*)
    data=$1
    shift
    if [ ! -d "$data" ]; then
        echo "run.sh: no folder $data" >&2
        exit 1
    fi
    ;;
esac
echo "run.sh: the practice lives in $data" >&2
XDG_DATA_HOME=$data exec "$pond" "$@"
