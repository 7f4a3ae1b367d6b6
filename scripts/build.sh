#!/usr/bin/env bash
# Installs what the build needs when it is missing, and builds everything into build/ (or the
# folder given), with the cmake options that follow it.
# Usage: scripts/build.sh [DIR] [cmake options]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh build
build=${1:-build}
shift || true
# cmake's report of a configuration that works is noise; one that fails is shown whole.
if ! configured=$(cmake -S . -B "$build" -G Ninja "$@" 2>&1); then
    printf '%s\n' "$configured" >&2
    echo "build.sh: configuring $build failed; cmake's messages are above." >&2
    exit 1
fi
cmake --build "$build" -j"$(nproc)"
