#!/bin/sh
# Shows the pond with a demo practice of seventeen lotuses of every size for
# a few seconds and leaves a screenshot of it, pond.png, in
# $VELMORA_SCREENSHOT_DIR (or a throw-away folder), for a person to look at.
# Needs a display; skipped (77) without one.
#
#   screenshot.sh <pond program>
set -eu
[ -n "${DISPLAY:-}" ] || exit 77
pond=$1
data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT
folder=${VELMORA_SCREENSHOT_DIR:-$data}
"$pond" --seed-demo "$data"
rm -f "$folder/pond.png"
XDG_DATA_HOME=$data "$pond" --screenshot "$folder/pond.png" --after 180
test -s "$folder/pond.png"
