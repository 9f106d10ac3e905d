#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# How runs of scripts/target end, and how they wait for each other: target_runs.sh SCRIPTS. A copy
# of the scripts runs with a stand-in for npm, the first program that they start to make a compiler.
# The stand-in reports its start and runs until it is ended. A lock shows remaining processes, as in
# sandbox.sh.
set -euo pipefail

work=$(mktemp -d "$PWD/target-runs.XXXXXX")
trap 'jobs -p | xargs -r kill 2>/dev/null; wait; rm -rf "$work"' EXIT
lock=$work/lock ready=$work/ready
export work lock ready

fail() {
  echo "FAILED: $1" >&2
  find "$work" -name 'said.*' -type f -exec cat {} + >&2
  exit 1
}

mkdir -p "$work"/{project,other}/scripts "$work/bin"
for project in project other; do
  cp -R "$1/target" "$1/target.d" "$work/$project/scripts/"
  printf '#!/bin/sh\n' >"$work/$project/scripts/setup"
done
printf '#!/bin/sh\necho x86_64\n' >"$work/bin/uname"
printf '#!/bin/sh\necho libprotoc 3.21.12\n' >"$work/bin/protoc"
# It leaves one more process without a parent and with its own process group.
cat >"$work/bin/npm" <<'NPM'
#!/bin/bash
exec 7>>"$lock"
flock --shared 7
(setsid sleep 600 </dev/null >/dev/null 2>&1 &)
echo "${npm_config_cache-}" >"$ready"
sleep 120
NPM
chmod +x "$work"/bin/* "$work"/*/scripts/setup
PATH=$work/bin:$PATH
mkfifo "$ready"
# As a descriptor, because opening the FIFO by name would block without a limit.
exec 5<>"$ready"

# Wrong use gives one line with the reason, and starts nothing.
refused() { # refused STATUS LINE ARGUMENT...
  local wanted=$1 line=$2 status=0
  shift 2
  "$work/project/scripts/target" "$@" >"$work/out" 2>"$work/said.refused" || status=$?
  ((status == wanted)) || fail "status $status of: $*"
  # shellcheck disable=SC2053
  [[ ! -s $work/out && $(<"$work/said.refused") == $line ]] || fail "another line of: $*"
}
mkdir "$work/foreign"
: >"$work/foreign/file"
for cache in "--cache $work/foreign" "--cache=$work/foreign"; do
  for command in build test shell package; do
    # shellcheck disable=SC2086 # two words, or one
    refused 2 "target: $work/foreign is not empty and was not made by this script; give another folder \
with --cache; try --help" $cache $command
  done
done
[[ $(ls -A "$work/foreign") == file ]] || fail "something was left in a folder of others"
for cache in --cache --cache=; do refused 2 "target: --cache needs a directory; try --help" $cache; done
for binfmt in --binfmt "--binfmt maybe" --binfmt= --binfmt=maybe; do
  # shellcheck disable=SC2086
  refused 2 "target: --binfmt must be yes or no; try --help" $binfmt
done
for option in --cach=x --help=x; do refused 2 "target: unknown option: $option; try --help" "$option"; done
refused 2 "target: *directory*/dev/null*; try --help" --cache=/dev/null/cache build
refused 2 "target: no command given; try --help" --binfmt=no --cache="$work/cache"
refused 3 "target: the compiler does not work in a folder with blanks: $work/a b; give another one with --cache" \
  --cache="$work/a b" build
refused 1 "target: nothing is built yet: scripts/target build" --binfmt=no --cache="$work/cache" shell true

# Started as from a terminal, where Ctrl-C is not ignored.
start() { # start NAME [PROJECT [CACHE]]
  env --default-signal=INT "$work/${2-project}/scripts/target" --cache="$work/${3-cache}" build \
    2>"$work/said.$1" &
}

for signal in INT TERM HUP; do
  start "$signal"
  read -r -t 60 npm_cache <&5 || fail "npm is not started"
  [[ $npm_cache == "$work/cache/"* ]] || fail "npm keeps what it fetches in '$npm_cache'"
  ! flock --nonblock "$lock" true || fail "the stand-in for npm has no lock"
  status=0
  kill -"$signal" $!
  wait $! 2>/dev/null || status=$?
  ((status == 128 + $(kill -l "$signal"))) || fail "status $status after SIG$signal"
  flock --timeout 60 "$lock" true || fail "something runs on after SIG$signal"
done

# The second run with FOLDER waits for the first, and reports this: waits FOLDER PROJECT CACHE.
waits() {
  local first second line said
  start first
  first=$!
  read -r -t 60 _ <&5 || fail "npm is not started"
  rm -f "$work/said.second"
  mkfifo "$work/said.second"
  start second "$2" "$3"
  second=$!
  said=
  # Also open for writing, so that the reader gets no end of file.
  exec 6<>"$work/said.second"
  while [[ $said != *"another run has $1; waiting"* ]]; do
    read -r -t 60 -u 6 line || fail "the second run does not wait for $1: $said"
    said+=$line
  done
  [[ $said != *compiler* ]] || fail "the second run has begun: $said"
  kill "$first"
  read -r -t 60 _ <&5 || fail "the second run does not go on"
  kill "$second"
  wait "$first" "$second" 2>/dev/null || true
  exec 6<&-
  rm "$work/said.second"
}
waits "$work/cache" other cache
waits "$work/project/build/aarch64-musl" project another

# When they start CMake, both have passed the cache.
ln -s npm "$work/bin/cmake"
for project in project other; do
  echo 'nothing() { :; } && all_steps() { step one key nothing; }' >>"$work/$project/scripts/target.d/bootstrap.sh"
done
for project in project other; do
  start "$project" "$project" full
  read -r -t 60 _ <&5 || fail "a run waits for another one that uses what is there"
done
