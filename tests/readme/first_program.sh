#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Builds and runs the first program of README.md with the commands there: first_program.sh
# REPOSITORY BUILD EMULATOR COMPILER [FLAG...] The commands run in a folder of the build tree that
# looks like the repository. The library is not built again: BUILD is installed, and the program
# uses the same FLAGs.
set -euo pipefail

repository=$1 tree=$2 emulator=$3 compiler=$4
flags=("${@:5}")
work=$(mktemp -d "$PWD/readme.XXXXXX")
trap 'rm -rf "$work"' EXIT

fail() {
  echo "FAILED: $1" >&2
  cat "$work"/out* >&2 2>/dev/null
  exit 1
}
# The first code block of README.md in a language that has a line with this text.
block() {
  awk -v language="$1" -v text="$2" '
    $0 == "```" && inside { inside = 0; if (found) { printf "%s", code; exit } }
    inside { code = code $0 "\n"; if (index($0, text)) found = 1 }
    $0 == "```" language { inside = 1; code = ""; found = 0 }' "$repository/README.md" | grep .
}
# A program for another processor is replaced by a script that starts it.
startable() {
  [[ -n $emulator ]] || return 0
  mv "$1" "$1.program"
  # shellcheck disable=SC2016
  printf '#!/bin/sh\nexec "%s" "%s" "$@"\n' "$emulator" "$PWD/$1.program" >"$1"
  chmod +x "$1"
}
cmake() {
  [[ $1 != --install ]] || { command cmake --install "$tree" "${@:3}" && startable build/prefix/bin/orbd-sim; }
}
cc() {
  "$compiler" "${flags[@]}" "$@" && startable build/first
}

mkdir "$work/build"
ln -s "$repository/scripts" "$work/scripts"
cd "$work"
block c '#include <orb/sdl.h>' >build/first.c || fail "README.md has no program"
commands=$(block sh 'cc build/first.c') || fail "README.md does not say how to build it"
run=$(block sh 'build/prefix/bin/orbd-sim') || fail "README.md does not say how to run it"
eval "$commands" >out.build 2>&1 || fail "it cannot be built"

(eval "$run") >out 2>out.errors || fail "exit status $? beside the daemon"
[[ ! -s out.errors ]] || fail "it shows more than it should"
grep -qx 'status 0' out || fail "it is not enabled"
grep -qx 'criteria 1' out || fail "its criteria are not accepted"
rates=$(grep -cx 'rate [0-9]*' out) || fail "no report"
((rates <= 20)) || fail "$rates reports in eight seconds"

# As README.md says, but without the daemon.
absent=${run/build\/prefix\/bin\/orbd-sim --quiet &/}
[[ $absent != "$run" ]] || fail "README.md does not start the daemon"
status=0
(eval "$absent") >out || status=$?
((status == 1)) || fail "exit status $status without a daemon"
grep -qx 'status -8' out || fail "it is not told that the service is down"
! grep -q rate out || fail "a report out of nowhere"
echo "$rates reports"
