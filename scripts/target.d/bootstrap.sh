# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: fills the cache folder step by step.
#
#   bin/ include/ lib/   compiler wrappers, the emulator's wrapper, libraries for the target
#   sysroot/             the C library and libcrypto laid out as on a device
#   zig/ zig-cache/      the compiler, and the C++ runtime as it has compiled it
#   download/ stamp/ log/   what was fetched, what is done, and what the steps said
#
# The folder may be moved, or packed and restored.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

say() { printf 'target: [%4d s] %s\n' "$SECONDS" "$*" >&2; }
fail() {
  printf 'target: %s\n' "$2" >&2
  exit "$1"
}

# lock DESCRIPTOR FOLDER WAY: until the descriptor is closed nobody else has the folder in a way that does
# not go with this one.
lock() {
  flock --nonblock "$3" "$1" && return
  say "another run has $2; waiting for it to end"
  flock "$3" "$1"
}

# step NAME KEY FUNCTION...: runs the functions, unless that was done for this KEY with the functions as
# they are. What they say goes to a log. Status 3 of one, "cannot be fetched", becomes this script's. Ends
# with status 4 if there is something to do in a cache that others may use at the same time.
step() {
  local name=$1 key=$2 begin=$SECONDS status=0
  shift 2
  key="$key $(declare -f "$@" | cksum)"
  [[ ! -f $cache/stamp/$name || $(<"$cache/stamp/$name") != "$key" ]] || return 0
  [[ $way == --exclusive ]] || exit 4
  install_build_tools 8>&- 9>&-
  say "$name ..."
  # What is half done must not count as done when this recipe comes back.
  rm -f "$cache/stamp/$name"
  # A shell of its own: a function whose status is looked at would go on after an error.
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
    fail "$status" "the step '$name' failed; all that it said: $cache/log/$name"
  fi
  printf '%s\n' "$key" >"$cache/stamp/$name"
  say "$name: $((SECONDS - begin)) s"
}

# The Debian packages that are needed beyond those of every build: always, and to fill the cache, so that
# a machine without them can use one that is full.
install_tools() {
  "$repository/scripts/setup" ccache util-linux qemu-user-static || exit 3
}
install_build_tools() {
  local packages=(apt perl make xz-utils bzip2)
  # Any npm will do; Debian's would be in the way of another's node.
  [[ -d $cache/zig ]] || command -v npm >/dev/null || packages+=(npm)
  "$repository/scripts/setup" "${packages[@]}" || exit 3
}

bootstrap() {
  [[ $(uname -m) == x86_64 ]] || fail 3 "the cross compiler is for x86-64 machines, this is $(uname -m)"
  install_tools 8>&-
  : >>"$cache/.orb-target"
  mkdir -p "$cache"/{bin,include,lib/pkgconfig,stamp,download,work,log}
  exec 9>"$cache/.lock"
  use_cache
}

# Runs share the cache while they use it. One that has to fill it waits for the others, and looks at it
# again afterwards: between the two kinds of lock it may have been another's.
use_cache() {
  local way=--shared status
  while :; do
    lock 9 "$cache" "$way"
    # As in step.
    set +e
    (
      set -euo pipefail
      # Meant for builds of this machine's programs, or for a caller's own.
      unset CFLAGS CXXFLAGS CPPFLAGS LDFLAGS CPATH C_INCLUDE_PATH CPLUS_INCLUDE_PATH LIBRARY_PATH DESTDIR \
        MAKEFLAGS CMAKE_PREFIX_PATH CMAKE_TOOLCHAIN_FILE CMAKE_GENERATOR CMAKE_BUILD_TYPE \
        CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER APT_CONFIG
      # Not in the home folder, and gone with the rest.
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
  # The archive's index is as old as the run that fetched it.
  rm -rf "$cache/work/apt"
  step compiler "$zig_version" fetch_zig
  step sources "${debian_sources[*]} $(protoc --version)" fetch_debian
  versions="zig $zig_version, $(downloaded_versions)"
  how=$target_flags\ $(declare -f wrapper configured cross_cmake pc_file | cksum)
  step tools "$versions $how" make_wrappers make_helpers
  # Two at a time: a configure script has one process only. Both in the background: in a list whose
  # status is asked for, a step would go on after an error.
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
