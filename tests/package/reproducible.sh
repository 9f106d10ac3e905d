#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Two builds in two folders, from sources in two folders, give the same bytes: reproducible.sh WORK
# CMAKE SOURCES. Only the stand-ins are built, because everything else has the same flags.
# ElfFiles_test checks that a library contains no folder.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

first=$work/first/build
second=$work/the/second/source/build
mkdir -p "$work/the/second/source"
(cd "$sources" && tar -c --exclude ./build --exclude ./.git .) | tar -x -C "$work/the/second/source"
configure "$sources" "$first" -DCMAKE_BUILD_TYPE=RelWithDebInfo
configure "$work/the/second/source" "$second" -DCMAKE_BUILD_TYPE=RelWithDebInfo
for build in "$first" "$second"; do run "$cmake" --build "$build" --target orb_log orb_cutils; done
for file in liblog.so libcutils.so; do
  cmp "$first/platform/host/$file" "$second/platform/host/$file" || fail "$file differs"
done
# Information about the build has no folder and no time; SOURCE_DATE_EPOCH can set another date.
for file in OrbSdlSdk.spdx.json THIRD-PARTY debian/symbols debian/changelog debian/copyright; do
  cmp "$first/$file" "$second/$file" || [[ $file == debian/* && ! -e $first/debian ]] || fail "$file differs"
done
export SOURCE_DATE_EPOCH=86400
configure "$sources" "$first" -DCMAKE_BUILD_TYPE=RelWithDebInfo
grep -q '"created": "1970-01-02T00:00:00Z"' "$first/OrbSdlSdk.spdx.json" ||
  fail "SOURCE_DATE_EPOCH: $(grep created "$first/OrbSdlSdk.spdx.json")"
rm -rf "$work"
