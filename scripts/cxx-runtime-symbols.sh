#!/usr/bin/env bash
# Writes a linker script that has autocli link in, from the static C++ runtime, every symbol that
# the given libraries take from the executable: the ones they leave undefined and none of them
# defines. Versioned symbols come from the system's shared libraries and are left out.
# Usage: scripts/cxx-runtime-symbols.sh OUTPUT LIBRARY...
set -euo pipefail
output=$1
shift
undefined=$(nm -D --undefined-only "$@" | awk '$1 == "U" && $2 !~ /@/ {print $2}' | sort -u)
defined=$(nm -D --defined-only "$@" | awk 'NF == 3 {print $3}' | sort -u)
{
    echo "EXTERN("
    comm -23 <(echo "$undefined") <(echo "$defined")
    echo ")"
} >"$output.new"
mv "$output.new" "$output"
