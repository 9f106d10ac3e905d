# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# What the tests of the daemon stand-in as a program have in common. Sourced by bash with set -e, after
# $simulator, the program, and $work, a folder of the test's own, are set.
# shellcheck shell=bash
: "${simulator:?}" "${work:?}"

fail() {
  echo "FAILED: $1" >&2
  cat "$work/err" >&2 || true
  exit 1
}
# expect STATUS ARGUMENT...: what is printed is in $work/out and $work/err then.
expect() {
  local wanted=$1 status=0
  shift
  "$simulator" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
  ((status == wanted)) || fail "status $status, not $wanted, of: $*"
}
# A moment between two looks at what another process does, so that looking leaves the processor to it.
mkfifo "$work/moment"
moment() { read -r -t 0.1 _ <>"$work/moment" || true; }
# await PROCESS COMMAND...: until the command succeeds. Fails when the process has ended without that.
await() {
  local process=$1
  shift
  until "$@"; do
    kill -0 "$process" || "$@" || fail "ended before: $*"
    moment
  done
}
