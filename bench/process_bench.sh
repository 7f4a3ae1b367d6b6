#!/usr/bin/env bash
# Times whole autocli processes against a floor of /bin/true with hyperfine, on the default host
# and on a scaled host. The machine's speed drifts over a run, so the commands take turns in
# rounds, and each ratio is the median of the rounds' ratios of medians.
# Usage: bench/process_bench.sh [build-dir] [scale] [rounds]   (defaults: build, 112, 5)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
scale=${2:-112}
rounds=${3:-5}
autocli="$(realpath "$build/bin/autocli")"
hostsim="$(realpath "$build/bin/hostsim")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

HOSTSIM_DIR="$work/default" "$hostsim" init >/dev/null
HOSTSIM_DIR="$work/scaled" "$hostsim" init --scale="$scale" >/dev/null
nics=$(HOSTSIM_DIR="$work/scaled" "$autocli" --formatter=csv network nic list | tail -n +2 | wc -l)

run() {  # round, name, state dir, command...
    local round=$1 name=$2 dir=$3
    shift 3
    HOSTSIM_DIR="$dir" hyperfine -N --warmup 20 --runs 200 \
        --export-json "$work/$name.$round.json" -n "$name" "$*" >/dev/null 2>&1
}
for round in $(seq "$rounds"); do
    run "$round" floor "$work/default" /bin/true
    run "$round" version "$work/default" "$autocli" --version
    run "$round" default "$work/default" "$autocli" network nic list
    run "$round" scaled "$work/scaled" "$autocli" network nic list
done

python3 - "$work" "$rounds" "$nics" <<'PY'
import json, statistics, sys
work, rounds, nics = sys.argv[1], int(sys.argv[2]), sys.argv[3]
def medians(name):
    return [json.load(open(f"{work}/{name}.{r}.json"))["results"][0]["median"]
            for r in range(1, rounds + 1)]
floor = medians("floor")
rows = [("/bin/true", "floor"), ("autocli --version", "version"),
        ("nic list, default host", "default"), (f"nic list, {nics} NICs", "scaled")]
print(f"{'command':26} {'median':>10} {'vs /bin/true':>13} {'rounds':>13}")
for label, name in rows:
    times = medians(name)
    ratios = [t / f for t, f in zip(times, floor)]
    print(f"{label:26} {statistics.median(times)*1e3:7.3f} ms {statistics.median(ratios):12.2f}x"
          f"  {min(ratios):5.2f}-{max(ratios):.2f}x")
PY
