#!/usr/bin/env bash
# Installs the Debian packages of the groups named, skipping those already present.
# Usage: scripts/setup.sh [GROUP...]   (default: build)
#   build     configuring and building: compiler, CMake, Ninja, the libraries and test frameworks
#   sanitize  the sanitizer and fuzzer build: clang and its runtime libraries
#   package   `cpack -G DEB`: dpkg-shlibdeps, which computes the package's dependencies
#   test      scripts/test.sh: all of the above, and the tools the tests drive
set -euo pipefail

declare -A groups=(
    [build]="g++ cmake ninja-build libboost1.81-dev libsqlite3-dev nlohmann-json3-dev
             libgtest-dev libgmock-dev libbenchmark-dev libmnl-dev libpci-dev pci.ids
             libnftables-dev libexpat1-dev"
    [sanitize]="clang libclang-rt-14-dev"
    [package]="dpkg-dev file"
    [test]="@build @sanitize @package ccache sqlite3 zsh tmux mandoc groff-base man-db iproute2
            ethtool nftables"
)

# The packages of a group, with those of the groups it names (@group).
packages_of() {
    local entry
    for entry in ${groups[$1]}; do
        if [[ $entry == @* ]]; then
            packages_of "${entry#@}"
        else
            echo "$entry"
        fi
    done
}

wanted=()
for group in "${@:-build}"; do
    if [[ ! -v groups[$group] ]]; then
        echo "setup.sh: there is no group '$group'; the groups are: build sanitize package test" >&2
        exit 2
    fi
    mapfile -t -O "${#wanted[@]}" wanted < <(packages_of "$group")
done
missing=()
for p in "${wanted[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" ||
        missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo_cmd=""
    [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    $sudo_cmd apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}"
fi
