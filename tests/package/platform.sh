#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The platform is one of two, and the device's libraries become needed ones: platform.sh WORK CMAKE
# SOURCES.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

if "$cmake" -G Ninja -C "$work.cmake" -S "$sources" -B "$work/wrong" -DORB_PLATFORM=desktop \
  >"$work/log" 2>&1; then
  fail "there is no platform called desktop"
fi
grep -q "ORB_PLATFORM is host or device, not 'desktop'" "$work/log" || fail "$(cat "$work/log")"

# A linker that leaves out what nobody has needed so far wants libraries behind the objects.
configure "$sources" "$work/device" -DORB_PLATFORM=device
"$cmake" --build "$work/device" --target OrbSdlSdk -- -n -v >"$work/log"
link=$(grep -- '-o libOrbSdlSdk.so' "$work/log")
[[ $link == *.o\ *-llog*-lcutils*-ldiag* ]] || fail "not linked to the platform: $link"
[[ ${link##*-llog} != *.o\ * ]] || fail "linked before the objects: $link"
rm -rf "$work"
