#!/usr/bin/env bash
# Builds the libFuzzer programs of fuzz/ with clang and runs each for a bounded time, from
# its seeds and the inputs that once failed: scripts/fuzz.sh [BUILD_DIR] [SECONDS_EACH]
# New findings land in BUILD_DIR/fuzz-findings/NAME; the script fails when one is found.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh build fuzz
dir=${1:-build-fuzz}
seconds=${2:-60}
cmake -S . -B "$dir" -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKYR_BUILD_FUZZ=ON -DKYR_BUILD_TESTS=OFF \
    -DKYR_BUILD_BENCH=OFF -DKYR_BUILD_VIEWER=OFF
cmake --build "$dir" -j"$(nproc)" --target kyr_fuzz_picture kyr_fuzz_voxels kyr_fuzz_wind
status=0
for name in picture voxels wind; do
    corpus="$dir/fuzz-corpus/$name" findings="$dir/fuzz-findings/$name"
    mkdir -p "$corpus" "$findings"
    # The inputs that once failed run first, as seeds; what the run learns stays in the
    # build's corpus, the checked-in seeds are left alone.
    echo "fuzz: $name for ${seconds}s"
    if ! "$dir/fuzz/kyr_fuzz_$name" "$corpus" "fuzz/seeds/$name" "fuzz/regressions/$name" \
        -max_total_time="$seconds" -rss_limit_mb=2048 -malloc_limit_mb=1024 -timeout=20 \
        -close_fd_mask=2 -print_final_stats=1 -artifact_prefix="$findings/" \
        > "$dir/fuzz-$name.log" 2>&1; then
        status=1
        tail -n 60 "$dir/fuzz-$name.log"
        echo "fuzz: $name found an input that fails; it is in $findings" >&2
    else
        grep -E "^stat::number_of_executed_units|^Done" "$dir/fuzz-$name.log" || true
    fi
done
exit $status
