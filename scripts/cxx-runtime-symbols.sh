#!/usr/bin/env bash
# Lists the symbols that the given libraries take from the executable: the ones they leave
# undefined and none of them defines. Writes OUTPUT.ld, a linker script that has autocli link them
# in from the static C++ runtime, and OUTPUT.list, the dynamic list that exports just them.
# Versioned symbols come from the system's shared libraries and are left out.
# Usage: scripts/cxx-runtime-symbols.sh OUTPUT LIBRARY...
set -euo pipefail
output=$1
shift
undefined=$(nm -D --undefined-only "$@" | awk '$1 == "U" && $2 !~ /@/ {print $2}' | sort -u)
defined=$(nm -D --defined-only "$@" | awk 'NF == 3 {print $3}' | sort -u)
symbols=$(comm -23 <(echo "$undefined") <(echo "$defined"))
{
    echo "EXTERN("
    echo "$symbols"
    echo ")"
} >"$output.ld.new"
{
    echo "{"
    sed 's/$/;/' <<<"$symbols"
    echo "};"
} >"$output.list.new"
mv "$output.ld.new" "$output.ld"
mv "$output.list.new" "$output.list"
