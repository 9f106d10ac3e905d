#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Uninstalling removes the installed files and keeps others, also with the commands of
# docs/installing.md: uninstall.sh WORK CMAKE SOURCES BUILD.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$4
build_from "$build" "$work/build/other"
tree() { (cd "$1" && find . | sort); }
uninstall=("$cmake" --build "$work/build/other" --target uninstall)

refused() {
  if "${uninstall[@]}" >"$work/log" 2>&1; then fail "uninstalled what was not installed"; fi
  tr -s '\n ' ' ' <"$work/log" | grep -q "Nothing was installed from $work/build/other" || fail "$(cat "$work/log")"
}
refused

# A prefix that already has an empty folder and another file.
prefix=$work/prefix
mkdir -p "$prefix/lib/pkgconfig" "$prefix/share/doc/OrbSdlSdk" "$prefix/include"
: >"$prefix/share/doc/OrbSdlSdk/mine"
tree "$prefix" >"$work/before"
for round in first second; do
  # Twice, as after a change: folders from the first installation must still be removed.
  run "$cmake" --install "$work/build/other" --prefix "$prefix"
  run "$cmake" --install "$work/build/other" --prefix "$prefix"
  [[ -e $prefix/lib/libOrbSdlSdk.so && -e $prefix/include/orb/sdl.h ]] || fail "not installed, the $round time"
  run "${uninstall[@]}"
  diff "$work/before" <(tree "$prefix") || fail "left or lost, the $round time"
  refused
done

# One component after the other, into another root. A missing file is not an error.
export DESTDIR=$work/root
mkdir "$DESTDIR"
for component in runtime host development doc examples; do
  run "$cmake" --install "$work/build/other" --prefix /usr --component "$component"
done
rm "$DESTDIR/usr/include/orb/sdl.h"
[[ -e $DESTDIR/usr/lib/libOrbSdlSdk.so.1 ]] || fail "not installed into a root"
run "${uninstall[@]}"
[[ $(tree "$DESTDIR") == . ]] || fail "left in the root: $(tree "$DESTDIR")"
refused

# The commands of the document, with the built files instead of a build.
unset DESTDIR
cmake() {
  case $* in
    "--preset release") build_from "$build" "$work/build/release" ;;
    "--build --preset release") ;;
    *) run "$cmake" "$@" ;;
  esac
}
PREFIX=$work/documented
mkdir "$PREFIX"
commands=$(documented docs/installing.md "--target uninstall")
eval "$(head -n 2 <<<"$commands")"
[[ -e $PREFIX/lib/libOrbSdlSdk.so ]] || fail "not installed by: $commands"
eval "$(tail -n +3 <<<"$commands")"
[[ $(tree "$PREFIX") == . ]] || fail "left: $(tree "$PREFIX")"
eval "$(documented docs/installing.md "--component runtime")"
[[ -e $PREFIX/lib/libOrbSdlSdk.so.1 && ! -e $PREFIX/include ]] || fail "$(tree "$PREFIX")"
rm -rf "$work"
