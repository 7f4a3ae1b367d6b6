#!/usr/bin/env bash
# Builds everything with clang, AddressSanitizer, UndefinedBehaviorSanitizer and libFuzzer's
# coverage into build-asan/: the tests and the command-line fuzzer share this one build.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh sanitize
CC=clang CXX=clang++ bash scripts/build.sh build-asan -DFUZZ=ON
