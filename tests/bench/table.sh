#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Tests the table of scripts/bench, its other files and its options: table.sh SCRIPT BUILD.
set -euo pipefail
script=$(realpath "$1")
build=$2

work=$(mktemp -d "$PWD/bench-table.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() {
  echo "FAILED: $1" >&2
  exit 1
}

# check_json FILE TABLE COMMIT: checks that it has the form that the help describes, and the rows of
# the table.
check_json() {
  python3 - "$@" <<'PYTHON' || fail "not the JSON that --help tells of: $(cat "$1")"
import datetime
import json
import re
import sys

with open(sys.argv[1], encoding="utf-8") as file:
    run = json.load(file)
with open(sys.argv[2], encoding="utf-8") as file:
    table = file.read()
number = (int, float)
form = {"date": str, "commit": str, "machine": dict, "built": str, "rounds": int, "one_core": bool,
        "figures": list}
machine = {"processor": str, "cores": int, "system": str, "load": number}
figure = {"name": str, "unit": str, "library": number, "baseline": number, "ratio": number,
          "lowest": number, "highest": number}


def check(thing, members):
    assert list(thing) == list(members), list(thing)
    for name, kind in members.items():
        assert isinstance(thing[name], kind), (name, thing[name])


check(run, form)
check(run["machine"], machine)
datetime.datetime.strptime(run["date"], "%Y-%m-%dT%H:%M:%SZ")
assert sys.argv[3] in ("any", run["commit"]), run["commit"]
for text in (run["date"], run["commit"], run["built"], run["machine"]["system"]):
    assert text and text in table, text
rows = [line for line in table.splitlines() if line.endswith(")")]
assert len(rows) == len(run["figures"]) > 0, rows
for row, each in zip(rows, run["figures"]):
    check(each, figure)
    assert each["unit"] in ("us", "/s"), each
    assert each["lowest"] <= each["ratio"] <= each["highest"], each
    assert row.split("  ")[0] == each["name"], row
    ratios = re.search(r" ([\d.]+)  \(([\d.]+) to ([\d.]+)\)$", row).groups()
    for text, name in zip(ratios, ("ratio", "lowest", "highest")):
        assert abs(float(text) - each[name]) < 0.006, (row, each)
PYTHON
}

# With the real programs.
"$script" --build "$build" --brief --rounds 1 --json=figures.json >table
check_json figures.json table any
grep -q '^request to callback, round trip .* us .* us ' table || fail "no round trip"
grep -q '^indications, socket to callback .* /s .* /s ' table || fail "no indications"
grep -q '^timer, added and run ' table || fail "no timers"
grep -q '^record, encrypted file ' table || fail "no encrypted records"

# In a tree without a repository, with programs that print prepared figures.
mkdir -p tree/scripts build/tests/bench
cp "$script" tree/scripts/bench
ln -s "$(dirname "$script")"/{setup,sandbox} tree/scripts
printf '%s\n' 'compiler "1\2" Release' >build/tests/bench/built
for program in path parts log; do
  {
    echo '#!/bin/bash'
    # shellcheck disable=SC2016
    echo 'echo "$*" >"$0.asked"; [[ ! -e $0.fails ]] || exit 1'
    printf 'printf "%s, one\\tus\\t1.5\\t1\\t1.5\\t1.25\\t2\\n"\n' $program
    printf 'printf "%s, two\\t/s\\t500000\\t1e+06\\t2\\t2\\t2\\n"\n' $program
  } >build/tests/bench/${program}_bench
  chmod +x build/tests/bench/${program}_bench
done
bench=tree/scripts/bench
export GIT_CEILING_DIRECTORIES=$work
"$bench" --build build -r 3 -j here.json >table
check_json here.json table unknown
[[ $(<build/tests/bench/log_bench.asked) == "--rounds 3" ]] || fail "other rounds than asked for"
for program in path parts log; do
  grep -qE "^$program, one +1\.500 us +1\.000 us +1\.50  \(1\.25 to 2\.00\)\$" table || fail "no time: $(<table)"
  grep -qE "^$program, two +500000 /s +1000000 /s +2\.00  \(2\.00 to 2\.00\)\$" table || fail "no rate: $(<table)"
done
[[ ! -e tree/docs ]] || fail "kept without --record"

"$bench" --build build --record >table 2>said
cmp table tree/docs/bench/20??-??-??.txt || fail "not the table that was printed: $(<said)"
check_json tree/docs/bench/20??-??-??.json table unknown
[[ $(<build/tests/bench/log_bench.asked) == "--rounds 9" ]] || fail "other rounds than the help says"

: >build/tests/bench/parts_bench.fails
status=0
"$bench" --build build --json none.json >table 2>said || status=$?
((status == 1)) || fail "status $status of a benchmark that fails"
grep -q 'parts_bench failed' said || fail "it does not say what failed: $(<said)"
[[ ! -e none.json ]] || fail "figures of a benchmark that fails"

for wrong in "--rounds" "--rounds 0" "--rounds=x" "--json" "--json none/file" "--json=$work" "--record --brief" \
  "--record --all-cores" "--unknown" "word"; do
  status=0
  read -ra arguments <<<"$wrong"
  "$bench" --build build "${arguments[@]}" >said 2>&1 || status=$?
  ((status == 2)) || fail "status $status of '$wrong'"
  [[ $(wc -l <said) == 1 ]] || fail "more than a line about '$wrong': $(<said)"
done
help=$("$script" --help)
for option in --json --record --brief --peers-extra; do
  [[ $help == *" $option "* ]] || fail "--help does not tell of $option"
done
