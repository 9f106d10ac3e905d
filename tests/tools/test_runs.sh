#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The order in which scripts/test builds and tests, and how it ends: test_runs.sh SCRIPTS. A copy of the
# script runs with stand-ins for the programs that it starts. Each writes what it does into a file. A lock
# shows remaining processes, as in sandbox.sh.
set -euo pipefail

work=$(mktemp -d "$PWD/test-runs.XXXXXX")
trap 'rm -rf "$work"' EXIT
export work

fail() {
  echo "FAILED: $1" >&2
  cat "$work/did" "$work/said" >&2
  exit 1
}

mkdir -p "$work"/{bin,scripts}
cp "$1/test" "$work/scripts/"
# step NAME: what a stand-in does. It has the lock until it ends, waits until somebody opens the FIFO
# "$work/wait_NAME", stays as long as somebody has the FIFO "$work/stay_NAME" open, and ends with the status in
# "$work/status_NAME".
cat >"$work/step" <<'STEP'
step() {
  exec 7>>"$work/lock"
  flock --shared 7
  echo "begin $1" >>"$work/did"
  echo "output of $1"
  # Opening a FIFO waits for the other side. In the foreground, so that signals for the group end it.
  [[ ! -p $work/wait_$1 ]] || timeout --foreground 60 sh -c ": >'$work/wait_$1'"
  [[ ! -p $work/stay_$1 ]] || timeout --foreground 90 cat "$work/stay_$1"
  echo "end $1" >>"$work/did"
  [[ ! -e $work/status_$1 ]] || exit "$(<"$work/status_$1")"
}
STEP
# shellcheck disable=SC2016
{
  stand_in() { printf '#!/bin/bash\n. "$work/step"\n%s\n' "$2" >"$work/$1" && chmod +x "$work/$1"; }
  stand_in bin/cmake 'if [[ $1 == --build ]]; then step build_$3; fi'
  stand_in bin/ctest 'step test_$2'
  stand_in scripts/target 'step $1_target'
  stand_in scripts/setup 'step packages'
}
PATH=$work/bin:$PATH

# runs STATUS KIND...: the status of the script.
runs() {
  local wanted=$1 status=0
  shift
  : >"$work/did"
  "$work/scripts/test" "$@" >"$work/said" 2>&1 7>&- || status=$?
  ((status == wanted)) || fail "status $status of: test $*"
  flock --timeout 60 "$work/lock" true || fail "something runs on after: test $*"
}
did() { grep -qx "$1" "$work/did"; }
# in_order FILE LINE...: these lines stand in the file in this order.
in_order() {
  local line last=0 number
  for line in "${@:2}"; do
    number=$(grep -nx -m1 "$line" "$1" | cut -d: -f1) || number=0
    ((number > last)) || fail "'$line' is missing or too early"
    last=$number
  done
}
begin() {
  rm -f "$work"/wait_* "$work"/stay* "$work"/status_*
}

# The tests of dev end only when the build of asan has begun, and that ends only when they have ended.
begin
mkfifo "$work/wait_test_dev" "$work/wait_build_asan"
timeout 60 sh -c ": <'$work/wait_build_asan' && : <'$work/wait_test_dev'" &
together=$!
runs 0 dev asan target
wait "$together" || fail "the build does not run beside the tests"
in_order "$work/did" "end packages" "end setup_target" "end build_dev" "begin test_dev" "end test_dev" "begin test_asan"
in_order "$work/did" "begin build_asan" "end build_asan" "begin test_asan" "end test_asan" "begin test_target"
in_order "$work/said" "== dev: build" "output of build_dev" "== dev: test" "output of test_dev" "== asan: build" \
  "output of build_asan" "== asan: test" "output of test_asan" "== target: build" "output of build_target" \
  "== target: test" "output of test_target"

# All kinds.
begin
runs 0
for kind in dev clang asan tsan target; do
  did "end build_$kind" || fail "$kind is not built"
  did "end test_$kind" || fail "$kind is not tested"
done

# Kinds with one folder are not built while it is in use.
begin
runs 0 dev target
in_order "$work/did" "end test_dev" "begin build_target"
runs 0 target dev
in_order "$work/did" "end test_target" "begin build_dev"
runs 0 dev dev
twice=$(for _ in 1 2; do printf '%s\n' {begin,end}\ build_dev {begin,end}\ test_dev; done)
[[ $(grep -v packages "$work/did") == "$twice" ]] || fail "two builds of dev use one folder"

# A failed build or test is the end, also of the build beside it.
for failed in build_dev test_dev build_asan test_asan; do
  begin
  echo 8 >"$work/status_$failed"
  runs 1 dev asan tsan
  did "end $failed" || fail "$failed has not run"
  ! did "begin test_tsan" || fail "it goes on after $failed"
done
begin
echo 8 >"$work/status_test_dev"
mkfifo "$work/wait_build_asan"
runs 1 dev asan
! did "end build_asan" || fail "the build was not ended"

# Without a compiler for the target the rest counts, unless the target was asked for.
begin
echo 3 >"$work/status_build_target"
runs 0
did "end test_tsan" || fail "the rest has not run"
! did "begin test_target" || fail "there is nothing to test"
grep -q 'NOT TESTED FOR THE TARGET' "$work/said" || fail "it does not say that the target was not tested"
runs 3 target
echo 1 >"$work/status_build_target"
runs 1
begin
echo 3 >"$work/status_setup_target"
runs 3 target
! did "begin build_target" || fail "it builds without packages"

# Without a right to install packages, too.
begin
echo 3 >"$work/status_setup_target"
runs 0
did "end test_tsan" || fail "the rest has not run"

# An interrupted run leaves nothing running.
for signal in INT TERM HUP; do
  begin
  mkfifo "$work/wait_build_asan" "$work/stay"
  ln -s stay "$work/stay_build_asan"
  ln -s stay "$work/stay_test_dev"
  exec 8<>"$work/stay"
  : >"$work/did"
  # In a group of its own, because a terminal sends its signals to the whole group.
  setsid env --default-signal=INT "$work/scripts/test" dev asan >"$work/said" 2>&1 8>&- &
  group=$!
  timeout 60 sh -c ": <'$work/wait_build_asan'" || fail "the build has not begun"
  kill -"$signal" -- "-$group"
  status=0
  wait "$group" 2>/dev/null || status=$?
  ((status > 128)) || fail "status $status after SIG$signal"
  flock --timeout 60 "$work/lock" true || fail "something runs on after SIG$signal"
  exec 8>&-
done
