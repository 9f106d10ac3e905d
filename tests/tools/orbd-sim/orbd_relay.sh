#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# An application with all three services runs through a relay to the daemon stand-in, and then with
# a replay of that recording: its output must be the same. Run by ctest inside the sandbox:
# orbd_relay.sh ORBD_SIM ALL_SERVICES
set -euo pipefail

simulator=$1 application=$2
export ORB_LOG_LEVEL=S
work=$(mktemp -d)
# Remaining background processes would keep the sandbox and its output open.
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() {
  echo "FAILED: $1" >&2
  exit 1
}
# expect_status STATUS MESSAGE ARGUMENT...
expect_status() {
  local wanted=$1 message=$2 status=0
  shift 2
  "$simulator" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
  ((status == wanted)) || fail "exit status $status of: $*"
  [[ ! -s $work/out && $(<"$work/err") == "$message" ]] || fail "$(<"$work/err")"
}
# serve SOCKET LOG ARGUMENT...: sets $served to the process.
serve() {
  local socket=$1 log=$2
  shift 2
  "$simulator" "$@" >"$log" &
  served=$!
  until [[ -S $socket ]]; do
    kill -0 "$served" || fail "not served: $*"
  done
}
end() {
  kill "$1"
  wait "$1" || fail "exit status $? at the end"
}
reports() { grep -ci "^$1  .* to \|^$1  .*link " "$2" || true; }
# run OUTPUT LCE LLE LLI: until the application has printed this number of reports of each service,
# then Ctrl-C. The reports are counted one by one: whoever starts a program for each line reads more
# slowly than the application writes, and holds it up.
run() {
  local output=$1 line
  local -A missing=([lce]=$2 [lle]=$3 [lli]=$4)
  : >"$output"
  exec 5< <(exec "$application")
  local process=$!
  while ((missing[lce] > 0 || missing[lle] > 0 || missing[lli] > 0)); do
    read -r -u 5 line || fail "the application ended: $(<"$output")"
    echo "$line" >>"$output"
    if [[ ${line,,} =~ ^(lce|lle|lli)\ \ .*(\ to|link)\  ]]; then
      missing[${BASH_REMATCH[1]}]=$((missing[${BASH_REMATCH[1]}] - 1))
    fi
  done
  kill -INT "$process"
  cat <&5 >>"$output"
  exec 5<&-
  wait "$process" || fail "exit status $? of the application"
}

echo "wrong use"
hint="; try 'orbd-sim relay --help'"
expect_status 2 "orbd-sim relay: --to is required$hint" relay
expect_status 2 "orbd-sim relay: --to: a socket needs a path$hint" relay --to ''
expect_status 2 "orbd-sim relay: --socket: its directory does not exist: $work/no/orb$hint" \
  relay --to "$work/daemon" --socket "$work/no/orb"
expect_status 2 "orbd-sim relay: --json requires --trace$hint" relay -T "$work/daemon" --json
expect_status 2 "orbd-sim relay: an option before the command: --seed$hint" --seed 1 relay -T "$work/daemon"
expect_status 1 "orbd-sim relay: the daemon's socket and the relay's own are the same: $work/orb" \
  relay -T "$work/orb" -s "$work/orb"
expect_status 1 "orbd-sim relay: /dev/full: No space left on device" \
  relay -T "$work/daemon" -s "$work/orb" -r /dev/full
[[ ! -e $work/orb ]] || fail "a socket is left"
hint="; try 'orbd-sim --help'"
expect_status 1 "orbd-sim: $work/none: No such file or directory" --replay "$work/none"
echo text >"$work/text"
expect_status 1 "orbd-sim: $work/text:1: this is no recording" -R "$work/text"
expect_status 2 "orbd-sim: --faults excludes --replay$hint" --replay "$work/text" --faults silent
expect_status 2 "orbd-sim: --speed requires --replay$hint" --speed 2
for speed in 0 -1 fast nan; do
  expect_status 2 "orbd-sim: --speed: not a number from 0.001 to 1000: $speed$hint" \
    --replay "$work/text" --speed "$speed"
done
"$simulator" relay --help | grep -F 'Usage: orbd-sim relay' >/dev/null || fail "relay --help"

echo "live, through the relay"
serve "$work/daemon" "$work/daemon.log" --socket "$work/daemon" --interval 1000 --seed 3
daemon=$served
serve /dev/socket/orb "$work/trace" relay --to "$work/daemon" --trace --json --record "$work/session"
# In the third second each service reports; then nobody does for a second.
run "$work/live" 3 3 3
# The application has disconnected. The relay's log must show this before the relay is ended.
closed='"kind":"log","text":"connection 3 .* closed, '
grep -qm1 "$closed" < <(timeout 20 tail -n +1 -f "$work/trace") || fail "no end in the log"
end "$served"
end "$daemon"
[[ ! -e /dev/socket/orb && ! -e $work/daemon ]] || fail "a socket is left"
! grep -v '^{"time":.*}$' "$work/trace" || fail "this is no JSON"
(($(grep -c '"kind":"handshake"' "$work/trace") == 9)) || fail "handshakes are missing"
for service in LCE LLE LLI; do
  grep -q "\"service\":\"$service\",\"message\":\"ServiceMsg\",\"fields\":{\"event_id\":\"ENABLE\"" \
    "$work/trace" || fail "no $service in the trace"
done

for speed in 1 4; do
  echo "replayed, $speed times as fast"
  serve /dev/socket/orb "$work/log" --replay "$work/session" --speed "$speed" --trace
  run "$work/replayed" "$(reports lce "$work/live")" "$(reports lle "$work/live")" \
    "$(reports lli "$work/live")"
  end "$served"
  # Each service has its own thread, so only the lines of one service are in order.
  for service in lce lle lli; do
    diff <(grep "^$service " "$work/live") <(grep "^$service " "$work/replayed") >&2 ||
      fail "$service is not what it was"
  done
  [[ $(sort "$work/live") == "$(sort "$work/replayed")" ]] || fail "something else was said"
  grep -q "replaying 3 connections of $work/session\$" "$work/log" || fail "nothing in the log"
  grep -q 'to-client .* LLI ClientMsg event_id: LLI_IND_RESP ' "$work/log" || fail "no trace"
done
echo "  $(wc -l <"$work/live") lines: $(reports lce "$work/live") lce," \
  "$(reports lle "$work/live") lle, $(reports lli "$work/live") lli"

echo "quiet, and where nobody reads what is printed"
serve "$work/daemon" "$work/daemon.log" -q -s "$work/daemon"
daemon=$served
serve "$work/orb" "$work/log" relay -qT "$work/daemon" -s "$work/orb"
end "$served"
[[ ! -s $work/log ]] || fail "$(<"$work/log")"
exec 6< <(exec "$simulator" relay -t --to "$work/daemon")
relay=$!
read -r -u 6 line
[[ $line == *" listening on /dev/socket/orb for the daemon on $work/daemon" ]] || fail "$line"
exec 6<&-
run "$work/unread" 1 1 1
end "$relay"
end "$daemon"

echo "a reader that takes its time holds nobody up"
serve "$work/daemon" "$work/daemon.log" -q -s "$work/daemon" -i 1
daemon=$served
exec 6< <(exec "$simulator" relay -tj --to "$work/daemon")
relay=$!
until [[ -S /dev/socket/orb ]]; do
  kill -0 "$relay" || fail "not served"
done
# A pipe holds 64 KiB; this output is larger.
run "$work/unread" 200 200 1
kill "$relay"
lines=$(cat <&6)
exec 6<&-
wait "$relay" || fail "exit status $?"
((${#lines} > 100000)) || fail "only ${#lines} bytes of trace"
[[ $lines == *'"text":"stopped"}' ]] || fail "the last line is ${lines: -100}"
end "$daemon"

echo "a full disk"
status=0
"$simulator" relay -t --to "$work/daemon" >/dev/full 2>"$work/err" &
relay=$!
until [[ -S /dev/socket/orb ]]; do
  kill -0 "$relay" || fail "not served"
done
kill "$relay"
wait "$relay" || status=$?
((status == 1)) || fail "a full disk: $status"
grep -q '^orbd-sim: standard output: ' "$work/err" || fail "a full disk: $(<"$work/err")"
rm -rf "$work"
