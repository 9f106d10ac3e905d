#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The library for a device, built by the commands of docs/porting.md with the toolchain of BUILD:
# device.sh WORK CMAKE SOURCES BUILD. The test checks that the compile commands are the same as in
# BUILD, uses its objects, and builds the rest.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$4
device=$work/build/device
toolchain=$(sed -n 's/^CMAKE_TOOLCHAIN_FILE:[A-Z]*=//p' "$build/CMakeCache.txt")

# The compile commands of the library in a build folder, without the folder, and without what changes no
# code: a compiler cache before the compiler, and some flags.
compiled_in() {
  ninja -C "$1" -t commands OrbSdlSdk | sed -n -E '/ -o [^ ]*orb_(objects|proto)\.dir.* -c /p' |
    sed -E "s#$1#BUILD#g; s#^[^ ]*/ccache ##; s# -(g0|Werror)\\b##g" | sort
}
# The other commands, one after the other.
make_rest() {
  local line
  while read -r line; do
    (cd "$device" && sh -c "$line") </dev/null || return 1
  done < <(ninja -C "$device" -t commands | sed -E '/ -o [^ ]*orb_(objects|proto)\.dir.* -c /d')
}
cmake() {
  local arguments=("$@") folder
  case $1 in
    -S)
      arguments=("${arguments[@]/#./$sources}")
      command "$cmake" -C "$work.cmake" "${arguments[@]/\/path\/to\/toolchain.cmake/$toolchain}"
      ;;
    --build)
      [[ $(compiled_in "$device" | wc -l) -gt 40 ]] || return 1
      diff <(compiled_in "$build") <(compiled_in "$device") || return 1
      for folder in CMakeFiles/orb_objects.dir proto/CMakeFiles/orb_proto.dir; do
        mkdir -p "$device/$folder"
        cp -R "$build/$folder/." "$device/$folder/" || return 1
      done
      make_rest
      ;;
    *) command "$cmake" "$@" ;;
  esac
}

commands=$(awk '$0 == "```" { inside = 0; if (code ~ /ORB_PLATFORM=device/) { printf "%s", code; exit } }
  inside { code = code $0 "\n" }
  $0 == "```sh" { inside = 1; code = "" }' "$sources/docs/porting.md" | grep .) ||
  fail "docs/porting.md does not say how to build for a device"
(eval "$commands") >"$work/log" 2>&1 || fail "$(cat "$work/log")"

library=$work/build/root/usr/lib/libOrbSdlSdk.so
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort | tr '\n' ' ')
[[ $needed == "libc.so libcrypto.so.3 libcutils.so libdiag.so liblog.so " ]] || fail "it needs $needed"
readelf -h "$library" | grep -q 'Machine: *AArch64' || fail "$(readelf -h "$library")"
! readelf -S "$library" | grep -q -E '\.(symtab|debug_)' || fail "it is not stripped"
size=$(stat -L -c %s "$library")
((size < 1000000)) || fail "it has $size bytes"
echo "$size bytes"
rm -rf "$work"
