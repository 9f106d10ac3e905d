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
# What is wrong is said in one line, and that is all that happens.
expect_refused() {
  local wanted=$1 status=0
  shift
  "$simulator" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
  ((status == 2)) || fail "exit status $status of: $*"
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
"$simulator" --help | grep '^Faults that exclude each other are refused' >/dev/null || fail "--help"

# The one directory that it makes.
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

# Anywhere else, and beside the socket of one that was killed.
start --socket "$work/orb"
expect_line "listening on $work/orb"
kill -KILL "$process"
wait "$process" 2>/dev/null || true
start --socket "$work/orb" --faults no-answer,close-after=2,connections=1
expect_line "listening on $work/orb"
kill "$process"
expect_line "stopped"
rm -rf "$work"
