#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# scripts/demo with programs that are built already: demo_runs.sh SCRIPTS ORBD_SIM ALL_SERVICES LIBORB_REDIRECT.
# It shows estimates in a sandbox and where none can be made, ends with a signal, and leaves no process. A lock
# shows remaining processes, as in sandbox.sh.
set -euo pipefail

work=$(mktemp -d "$PWD/demo-runs.XXXXXX")
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT

fail() {
  echo "FAILED: $1" >&2
  cat "$work/said" >&2
  exit 1
}

mkdir -p "$work"/{bin,none,scripts} "$work"/build/demo/{tools/orbd-sim,examples,platform/host}
cp "$1"/{demo,sandbox} "$work/scripts/"
ln -s "$2" "$work/build/demo/tools/orbd-sim/orbd-sim"
ln -s "$3" "$work/build/demo/examples/all_services"
ln -s "$4" "$work/build/demo/platform/host/liborb_redirect.so"
# shellcheck disable=SC2016
printf '#!/bin/sh\necho "$*" >>"%s"\n' "$work/built" >"$work/bin/cmake"
printf '#!/bin/sh\n' >"$work/scripts/setup"
printf '#!/bin/sh\necho "no namespaces" >&2\nexit 1\n' >"$work/none/bwrap"
chmod +x "$work"/{bin/cmake,none/bwrap,scripts/setup}
PATH=$work/bin:$PATH
redirected='No sandbox can be made here: the programs use a socket in a temporary directory.'
declare -A expected=([sandbox]='' [none]='told,built')

for place in sandbox none; do
  echo "until a signal: $place"
  [[ $place == sandbox ]] || PATH=$work/none:$PATH
  : >"$work/built"
  : >"$work/said"
  (
    flock --shared 7
    exec "$work/scripts/demo" >"$work/said" 2>&1
  ) 7>>"$work/lock" &
  demo=$!
  until grep -q '^lce  .*Mbit/s' "$work/said" && grep -q '^lle  .* ms' "$work/said" &&
    grep -q '^lli  .* to ' "$work/said"; do
    kill -0 "$demo" || fail "the demo has ended"
    sleep 0.1
  done
  kill -TERM "$demo"
  wait "$demo" || fail "status $?"
  flock --timeout 60 "$work/lock" true || fail "something runs on"
  seen=
  ! grep -qxF "$redirected" "$work/said" || seen+=told,
  ! grep -q orb_redirect "$work/built" || seen+=built
  [[ $seen == "${expected[$place]}" ]] || fail "it was ${seen:-neither told nor built}"
done
