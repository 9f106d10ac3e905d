#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Without a daemon, examples must fail with a message and an exit status. Wrong use gives another
# status. Run by ctest inside the sandbox: examples_alone.sh EXAMPLE...
set -euo pipefail

work=$(mktemp -d)
unset ORB_LOG_LEVEL  # as a new user runs them
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

declare -A runs=()
for example; do
  name=$(basename "$example")
  "$example" --seconds 8 >"$work/$name.out" 2>"$work/$name.err" &
  runs[$name]=$!
done
for example; do
  name=$(basename "$example")
  status=0
  wait "${runs[$name]}" || status=$?
  ((status == 1)) || fail "$name: exit status $status without a daemon"
  grep -q "^$name: " "$work/$name.err" || fail "$name says nothing"
  grep -qE "^$name: .*(the daemon is not there|SERVICE_DOWN)" "$work/$name.err" ||
    fail "$name does not say what is wrong: $(<"$work/$name.err")"
  ! grep -vE "^($name: |attempt )" "$work/$name.err" || fail "$name: not its messages alone"
  for wrong in '' 0 x; do
    status=0
    "$example" --seconds "$wrong" >"$work/out" 2>"$work/err" || status=$?
    ((status == 2)) || fail "$name --seconds '$wrong': exit status $status"
    grep -qx "Usage: $name \[--seconds N\]" "$work/err" || fail "$name does not say how it is used"
  done
done
rm -rf "$work"
