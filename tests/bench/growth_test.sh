#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Checks what scripts/bench-growth writes, but not the costs: growth_test.sh REPOSITORY BUILD.
set -euo pipefail
repository=$1 build=$2
script=$repository/scripts/bench-growth
pictures=(payload services threads criteria timers records orblog)

work=$(mktemp -d "$PWD/growth-test.XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() {
  echo "FAILED: $1" >&2
  exit 1
}

cp "$repository/docs/performance.md" "$work/performance.md"
"$script" --brief --build "$build" --out "$work/out" --document "$work/performance.md" >"$work/said" ||
  fail "status $?"

data=$work/out/growth.csv
[[ $(head -n 1 "$data") == curve,size,library,floor ]] || fail "another head: $(head -n 1 "$data")"
wrong=$(tail -n +2 "$data" | grep -vE '^[a-z_]+,[0-9]+,[0-9.]+,([0-9.]+)?$') &&
  fail "not a line of data: $wrong"
for curve in payload services {request,posting}_threads posting_threads_all_cores criteria \
  timer_{add,fire,remove} record_{queue,dump} orblog; do
  grep -qE "^$curve,[0-9]+,[0-9.]*[1-9][0-9.]*,[0-9.]*[1-9]" "$data" || fail "no data of $curve"
done
for figure in orblog_memory resident resident_own stripped; do
  grep -qE "^$figure,[0-9]+,[1-9]" "$data" || fail "no data of $figure"
done
for picture in "${pictures[@]}"; do
  grep -q ', floor<' "$work/out/$picture.svg" || fail "$picture.svg names no curve"
  grep -qx '</svg>' "$work/out/$picture.svg" || fail "$picture.svg has no end"
done
row=$(sed -n 's/^services,2,\([0-9.]*\),.*/\1/p' "$data")
row=$(awk -v ns="$row" 'BEGIN { us = ns / 1000; printf((us >= 100 ? "%.0f" : us >= 10 ? "%.1f" : "%.2f"), us) }')
grep -q "^| 2 | $row | " "$work/performance.md" || fail "the document's table is not that of the data"

# The same data give the same files.
cp -r "$work/out" "$work/first"
cp "$work/performance.md" "$work/first.md"
"$script" --draw --brief --out "$work/out" --document "$work/performance.md" >"$work/said"
diff -r "$work/first" "$work/out" || fail "other pictures of the same data"
cmp "$work/first.md" "$work/performance.md" || fail "other tables of the same data"

# When a curve is refused: if it costs twice as much at a hundred times the size, and the floor does
# not.
judge() { # judge LIBRARY FLOOR: of 100,000 criteria
  awk -F, -v OFS=, -v library="$1" -v floor="$2" '
    NR == 1 || $1 ~ /^(orblog_memory|resident|resident_own|stripped)$/ { print; next }
    seen[$1]++ { next }
    {
      from = 1000
      if ($1 == "payload") from = 10000
      if ($1 ~ /^services$|threads/) from = 1
      if ($1 == "orblog") from = 10
      for (at = 0; at < 3; ++at) {
        cost = $1 == "payload" ? 1000 * 10 ^ at : 1000
        last = $1 == "criteria" && at == 2
        print $1, from * 10 ^ at, last ? library : cost, last ? floor : cost
      }
    }' "$data" >"$work/other"
  cp "$data" "$work/data"
  cp "$work/other" "$data"
  local status=0
  "$script" --draw --out "$work/out" --document "$work/performance.md" >"$work/said" || status=$?
  cp "$work/data" "$data"
  return "$status"
}
judge 1400 1000 || fail "a flat curve bends: $(<"$work/said")"
judge 2000 1900 || fail "a curve bends as its floor does: $(<"$work/said")"
! judge 2000 1000 || fail "a steep curve does not bend"
grep -q 'criteria.*bends upward' "$work/said" || fail "the steep curve is not named"

[[ $("$script" --help) == *"bends upward"* ]] || fail "no help"
for wrong in --rounds "--rounds 0" "--build $work/none" "--document $work/none" --unknown; do
  status=0
  read -ra arguments <<<"$wrong"
  "$script" "${arguments[@]}" >/dev/null 2>&1 || status=$?
  ((status == 2)) || fail "status $status of '$wrong'"
done
