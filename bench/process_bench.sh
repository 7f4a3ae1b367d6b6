#!/usr/bin/env bash
# Times whole autocli processes against a floor of /bin/true: one command of each family on the
# default host, and nic list on a scaled host. bench_processes runs the commands in turn, run by run, so that the machine's drift weighs
# on all of them alike.
# Usage: bench/process_bench.sh [build-dir] [scale] [runs]   (defaults: build, 112, 1000)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
scale=${2:-112}
runs=${3:-1000}
autocli="$(realpath "$build/bin/autocli")"
hostsim="$(realpath "$build/bin/hostsim")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

HOSTSIM_DIR="$work/default" "$hostsim" init >/dev/null
HOSTSIM_DIR="$work/scaled" "$hostsim" init --scale="$scale" >/dev/null
nics=$(HOSTSIM_DIR="$work/scaled" "$autocli" --formatter=csv network nic list | tail -n +2 | wc -l)

# One read command of each family and one change, on the default host.
families=("nic list" "nic get -n hwnic0" "nic stats get -n hwnic0" "sriovnic list"
          "vswitch standard list" "vswitch standard portgroup list"
          "vswitch dvs zanvex lacp status get" "ip interface list" "ip interface ipv4 get"
          "ip route ipv4 list" "ip dns server list" "ip ipsec sa list" "firewall ruleset list"
          "nic up -n hwnic0")
commands=("/bin/true=/bin/true" "autocli --version=$autocli --version")
for family in "${families[@]}"; do
    commands+=("$family=HOSTSIM_DIR=$work/default $autocli network $family")
done
"$build/bin/bench_processes" "$runs" "${commands[@]}"
echo
# The scaled host runs apart: a process ten times longer in the turns would slow the short ones
# after it, the floor among them.
"$build/bin/bench_processes" "$((runs / 4))" \
    "/bin/true=/bin/true" \
    "nic list, $nics NICs=HOSTSIM_DIR=$work/scaled $autocli network nic list"
