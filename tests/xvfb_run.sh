#!/usr/bin/env bash
# Runs a command on a virtual X display of its own, which Xvfb picks free, so that tests
# running side by side never share one: tests/xvfb_run.sh COMMAND...
set -uo pipefail
scratch=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3> "$scratch/display" 2> "$scratch/log" &
server=$!
cleanup() { kill "$server" 2> /dev/null; wait "$server" 2> /dev/null; rm -rf "$scratch"; }
trap cleanup EXIT
for _ in $(seq 200); do
    [ -s "$scratch/display" ] && break
    kill -0 "$server" 2> /dev/null || { echo "xvfb_run: Xvfb did not start:" >&2; cat "$scratch/log" >&2; exit 1; }
    sleep 0.05
done
[ -s "$scratch/display" ] || { echo "xvfb_run: Xvfb gave no display" >&2; exit 1; }
DISPLAY=":$(head -n 1 "$scratch/display")" "$@"
