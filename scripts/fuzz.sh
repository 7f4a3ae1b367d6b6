#!/usr/bin/env bash
# Builds the fuzzers with clang's libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer
# into build-asan/ (see build-sanitized.sh), writes their seed corpora, and fuzzes each for
# SECONDS (default 60): the command line (one command line for every command of the tree, from
# its declared parameters, as seeds) and the profile reader (the built-in default host and each
# of its sections as seeds).
# Inputs that find something new are kept in build-asan/corpus/<target>/found; a crash stops the
# run with its input saved as build-asan/crash-*.
# Usage: scripts/fuzz.sh [SECONDS] [libFuzzer options]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
bash scripts/build-sanitized.sh
# target, longest input
for fuzzer in "commandline 512" "profile 131072"; do
    read -r target length <<<"$fuzzer"
    corpus=build-asan/corpus/$target
    rm -rf "$corpus/seeds"
    mkdir -p "$corpus/found"
    FUZZ_SEED_DIRECTORY="$corpus/seeds" "build-asan/bin/fuzz_$target"
    (cd build-asan &&
        ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
            "bin/fuzz_$target" -max_total_time="$seconds" -max_len="$length" -timeout=10 \
            -print_final_stats=1 "$@" "corpus/$target/found" "corpus/$target/seeds")
done
