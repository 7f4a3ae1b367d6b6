#!/usr/bin/env bash
# Installs what is missing and builds everything into build/ (or the folder given).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${1:-build}
shift || true
cmake -S . -B "$build" -G Ninja "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
