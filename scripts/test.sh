#!/usr/bin/env bash
# Builds twice and runs every test in both builds: normally, and with clang, AddressSanitizer and
# UndefinedBehaviorSanitizer; then fuzzes the command line and the profile reader in the
# sanitizer build for FUZZ_SECONDS each (default 60). The normal build's tests include installing
# it, and its Debian package, into a throwaway root, and the completion scripts in bash and zsh.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh test
jobs=$(nproc)
# The live host's tests run in network namespaces of their own; where the kernel grants one, a
# skipped live test is a failure, not a silent pass.
if unshare -n true 2>/dev/null; then
    export AUTOCLI_REQUIRE_LIVE_TESTS=1
fi
bash scripts/build.sh build
(cd build && ctest -j"$jobs" --output-on-failure)
bash scripts/build-sanitized.sh
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest -j"$jobs" --output-on-failure)
# Arbitrary command lines through the whole in-process path, and arbitrary profiles through an
# import, each for a bounded time.
bash scripts/fuzz.sh "${FUZZ_SECONDS:-60}"
