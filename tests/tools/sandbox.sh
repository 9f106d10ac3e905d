#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Tests of scripts/sandbox: sandbox.sh SANDBOX. Works in the current directory, which stays writable
# in the sandbox. A lock on a file shows remaining processes: it is free when no process has the
# file open.
set -euo pipefail

sandbox=$1
work=$(mktemp -d "$PWD/sandbox-test.XXXXXX")
trap 'rm -rf "$work"' EXIT
lock=$work/lock
export work lock

fail() {
  echo "FAILED: $1" >&2
  exit 1
}
inside() { "$sandbox" bash -euc "$1"; }
expect_status() {
  local wanted=$1 status=0
  inside "$2" || status=$?
  ((status == wanted)) || fail "status $status of: $2"
}
nothing_left() { flock --timeout 60 "$lock" true || fail "$1 outlives the sandbox"; }

# A full daemon: no parent, its own session, no terminal, no pipe. It holds the lock.
# shellcheck disable=SC2016
leave='exec 8>"$lock"
  flock 8
  (setsid sleep 600 </dev/null >/dev/null 2>&1 &)
  ! flock --nonblock "$lock" true'

check() {
  expect_status 0 true
  expect_status 7 'exit 7'
  # shellcheck disable=SC2016
  expect_status $((128 + 15)) 'kill -TERM $$'
  [[ $(echo text | "$sandbox" cat) == text ]] || fail "standard input"

  inside 'grep -qx "CapEff:[[:blank:]]*0*" /proc/self/status' || fail "capabilities"
  inside 'grep -q "^[^ ]* /proc/sys [^ ]* ro[, ]" /proc/mounts' || fail "/proc/sys is not read-only"
  # Only opened, in case that is possible.
  inside '! { : >>/proc/sys/kernel/core_uses_pid; } 2>/dev/null' || fail "/proc/sys can be written"
  # shellcheck disable=SC2016
  inside '[[ -d /proc/$$/task/$$ ]]' || fail "/proc does not know the processes"

  # If the system gives users their own terminals.
  ! bwrap --ro-bind / / --dev /dev -- true 2>/dev/null || inside ': <>/dev/ptmx' || fail "terminals"

  expect_status 0 "$leave"
  nothing_left "a daemon"
  expect_status 7 "$leave; exit 7"
  nothing_left "a daemon of a command that fails"
}

check

# Killing the sandbox itself also ends its processes.
mkfifo "$work/ready"
"$sandbox" bash -euc "$leave; echo >\"\$work/ready\"; exec sleep 600" &
read -r <"$work/ready"
kill -KILL $!
wait $! 2>/dev/null || true
nothing_left "a daemon of a sandbox that was killed"

# On machines where /proc cannot be mounted.
mkdir "$work/bin"
cat >"$work/bin/bwrap" <<EOF
#!/bin/bash
for argument; do [[ \$argument != --proc ]] || exit 1; done
exec $(type -P bwrap) "\$@"
EOF
chmod +x "$work/bin/bwrap"
PATH=$work/bin:$PATH
[[ $("$sandbox" readlink /proc/self/ns/pid) == "$(readlink /proc/self/ns/pid)" ]] ||
  fail "the stand-in for bwrap is not used"
check
"$sandbox" bash -euc "$leave; echo >\"\$work/ready\"; exec sleep 600" &
read -r <"$work/ready"
kill -TERM $!
status=0
wait $! 2>/dev/null || status=$?
((status == 143)) || fail "status $status of a sandbox that was terminated"
nothing_left "a daemon of a sandbox that was terminated"

# Each error is one line with the next step.
expect_words() { # expect_words STATUS LINE ARGUMENT...
  local wanted=$1 line=$2 status=0
  shift 2
  "$sandbox" "$@" >"$work/out" 2>"$work/err" || status=$?
  ((status == wanted)) || fail "status $status of: $*"
  # shellcheck disable=SC2053
  [[ ! -s $work/out && $(<"$work/err") == $line ]] || fail "$(<"$work/err"), not $line"
}
name=${sandbox##*/}
expect_words 2 "$name: unknown option: --loud; try '$name --help'" --loud true
expect_words 2 "$name: no command given; try '$name --help'"
expect_words 2 "$name: no such command: no-such-command; try '$name --help'" -- no-such-command
ORB_SANDBOX_BIND=/nowhere expect_words 2 "$name: ORB_SANDBOX_BIND: no such directory: /nowhere" true
# In a directory that the sandbox replaces, the user's files are missing. Said once, and nowhere else.
hint="$name: the files in /tmp are not in the sandbox; work in a folder below /tmp"
[[ $(cd /tmp && "$sandbox" true 2>&1) == "$hint" ]] || fail "no hint in /tmp"
[[ $(cd /tmp && ORB_SANDBOX_BIND=/tmp "$sandbox" true 2>&1) == "$hint" ]] || fail "more than one hint"
[[ $(ORB_SANDBOX_BIND=/tmp "$sandbox" true 2>&1) == "$hint" ]] || fail "no hint for ORB_SANDBOX_BIND"
[[ -z $("$sandbox" true 2>&1) && -z $(cd / && "$sandbox" true 2>&1) ]] || fail "a hint without a reason"
[[ -z $(cd /tmp && "$sandbox" --redirect true 2>&1) ]] || fail "a hint with the machine's /tmp"
cat >"$work/bin/bwrap" <<'EOF'
#!/bin/sh
echo "bwrap: No permissions to create new namespace" >&2
exit 1
EOF
expect_words 1 "$name: namespaces cannot be made here (bwrap: No permissions*try '$name --redirect'" true
mkdir "$work/few"
for tool in bash dirname readlink realpath sed; do ln -s "$(type -P "$tool")" "$work/few/"; done
ln -s "$(type -P true)" "$work/few/true"
PATH=$work/few expect_words 1 "$name: bubblewrap is not installed*try '$name --redirect'" true
[[ $("$sandbox" -h) == "$("$sandbox" --help)" && $("$sandbox" --help) == "Usage: $name "* ]] || fail "--help"
[[ $("$sandbox" --version) =~ ^"$name "[0-9.]+$ && $("$sandbox" -V) == "$("$sandbox" --version)" ]] ||
  fail "--version"
expect_words 2 "$name: --completion must be bash or zsh; try '$name --help'" --completion fish
expect_words 2 "$name: --completion must be bash or zsh; try '$name --help'" --completion
[[ $("$sandbox" --completion=bash) == "$("$sandbox" --completion bash)" ]] || fail "--completion=bash"
[[ $("$sandbox" --completion zsh) == "#compdef $name"* ]] || fail "--completion zsh"

# The completions of bash: the options, then a command, then the words of that command.
"$sandbox" --completion bash >"$work/completion"
expect_offer() { # expect_offer OFFER SETTING WORD...
  local offer
  # shellcheck disable=SC2016
  offer=$(bash -euc '. "$1"; eval "$2"; COMP_WORDS=("${@:3}") COMP_CWORD=$(($# - 3))
    "_${3//-/_}" && echo "${COMPREPLY[*]}"' - "$work/completion" "$2" "$name" "${@:3}")
  [[ $offer == "$1" ]] || fail "'$offer' is offered for ${*:3}, not '$1'"
}
# A shell without and with completion for the words of any command.
expect_offer "--redirect" "" --r
expect_offer "-r --redirect -h --help -V --version --" "" -r -
expect_offer "mapfile" "" -r mapf
expect_offer "mapfile" "" -- mapf
expect_offer "" "" -- --r
expect_offer "" "" mapfile --r
# shellcheck disable=SC2016
others='_command_offset() { COMPREPLY=("from $1"); }'
expect_offer "--redirect" "$others" --r
expect_offer "from 2" "$others" -r mapf
expect_offer "from 2" "$others" -- --r
expect_offer "from 1" "$others" mapfile --r
expect_offer "from 3" "$others" -r -- mapfile -r

echo "alike with and without process numbers of its own"
