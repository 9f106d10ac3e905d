#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The library as a part of another project, whose settings it must not change: subproject.sh WORK
# CMAKE SOURCES OPTION...
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# The parent project checks its settings and the names of targets.
configure "$here/parent" "$work/build" "-DORB_SOURCE=$sources" "${@:4}"
grep -q '^CMAKE_BUILD_TYPE:STRING=$' "$work/build/CMakeCache.txt" ||
  fail "the parent has another build type: $(grep CMAKE_BUILD_TYPE: "$work/build/CMakeCache.txt")"
[[ ! -e $work/build/compile_commands.json ]] || fail "the parent has got compile commands"

run "$cmake" --build "$work/build" --target log orb_log
run "$cmake" --install "$work/build" --prefix "$work/prefix"
installed=$(cd "$work/prefix" && find . -type f)
[[ $installed == ./lib/liblog.a ]] || fail "installed: $installed"
rm -rf "$work"
