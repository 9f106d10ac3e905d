#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The daemon stand-in and an example application; each can be built for another machine and run by
# an emulator. The application's first output for each service must equal the file. The stand-in's
# model gives the same values on every machine, and its time begins when all services listen. Run by
# ctest inside the sandbox:
# pairing.sh FILE daemon COMMAND... application COMMAND...
set -euo pipefail

wanted=$1
shift
[[ $1 == daemon ]] || exit 2
shift
daemon=() application=()
while [[ $1 != application ]]; do
  daemon+=("$1")
  shift
done
application=("${@:2}")
services=(lce lle lli)
lines=20  # of each service
work=$(mktemp -d)
# Remaining background processes would keep the sandbox and its output open.
trap 'kill -KILL $(jobs -p) 2>/dev/null || true' EXIT

fail() {
  echo "FAILED: $1" >&2
  cat "$work/errors" >&2 || true
  exit 1
}

"${daemon[@]}" --quiet --seed 1 --interval 20 --begin lce,lle,lli &
simulator=$!
until [[ -S /dev/socket/orb ]]; do
  kill -0 "$simulator" 2>/dev/null || fail "the daemon stand-in has ended"
done

export ORB_LOG_LEVEL=S
exec 4< <(exec "${application[@]}" 2>"$work/errors")
process=$!
declare -A seen=()
is_complete() {
  local service
  for service in "${services[@]}"; do
    ((${seen[$service]-0} >= lines)) || return 1
  done
}
until is_complete; do
  read -r -u 4 line || fail "the application has ended"
  service=${line%% *}
  seen[$service]=$((${seen[$service]-0} + 1))
  ((seen[$service] > lines)) || printf '%s\n' "$line" >>"$work/$service"
done
# Like Ctrl-C by a user: the application disables everything and prints its counts.
kill "$process"
cat <&4 >"$work/rest"
wait "$process" || fail "the application's exit status is $?"
for service in "${services[@]}"; do
  tail -n 3 "$work/rest" | grep -Eqx "$service  [1-9][0-9]* reports" || fail "no summary of $service"
done
kill "$simulator"
wait "$simulator" || fail "the daemon stand-in's exit status is $?"

cat "${services[@]/#/$work/}" >"$work/printed"
[[ -z ${ORB_GOLDEN_UPDATE-} ]] || cp "$work/printed" "$wanted"
diff "$wanted" "$work/printed" || fail "that is not what $wanted says"
rm -rf "$work"
