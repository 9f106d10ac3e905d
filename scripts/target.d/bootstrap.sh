# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: fills the cache folder step by step.
#
#   bin/ include/ lib/   compiler wrappers, the emulator's wrapper, libraries for the target
#   sysroot/             the C library and libcrypto laid out as on a device
#   zig/ zig-cache/      the compiler, and the C++ runtime that it compiled
#   download/ stamp/ log/   downloads, marks of finished steps, output of the steps
#
# The folder can be moved, or packed and restored.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

say() { printf 'target: [%4d s] %s\n' "$SECONDS" "$*" >&2; }
fail() {
  printf 'target: %s\n' "$2" >&2
  exit "$1"
}

# lock DESCRIPTOR FOLDER WAY: locks the folder, --shared or --exclusive, until the descriptor is closed.
lock() {
  flock --nonblock "$3" "$1" && return
  say "another run has $2; waiting for it to end"
  flock "$3" "$1"
}

# step NAME KEY FUNCTION...: runs the functions, unless they were already run for this KEY and have not
# changed since. Their output goes to a log. If one ends with status 3 ("cannot be fetched"), this script
# does, too. Status 4: there is something to do, but the lock of the cache is only shared.
step() {
  local name=$1 key=$2 begin=$SECONDS status=0
  shift 2
  key="$key $(declare -f "$@" | cksum)"
  [[ ! -f $cache/stamp/$name || $(<"$cache/stamp/$name") != "$key" ]] || return 0
  [[ $way == --exclusive ]] || exit 4
  install_build_tools 8>&- 9>&-
  say "$name ..."
  # A half-done step must not count as done when the same recipe is used again.
  rm -f "$cache/stamp/$name"
  # In a subshell, because set -e has no effect in a function whose status is tested.
  set +e
  (
    set -euo pipefail
    for function; do "$function"; done
  ) >"$cache/log/$name" 2>&1 8>&- 9>&-
  status=$?
  set -e
  if ((status != 0)); then
    tail -n 25 "$cache/log/$name" >&2
    ((status == 3)) || status=1
    fail "$status" "the step '$name' failed; its whole output: $cache/log/$name"
  fi
  printf '%s\n' "$key" >"$cache/stamp/$name"
  say "$name: $((SECONDS - begin)) s"
}

# More Debian packages: those that every run needs, and those that only filling the cache needs. A machine
# without the second can use a full cache.
install_tools() {
  "$repository/scripts/setup" util-linux qemu-user-static || exit 3
}
install_build_tools() {
  local packages=(ccache apt perl make xz-utils bzip2)
  # Any npm is good. Debian's npm would conflict with the node of another npm.
  [[ -d $cache/zig ]] || command -v npm >/dev/null || packages+=(npm)
  "$repository/scripts/setup" "${packages[@]}" || exit 3
}

check_machine() {
  [[ $(uname -m) == x86_64 ]] || fail 3 "the cross compiler is for x86-64 machines, this is $(uname -m)"
}

bootstrap() {
  check_machine
  install_tools 8>&-
  : >>"$cache/.orb-target"
  mkdir -p "$cache"/{bin,include,lib/pkgconfig,stamp,download,work,log}
  exec 9>"$cache/.lock"
  use_cache
}

# Runs share the cache while they use it. A run that has to fill it waits for the others and then checks it
# again, because another run can fill it between the two locks.
use_cache() {
  local way=--shared status
  while :; do
    lock 9 "$cache" "$way"
    # As in step.
    set +e
    (
      set -euo pipefail
      # These variables are for builds of host programs.
      unset CFLAGS CXXFLAGS CPPFLAGS LDFLAGS CPATH C_INCLUDE_PATH CPLUS_INCLUDE_PATH LIBRARY_PATH DESTDIR \
        MAKEFLAGS CMAKE_PREFIX_PATH CMAKE_TOOLCHAIN_FILE CMAKE_GENERATOR CMAKE_BUILD_TYPE \
        CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER APT_CONFIG
      # Below work, so that it is removed with it, and not in the home folder.
      export npm_config_cache=$cache/work/npm-cache
      all_steps
    )
    status=$?
    set -e
    case $way,$status in
      --shared,0) return ;;
      --shared,4) way=--exclusive ;;
      --exclusive,0) way=--shared ;;
      *) exit "$status" ;;
    esac
  done
}

all_steps() {
  local versions how others status=0
  # Removed so that this run fetches a new index of the archive.
  rm -rf "$cache/work/apt"
  step compiler "$zig_version" fetch_zig
  step sources "${debian_sources[*]} $(protoc --version)" fetch_debian
  versions="zig $zig_version, $(downloaded_versions)"
  how=$target_flags\ $(declare -f wrapper configured cross_cmake pc_file | cksum)
  step tools "$versions $how" make_wrappers make_helpers
  # Two at a time, because a configure script uses one process only. Both in the background, because
  # set -e has no effect in a list whose status is tested.
  (
    step libgpg-error "$versions $how" build_gpg_error
    step libgcrypt "$versions $how" build_gcrypt
  ) &
  others=$!
  (
    step libcrypto "$versions $how" build_libcrypto
    step protobuf-lite "$versions $how" build_protobuf
    step googletest "$versions $how" build_googletest
  ) &
  wait $! || status=$?
  wait "$others" || status=$?
  ((status == 0)) || exit "$status"
  step headers "$(header_versions)" copy_headers
  step sysroot "$versions $(<"$cache/stamp/tools") $(<"$cache/stamp/libcrypto")" make_sysroot
  step smoke "$versions $(protoc --version) $(cat "$repository"/cmake/toolchain/* | cksum)" smoke_test
  rm -rf "$cache/work"
  if [[ ! -f $cache/versions || $(<"$cache/versions") != "$versions" ]]; then
    printf '%s\n' "$versions" >"$cache/versions"
    say "ready: $versions"
  fi
}
