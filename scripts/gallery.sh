#!/usr/bin/env bash
# Installs what the build needs, builds the gallery and renders its scenes to gallery-out/
# with an index.html: scripts/gallery.sh [kyr-gallery options]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh build
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc)" --target kyr-gallery
./build/apps/gallery/kyr-gallery --out gallery-out "$@"
