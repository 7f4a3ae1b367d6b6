#!/usr/bin/env bash
# Times whole autocli processes on the live Linux host against ip, which reads the same kernel
# tables, in network namespaces of the script's own: one holding 10 links, one holding 1,000
# (veth pairs). The namespaces and their links go when the script's processes end; the
# machine's own links are never seen.
# Usage: bench/live_bench.sh [build-dir] [runs]   (defaults: build, 500)
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build}")
runs=${2:-500}

if [ "${LIVE_BENCH_NAMESPACE:-}" != yes ]; then
    for links in 10 1000; do
        echo "== a namespace with $links links"
        LIVE_BENCH_NAMESPACE=yes LIVE_BENCH_LINKS=$links unshare -n "$0" "$build" "$runs"
        echo
    done
    exit 0
fi

ip=$(command -v ip)
autocli="$build/bin/autocli"
for ((pair = 0; pair < LIVE_BENCH_LINKS / 2; pair++)); do
    echo "link add v$pair type veth peer name w$pair"
done | "$ip" -batch -
"$ip" link set v0 up
"$build/bin/bench_processes" "$runs" \
    "ip -j link show=$ip -j link show" \
    "nic list (json)=$autocli --host=linux --formatter=json network nic list" \
    "ip -j -s link show dev v0=$ip -j -s link show dev v0" \
    "nic stats get -n v0 (json)=$autocli --host=linux --formatter=json network nic stats get -n v0"
