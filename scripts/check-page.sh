#!/usr/bin/env bash
# Looks at the gallery's page in headless Chromium: every picture on it must load, and a
# screenshot of it must not be blank. scripts/check-page.sh [DIR] (default gallery-out,
# as written by scripts/gallery.sh). Installs Chromium (and the test packages, for the
# picture checker) when they are missing.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=$(cd "${1:-gallery-out}" && pwd)
[ -f "$dir/index.html" ] || { echo "check-page: no $dir/index.html (run scripts/gallery.sh)" >&2; exit 1; }
bash scripts/deps.sh build test page
build=${KYR_BUILD_DIR:-build}
cmake -S . -B "$build" > /dev/null
cmake --build "$build" --target kyr-image-check > /dev/null
check=$build/tests/kyr-image-check

profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT
# A closed network and no window: no sandbox (it refuses to run as root), no GPU, none of
# the browser's own connections.
browser=(chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run
         --disable-background-networking --disable-component-update --disable-sync
         --hide-scrollbars --user-data-dir="$profile" --virtual-time-budget=20000)

cards=$(grep -c '<figure' "$dir/index.html" || true)
dom=$("${browser[@]}" --dump-dom "file://$dir/index.html" 2> "$profile/log") || {
    cat "$profile/log" >&2; exit 1; }
state=$(sed -n 's/.*<body data-pictures="\([^"]*\)".*/\1/p' <<< "$dom")
echo "check-page: $cards cards; the page says: ${state:-nothing}"
if [ "$state" != "$cards pictures, 0 broken" ]; then
    grep -o '<figure id="[^"]*" data-state="broken"' <<< "$dom" | sed 's/^/check-page: broken: /' >&2 || true
    echo "check-page: not every picture loaded" >&2
    exit 1
fi
"${browser[@]}" --window-size=1280,1600 --screenshot="$dir/page.png" "file://$dir/index.html" \
    2> "$profile/log" > /dev/null || { cat "$profile/log" >&2; exit 1; }
"$check" "$dir/page.png" --size 1280x1600 --min-cover 0.2
echo "check-page: ok ($dir/page.png)"
