#!/usr/bin/env bash
# Builds twice, normally and with AddressSanitizer and UndefinedBehaviorSanitizer, and runs every
# test in both builds; then fuzzes the command line for FUZZ_SECONDS (default 60).
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)
bash scripts/build.sh build
(cd build && ctest -j"$jobs" --output-on-failure)
bash scripts/build.sh build-asan -DSANITIZE=ON -DBUILD_BENCHMARKS=OFF
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest -j"$jobs" --output-on-failure)
# Arbitrary command lines through the whole in-process path, for a bounded time.
bash scripts/fuzz.sh "${FUZZ_SECONDS:-60}"
