#!/usr/bin/env bash
# Installs the Debian packages the build needs, skipping those already present.
set -euo pipefail
packages=(g++ cmake ninja-build libboost1.81-dev libsqlite3-dev nlohmann-json3-dev
          libgtest-dev libgmock-dev libbenchmark-dev ccache sqlite3 clang
          libclang-rt-14-dev libexpat1-dev)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo_cmd=""
    [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    $sudo_cmd apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}"
fi
