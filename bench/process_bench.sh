#!/usr/bin/env bash
# Times whole autocli processes against a floor of /bin/true with hyperfine, on the default host
# and on a scaled host, and prints medians and ratios.
# Usage: bench/process_bench.sh [build-dir] [scale]   (defaults: build, 100)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
scale=${2:-100}
autocli="$(realpath "$build/bin/autocli")"
hostsim="$(realpath "$build/bin/hostsim")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

HOSTSIM_DIR="$work/default" "$hostsim" init >/dev/null
HOSTSIM_DIR="$work/scaled" "$hostsim" init --scale="$scale" >/dev/null
nics=$(HOSTSIM_DIR="$work/scaled" "$autocli" --formatter=csv network nic list | tail -n +2 | wc -l)

run() {  # name, state dir, command...
    local name=$1 dir=$2
    shift 2
    HOSTSIM_DIR="$dir" hyperfine -N --warmup 20 --runs 300 --export-json "$work/$name.json" \
        -n "$name" "$*" >/dev/null
}
run floor "$work/default" /bin/true
run default "$work/default" "$autocli" network nic list
run scaled "$work/scaled" "$autocli" network nic list

python3 - "$work" "$nics" <<'PY'
import json, sys
work, nics = sys.argv[1], sys.argv[2]
median = lambda name: json.load(open(f"{work}/{name}.json"))["results"][0]["median"]
floor = median("floor")
rows = [("/bin/true", floor), ("nic list, default host", median("default")),
        (f"nic list, {nics} NICs", median("scaled"))]
print(f"{'command':26} {'median':>10} {'vs /bin/true':>13}")
for label, value in rows:
    print(f"{label:26} {value*1e3:7.3f} ms {value/floor:12.2f}x")
PY
