#!/usr/bin/env bash
# Times 1,000 changes (nic down and nic up in turn over the default host's NICs) made as one
# `autocli --batch` against the same 1,000 changes made as 1,000 autocli processes.
# Usage: bench/batch_bench.sh [build-dir] [changes] [rounds]   (defaults: build, 1000, 5)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
changes=${2:-1000}
rounds=${3:-5}
autocli="$(realpath "$build/bin/autocli")"
hostsim="$(realpath "$build/bin/hostsim")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOSTSIM_DIR="$work/host"
"$hostsim" init >/dev/null

for ((i = 0; i < changes; i++)); do
    if ((i / 9 % 2)); then verb=up; else verb=down; fi
    echo "network nic $verb -n hwnic$((i % 9))"
done >"$work/batch"

now() { date +%s.%N; }
batch=() processes=()
for ((round = 0; round < rounds; round++)); do
    start=$(now)
    "$autocli" --batch "$work/batch"
    batch+=("$(echo "$(now) - $start" | bc)")
    start=$(now)
    while read -r -a words; do "$autocli" "${words[@]}"; done <"$work/batch"
    processes+=("$(echo "$(now) - $start" | bc)")
done
median() { printf '%s\n' "$@" | sort -n | awk '{a[NR] = $1} END {print a[int((NR + 1) / 2)]}'; }
b=$(median "${batch[@]}")
p=$(median "${processes[@]}")
printf '%d changes, median of %d rounds\n' "$changes" "$rounds"
printf '  one batch:     %8.3f s  (%.0f us a change)\n' "$b" "$(echo "$b * 1000000 / $changes" | bc -l)"
printf '  %d processes: %8.3f s  (%.0f us a change)\n' "$changes" "$p" "$(echo "$p * 1000000 / $changes" | bc -l)"
printf '  ratio:         %8.1fx\n' "$(echo "$p / $b" | bc -l)"
