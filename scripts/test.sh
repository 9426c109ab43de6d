#!/usr/bin/env bash
# Builds the project and runs the test suite: scripts/test.sh [BUILD_DIR] [CMAKE_ARGS...]
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}
shift || true
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure
