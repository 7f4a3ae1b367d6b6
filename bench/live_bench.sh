#!/usr/bin/env bash
# Times whole autocli processes on the live Linux host against ip and ss, which read the same
# kernel tables, in network namespaces of the script's own: one holding 10 links, one holding
# 1,000 (veth pairs), and one holding 10,000 TCP sockets (5,000 connections on loopback, both
# ends). The namespaces, their links and sockets go when the script's processes end; the
# machine's own links and sockets are never seen.
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
    echo "== a namespace with 10000 sockets"
    LIVE_BENCH_NAMESPACE=yes LIVE_BENCH_SOCKETS=10000 unshare -n "$0" "$build" "$runs"
    exit 0
fi

if [ -n "${LIVE_BENCH_SOCKETS:-}" ]; then
    ip link set lo up
    ulimit -n $((LIVE_BENCH_SOCKETS + 1024))
    # Holds the sockets until its input closes: half of them connect, half are accepted.
    coproc holder {
        python3 -c '
import socket, sys
pairs = int(sys.argv[1]) // 2
listener = socket.socket()
listener.bind(("127.0.0.1", 0))
listener.listen(1024)
held = []
for _ in range(pairs):
    held.append(socket.create_connection(listener.getsockname()))
    held.append(listener.accept()[0])
print("ready", flush=True)
sys.stdin.read()
' "$LIVE_BENCH_SOCKETS"
    }
    read -r _ <&"${holder[0]}"
    "$build/bin/bench_processes" "$runs" \
        "ss -tanH=$(command -v ss) -tanH" \
        "ip connection list -t tcp (json)=$build/bin/autocli --host=linux --formatter=json network ip connection list -t tcp" \
        "ip connection list (json)=$build/bin/autocli --host=linux --formatter=json network ip connection list"
    exec {holder[1]}>&-
    wait
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
