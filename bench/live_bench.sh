#!/usr/bin/env bash
# Times whole autocli processes on the live Linux host against ip and ss, which read the same
# kernel tables, in network namespaces of the script's own: one holding 10 links, one holding
# 1,000 (veth pairs, with a bridge for every ten links and the firewall's table), one holding
# 10,000 routes, one holding 1,000 addresses and one holding
# 10,000 TCP sockets (5,000 connections on loopback, both ends). The namespaces and what they
# hold go when the script's processes end; the machine's own links and sockets are never seen.
# Usage: bench/live_bench.sh [build-dir] [runs]   (defaults: build, 500)
# With LIVE_BENCH_BEFORE=other-build-dir each autocli command runs from that build too, in the
# same turns ("..., before"), so that a change is measured against what it changed. Both run
# from fresh copies of their bin/ and plugins/ folders.
# LIVE_BENCH_CASES picks some of the cases: "links routes addresses sockets" (the default).
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build}")
runs=${2:-500}
before=${LIVE_BENCH_BEFORE:+$(realpath "$LIVE_BENCH_BEFORE")}
cases=${LIVE_BENCH_CASES:-links routes addresses sockets}

if [ "${LIVE_BENCH_NAMESPACE:-}" != yes ]; then
    # Each build is measured from a fresh copy of its programs, as an installation copies them:
    # the files as the linker wrote them load about 0.1 ms slower (the page cache holds them in
    # smaller pieces), which would weigh on whichever build was linked last.
    copies=$(mktemp -d)
    trap 'rm -rf "$copies"' EXIT
    copy() {
        mkdir -p "$copies/$2"
        cp -r "$1/bin" "$1/plugins" "$copies/$2/"
        echo "$copies/$2"
    }
    build=$(copy "$build" build)
    if [ -n "$before" ]; then
        before=$(copy "$before" before)
    fi
    export LIVE_BENCH_BEFORE=$before
    for case in $cases; do
        case $case in
        links)
            for links in 10 1000; do
                echo "== a namespace with $links links"
                LIVE_BENCH_NAMESPACE=yes LIVE_BENCH_CASE=links LIVE_BENCH_LINKS=$links \
                    unshare -n "$0" "$build" "$runs"
                echo
            done
            ;;
        routes) echo "== a namespace with 10,000 routes" ;;
        addresses) echo "== a namespace with 1,000 addresses on one link" ;;
        sockets) echo "== a namespace with 10,000 sockets" ;;
        esac
        if [ "$case" != links ]; then
            LIVE_BENCH_NAMESPACE=yes LIVE_BENCH_CASE=$case unshare -n "$0" "$build" "$runs"
            echo
        fi
    done
    exit 0
fi

ip=$(command -v ip)
autocli="$build/bin/autocli"

# bench_processes' commands: each LABEL=COMMAND as it is, and each autocli one (LABEL=@ARGUMENTS)
# from the build, preceded by the same from the build before when there is one.
commands() {
    local command
    for command in "$@"; do
        if [[ "${command#*=}" == @* ]]; then
            local label=${command%%=*} arguments=${command#*=@}
            if [ -n "$before" ]; then
                echo "$label, before=$before/bin/autocli $arguments"
            fi
            echo "$label=$autocli $arguments"
        else
            echo "$command"
        fi
    done
}
bench() {
    local listed
    mapfile -t listed < <(commands "$@")
    "$build/bin/bench_processes" "$runs" "${listed[@]}"
}
case "$LIVE_BENCH_CASE" in
links)
    for ((pair = 0; pair < LIVE_BENCH_LINKS / 2; pair++)); do
        echo "link add v$pair type veth peer name w$pair"
    done | "$ip" -batch -
    "$ip" link set v0 up
    bench "ip -j link show=$ip -j link show" \
        "nic list (json)=@--host=linux --formatter=json network nic list" \
        "ip -j -s link show dev v0=$ip -j -s link show dev v0" \
        "nic stats get -n v0 (json)=@--host=linux --formatter=json network nic stats get -n v0"
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
    bench "ip -j link show type bridge=$ip -j link show type bridge" \
        "vswitch standard list (json)=@--host=linux --formatter=json network vswitch standard list" \
        "nft -j list table inet kelmfw=$nft -j list table inet kelmfw" \
        "firewall ruleset allowedip list (json)=@--host=linux --formatter=json network firewall ruleset allowedip list" \
        "firewall refresh=@--host=linux network firewall refresh"
    ;;
routes)
    "$ip" link add v0 type veth peer name w0
    "$ip" link set v0 up
    "$ip" addr add 192.0.2.1/24 dev v0
    for ((route = 0; route < 10000; route++)); do
        echo "route add 10.$((route / 256)).$((route % 256)).0/24 via 192.0.2.254"
    done | "$ip" -batch -
    bench "ip -j route show=$ip -j route show" \
        "ip route ipv4 list (json)=@--host=linux --formatter=json network ip route ipv4 list"
    ;;
addresses)
    "$ip" link add v0 type veth peer name w0
    "$ip" link set v0 up
    for ((address = 0; address < 1000; address++)); do
        echo "addr add 2001:db8::$((address + 1))/64 dev v0 nodad"
    done | "$ip" -batch -
    bench "ip -j addr show=$ip -j addr show" \
        "ip interface list (json)=@--host=linux --formatter=json network ip interface list" \
        "ip interface ipv6 address list (json)=@--host=linux --formatter=json network ip interface ipv6 address list"
    ;;
sockets)
    ip link set lo up
    ulimit -n 11024
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
' 10000
    }
    read -r _ <&"${holder[0]}"
    bench "ss -tanH=$(command -v ss) -tanH" \
        "ip connection list -t tcp (json)=@--host=linux --formatter=json network ip connection list -t tcp" \
        "ip connection list (json)=@--host=linux --formatter=json network ip connection list"
    exec {holder[1]}>&-
    wait
    ;;
esac
