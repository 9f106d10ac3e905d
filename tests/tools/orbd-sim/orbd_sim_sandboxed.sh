#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Scenarios in the sandbox that the daemon stand-in finds itself. Run by ctest outside of any
# sandbox: orbd_sim_sandboxed.sh ORBD_SIM ALL_SERVICES. Works in the current directory, which stays
# writable in the sandbox.
set -euo pipefail

simulator=$1 application=$2
work=$(mktemp -d "$PWD/orbd-sim-test.XXXXXX")
trap 'kill -KILL $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT
export ORB_LOG_LEVEL=S

# shellcheck source=tests/tools/orbd-sim/orbd_sim_checks.bash
. "$(dirname "$0")/orbd_sim_checks.bash"
# The same with a run in the sandbox.
sandboxed() { expect "$1" run --sandbox "${@:2}"; }

sandboxed 7 steady -- bash -c 'exit 7'
# shellcheck disable=SC2016
sandboxed $((128 + 15)) steady -- bash -c 'kill -TERM $$'
sandboxed 127 steady -- no-such-command
# There is no handoff, which is a failure for the application.
sandboxed 1 steady --log "$work/log" -- "$application" --seconds 5
grep -q '^lce  .* 40.0 Mbit/s' "$work/out" || fail "no rate of the scenario"
grep -q ' listening on /dev/socket/orb$' "$work/log" || fail "--log"
sandboxed 1 steady --log "$work/log" --trace --json -- "$application" --seconds 5
grep -q '"kind":"frame"' "$work/log" || fail "--trace --json"
# The scenario is passed as an open file, which the command must not inherit.
# shellcheck disable=SC2016
sandboxed 0 steady -- bash -c 'for fd in /proc/self/fd/*; do [[ $(readlink "$fd") != *.json ]] || exit 9; done'
# The scenario may be in a place that the sandbox cannot see.
hidden=$(mktemp /tmp/scenario.XXXXXX)
echo '{"expect": [{"sends": {"service": "lce"}}]}' >"$hidden"
sandboxed 3 "$hidden" -- true
rm -f "$hidden"
[[ $(<"$work/err") == "orbd-sim run: /expect/0: no lce" ]] || fail "the expectation"

# Signals are passed to the command.
exec 4< <(exec "$simulator" run --sandbox steady -- \
  bash -c 'trap "exit 5" TERM; echo ready; while :; do read -t 1 || true; done <> <(:)' 2>"$work/err")
process=$!
read -r -u 4 _
kill -TERM "$process"
status=0
wait "$process" || status=$?
((status == 5)) || fail "status $status of a command that was asked to end"
exec 4< <(exec "$simulator" run --sandbox steady -- \
  bash -c 'trap "echo again" TERM; echo ready; while :; do read -t 1 || true; done <> <(:)' 2>"$work/err")
process=$!
read -r -u 4 _
kill -TERM "$process"
read -r -u 4 _
kill -TERM "$process"
status=0
wait "$process" || status=$?
((status == 128 + 15)) || fail "status $status after a second signal"
# The command has ended with the run, so no process keeps the pipe open.
cat <&4 >/dev/null
