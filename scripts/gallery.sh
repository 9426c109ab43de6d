#!/usr/bin/env bash
# Builds the gallery and renders its scenes: scripts/gallery.sh [kyr-gallery options]
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc)" --target kyr-gallery
./build/apps/gallery/kyr-gallery --out gallery-out "$@"
