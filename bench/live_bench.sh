#!/usr/bin/env bash
# Times whole autocli processes on the live Linux host against ip and nft, which read the same
# kernel tables, in network namespaces of the script's own: one holding 10 links, one holding
# 1,000 (veth pairs). The namespaces, their links and the firewall's table go when the script's
# processes end; the machine's own links and tables are never seen.
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

# Standard switches and the firewall: a bridge for every ten links, each with an uplink, and the
# firewall's table with an allowed address for every link.
for ((bridge = 0; bridge < LIVE_BENCH_LINKS / 10; bridge++)); do
    echo "link add lanswitch$bridge type bridge"
    echo "link set v$bridge master lanswitch$bridge"
done | "$ip" -batch -
nft=$(command -v nft)
# The audit records of the firewall's changes go to a state directory of the run's own.
HOSTSIM_DIR=$(mktemp -d)
export HOSTSIM_DIR
trap 'rm -rf "$HOSTSIM_DIR"' EXIT
"$autocli" --host=linux network firewall load
addresses=$(for ((n = 0; n < LIVE_BENCH_LINKS; n++)); do
    printf '10.%d.%d.1, ' $((n / 256)) $((n % 256))
done)
"$nft" add element inet kelmfw snmp.ipv4 "{ ${addresses%, } }"
"$build/bin/bench_processes" "$runs" \
    "ip -j link show type bridge=$ip -j link show type bridge" \
    "vswitch standard list (json)=$autocli --host=linux --formatter=json network vswitch standard list" \
    "nft -j list table inet kelmfw=$nft -j list table inet kelmfw" \
    "firewall ruleset allowedip list (json)=$autocli --host=linux --formatter=json network firewall ruleset allowedip list" \
    "firewall refresh=$autocli --host=linux network firewall refresh"
