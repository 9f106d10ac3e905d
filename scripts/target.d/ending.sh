# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: an interrupted run leaves no process running.
#
# A shell that waits for a command does not handle signals, background processes do not get Ctrl-C, and
# ninja puts its processes into other process groups. So a second process of this script does the work, and
# the first only waits. The second has a mark in its environment. All processes that it starts inherit the
# mark, and the first process finds them by it.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

is_marked() { [[ ${ORB_TARGET_RUN-} == "$PPID".* ]]; }

# run_marked ARGUMENT...: runs this script again with the same arguments, and ends with its status.
run_marked() {
  local mark=$$.$EPOCHREALTIME signal status=0
  for signal in HUP INT TERM; do
    # shellcheck disable=SC2064 # this signal and this mark
    trap "end_by $signal $mark" "$signal"
  done
  # In the same process group, so that it can ask for a password at the terminal.
  env --default-signal=INT,QUIT ORB_TARGET_RUN="$mark" "$repository/scripts/target" "$@" <&0 &
  wait $! || status=$?
  ((status <= 128)) || end_marked "$mark"
  exit "$status"
}

end_by() {
  end_marked "$2"
  # The caller of this script must see which signal ended it.
  trap - "$1"
  kill -"$1" $$
}

# Ends all processes with the mark. SIGTERM first, so that ninja removes half-written files; SIGKILL after ten
# seconds.
end_marked() {
  local begin=$SECONDS signal=TERM left
  trap '' HUP INT TERM
  # The second process may not have its mark yet.
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
