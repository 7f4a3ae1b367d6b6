#!/usr/bin/env bash
# Times what grows with the size of a host, each once, with its peak memory: making the default
# host scaled N times (`hostsim init --scale=N`), importing the default host with M more hosts
# entries, and adding K port groups to one switch in one `autocli --batch`. Each should take
# time in proportion to its size.
# Usage: bench/growth_bench.sh [build-dir] [N] [M] [K]   (defaults: build, 1000, 1000000, 40000)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
scale=${2:-1000}
entries=${3:-1000000}
portGroups=${4:-40000}
autocli="$(realpath "$build/bin/autocli")"
hostsim="$(realpath "$build/bin/hostsim")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOSTSIM_DIR="$work/host"
# measure LABEL COMMAND...: one line with the command's time and peak memory.
measure() {
    local label=$1
    shift
    /usr/bin/time -f "$label: %e s, %M KiB at most" -o "$work/time" "$@" >/dev/null
    cat "$work/time"
}

"$hostsim" init
measure "hostsim init --scale=$scale" "$hostsim" init --scale="$scale"

"$hostsim" init
"$hostsim" export | awk -v count="$entries" '
    { print }
    /"hosts": \[$/ {
        for (i = 0; i < count; i++) {
            printf "{\"ip\": \"198.18.%d.%d\", \"hostname\": \"host%d.bench.example.com\", ", \
                int(i / 256) % 256, i % 256, i
            print "\"aliases\": [], \"comment\": \"\"},"
        }
    }' >"$work/hosts.json"
measure "hostsim import, default host and $entries hosts entries" "$hostsim" import "$work/hosts.json"

"$hostsim" init
for ((i = 0; i < portGroups; i++)); do
    echo "network vswitch standard portgroup add -p 'Bench $i' -v lanswitch0"
done >"$work/batch"
measure "$portGroups port group adds in one autocli --batch" "$autocli" --batch "$work/batch"
