#!/usr/bin/env bash
# `cmake --install` into a throwaway root (DESTDIR and a prefix): the installed autocli finds
# its libraries and plug-ins there, after the tree is moved too, and so do the completion
# scripts and the manual pages.
# Usage: install_test.sh BUILD_DIR
source "$(dirname "$0")/lib.sh"

DESTDIR=$work/root cmake --install "$build" --prefix /opt/autocli >"$work/install.log" ||
    { cat "$work/install.log" >&2; exit 1; }
prefix=$work/root/opt/autocli

# Everything lands under the prefix, in the places of the layout.
expect_equal "installed files" "$(
    cat <<'END'
bin/autocli -> ../lib/autocli/bin/autocli
bin/hostsim -> ../lib/autocli/bin/hostsim
lib/autocli/bin/autocli
lib/autocli/bin/hostsim
lib/autocli/bin/libcpptools.so
lib/autocli/bin/libkelmctl.so
lib/autocli/bin/liblinuxhost.so
lib/autocli/plugins/libnetwork.so
share/bash-completion/completions/autocli
share/man/man1/autocli.1.gz
share/man/man7/autocli-network.7.gz
share/zsh/vendor-completions/_autocli
END
)" "$(cd "$work/root" && find . ! -type d -printf '%P%l\n' |
    sed 's|^opt/autocli/||; s|\.\./| -> ../|' | sort)"

# An installed tree runs on its own libraries, and goes on doing so when moved elsewhere.
check_runs() {
    local where=$1
    expect_equal "nic list from $where" "$("$build/bin/autocli" network nic list)" \
        "$("$where/bin/autocli" network nic list)"
    expect_equal "a completion from $where" "$(listed_names nic list)" \
        "$("$where/bin/autocli" __complete network nic down -n)"
    expect_equal "hostsim from $where" "$("$build/bin/hostsim" export)" \
        "$("$where/bin/hostsim" export)"
    local libraries
    libraries=$(LD_DEBUG=files "$where/bin/autocli" network nic list 2>&1 >/dev/null |
        sed -n 's/.*file=\([^ ]*autocli[^ ]*\) .*/\1/p' | sort -u)
    [[ -n $libraries && $libraries != *"$build"* ]] ||
        fail "the libraries of $where come from elsewhere:"$'\n'"$libraries"
}
check_runs "$prefix"
mv "$prefix" "$work/moved"
check_runs "$work/moved"

# The installed completion script, with the installed autocli on the PATH.
(
    PATH=$work/moved/bin:$PATH
    source "$work/moved/share/bash-completion/completions/autocli"
    expect_equal "installed bash completion" "$(listed_names nic list | paste -sd' ')" \
        "$(bash_complete autocli network nic down -n '')"
    exit "$failures"
) || failures=$((failures + 1))

if command -v mandoc >/dev/null; then
    for page in "$work"/moved/share/man/man*/*.gz; do
        expect_equal "lint of the installed $(basename "$page")" "" \
            "$(gzip -dc "$page" | mandoc -T lint 2>&1)"
    done
fi

finish
