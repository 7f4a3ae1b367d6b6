# Shared by the tests of the installed tree, the package, the completion scripts and the manual
# pages: each test is a bash script run by ctest with the build folder as its argument.
set -euo pipefail

build=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# Ends the test as skipped (ctest's SKIP_RETURN_CODE) when one of the programs is missing.
require() {
    local program
    for program in "$@"; do
        if ! command -v "$program" >/dev/null; then
            echo "SKIP: $program is not installed (scripts/setup.sh test installs it)"
            exit 77
        fi
    done
}

fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}

# expect_equal WHAT EXPECTED ACTUAL
expect_equal() {
    if [[ $2 != "$3" ]]; then
        fail "$1"$'\n'"  expected: $2"$'\n'"  actual:   $3"
    fi
}

# Ends the test, failed when any check failed.
finish() {
    if ((failures > 0)); then
        echo "$failures check(s) failed" >&2
        exit 1
    fi
    echo "all checks passed"
}

# A fresh simulated host for the test.
export HOSTSIM_DIR=$work/host
unset AUTOCLI_HOST AUTOCLI_PLUGIN_DIR HOSTSIM_FAULTS

# The names a list command shows in its first CSV column, one line each, from autocli
# (the binary given, else the build's).
listed_names() {
    local autocli=${AUTOCLI:-$build/bin/autocli}
    "$autocli" --formatter=csv network "$@" | tail -n +2 | cut -d, -f1
}

# The replies of bash completion function _autocli for the words given, the last being the one
# completed, as readline would set COMP_WORDS (a word split at '=' gives a word "=").
# The completion script must have been sourced. Prints the replies on one line, blank-separated.
bash_complete() {
    COMP_WORDS=("$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMP_LINE="$*"
    COMP_POINT=${#COMP_LINE}
    COMPREPLY=()
    _autocli "${COMP_WORDS[0]}" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]:-}"
    echo "${COMPREPLY[*]}"
}
