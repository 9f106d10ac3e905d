#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The default of the desktop's log: it shows nothing in a run without faults, and it shows mistakes of
# the application. Run by ctest inside the sandbox:
# log_default.sh ORBLOG ORBD_SIM MISTAKES EXAMPLE...
set -euo pipefail

orblog=$1 simulator=$2 mistakes=$3
examples=("${@:4}")
logs=/data/vendor/orb_logs
work=$(mktemp -d)
unset ORB_LOG_LEVEL ORB_DIAG_FILE
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() {
  echo "FAILED: $1" >&2
  exit 1
}
# Lines without time, process and thread; a line without these is not changed.
texts() { sed -E 's/^[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3} +[0-9]+ +[0-9]+ //' "$1"; }

echo "an application's mistakes"
"$mistakes" 2>"$work/err" || fail "a mistake is not refused"
texts "$work/err" | sed -E 's/ mistakes *: / /; s/:[0-9]+ / /' >"$work/texts"
diff - "$work/texts" <<'EXPECTED' || fail "mistakes are not shown as they should be"
D |Lce|Lce::createLceClient cb function null
D |Lle|Lle::orb_lle_enable Status ind function null
D |Lli|Lli::lliRegLinkInterruptInd Failed to get SDK instance
D |Lle|Lle::destroyLleClient Failed to get SDK instance.
EXPECTED

echo "beside a daemon, with encrypted logs"
"$orblog" keygen --out "$work/keys" >/dev/null
cp "$work/keys/orb_log_config" "$logs/config/"
"$simulator" --quiet --interval 100 &
daemon=$!
until [[ -S /dev/socket/orb ]]; do
  kill -0 "$daemon" || fail "the daemon stand-in has ended"
done
declare -A runs=()
for example in "${examples[@]}"; do
  name=${example##*/}
  "$example" --seconds 12 >"$work/$name.out" 2>"$work/$name.err" &
  runs[$name]=$!
done
for name in "${!runs[@]}"; do
  wait "${runs[$name]}" || fail "$name: exit status $?"
  [[ ! -s $work/$name.err ]] || fail "$name: a healthy run shows $(head -n 5 "$work/$name.err")"
done
[[ -n $(ls "$logs/other") ]] || fail "nothing was encrypted"

echo "everything"
ORB_LOG_LEVEL=V "${examples[0]}" --seconds 2 >/dev/null 2>"$work/all" || fail "exit status $?"
texts "$work/all" >"$work/texts"
for line in 'D .*\|OrbSdk\|SdkClientBase::sdkThread:43 sdkThread loop' 'I .*\|ORB\|Log::printVersion:155 ' \
  'E .*\|ORB\|Log::init:225 cannot open liborbalog.so' 'E .* DEBUG: msgId: [0-9]+' \
  'E .* public_key size [0-9]+' 'D .*EventManager: ctor'; do
  grep -qE "^$line" "$work/texts" || fail "ORB_LOG_LEVEL=V does not show: $line"
done

echo "a daemon that goes"
"${examples[0]}" --seconds 60 >"$work/out" 2>"$work/err" &
program=$!
until grep -q '^report' "$work/out"; do
  kill -0 "$program" 2>/dev/null || fail "the application has ended"
done
kill "$daemon"
wait "$daemon"
status=0
wait "$program" || status=$?
((status == 1)) || fail "exit status $status without the daemon"
[[ $(<"$work/err") == "${examples[0]##*/}: LCE: the daemon is not there" ]] ||
  fail "the application's message is not alone: $(<"$work/err")"
rm -rf "$work"
