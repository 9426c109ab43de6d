#!/usr/bin/env bash
# Installs what the build and the tests need, builds the project and runs every test case
# in parallel: scripts/test.sh [BUILD_DIR] [CMAKE_ARGS...]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh build test
dir=${1:-build}
shift || true
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j"$(nproc)"
