#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# An example application with a daemon that disappears and returns, and with one that refuses every
# connection: the application must reconnect, but not too often. Run by ctest inside the sandbox:
# reconnect.sh ORBD_SIM RECONNECT
set -euo pipefail

simulator=$1 application=$2
work=$(mktemp -d)
export ORB_LOG_LEVEL=S
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() {
  echo "FAILED: $1" >&2
  cat "$work/out" "$work/err" "$work/log" >&2 || true
  exit 1
}
# play SCENARIO SECONDS: plays the scenario for the application.
play() {
  printf '%s\n' "$1" >"$work/scenario.json"
  local status=0
  "$simulator" run --log "$work/log" --trace "$work/scenario.json" -- "$application" --seconds "$2" \
    >"$work/out" 2>"$work/err" </dev/null || status=$?
  echo "$status"
}
count() { grep -cE "$1" "$work/log" || true; }

echo "a daemon that is gone twice"
status=$(play '{"begin": "connected", "interval": 0.2, "end": 60,
  "timeline": [{"at": 2, "vanish": 8}, {"at": 16, "vanish": 1}],
  "expect": [{"reconnects": {"after": 10}}, {"at-most": {"requests": 4}}]}' 30)
((status == 0)) || fail "status $status"
sessions=$(count ' session [0-9]+ pid [0-9]+ endpoint 105 open$')
enables=$(count 'to-daemon .* enable_msg \{ enable: true \}')
criteria=$(count 'to-daemon .* event_id: SET_REPORTING_CRITERIA ')
starts=$(count 'to-daemon .* action: START')
((sessions >= 2)) || fail "$sessions connections"
((enables <= sessions)) || fail "$enables times enabled on $sessions connections"
((criteria <= enables && starts <= enables)) || fail "$criteria criteria, $starts starts, $enables enables"
((criteria >= 2 && starts >= 2)) || fail "not everything was said anew"
(($(grep -c '^reports arrive' "$work/out") >= 2)) || fail "no reports from the daemon that came back"
attempts=$(sed -n 's/^\([0-9]*\) attempts, [1-9][0-9]* reports$/\1/p' "$work/out")
# Each attempt takes five seconds while no process listens, and there are pauses between attempts.
((attempts <= 8)) || fail "$attempts attempts"
grep -qx 'reconnect: SERVICE_DOWN' "$work/err" || fail "it does not say why"

echo "as docs/guide.md has it"
"$simulator" run vanish -- "$application" --seconds 20 >"$work/out" 2>"$work/err" </dev/null ||
  fail "status $? beside the scenario vanish"

echo "a daemon that turns every connection down"
status=$(play '{"end": 60, "timeline": [{"at": 0, "fault": {"words": "die-after-init"}}]}' 12)
((status == 1)) || fail "status $status without a report"
grep -qx 'reconnect: no report arrived' "$work/err" || fail "it does not say that nothing came"
connections=$(count 'to-client .* handshake init$')
# At 0, 1, 3 and 7 seconds; without pauses there would be thousands.
((connections >= 2 && connections <= 4)) || fail "$connections connections"
mapfile -t pauses < <(sed -n 's/^attempt [0-9]* is over, the next in \([0-9]*\) s$/\1/p' "$work/err")
expected=1
for pause in "${pauses[@]}"; do
  ((pause == expected)) || fail "pauses: ${pauses[*]}"
  expected=$((2 * expected))
done

echo "a daemon that accepts and stays silent"
status=$(play '{"end": 60, "timeline": [{"at": 0, "fault": {"words": "silent"}}]}' 16)
((status == 1)) || fail "status $status beside a silent daemon"
grep -qx 'reconnect: no answer in 10 s' "$work/err" || fail "it does not tell of the silence"
rm -rf "$work"
