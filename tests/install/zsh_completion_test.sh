#!/usr/bin/env bash
# The generated zsh completion, in an interactive zsh on a pseudo-terminal (tmux) that presses
# Tab, with the build's autocli answering for the host's objects.
# Usage: zsh_completion_test.sh BUILD_DIR
source "$(dirname "$0")/lib.sh"
shopt -s extglob
require zsh tmux

mkdir "$work/zdotdir"
cat >"$work/zdotdir/.zshrc" <<END
PS1='> '
fpath=($build/share/zsh/vendor-completions \$fpath)
autoload -Uz compinit && compinit -u -d $work/zcompdump
END
# Every call of tmux is bounded: a client that gets no answer is a failure, not a test that hangs
# until ctest stops it without a word.
tmux=(timeout 10 tmux -S "$work/tmux.socket")
"${tmux[@]}" new-session -d -s completion -x 200 -y 60 \
    "env ZDOTDIR=$work/zdotdir PATH=$build/bin:$PATH HOSTSIM_DIR=$HOSTSIM_DIR zsh -i"
trap '"${tmux[@]}" kill-server 2>/dev/null; rm -rf "$work"' EXIT
trap 'echo "FAIL: line $LINENO: $BASH_COMMAND ended with status $?" >&2' ERR

# The screen, with the blanks at the ends of its lines.
screen() { "${tmux[@]}" capture-pane -p -N -t completion; }

# Waits up to twenty seconds (a loaded machine draws slowly) for the screen to show every one
# of the words given.
shows() {
    local word text deadline=$((SECONDS + 20))
    while ((SECONDS < deadline)); do
        sleep 0.1
        text=$(screen)
        for word in "$@"; do
            [[ $text == *"$word"* ]] || continue 2
        done
        return 0
    done
    return 1
}

# Waits up to twenty seconds for the screen to hold nothing but the prompt with TEXT after it.
shows_only() {
    local text expected="> $1" deadline=$((SECONDS + 20))
    expected=${expected%%+([[:space:]])}
    while ((SECONDS < deadline)); do
        sleep 0.1
        text=$(screen)
        [[ ${text%%+([[:space:]])} == "$expected" ]] && return 0
    done
    return 1
}

# type_tab TEXT TABS: a fresh command line, TEXT typed and Tab pressed TABS times. Each key waits
# for zsh to have drawn the one before, as a slow machine can be still listing the last menu.
type_tab() {
    local tries
    for ((tries = 0; tries < 3; tries++)); do
        "${tmux[@]}" send-keys -t completion C-c
        "${tmux[@]}" send-keys -t completion C-l
        shows_only '' && break
    done
    "${tmux[@]}" send-keys -t completion -l "$1"
    shows_only "$1" || fail "zsh did not echo: $1"$'\n'"$(screen)"
    local i
    for ((i = 0; i < $2; i++)); do
        sleep 0.3
        "${tmux[@]}" send-keys -t completion Tab
    done
}

# expect_screen WHAT TEXT TABS WORD...: after typing TEXT and TABS Tabs the screen shows each
# WORD.
expect_screen() {
    local what=$1 text=$2 tabs=$3
    shift 3
    type_tab "$text" "$tabs"
    shows "$@" || fail "$what: the screen lacks one of: $*"$'\n'"$(screen)"
}

shows '> ' || fail "zsh did not start: $(screen)"
mapfile -t nics < <(listed_names nic list)
expect_screen "a namespace" 'autocli network vs' 1 '> autocli network vswitch '
expect_screen "commands with descriptions" 'autocli network nic ' 1 \
    'down' '-- Bring down the specified network device' 'attachment'
expect_screen "a parameter" 'autocli network nic down --ni' 1 \
    '> autocli network nic down --nic-name '
expect_screen "the NICs" 'autocli network nic down -n ' 2 "${nics[@]}"
expect_screen "the formatters" 'autocli --formatter=' 1 \
    table simple json xml csv keyvalue '-- JSON, for scripts'
expect_screen "the hosts" 'autocli --host ' 1 'sim' 'linux' '-- the simulated host'
expect_screen "a name with a blank" 'autocli network vswitch standard portgroup set -p Mig' 1 \
    '> autocli network vswitch standard portgroup set -p Migration\ Network '
expect_screen "a choice" 'autocli network nic set -n hwnic0 --duplex ' 1 'full' 'half'

# The --host and --plugin-dir of the command line reach the program asked for the names: a
# stand-in autocli, first on the PATH from here on, shows what it got.
mkdir "$work/stand-in"
cat >"$work/stand-in/autocli" <<'END'
#!/bin/sh
echo "host:${AUTOCLI_HOST:-none}"
echo "$*" | tr ' ' '+'
END
chmod +x "$work/stand-in/autocli"
type_tab "path=($work/stand-in \$path); rehash" 0
"${tmux[@]}" send-keys -t completion Enter
expect_screen "no host" 'autocli network nic down -n ' 2 'host:none' \
    '__complete+network+nic+down+--nic-name'
expect_screen "--host and --plugin-dir" \
    'autocli --host=linux --plugin-dir /opt/plugins network ip netstack get -N ' 2 'host:linux' \
    '--plugin-dir=/opt/plugins+__complete+network+ip+netstack+get+--netstack'

finish
