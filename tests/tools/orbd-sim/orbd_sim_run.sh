#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Scenarios and orders of the daemon stand-in as a program. Run by ctest inside the sandbox, whose
# /dev/socket the runs use: orbd_sim_run.sh ORBD_SIM ALL_SERVICES
set -euo pipefail

simulator=$1 application=$2
work=$(mktemp -d)
export ORB_LOG_LEVEL=S simulator work
# Remaining background processes would keep the sandbox and its output open.
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

# shellcheck source=tests/tools/orbd-sim/orbd_sim_checks.bash
. "$(dirname "$0")/orbd_sim_checks.bash"
says() { [[ $(<"$work/err") == "$1" ]] || fail "not: $1"; }
scenario() { printf '%s\n' "$2" >"$work/$1.json"; }
nothing_left() {
  [[ ! -e /dev/socket/orb ]] || fail "the socket is left"
  ! compgen -G '/tmp/orbsim-*' >/dev/null || fail "a folder is left"
}

echo "check"
expect 0 check steady handoff rate-drop vanish slow-answers refused
[[ ! -s $work/out && ! -s $work/err ]] || fail "check of what is right says something"
expect 0 check --schema
grep -q '"http://json-schema.org/draft-07/schema#"' "$work/out" || fail "--schema"
scenario wrong '{"timeline": [{"at": 1, "handoff": {"to": "5g", "notice": "1"}}]}'
scenario right '{"timeline": [{"at": 1, "handoff": {"to": "5g", "notice": 1}}]}'
expect 1 check "$work/right.json" "$work/wrong.json" "$work/none.json"
[[ $(wc -l <"$work/err") == 2 ]] || fail "a line for each"
grep -q "^orbd-sim check: $work/wrong.json: /timeline/0/handoff/notice: " "$work/err" || fail "place"
grep -q "^orbd-sim check: $work/none.json: No such file or directory$" "$work/err" || fail "errno"
expect 1 check schema
says "orbd-sim check: schema: No such file or directory"
lists() { tr -s ' \n' ' ' <"$work/out" | grep -q " a ready one: $1\."; }
for command in check run; do
  expect 0 "$command" --help
  lists 'handoff, rate-drop, refused, slow-answers, steady, vanish' || fail "$command --help: no names"
  ORB_SCENARIOS=$work expect 0 "$command" --help
  lists 'right, wrong' || fail "$command --help: ORB_SCENARIOS"
done
expect 2 check
grep -q "^orbd-sim check: no FILE given; try " "$work/err" || fail "check without a file"

echo "the command's status"
expect 7 run steady -- bash -c 'exit 7'
nothing_left
# shellcheck disable=SC2016
expect $((128 + 15)) run steady -- bash -c 'kill -TERM $$'
expect 127 run steady -- no-such-command
grep -q '^orbd-sim run: cannot start no-such-command: ' "$work/err" || fail "no such command"
expect 126 run steady -- /dev/null
expect 2 run steady
grep -q '^orbd-sim run: no command after --; try ' "$work/err" || fail "no command"
# shellcheck disable=SC2016
expect 0 run steady -- bash -c '[[ $# == 3 && $1 == "[1,2]" && $2 == -- && $3 == --help ]]' - '[1,2]' -- --help
expect 2 run "$work/wrong.json" -- true
grep -q "^orbd-sim run: $work/wrong.json: /timeline/0/" "$work/err" || fail "wrong scenario"
expect 2 run --sandbox --no-sandbox steady -- true
# shellcheck disable=SC2016
expect 0 run --no-sandbox steady -- bash -c '[[ -S /dev/socket/orb && $ORB_SOCKET == /dev/socket/orb ]]'
nothing_left
expect 0 run --log "$work/log" steady -- true
grep -q ' listening on /dev/socket/orb$' "$work/log" || fail "--log"
expect 0 run --log - steady -- true
grep -q ' stopped$' "$work/err" || fail "--log -"
expect 1 run --log /dev/full steady -- true
says "orbd-sim run: /dev/full: No space left on device"
expect 7 run --log /dev/full steady -- bash -c 'exit 7'
expect 1 run --log "$work/none/log" steady -- true
says "orbd-sim run: $work/none/log: No such file or directory"
expect 1 run --log "$work/log" --trace steady -- "$application" --seconds 5
grep -q ' to-daemon .* LCE ' "$work/log" || fail "--trace"
expect 0 run --log - --trace --json steady -- true
[[ $(head -n 1 "$work/err") == '{"time":"'*'Z","kind":"log","text":"'* ]] || fail "--json"
expect 2 run --trace steady -- true
grep -q '^orbd-sim run: --trace requires --log; try ' "$work/err" || fail "--trace without --log"
expect 2 run --log - --json steady -- true

echo "where the socket is"
# A user who can create the default path uses it.
rmdir /dev/socket
expect 0 run --log "$work/log" steady -- test -S /dev/socket/orb
grep -q ' made /dev/socket$' "$work/log" || fail "the folder is not told of"
[[ ! -e /dev/socket ]] || fail "the folder is left"
mkdir /dev/socket
# Other users get a separate path, and a message that normal applications do not use it.
chmod 555 /dev/socket
long=$work/$(printf '%0100d' 0)
mkdir "$long"
for TMPDIR in /nonexistent "$long"; do
  export TMPDIR
  # shellcheck disable=SC2016
  expect 0 run --no-sandbox steady -- bash -c '[[ $ORB_SOCKET == /tmp/orbsim-*/orb && -S $ORB_SOCKET ]]'
  [[ $(<"$work/err") == "orbd-sim run: listening on /tmp/orbsim-"*"/orb; applications use this path only inside \
'orb-sandbox --redirect'" ]] || fail "where the socket is"
  nothing_left
done
unset TMPDIR
chmod 555 /tmp
expect 1 run --no-sandbox steady -- true
says "orbd-sim run: cannot make a folder in /tmp: Permission denied"
chmod 1777 /tmp
chmod 755 /dev/socket

# The parent may have ignored SIGCHLD.
status=0
timeout 300 env --ignore-signal=CHLD -- "$simulator" run steady -- bash -c 'exit 7' || status=$?
((status == 7)) || fail "status $status where SIGCHLD was ignored"
nothing_left

echo "ready scenarios"
# The application needs values of every service: without a handoff its status is 1.
expect 1 run steady -- "$application" --seconds 5
grep -q '^lce  .* 40.0 Mbit/s' "$work/out" || fail "steady rate"
grep -q '^lle  uplink 25.0 ms, downlink 25.0 ms, LTE$' "$work/out" || fail "steady latency"
expect 0 run handoff -- "$application" --seconds 15
for phase in 'ENTRY, interruption in 1000 ms' START SUCCESS EXIT; do
  grep -q "^lli  3GPP_LTE to 3GPP_5G: $phase$" "$work/out" || fail "handoff: $phase"
done
grep -q '^lce  .* 0.0 Mbit/s' "$work/out" || fail "nothing is interrupted"
grep -q '^lle  .*, NR5G$' "$work/out" || fail "latencies are not of the new technology"
expect 1 run rate-drop -- "$application" --seconds 15
grep -q '^lce  .* 50.0 Mbit/s' "$work/out" || fail "rate before"
grep -q '^lce  .* 2.0 Mbit/s' "$work/out" || fail "rate after"
expect 1 run slow-answers -- "$application" --seconds 5
expect 1 run refused -- "$application" --seconds 5
grep -q 'lce: criteria refused: TYPE_MISMATCH' "$work/err" || fail "type mismatch"
expect 3 run vanish -- "$application"
says "$(sed '$d' "$work/err")
orbd-sim run: /expect/0: no reconnection within 10 s after 6 s"

echo "failed expectations"
scenario expect '{"begin": "connected", "expect": [
  {"sends": {"service": "lle", "request": "set-criteria", "fields": {"criteria": 2}, "within": 1}},
  {"sends": {"service": "lce", "request": "start"}},
  {"sends-not": {"service": "lli"}}, {"at-most": {"requests": 3, "service": "lce"}}]}'
expect 3 run "$work/expect.json" -- "$application" --seconds 5
[[ $(wc -l <"$work/err") == 2 ]] || fail "a line for each that failed"
grep -q '^orbd-sim run: /expect/0: no lle set-criteria criteria=2 within 1 s$' "$work/err" || fail "0"
grep -q '^orbd-sim run: /expect/2: lli at ' "$work/err" || fail "2"
# Independent of the command's own status.
expect 3 run "$work/expect.json" -- bash -c 'exit 1'

echo "the scenario's end"
scenario end '{"end": 0.2}'
expect 0 run "$work/end.json" -- sleep 600
# Time begins with the command's connection, and the command has set its trap before that.
scenario end '{"begin": "connected", "end": 0.2}'
export application
# shellcheck disable=SC2016
expect 5 run "$work/end.json" -- bash -c 'trap "kill \$!; exit 5" TERM; "$application" & wait; exit 1'
nothing_left

echo "signals"
# Sends a signal to a run when its command is ready for it.
signalled() {
  local wanted=$1 script=$2 status=0
  shift 2
  exec 4< <(exec "$simulator" run steady -- bash -c "$script" 2>"$work/err")
  local process=$!
  read -r -u 4 _
  kill "$1" "$process"
  if (($# == 2)); then
    read -r -u 4 _
    kill "$2" "$process"
  fi
  wait "$process" || status=$?
  exec 4<&-
  ((status == wanted)) || fail "status $status, not $wanted, of: $script"
  (($# == 2)) || nothing_left
}
signalled 5 'trap "kill \$!; exit 5" TERM; sleep 600 & echo ready; wait' -TERM
signalled 6 'trap "kill \$!; exit 6" INT; sleep 600 & echo ready; wait' -INT
signalled $((128 + 1)) 'echo ready; exec sleep 600' -HUP
# After a second signal, it waits for nothing.
signalled $((128 + 15)) 'trap "echo again" TERM; sleep 600 & echo ready; while :; do wait; done' \
  -TERM -TERM
rm -f /dev/socket/orb

echo "orders"
ctl() { expect "$1" ctl --control "$work/control" "${@:2}"; }
exec 4< <(exec "$simulator" --interval 3600000 --control "$work/control" --begin lce)
process=$!
read -r -u 4 _
await "$process" test -S "$work/control"
[[ $(stat -c %a "$work/control") == 600 ]] || fail "mode of the control socket"
ctl 0 status
grep -qx 'listening on /dev/socket/orb' "$work/out" || fail "status: socket"
grep -qx 'time has not begun' "$work/out" || fail "status: time"
"$application" >"$work/application" 2>&1 &
application_process=$!
await "$application_process" grep -q '^lce  enabled$' "$work/application"
reports() { ctl 0 status && grep -q 'lce enabled and reporting, [1-9]' "$work/out"; }
await "$application_process" reports
grep -q "^session [0-9]* pid [0-9]* endpoint 105, lce enabled and reporting" "$work/out" || fail "session"
ctl 0 send lce rate=1234000 direction=up
ctl 0 send lle ul-latency=1500 dl-latency=2500 rat=5g
ctl 0 send lli phase=start source=lte target=ehrpd
await "$application_process" grep -q '^lli  3GPP_LTE to 3GPP2_EHRPD: START$' "$work/application"
await "$application_process" grep -q '^lle  uplink 1.5 ms, downlink 2.5 ms, NR5G$' "$work/application"
await "$application_process" grep -q '^lce  UPLINK 1234.0 Mbit/s' "$work/application"
ctl 0 set rate=50..2 over=1 latency=20 rat=5g
ctl 0 set rate=wander
ctl 0 pause
ctl 0 status --json
grep -q '"paused":true' "$work/out" || fail "status --json: paused"
grep -q '"rat":"5g"' "$work/out" || fail "status --json: rat"
ctl 0 resume
ctl 0 pause 600
ctl 0 resume
ctl 1 handoff 5g
says "orbd-sim ctl: the device is on 5g already"
ctl 0 handoff lte notice=600 duration=1 result=failure
ctl 1 handoff 5g
says "orbd-sim ctl: a handoff is under way"
ctl 0 delay 0.1
ctl 0 refuse lce NOT_SUPPORTED request=set-criteria times=2
ctl 0 fault silent for=600
ctl 0 fault none
ctl 1 drop 99
says "orbd-sim ctl: no session 99"
ctl 2 set rat=6g
ctl 2 dance
grep -q '^orbd-sim ctl: no such order: dance; orders are ' "$work/err" || fail "no such order"
ctl 2 set speed=3
ctl 2 set rat=lte over=2
grep -q '^orbd-sim ctl: over is only for rate= or latency= with a number; try ' "$work/err" || fail "over"
ctl 2 set rate=wander over=2
ctl 2 set rate=7 rat=bad
ctl 0 status
grep -q ' 7.000 Mbit/s' "$work/out" && fail "half of what was ordered is done"
ctl 2 send
ctl 2 send lce rate
ctl 2 send lce speed=1
ctl 2 vanish
ctl 2 status now
expect 2 ctl status
ctl 0 drop
wait "$application_process" 2>/dev/null || true
ctl 0 vanish 600
ctl 1 vanish 1
says "orbd-sim ctl: the daemon is gone already"
kill -HUP "$process"
wait "$process" || fail "exit status $?"
exec 4<&-
[[ ! -e $work/control ]] || fail "the control socket is left"
ctl 1 status
grep -q "^orbd-sim ctl: $work/control: No such file or directory" "$work/err" || fail "no daemon"

# Waiting for a stand-in that does not answer has a limit.
exec 4< <(exec "$simulator" --socket "$work/stopped" --control "$work/control")
process=$!
read -r -u 4 _
await "$process" test -S "$work/control"
kill -STOP "$process"
ctl 1 status
says "orbd-sim ctl: $work/control: no answer"
kill -CONT "$process"
ctl 0 status
kill -TERM "$process"
wait "$process" || fail "exit status $?"
exec 4<&-

# The same with a run whose command gives the orders.
# shellcheck disable=SC2016
expect 0 run --control "$work/control" steady -- \
  bash -c '"$simulator" ctl --control "$work/control" status && "$simulator" ctl --control "$work/control" set rate=5'
grep -q 'device on lte, .* 40.000 Mbit/s' "$work/out" || fail "control of a run"
rm -rf "$work"
