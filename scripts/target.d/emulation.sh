# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: starts target programs on this machine and runs the tests.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

# The entry for binfmt_misc by which the kernel recognises an AArch64 program. F: the kernel opens the
# emulator now, so that it also works in every other root.
binfmt_entry() {
  local any='\xff\xff\xff\xff\xff\xff\xff\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  local magic='\x7fELF\x02\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\xb7\x00'
  printf ':orb-aarch64:M::%s:%s:%s:F' "$magic" "$any" "$(command -v qemu-aarch64-static)"
}

# Runs a command in a user namespace with its own binfmt_misc, in which the kernel starts target programs.
# This needs no privilege (Linux 6.7 and later) and does not change the machine.
in_namespace() {
  # shellcheck disable=SC2016
  unshare --user --map-current-user --keep-caps --mount bash -c '
    set -e
    folder=/proc/sys/fs/binfmt_misc
    mount -t binfmt_misc none "$folder"
    printf "%s" "$1" >"$folder/register"
    shift
    # A user gives the capabilities back that the mount took. Root has its own here as outside.
    exec setpriv --ambient-caps -all --inh-caps -all "$@"' - \
    "$(binfmt_entry)" "$@"
}

program_starts() {
  QEMU_LD_PREFIX=$cache/sysroot "$@" "$cache/bin/aarch64-linux-musl-true" >/dev/null 2>&1
}

# How target programs are started here: kernel, namespace or emulator.
way_of_starting() {
  if [[ $binfmt == no ]]; then
    echo emulator
  elif program_starts; then
    echo kernel
  elif program_starts in_namespace; then
    echo namespace
  else
    [[ $binfmt == auto ]] || fail 1 "the kernel cannot start target programs in a user namespace"
    echo emulator
  fi
}

# emulated COMMAND...: runs the command in an environment that can start target programs.
emulated() {
  local way
  [[ -e $cache/versions ]] || fail 1 "nothing is built yet: scripts/target build"
  export QEMU_LD_PREFIX=$cache/sysroot ORB_EMULATED=1
  way=$(way_of_starting) || exit 1
  case $way in
    kernel) say "the kernel starts target programs" ;;
    namespace) say "the kernel starts target programs (binfmt_misc in a user namespace)" ;;
    emulator) say "target programs are started through the emulator: $cache/bin/$triple-run" ;;
  esac
  # A sandbox has a /tmp of its own.
  [[ $cache != /tmp/* ]] || export ORB_SANDBOX_BIND=$cache${ORB_SANDBOX_BIND:+:$ORB_SANDBOX_BIND}
  if [[ $way == namespace ]]; then in_namespace "$@"; else "$@"; fi
}

tests_of() { ctest --preset "$1" -N | sed -nE 's/^ *Test +#[0-9]+: //p'; }

# The tests that this machine has and the target does not have, without those that have a given reason.
unnamed_tests() {
  comm -23 <(tests_of dev | sort) <({ tests_of aarch64-musl; sed 's/[,:].*//' "$build/not_run.txt"; } | sort -u)
}

run_tests() {
  local status=0
  cd "$repository"
  say "running the tests"
  # Many tests mostly wait, so more tests than processors run.
  emulated ctest --preset aarch64-musl -j "$((jobs * 3 / 2))" --no-tests=error "$@" || status=1
  if [[ -s $build/not_run.txt ]]; then
    echo "Not run on the target:"
    sort "$build/not_run.txt" | sed 's/^/  /'
  fi
  if (($# == 0)) && [[ -n $(unnamed_tests) ]]; then
    unnamed_tests | sed '1i Missing on the target, and no reason is given:'
    status=1
  fi
  say "done"
  return "$status"
}
