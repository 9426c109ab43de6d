#!/usr/bin/env bash
# The viewer's checks, one per call: tests/viewer_test.sh CASE VIEWER IMAGE_CHECK SCRATCH_DIR
#   no-display  without a display it says so and fails
#   draws       under Xvfb, what the window shows after a few frames is not blank
#   picks       under Xvfb, clicks over the scatter scene reach its hit callback
set -uo pipefail
case_=$1 viewer=$2 check=$3 scratch=$4
here=$(dirname "$0")
mkdir -p "$scratch"
case $case_ in
no-display)
    out=$(env -u DISPLAY -u WAYLAND_DISPLAY "$viewer" --scene globe --frames 1 2>&1)
    rc=$?
    echo "$out"
    [ $rc -ne 0 ] || { echo "viewer_test: exited 0 without a display" >&2; exit 1; }
    grep -q "no display" <<< "$out" || { echo "viewer_test: did not say there is no display" >&2; exit 1; }
    ;;
draws)
    rm -f "$scratch/viewer.png"
    bash "$here/xvfb_run.sh" "$viewer" --scene globe --size 320x240 --frames 5 \
        --snapshot "$scratch/viewer.png" || exit 1
    "$check" "$scratch/viewer.png" --size 320x240 --min-cover 0.2
    ;;
picks)
    clicks=()
    for x in 80 240 400 560; do for y in 80 240 400; do clicks+=(--click "$x,$y"); done; done
    out=$(bash "$here/xvfb_run.sh" "$viewer" --scene scatter --size 640x480 --frames 2 "${clicks[@]}" 2>&1)
    rc=$?
    echo "$out"
    [ $rc -eq 0 ] || exit 1
    grep -q "^scatter: picked point [0-9]* at longitude" <<< "$out" ||
        { echo "viewer_test: no click reached the scatter set's hit callback" >&2; exit 1; }
    ;;
*)
    echo "viewer_test: unknown case $case_" >&2
    exit 2
    ;;
esac
