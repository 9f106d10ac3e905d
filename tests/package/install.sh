#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Installs the library of BUILD with one of the usual settings for the library folder, and uses it
# with pkg-config and CMake, which check the version, and with the compiler alone: install.sh WORK
# CMAKE SOURCES BUILD CC WAY [EMULATOR...].
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$4
read -ra cc <<<"$5"
way=$6
emulator=("${@:7}")

prefix=$work/prefix
options=()
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$sources/CMakeLists.txt")
libraries=$prefix/lib
case $way in
  default) ;;
  relative)
    options=(-DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu)
    libraries=$prefix/lib/x86_64-linux-gnu
    ;;
  typed)
    options=(-DCMAKE_INSTALL_LIBDIR:PATH=lib/x86_64-linux-gnu)
    libraries=$prefix/lib/x86_64-linux-gnu
    ;;
  deep)
    options=(-DCMAKE_INSTALL_LIBDIR:STRING=some/where/lib)
    libraries=$prefix/some/where/lib
    ;;
  lib64)
    options=(-DCMAKE_INSTALL_LIBDIR=lib64)
    libraries=$prefix/lib64
    ;;
  destdir)
    # Into the root of another machine: the files must have the paths of that machine.
    root=$work/root
    export DESTDIR=$root
    prefix=$root/usr
    libraries=$prefix/lib
    ;;
  absolute)
    options=("-DCMAKE_INSTALL_LIBDIR=$work/libraries")
    libraries=$work/libraries
    ;;
  *) fail "no such way: $way" ;;
esac

build_from "$build" "$work/build" "${options[@]}"
run "$cmake" --install "$work/build" --prefix "${prefix#"${root-}"}"
unset DESTDIR

for file in libOrbSdlSdk.so libOrbSdlSdk.so.1 liblog.so libcutils.so libdiag.so; do
  [[ -e $libraries/$file ]] || fail "$file is not in $libraries: $(find "$work" -name "$file")"
done
[[ -e $prefix/include/orb/sdl.h ]] || fail "no headers in $prefix/include"
strays=$(find "$work" -name '*.so*' -not -path "$work/build/*" -not -path "$libraries/*")
[[ -z $strays ]] || fail "installed elsewhere, too: $strays"

use_by_pkg_config() {
  local variable expected flags newer
  export PKG_CONFIG_PATH=$libraries/pkgconfig
  for variable in includedir libdir; do
    expected=$libraries
    [[ $variable == libdir ]] || expected=$prefix/include
    [[ $(realpath "$(pkg-config --variable=$variable OrbSdlSdk)") == "$expected" ]] ||
      fail "$variable is $(pkg-config --variable=$variable OrbSdlSdk), not $expected"
  done
  [[ $(pkg-config --modversion OrbSdlSdk) == "$version" ]] ||
    fail "its version is $(pkg-config --modversion OrbSdlSdk), not $version"
  run pkg-config --atleast-version=1.0 OrbSdlSdk
  run pkg-config --exact-version="$version" OrbSdlSdk
  for newer in "$version.1" 1.1 2.0; do
    ! pkg-config --atleast-version="$newer" OrbSdlSdk || fail "pkg-config takes it for $newer"
  done
  ! grep -r -F "$work" "$libraries/pkgconfig" || [[ $way == absolute ]] || fail "a folder of this machine"
  read -ra flags <<<"$(pkg-config --cflags --libs OrbSdlSdk)"
  run "${cc[@]}" "$here/consumer/consumer.c" -o "$work/by_pkg_config" "${flags[@]}" \
    "-Wl,-rpath,$libraries"
  run "${emulator[@]}" "$work/by_pkg_config"
}

use_by_compiler() {
  run "${cc[@]}" -I"$prefix/include" "$here/consumer/consumer.c" -o "$work/by_compiler" \
    -L"$libraries" -lOrbSdlSdk "-Wl,-rpath,$libraries"
  run "${emulator[@]}" "$work/by_compiler"
}

# The consumer must do the same as README.md shows for CMake.
same_as_readme() {
  local shown
  # shellcheck disable=SC2016
  shown=$(sed -n '/^```cmake$/,/^```$/p' "$sources/README.md" | sed -e '/^```/d' -e 's/ *#.*//' \
    -e 's/(first /(consumer /')
  [[ $shown == *OrbSdlSdk::OrbSdlSdk* ]] || fail "README.md shows nothing for CMake"
  while IFS= read -r line; do
    grep -qxF -- "$line" "$here/consumer/CMakeLists.txt" || fail "not what README.md shows: $line"
  done <<<"$shown"
}

use_by_cmake() {
  local wanted place=-DCMAKE_PREFIX_PATH=$prefix
  # The system decides which folders below a prefix CMake searches; with a toolchain file, CMake
  # searches only below the sysroot.
  if [[ $way != default && $way != absolute ]]; then
    place=-DOrbSdlSdk_DIR=$libraries/cmake/OrbSdlSdk
  elif ((${#emulator[@]})); then
    place=-DOrbSdlSdk_DIR=$prefix/lib/cmake/OrbSdlSdk
  fi
  for wanted in 2.0 1.1 0.9; do
    if "$cmake" -G Ninja -C "$work.cmake" -S "$here/consumer" -B "$work/refused" "$place" \
      -DWANTED=$wanted >"$work/log" 2>&1; then
      fail "CMake takes it for $wanted"
    fi
    tr -s '\n ' ' ' <"$work/log" | grep -q "compatible with requested version \"$wanted\"" ||
      fail "$(cat "$work/log")"
  done
  configure "$here/consumer" "$work/by_cmake" "$place"
  run "$cmake" --build "$work/by_cmake"
  run "${emulator[@]}" "$work/by_cmake/consumer"
}

use_by_pkg_config
use_by_compiler
if [[ $way != absolute ]]; then
  # After the tree is moved, everything must still be found.
  mkdir "$work/moved"
  mv "$prefix" "$work/moved/here"
  libraries=$work/moved/here${libraries#"$prefix"}
  prefix=$work/moved/here
  use_by_pkg_config
  use_by_compiler
fi
same_as_readme
use_by_cmake
rm -rf "$work"
