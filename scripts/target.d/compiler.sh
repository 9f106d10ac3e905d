# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: the wrappers around compiler and emulator, and the target's root.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

# Wrappers find the cache folder by their own path, so that the folder can be moved.
wrapper() { # wrapper NAME LINE...
  local file=$cache/bin/$triple-$1
  shift
  # shellcheck disable=SC2016
  printf '%s\n' '#!/bin/sh' '# Written by scripts/target.' 'cache=${0%/*}/..' \
    'case $cache in /*) ;; *) cache=$PWD/$cache ;; esac' "$@" >"$file"
  chmod +x "$file"
}

make_wrappers() {
  local tool
  # The compiler has two caches. The global one has the C++ runtime, which it compiles on first use. The
  # local one has every compiled object and can be deleted at any time.
  # The compiler marks programs with a stack of 16 MiB. musl takes the default stack of threads from this
  # mark: 8 MiB, but 128 KiB on a device. The mark is set to musl's default, so that a stack overflow of
  # the device also happens here.
  # shellcheck disable=SC2016
  for tool in cc c++; do
    # shellcheck disable=SC2016
    wrapper "$tool" \
      'export ZIG_GLOBAL_CACHE_DIR="${ZIG_GLOBAL_CACHE_DIR:-$cache/zig-cache}"' \
      'export ZIG_LOCAL_CACHE_DIR="${ZIG_LOCAL_CACHE_DIR:-$cache/zig-objects}"' \
      "exec \"\$cache/zig/zig\" $tool -target $triple -Wl,-z,stack-size=131072 \"\$@\""
  done
  # shellcheck disable=SC2016
  for tool in ar ranlib; do wrapper "$tool" "exec \"\$cache/zig/zig\" $tool \"\$@\""; done
  # The compiler's objcopy writes another file; strip must change the given files.
  # shellcheck disable=SC2016
  wrapper strip 'for file; do' '  case $file in -*) continue ;; esac' \
    '  "$cache/zig/zig" objcopy --strip-all "$file" "$file.stripped" &&' \
    '    cat "$file.stripped" >"$file" && rm "$file.stripped" || exit 1' 'done'
  # ORB_STARTED_AS is the argv[0] of the program, ORB_STARTED_DESCRIPTORS its limit of descriptors.
  # ORB_EMULATED tells tests that they cannot measure some things. Core files are off, because the emulator
  # writes its own core file for each program that aborts on purpose. The emulator is searched with
  # /usr/bin added to PATH, and before the limit of descriptors is set.
  # shellcheck disable=SC2016
  wrapper run 'if [ -n "${ORB_STARTED_AS-}" ]; then set -- -0 "$ORB_STARTED_AS" "$@"; fi' \
    'limit=${ORB_STARTED_DESCRIPTORS-}' 'unset ORB_STARTED_AS ORB_STARTED_DESCRIPTORS' \
    'export QEMU_LD_PREFIX="$cache/sysroot" ORB_EMULATED=1' 'ulimit -c 0' \
    'qemu=$(PATH=$PATH:/usr/bin command -v qemu-aarch64-static) || exit 127' \
    '[ -z "$limit" ] || ulimit -n "$limit"' 'exec "$qemu" "$@"'
}

make_helpers() {
  # See CMAKE_EXE_LINKER_FLAGS_INIT in the toolchain file.
  : >"$cache/work/empty.c"
  "$cache/bin/$triple-cc" -shared -fPIC -s -Wl,-soname,libforce-dynamic.so "$cache/work/empty.c" \
    -o "$cache/lib/libforce-dynamic.so"
  # This program starts only if target programs can be started.
  echo 'int main(void) { return 0; }' >"$cache/work/true.c"
  "$cache/bin/$triple-cc" -fPIE -pie -s "$cache/work/true.c" "$cache/lib/libforce-dynamic.so" \
    -o "$cache/bin/$triple-true"
}

make_sysroot() {
  local package
  package=$(downloaded 'musl_*.deb')
  rm -rf "$cache/sysroot"
  mkdir -p "$cache/sysroot/usr/lib/$triple"
  dpkg-deb -x "$package" "$cache/sysroot"
  rm -rf "$cache/sysroot/usr/share" "$cache/sysroot/usr/bin"
  [[ -x $cache/sysroot/lib/ld-musl-aarch64.so.1 ]]
  cp "$cache"/lib/{libforce-dynamic.so,libcrypto.so.3} "$cache/sysroot/usr/lib/$triple/"
}

# Builds and runs one small program that uses every part.
smoke_test() {
  local have want
  want=$(source_version protobuf)
  have=$(protoc --version | awk '{ print $2 }')
  if [[ $want != "$have" ]]; then
    echo "protoc is of version $have, the target's protobuf-lite of $want: they do not fit"
    return 1
  fi
  rm -rf "$cache/work/smoke"
  cross_cmake "$repository/scripts/target.d/smoke" "$cache/work/smoke"
  ninja -C "$cache/work/smoke"
  ctest --test-dir "$cache/work/smoke" --output-on-failure
}
