#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The daemon stand-in as a program. Run by ctest inside the sandbox: orbd_sim.sh ORBD_SIM
set -euo pipefail

simulator=$1
work=$(mktemp -d)

fail() {
  echo "FAILED: $1" >&2
  exit 1
}
# Wrong arguments give one line with the reason and no other action.
expect_refused() {
  local wanted=$1 status=0
  shift
  "$simulator" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
  ((status == 2)) || fail "exit status $status of: $*"
  [[ ! -s $work/out && $(<"$work/err") == "orbd-sim: $wanted; try 'orbd-sim --help'" ]] ||
    fail "$(<"$work/err")"
}
# The arguments are right, but the program cannot do it.
expect_failure() {
  local wanted=$1 status=0
  shift
  "$simulator" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
  ((status == 1)) || fail "exit status $status of: $*"
  [[ ! -s $work/out && $(<"$work/err") == "orbd-sim: $wanted" ]] || fail "$(<"$work/err")"
}
start() {
  exec 4< <(exec "$simulator" "$@")
  process=$!
}
expect_line() {
  local line
  read -r -u 4 line || fail "no line where this was to come: $1"
  [[ $line == *" $1" ]] || fail "$line, not $1"
}

expect_refused "--socket: its directory does not exist: $work/missing/orb" --socket "$work/missing/orb"
[[ ! -e $work/missing ]] || fail "a directory was made"
expect_refused "--faults: silent and garbage exclude each other" --faults silent,garbage
expect_refused "--faults: given twice: close-after" --faults close-after=1,close-after=2
expect_refused "--faults: connections needs a fault that it limits: connections=2" -f connections=2
words="refuse, no-accept, silent, stop-after-init, half-record, wrong-id, die-after-init, \
die-after-response, no-read, no-answer, garbage, cut-frame, close-after=N, connections=N"
expect_refused "--faults: no such fault: loud; faults are $words" --faults loud
page=$(dirname "$0")/../../../docs/man/orbd-sim.1
for word in ${words//,/}; do
  sed '/^\.SH FAULTS/,/^\.SH MODEL/!d; s/\\-/-/g' "$page" | grep -q "^$word"$'\t' || fail "$page: no $word"
done
# The page names the ready scenarios that there are, and no others.
scenarios=$(cd "$(dirname "$0")/../../../tools/orbd-sim/scenarios" && printf '%s\n' *.json |
  sed '/^schema\.json$/d; s/\.json$//' | sort)
named=$(sed '/^\.SH RUN/,/^\.SH CHECK/!d; s/\\-/-/g' "$page" | sed -n $'s/\tT{$//p' | sort)
[[ -n $scenarios && $named == "$scenarios" ]] || fail "$page: ready scenarios: $named"
expect_refused "--socket: a socket needs a path" -s ''
long=/tmp/$(printf '%0103d' 0)
expect_refused "--socket: a socket's path has at most 107 bytes: $long" --socket "$long"
expect_refused "--interval: not a number of milliseconds: 5x" --interval 5x
expect_refused "--interval: not a number of milliseconds: 86400001" -i 86400001
expect_refused "--seed: not a number: -1" --seed -1
expect_refused "--json requires --trace" --json
expect_refused "unknown option: --loud" --loud
expect_refused "unexpected argument: word" word
: >"$work/file"
expect_failure "cannot listen on $work/file: it exists and is no socket" --socket "$work/file"
[[ $("$simulator" --version) == "orbd-sim "[0-9]*.* && $("$simulator" -V) == "$("$simulator" --version)" ]] ||
  fail "--version"
"$simulator" -h | cmp - <("$simulator" --help) || fail "-h"
"$simulator" --help | grep '^Faults that exclude each other are refused' >/dev/null || fail "--help"

# The only directory that it creates.
rmdir /dev/socket
start
expect_line "made /dev/socket"
expect_line "listening on /dev/socket/orb"
[[ -S /dev/socket/orb ]] || fail "no socket"
kill "$process"
expect_line "removed /dev/socket"
expect_line "stopped"
wait "$process" || fail "exit status $?"
[[ ! -e /dev/socket ]] || fail "the directory is still there"

# Another path, and a path with the socket of a killed daemon.
start --socket "$work/orb"
expect_line "listening on $work/orb"
kill -KILL "$process"
wait "$process" 2>/dev/null || true
start --sock "$work/orb" --faults no-answer,close-after=2,connections=1
expect_line "listening on $work/orb"
kill -INT "$process"
expect_line "stopped"

# The log reports a fault.
start -qs "$work/orb"
until [[ -S $work/orb ]]; do
  kill -0 "$process" || fail "it has ended"
done
expect_failure "cannot listen on $work/orb: somebody listens there already" -s "$work/orb"
kill "$process"
if read -r -u 4 line; then fail "quiet, but: $line"; fi
start --socket "$work/orb" --faults refuse
expect_line "listening on $work/orb"
expect_line "fault refuse: nobody listens any more"
[[ -S $work/orb ]] || fail "the socket that refuses is gone"
kill "$process"
expect_line "stopped"
[[ ! -e $work/orb ]] || fail "the socket that refused is left"
start --socket "$work/orb" --faults no-accept --trace --json
line=$(head -n 1 <&4)
[[ $line == '{"time":"'*'Z","kind":"log","text":"fault no-accept: connections are not accepted"}' ]] ||
  fail "$line"
kill "$process"
rm -rf "$work"
