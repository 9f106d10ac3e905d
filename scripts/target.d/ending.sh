# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: a run that is ended before its time leaves nothing running.
#
# While a shell waits for a command it does not hear a signal, what runs in its background does not hear
# Ctrl-C, and ninja puts what it starts into other process groups. So the work is done by a second
# process of this script, and the first only waits. The second has a mark in its environment, which
# everything that it starts takes over, and by which all of that is found again.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

is_marked() { [[ ${ORB_TARGET_RUN-} == "$PPID".* ]]; }

# run_marked ARGUMENT...: this script with the same arguments, and its status.
run_marked() {
  local mark=$$.$EPOCHREALTIME signal status=0
  for signal in HUP INT TERM; do
    # shellcheck disable=SC2064 # this signal and this mark
    trap "end_by $signal $mark" "$signal"
  done
  # In the same process group, so that it may ask the terminal for a password.
  env --default-signal=INT,QUIT ORB_TARGET_RUN="$mark" "$repository/scripts/target" "$@" <&0 &
  wait $! || status=$?
  ((status <= 128)) || end_marked "$mark"
  exit "$status"
}

end_by() {
  end_marked "$2"
  # Whoever waits for this script sees why it ended.
  trap - "$1"
  kill -"$1" $$
}

# Ends what has the mark: asked to end, ninja removes what is half written; after ten seconds it is killed.
end_marked() {
  local begin=$SECONDS signal=TERM left
  trap '' HUP INT TERM
  # It may not have got its mark yet.
  kill "${!-}" 2>/dev/null || true
  while ((SECONDS - begin < 20)); do
    mapfile -t left < <(grep -lsxzF "ORB_TARGET_RUN=$1" /proc/[0-9]*/environ)
    ((${#left[@]})) || break
    ((SECONDS - begin < 10)) || signal=KILL
    left=("${left[@]#/proc/}")
    kill -"$signal" "${left[@]%/environ}" 2>/dev/null || true
    sleep 0.1
  done
}
