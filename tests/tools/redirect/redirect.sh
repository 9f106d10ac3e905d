#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# An application with a daemon stand-in on a machine where no sandbox can be made: redirect.sh
# SANDBOX ORBD_SIM APPLICATION ORBCTL.
set -euo pipefail

sandbox=$1
export simulator=$2 application=$3 orbctl=$4 sandbox
work=$(mktemp -d "$PWD/redirect-test.XXXXXX")
trap 'rm -rf "$work"' EXIT

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

# A bubblewrap that always fails: it must not be called.
mkdir "$work/bin"
printf '#!/bin/sh\nexit 99\n' >"$work/bin/bwrap"
chmod +x "$work/bin/bwrap"
export work PATH=$work/bin:$PATH ORB_LOG_LEVEL=S

# shellcheck disable=SC2016
"$sandbox" --redirect bash -euc '
  echo "$ORB_SOCKET" >"$work/socket"
  exec 4< <(exec "$simulator" --interval 50 --socket "$ORB_SOCKET")
  daemon=$!
  read -r -u 4 line
  [[ $line == *"listening on $ORB_SOCKET" ]]
  "$application" --seconds 1 >"$work/out"
  "$orbctl" status --json >"$work/status"
  kill "$daemon"
  cat <&4 >"$work/log"' || fail "status $? of the application; it said: $(cat "$work/out")"
grep -q '^LCE  [1-9][0-9]* reports' "$work/out" || fail "no reports: $(cat "$work/out")"
grep -q "\"socket\":\"$(<"$work/socket")\"" "$work/status" || fail "$(<"$work/status")"
grep -q '"services":.*"lli"' "$work/status" || fail "services were not asked: $(<"$work/status")"
[[ ! -e $(dirname "$(<"$work/socket")") ]] || fail "the socket's folder is still there"

# orbd-sim run uses the redirection automatically, even if it could listen at another path.
# shellcheck disable=SC2016
"$sandbox" --redirect "$simulator" run steady -- bash -euc '
  [[ $ORB_SOCKET != /dev/socket/orb ]]
  "$application" --seconds 1 >"$work/out"' 2>"$work/err" || fail "status $? of a run: $(cat "$work/err")"
grep -q '^LCE  [1-9][0-9]* reports' "$work/out" || fail "no reports of a run: $(cat "$work/out")"
# The loader of this machine reports an error for a library of another processor, so bash cannot be
# used there.
said=$(grep -v '^ERROR: ld.so: object .* from LD_PRELOAD cannot be preloaded' "$work/err" || true)
[[ -z $said ]] || fail "a run said: $said"

# The command has its own exit status, its input and the path of the socket.
status=0
[[ $(echo text | "$sandbox" -r cat) == text ]] || fail "standard input"
"$sandbox" -r bash -c 'exit 7' || status=$?
((status == 7)) || fail "status $status, not 7"
# shellcheck disable=SC2016
[[ $("$sandbox" -r bash -c 'echo "$ORB_SOCKET"') != $("$sandbox" -r bash -c 'echo "$ORB_SOCKET"') ]] ||
  fail "two commands have one socket"

# The commands in the documents must also return the application's status.
pages=$(dirname "$(dirname "$sandbox")")/docs
# shellcheck disable=SC2016
printf '#!/bin/sh\nexec "$sandbox" "$@"\n' >"$work/bin/orb-sandbox"
# shellcheck disable=SC2016
printf '#!/bin/sh\nexec "$simulator" "$@"\n' >"$work/bin/orbd-sim"
printf '#!/bin/sh\nexit 7\n' >"$work/my-player"
cp "$work/my-player" "$work/application"
chmod +x "$work"/bin/* "$work/my-player" "$work/application"
for page in testing-applications.md man/orb-sandbox.1; do
  shown=$(sed 's/\\-/-/g' "$pages/$page" | grep '^orb-sandbox --redirect bash -c') ||
    fail "no example in $page"
  status=0
  (cd "$work" && eval "$shown") || status=$?
  ((status == 7)) || fail "status $status, not 7, of: $shown"
done

# A signal reaches the command, and temporary files are removed.
mkfifo "$work/ready"
for signal in TERM INT HUP; do
  # In bash, background commands ignore INT.
  # shellcheck disable=SC2016
  (trap - INT && exec "$sandbox" --redirect bash -euc '
    trap "echo ended >\"\$work/ended\"; exit 9" TERM INT HUP
    echo "$ORB_SOCKET" >"$work/ready"
    read -r line <"$work/ready"') &
  read -r socket <"$work/ready"
  kill -$signal $!
  status=0
  wait $! || status=$?
  ((status == 9)) || fail "status $status after $signal"
  [[ $(<"$work/ended") == ended ]] || fail "the command was not told of $signal"
  rm "$work/ended"
  [[ ! -e ${socket%/*} ]] || fail "the socket's folder is left after $signal"
done
