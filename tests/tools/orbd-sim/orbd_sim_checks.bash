# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Common functions of the tests of the daemon stand-in as a program. Sourced by bash with set -e,
# after $simulator (the program) and $work (a folder of the test) are set.
# shellcheck shell=bash
: "${simulator:?}" "${work:?}"

fail() {
  echo "FAILED: $1" >&2
  cat "$work/err" >&2 || true
  exit 1
}
# expect STATUS ARGUMENT...: $work/out and $work/err get the output.
expect() {
  local wanted=$1 status=0
  shift
  "$simulator" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
  ((status == wanted)) || fail "status $status, not $wanted, of: $*"
}
# A pause between two checks of another process, so that polling does not take its processor time.
mkfifo "$work/moment"
moment() { read -r -t 0.1 _ <>"$work/moment" || true; }
# await PROCESS COMMAND...: waits until the command succeeds. Fails if the process ends before that.
await() {
  local process=$1
  shift
  until "$@"; do
    kill -0 "$process" || "$@" || fail "ended before: $*"
    moment
  done
}
