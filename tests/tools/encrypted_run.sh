#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# A complete run with encrypted logging: keys from orblog, an application with the daemon stand-in.
# Then orblog must print exactly the lines that the diagnostic channel got. Run by ctest inside the
# sandbox: encrypted_run.sh ORBLOG ORBD_SIM ALL_SERVICES
set -euo pipefail

orblog=$1 simulator=$2 application=$3
logs=/data/vendor/orb_logs
work=$(mktemp -d)
# Remaining background processes would keep the sandbox and its output open.
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

serve() {
  "$simulator" --quiet --interval "$1" &
  daemon=$!
  until [[ -S /dev/socket/orb ]]; do
    kill -0 "$daemon" || fail "the daemon stand-in has ended"
  done
}
stop_serving() {
  kill "$daemon"
  wait "$daemon"
}
# The diagnostic channel goes to standard error, one line per packet. The application's own lines
# are between them, in the order of writing.
application() {
  ORB_LOG_LEVEL=S ORB_DIAG_FILE=- "$application" "$@" >"$work/packets" 2>&1 || {
    local status=$?
    echo "exit status $status" >&2
    { grep -v '^1E15 ' "$work/packets" || true; } | tail -n 5 >&2
    return "$status"
  }
  packets "$work/packets" >"$work/sent"
  total=$(wc -l <"$work/sent")
  # The application's last line is the summary, after everything is disabled. Then the process
  # exits. Encryption ends before that, so later lines of the library's threads go only to the
  # channel.
  local last
  last=$(grep -n -v '^1E15 ' "$work/packets" | tail -n 1)
  [[ $last =~ ^([0-9]+):.*\ reports$ ]] || fail "no summary is the last word: $last"
  certain=$(head -n "${BASH_REMATCH[1]}" "$work/packets" | packets | wc -l)
  ((certain > 0)) || fail "nothing was logged"
}
# Encryption begins with the line that has the version; earlier lines go only to the channel.
packets() {
  sed -n 's/^1E15 //p' "${1:--}" | sed -n '/|ORB|Log::printVersion:155 /,$p'
}
# Like packets, but the application may be starting, running or killed: the last line may be cut
# off.
whole_packets() {
  [[ -e $1 ]] || return 0
  packets "$1" | head -n "$(packets "$1" | wc -l)"
}
decrypt() {
  "$orblog" decrypt --key "$work/keys/orb_log_private.pem" "$logs/other" >"$1"
}
# Like decrypt, but the writer of the files was killed: only the very last record may be cut off.
decrypt_of_killed() {
  local status=0
  decrypt "$1" 2>"$work/errors" || status=$?
  ((status != 0)) || return 0
  if ((status != 1)) || (($(wc -l <"$work/errors") != 1)) ||
    ! grep -q '^orblog: .*: offset [0-9]*: the last record is cut off: ' "$work/errors"; then
    cat "$work/errors" >&2
    return 1
  fi
  echo "  (the last record is cut)"
}
start_over() { rm -f "$logs"/other/*; }

"$orblog" keygen --out "$work/keys" --bits 2048 --records 3000 --files 3
cp "$work/keys/orb_log_config" "$logs/config/orb_log_config"

echo "one run, then another: both are there, one after the other"
serve 100
: >"$work/before"
for seconds in 2 1; do
  application --seconds "$seconds" || fail "the application failed"
  decrypt "$work/read" || fail "orblog found something wrong"
  kept=$(($(wc -l <"$work/read") - $(wc -l <"$work/before")))
  ((certain <= kept && kept <= total)) || fail "$kept lines of $certain to $total"
  head -n "$kept" "$work/sent" | cat "$work/before" - | cmp - "$work/read" ||
    fail "orblog does not print what was logged"
  cp "$work/read" "$work/before"
done
stop_serving
echo "  $(wc -l <"$work/read") lines"

echo "so many records that the files rotate: the latest are there, without a gap"
start_over
serve 1
application --seconds 5 || fail "the application failed with many reports"
stop_serving
decrypt "$work/read" || fail "orblog found something wrong in rotated files"
kept=$(wc -l <"$work/read")
((kept >= 6000)) || fail "only $kept lines of rotated files"
((certain > kept)) || fail "nothing was rotated away"
last=$total
until head -n "$last" "$work/sent" | tail -n "$kept" | cmp -s - "$work/read"; do
  ((--last >= certain)) || fail "rotated files do not hold the latest lines"
done
echo "  $kept of $total lines, $((total - last)) said after the end of encryption"

for ((round = 1; round <= 5; ++round)); do
  start_over
  rm -f "$work/packets"  # the last round's must not be taken for this one's
  serve 100
  # The process is killed at a random moment. The file gets a record before the diagnostic channel
  # does, so the channel may lack the last record.
  ORB_LOG_LEVEL=S ORB_DIAG_FILE=- "$application" --seconds 60 2>"$work/packets" >/dev/null &
  running=$!
  until [[ -n $(whole_packets "$work/packets") ]]; do
    kill -0 "$running" 2>/dev/null || fail "the application has ended"
  done
  milliseconds=$((RANDOM % 1500))
  sleep "$((milliseconds / 1000)).$(printf '%03d' $((milliseconds % 1000)))"
  kill -KILL "$running" || fail "the application had ended by itself"
  wait "$running" 2>/dev/null || true
  stop_serving
  whole_packets "$work/packets" >"$work/sent"
  decrypt_of_killed "$work/read" ||
    fail "killed after $milliseconds ms: orblog found something wrong"
  lines=$(wc -l <"$work/sent")
  ((lines > 0)) || fail "killed after $milliseconds ms: nothing was logged"
  head -n "$lines" "$work/read" | cmp - "$work/sent" || fail "killed after $milliseconds ms: lines differ"
  (($(wc -l <"$work/read") <= lines + 1)) || fail "killed after $milliseconds ms: lines too many"
  echo "killed after $milliseconds ms: $lines lines"
done
rm -rf "$work"
