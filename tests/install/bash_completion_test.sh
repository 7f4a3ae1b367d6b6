#!/usr/bin/env bash
# The generated bash completion, driven through its completion function as bash drives it
# (COMP_WORDS, COMP_CWORD), with the build's autocli answering for the host's objects.
# Usage: bash_completion_test.sh BUILD_DIR
source "$(dirname "$0")/lib.sh"

PATH=$build/bin:$PATH
source "$build/share/bash-completion/completions/autocli"

nics=$(listed_names nic list | paste -sd' ')
switches=$(listed_names vswitch standard list | paste -sd' ')
netstacks=$(listed_names ip netstack list | paste -sd' ')
formatters='table simple json xml csv keyvalue'
global_options='--formatter --host --plugin-dir --batch --force --help --version'
nic_children='list up get set down stats vlan coalesce cso tso sg pauseParams register eeprom
    negotiate selftest queue software ring hwCap dcb attachment'
speeds='10 100 1000 2500 5000 10000 20000 25000 37500 40000 50000 56000 75000 100000 200000 400000'
management='Management\ Network'
migration='Migration\ Network'

# The replies, in any order | the words as the shell gives them, the last being completed
# ('' for an empty word).
sorted() { tr ' ' '\n' | sort | paste -sd' '; }
while IFS='|' read -r expected words; do
    [[ $words == '' || $expected == \#* ]] && continue
    eval "set -- $words"
    expect_equal "completing: $words" "$(eval echo "$expected" | sorted)" \
        "$(bash_complete "$@" | sorted)"
done <<'END'
# the program's options, the namespaces and commands of the tree
network | autocli ''
$global_options | autocli --
vswitch | autocli network vs
$nic_children | autocli network nic ''
--help --formatter | autocli network nic -
# a command's parameters: long names, and short ones after a single dash
--help --formatter --nic-name | autocli network nic down ''
--help --formatter --nic-name -n | autocli network nic down -
--nic-name | autocli network nic down --n
--help --formatter --nic-name | autocli network nic down -n hwnic0 ''
# values of enumerations and booleans, in both forms
$formatters | autocli --formatter = ''
json | autocli --formatter j
$formatters | autocli network nic list --formatter ''
sim linux | autocli --host = ''
linux | autocli --host l
full half | autocli network nic set -n hwnic0 --duplex ''
true false | autocli network ip interface ipv4 set -i kelm0 --peer-dns ''
$speeds | autocli network nic set -n hwnic0 -S ''
# the host's objects, by long and short name, in both forms
$nics | autocli network nic down -n ''
$nics | autocli network nic down --nic-name = ''
hwnic1 hwnic10 | autocli network nic down --nic-name = hwnic1
$switches | autocli network vswitch standard portgroup add -v ''
$netstacks | autocli network ip netstack get --netstack ''
# names with blanks: escaped, or left to the quote the user opened
$management | autocli network vswitch standard portgroup set -p Man
$migration | autocli network vswitch standard portgroup set -p Migration\\\ N
Migration Network | autocli network vswitch standard portgroup set -p "'Mig"
# nothing: a new object's name, free text, a word that names nothing
 | autocli network vswitch standard portgroup add -p ''
 | autocli network ip interface tag add -i kelm0 -t ''
 | autocli network nix ''
 | autocli network nic down hwnic0 ''
END

# A batch file and a plug-in directory complete from the file system.
mkdir -p "$work/files/plugins"
touch "$work/files/changes"
expect_equal "--batch FILE" "$work/files/changes" \
    "$(bash_complete autocli --batch "$work/files/ch")"
expect_equal "--plugin-dir DIR" "$work/files/plugins" \
    "$(bash_complete autocli --plugin-dir = "$work/files/")"

# The --host and --plugin-dir of the command line reach the program asked for the names, and
# AUTOCLI_HOST of the shell when the line gives none: a stand-in program shows what it got.
mkdir "$work/stand-in"
cat >"$work/stand-in/autocli" <<'END'
#!/bin/sh
echo "host:${AUTOCLI_HOST:-none}"
echo "$*" | tr ' ' '+'
END
chmod +x "$work/stand-in/autocli"
stand_in=$work/stand-in/autocli
expect_equal "no host" "host:none __complete+network+nic+down+--nic-name" \
    "$(bash_complete "$stand_in" network nic down -n '')"
expect_equal "--host=linux" "host:linux __complete+network+nic+up+--nic-name" \
    "$(bash_complete "$stand_in" --host = linux network nic up --nic-name '')"
expect_equal "--host linux and --plugin-dir" \
    "host:linux --plugin-dir=/opt/plugins+__complete+network+ip+netstack+get+--netstack" \
    "$(bash_complete "$stand_in" --host linux --plugin-dir /opt/plugins network ip netstack get \
        -N '')"
expect_equal "AUTOCLI_HOST" "host:linux __complete+network+nic+down+--nic-name" \
    "$(AUTOCLI_HOST=linux bash_complete "$stand_in" network nic down -n '')"
expect_equal "--host over AUTOCLI_HOST" "host:sim __complete+network+nic+down+--nic-name" \
    "$(AUTOCLI_HOST=linux bash_complete "$stand_in" --host = sim network nic down -n '')"

finish
