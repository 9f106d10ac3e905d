# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: makes one archive for a device and tests it in an empty root.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

# Installed files are in bin, lib, include and share. Files that tests open or start are in build, under
# the names that they have in a build (tests/support/Built.h).
make_package() {
  local version stage file name
  version=$(sed -n 's/^CMAKE_PROJECT_VERSION:[A-Z]*=//p' "$build/CMakeCache.txt")
  name=OrbSdlSdk-$version-aarch64-musl
  stage=$build/package/$name
  archive=$build/$name.tar.xz
  rm -rf "$build/package" "$archive"
  mkdir -p "$stage/build"
  cmake --install "$build" --prefix "$stage" --strip >/dev/null || exit 1
  cp -L "$cache/lib/libcrypto.so.3" "$stage/lib/"
  (
    cd "$build"
    # Files that a failed test of packages left are excluded.
    find examples tests -type f -perm -u+x ! -name '*.o' ! -name '*.sh' \
      ! -path 'tests/package/*/*/*' -print
    find tests/hooks -name '*.so'
    echo tests/orblog.1
  ) | sort -u | tar -C "$build" -cf - -T - | tar -C "$stage/build" -xf -
  mv "$stage/build/examples" "$stage/examples"
  find "$stage/examples" "$stage/build" -type f -perm -u+x -exec "$cache/bin/$triple-strip" {} +
  cp -R "$repository/tests/fuzz/corpus" "$stage/build/tests/fuzz/"
  mkdir -p "$stage/build/tests/golden"
  cp "$repository"/tests/golden/*.{hex,txt,pem} "$stage/build/tests/golden/"
  cp "$repository/tests/device/run-tests" "$repository/LICENSE" "$stage/"
  # Shared libraries and started programs are links, so that each is in the archive once.
  (cd "$build" && find . -maxdepth 1 -name 'libOrbSdlSdk.so*'; find platform/host -name 'lib*.so*') |
    while read -r file; do
      mkdir -p "$stage/build/$(dirname "$file")"
      ln -sf "$(realpath -m --relative-to="$stage/build/$(dirname "$file")" \
        "$stage/lib/$(basename "$file")")" "$stage/build/$file"
    done
  mkdir "$stage/build/started"
  for file in "$build"/started/*; do
    link_started "$(basename "$file")"
  done
  sed "s| $build/| |" "$build/carried.txt" >"$stage/tests.txt"
  tar -C "$build/package" --owner=0 --group=0 --sort=name -I "xz -T0" -cf "$archive" "$name"
  say "made $archive ($(stat -c %s "$archive") bytes, $(wc -l <"$stage/tests.txt") tests)"
}

# started/NAME in the archive is a link to the program.
link_started() {
  local program
  program=$(cd "$stage" && find bin build/tests -type f -name "$1" | head -n 1)
  [[ -z $program ]] || ln -s "../../$program" "$stage/build/started/$1"
}

# Runs the tests in an empty root: the C library, a shell, and the archive unpacked in /data.
check_package() {
  local root=$build/package/root status=0 way
  way=$(way_of_starting) || exit 1
  [[ $way != emulator ]] || {
    say "NOT CHECKED: in an empty root, target programs start only if the kernel starts them"
    return 0
  }
  rm -rf "$root"
  mkdir -p "$root"/{bin,dev,proc,tmp,data}
  cp -R "$cache/sysroot/lib" "$root/lib"
  dpkg-deb --fsys-tarfile "$(downloaded 'busybox-static_*.deb')" | tar -x -C "$root" ./bin/busybox
  ln -s busybox "$root/bin/sh"
  tar -xJf "$archive" -C "$root/data"
  say "running the tests of the archive in an empty root's /data"
  emulated env -u QEMU_LD_PREFIX bwrap --unshare-all --die-with-parent --clearenv \
    --setenv PATH /nowhere --setenv ORB_EMULATED 1 --bind "$root" / --dev /dev --proc /proc \
    --tmpfs /tmp --cap-add ALL /bin/sh "/data/$(basename "$archive" .tar.xz)/run-tests" || status=1
  rm -rf "$root"
  return "$status"
}
