#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The choice of the platform. A device's library is linked to stubs of the device's libraries; the
# stubs are not installed: platform.sh WORK CMAKE SOURCES LIBRARY ORBLOG ORBCTL. The last three are
# used instead of those that a build for a device makes.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
library=$4
orblog=$5
orbctl=$6

refused() { # refused SENTENCE OPTION...
  local sentence=$1
  shift
  if "$cmake" -G Ninja -C "$work.cmake" -S "$sources" -B "$work/refused" "$@" >"$work/log" 2>&1; then
    fail "not refused: $*"
  fi
  tr -s '\n ' ' ' <"$work/log" | grep -q "$sentence" || fail "$(cat "$work/log")"
}

refused "OrbSdlSdk is a shared library only" -DBUILD_SHARED_LIBS=OFF
rm -rf "$work/refused"
refused "ORB_PLATFORM is host or device, not 'desktop'" -DORB_PLATFORM=desktop
refused "Tests and benchmarks need the stand-ins" -DORB_PLATFORM=device -DORB_BUILD_TESTS=ON
refused "Tests and benchmarks need the stand-ins" -DORB_PLATFORM=device -DORB_BUILD_BENCH=ON
rm -rf "$work/refused"
refused "ORB_STATIC_PROTOBUF needs libprotobuf-lite.a" -DORB_PLATFORM=device \
  -DProtobuf_LITE_LIBRARY=/nowhere/libprotobuf-lite.so

# A device has only its own libraries, so all other libraries must be linked statically.
device=$work/device
# These programs contain the paths of this machine's build, but the installation does not check
# that.
configure "$sources" "$device" -DORB_PLATFORM=device -DORB_SONAME_DIAG=libdiag.so.1 \
  -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON
linked_in() {
  "$cmake" --build "$1" --target OrbSdlSdk -- -n -v >"$work/log"
  grep -- '-o libOrbSdlSdk.so' "$work/log"
}
link=$(linked_in "$device")
# With --as-needed, the linker needs libraries after the objects.
[[ $link == *.o\ -L*/platform/device\ *-llog*-lcutils*-ldiag* ]] ||
  fail "not linked to the stubs: $link"
[[ ${link##*-llog} != *.o\ * ]] || fail "linked before the objects: $link"
[[ $link == *libprotobuf-lite.a* && $link == *Demangler.cpp.o* ]] || fail "not inside the library: $link"
# Compilers for other processors may have only a static C++ runtime, and no flag for it.
[[ $link == *-static-libstdc++* ]] || grep -q '^ORB_HAS_static_libstdc__:INTERNAL=$' "$device/CMakeCache.txt" ||
  fail "a shared C++ runtime: $link"
[[ $link != *rpath* ]] || fail "the library has a path of this machine: $link"

shared_cxx=$work/shared_cxx
configure "$sources" "$shared_cxx" -DORB_PLATFORM=device -DORB_STATIC_CXX=OFF
link=$(linked_in "$shared_cxx")
[[ $link == *libprotobuf-lite.a* ]] || fail "protobuf-lite is not inside the library: $link"
[[ $link != *-static-libstdc++* && $link != *Demangler.cpp.o* ]] ||
  fail "the C++ runtime is inside the library: $link"
# If there is a shared one.
if ! grep -q CMAKE_TOOLCHAIN_FILE "$work.cmake"; then
  shared=$work/shared
  configure "$sources" "$shared" -DORB_PLATFORM=device -DORB_STATIC_PROTOBUF=OFF
  link=$(linked_in "$shared")
  [[ $link == *libprotobuf-lite.so* && $link != *libprotobuf-lite.a* ]] || fail "a static protobuf-lite: $link"
  [[ $link != *-static-libstdc++* && $link != *Demangler.cpp.o* ]] ||
    fail "the C++ runtime is inside the library beside a shared protobuf-lite: $link"
fi

run "$cmake" --build "$device" --target orb_stub_diag
readelf -d "$device/platform/device/libdiag.so" | grep -q 'soname: \[libdiag.so.1\]' ||
  fail "the device's own name of libdiag is not used"

cp -a "${library%.so*}".so* "$device/"
mkdir -p "$device/tools/orblog" "$device/tools/orbctl"
for tool in "$orblog" "$orbctl"; do
  cp -r "$tool" "${tool%/*}/completion" "$device/tools/${tool##*/}/"
done
run "$cmake" --install "$device" --prefix "$work/prefix"
strays=$(cd "$work/prefix" && find . -type f -o -type l | grep -v -E \
  '^\./(lib/libOrbSdlSdk\.so[.0-9]*|lib/(cmake/OrbSdlSdk|pkgconfig)/.*|include/orb/.*\.h|bin/(orblog|orbctl)|share/(man|bash-completion|zsh|doc/OrbSdlSdk)/.*)$') || true
[[ -z $strays ]] || fail "installed for a device, too: $strays"
rm -rf "$work"
