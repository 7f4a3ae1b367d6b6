#!/usr/bin/env bash
# Builds the command-line fuzzer with clang's libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer into build-asan/ (see build-sanitized.sh), writes its seed corpus
# (one command line for every command of the tree, from its declared parameters), and fuzzes for
# SECONDS (default 60).
# Inputs that find something new are kept in build-asan/corpus/found; a crash stops the run
# with its input saved as build-asan/crash-*.
# Usage: scripts/fuzz.sh [SECONDS] [libFuzzer options]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
bash scripts/build-sanitized.sh
corpus=build-asan/corpus
rm -rf "$corpus/seeds"
mkdir -p "$corpus/found"
FUZZ_SEED_DIRECTORY="$corpus/seeds" build-asan/bin/fuzz_commandline
cd build-asan
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    bin/fuzz_commandline -max_total_time="$seconds" -max_len=512 -timeout=10 -print_final_stats=1 \
    "$@" corpus/found corpus/seeds
