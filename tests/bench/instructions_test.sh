#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Tests how instructions.sh compares counts with the baseline: instructions_test.sh SCRIPT. A stand-in
# for valgrind counts $per_operation for each operation, and a thousand for the program's start.
set -euo pipefail
script=$1

work=$(mktemp -d "$PWD/instructions-test.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() {
  echo "FAILED: $1" >&2
  cat said >&2
  exit 1
}

mkdir bin
cat >bin/valgrind <<'VALGRIND'
#!/bin/bash
for argument; do
  [[ $argument != --callgrind-out-file=* ]] || out=${argument#*=}
  [[ $argument != --toggle-collect=* ]] || echo "only ${argument#*=}" >>"$asked"
done
echo "${*: -2}" >>"$asked"
((per_operation)) || exit 1
echo "totals: $((1000 + per_operation * ${*: -1}))" >"$out"
VALGRIND
chmod +x bin/valgrind
PATH=$work/bin:$PATH
export asked=$work/asked ORB_INSTRUCTIONS_FILES=$work per_operation
{
  echo "whole 10 30 - program --operations {}"
  echo "part 5 10 Thing::work*,other program {}"
} >instructions.conf
built="compiler 1.2"
here="# $built, $(getconf GNU_LIBC_VERSION)"

run() { # run STATUS INSTRUCTIONS NAME
  local status=0
  per_operation=$2
  "$script" folder "$built" "$3" >said 2>&1 || status=$?
  ((status == $1)) || fail "status $status of $3 with $2 instructions"
}
says() { grep -qF -- "$1" said || fail "it does not say: $1"; }

printf '%s\n' "$here" "whole 1000" >instructions.baseline
run 0 1000 whole
says "whole: 1000 instructions, baseline 1000"
[[ $(<asked) == "--operations 10"$'\n'"--operations 30" ]] || fail "other arguments: $(<asked)"
run 0 1030 whole
run 1 1031 whole
says "callgrind_annotate --inclusive=yes --tree=none $work/instructions.whole.30"
says "ORB_INSTRUCTIONS_UPDATE=1 ctest --preset dev -R '^instructions_whole\$'"
[[ -s instructions.whole.30 ]] || fail "the counts are not kept"
run 0 900 whole
says "Move the baseline"

run 1 7 part
says "part has no baseline"
ORB_INSTRUCTIONS_UPDATE=1 run 0 7 part
ORB_INSTRUCTIONS_UPDATE=1 run 0 1200 whole
[[ $(<instructions.baseline) == "$here"$'\n'"part 7"$'\n'"whole 1200" ]] || fail "not what was counted"
rm asked
run 0 7 part
for function in 'Thing::work\*' other; do
  grep -qx "only $function" asked || fail "the function $function is not named"
done

# Counts of another compiler are not compared and do not stay in the baseline.
built="compiler 2"
run 0 2000 whole
says "another kind of build"
says "baseline: ${here#\# }"
ORB_INSTRUCTIONS_UPDATE=1 run 0 2000 whole
[[ $(<instructions.baseline) == "# compiler 2, "*$'\n'"whole 2000" ]] || fail "counts of both ways"

run 1 0 whole
run 2 1 unknown
says "no work called unknown"
"$script" --help | grep -q ORB_INSTRUCTIONS_UPDATE || fail "no help"
