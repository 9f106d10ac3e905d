#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Checks what scripts/bench --peers-extra prints: peers_extra.sh SCRIPT BUILD.
set -euo pipefail
bench=$1
build=$2

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

figures=$("$bench" --build "$build" --peers-extra --brief)
wanted=(log.call log.queued log.diag log.full)
wanted=("${wanted[@]/%/.project}" {loop1.project.{ping,flood},timer.project.{add,fire,remove}})
names=$(cut -d ' ' -f 1 <<<"$figures" | sort)
[[ $names == "$(printf '%s\n' "${wanted[@]}" | sort)" ]] || fail "other figures: $names"
while read -r name value unit rest; do
  [[ $value =~ ^[0-9.e+]+$ && $value != 0 ]] || fail "$name is '$value'"
  [[ $unit == ns && ! $rest ]] || fail "$name has the unit '$unit $rest'"
done <<<"$figures"

[[ $("$bench" --help) == *--peers-extra* ]] || fail "--help does not tell of it"
for wrong in "--peers-extra --record" "--peers-extra --json figures" "--build" "--build $build/none" "--peers-extra --rounds"; do
  status=0
  read -ra arguments <<<"$wrong"
  "$bench" "${arguments[@]}" >/dev/null 2>&1 || status=$?
  ((status == 2)) || fail "status $status of '$wrong'"
done
