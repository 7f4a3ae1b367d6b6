#!/usr/bin/env bash
# The generated manual pages: both lints report nothing, and man renders them.
# Usage: manual_test.sh BUILD_DIR
source "$(dirname "$0")/lib.sh"
require mandoc groff man

for page in "$build"/share/man/man1/autocli.1 "$build"/share/man/man7/autocli-*.7; do
    name=$(basename "$page")
    expect_equal "mandoc -T lint $name" "" "$(mandoc -T lint "$page" 2>&1)"
    expect_equal "groff -ww -z $name" "" "$(groff -ww -z -man "$page" 2>&1)"
    expect_equal "the compressed $name" "$(cat "$page")" "$(gzip -dc "$page.gz")"
    rendered=$(MANWIDTH=80 man -l "$page" 2>&1)
    [[ $rendered == *NAME* && $rendered == *"SEE ALSO"* ]] ||
        fail "man -l $name does not render its sections:"$'\n'"$rendered"
done

rendered=$(MANWIDTH=80 man -l "$build/share/man/man1/autocli.1")
for section in SYNOPSIS OPTIONS FORMATTERS 'BATCH MODE' 'EXIT STATUS' ENVIRONMENT FILES; do
    [[ $rendered == *"$section"* ]] || fail "autocli(1) has no $section"
done
[[ $rendered == *"--host=host"* ]] || fail "autocli(1) does not describe --host"
rendered=$(MANWIDTH=80 man -l "$build/share/man/man7/autocli-network.7")
[[ $rendered == *"autocli network nic down --nic-name=string"* ]] ||
    fail "autocli-network(7) lacks the usage of nic down"

finish
