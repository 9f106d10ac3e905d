#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Every installed file belongs to one component, and unknown component names are refused:
# components.sh WORK CMAKE SOURCES BUILD [EMULATOR...].
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$4
emulator=("${@:5}")

refused() { # refused NAME COMMAND...
  local name=$1
  shift
  if "$@" >"$work/log" 2>&1; then fail "not refused: $*"; fi
  tr -s '\n ' ' ' <"$work/log" | grep -q "There is no component '$name'; there are runtime development " ||
    fail "$(cat "$work/log")"
}
# The prefix must stay empty.
refused Runtime "$cmake" --install "$build" --prefix "$work/nothing" --component Runtime
refused "" "$cmake" --install "$build" --prefix "$work/nothing" --component ""
refused "" "$cmake" "-DCMAKE_INSTALL_PREFIX=$work/nothing" -DCMAKE_INSTALL_COMPONENT= \
  -P "$build/cmake_install.cmake"
[[ ! -e $work/nothing ]] || fail "installed all the same: $(find "$work/nothing" | head -n 3)"
refused none "$cmake" --install "$build" --prefix "$work/nothing" --component none
read -ra components <<<"$(tr -s '\n ' ' ' <"$work/log" | sed 's/.*; there are //; s/ Call Stack.*//')"

files_of() { (cd "$work/$1" && find . -type f -o -type l | sort); }
run "$cmake" --install "$build" --prefix "$work/all"
for component in "${components[@]}"; do
  run "$cmake" --install "$build" --prefix "$work/$component" --component "$component"
  files_of "$component" >"$work/$component.files"
  [[ -s $work/$component.files ]] || fail "the component $component is empty"
done
cat "$work"/*.files | sort >"$work/together"
twice=$(uniq -d "$work/together")
[[ -z $twice ]] || fail "in more than one component: $twice"
diff <(files_of all) "$work/together" || fail "what is installed and what is in components differs"

# only COMPONENT EXPRESSION: all its files match the expression.
only() {
  local strays
  strays=$(grep -v -E "$2" "$work/$1.files") || true
  [[ -z $strays ]] || fail "in the component $1, too: $strays"
}
only runtime '/libOrbSdlSdk\.so\.[0-9.]+$'
only development '/(include/orb/.*\.h|libOrbSdlSdk\.so|OrbSdlSdk.*\.cmake|OrbSdlSdk\.pc|man3/.*)$'
only host '/lib(log|cutils|diag)\.so$'
only examples '^./share/doc/OrbSdlSdk/examples/'
only doc '^./share/doc/OrbSdlSdk/'
for file in LICENSE README.md CHANGELOG.md SECURITY.md docs/logging.md; do
  cmp "$sources/$file" "$work/doc/share/doc/OrbSdlSdk/$file" || fail "not in the component doc: $file"
done
for file in THIRD-PARTY OrbSdlSdk.spdx.json; do
  [[ -s $work/doc/share/doc/OrbSdlSdk/$file ]] || fail "not in the component doc: $file"
done
[[ $(grep -c . "$work/host.files") == 3 ]] || fail "not the three stand-ins: $(cat "$work/host.files")"

# The list names all used libraries, at least those that the loader needs.
needed() { # needed COMPONENT: of its files that are no scripts
  { find "$work/$1" -type f \( -path '*/bin/*' -o -name '*.so*' \) -exec readelf -d {} + 2>/dev/null || true; } |
    sed -n 's/.*(NEEDED).*\[lib\([^]]*\)\.so.*/\1/p' | sort -u
}
for component in runtime host tools; do
  [[ " ${components[*]} " == *" $component "* ]] || continue
  needed "$component" >"$work/$component.needed"
done
python3 "$here/spdx.py" "$work/doc/share/doc/OrbSdlSdk" "$work"/*.needed || fail "see above"
configure "$here/licences" "$work/known" "-DORB_SOURCE=$sources"
if "$cmake" -C "$work.cmake" -S "$here/licences" -B "$work/unknown" "-DORB_SOURCE=$sources" \
  -DLINKED=strange::thing >"$work/log" 2>&1; then
  fail "what has no licence is linked"
fi
tr -s '\n ' ' ' <"$work/log" | grep -q "links strange::thing: cmake/OrbLicences.cmake has no licence" ||
  fail "$(cat "$work/log")"

# The package is complete without the stand-ins: a platform with its own libraries does not install
# them.
mkdir "$work/use"
cp -a "$work"/{runtime,development,examples}/. "$work/use/"
libraries=$(dirname "$(find "$work/use" -name libOrbSdlSdk.so)")
place=-DOrbSdlSdk_DIR=$(dirname "$(find "$work/use" -name OrbSdlSdkConfig.cmake)")
configure "$here/consumer" "$work/without" "$place"
cp -a "$(dirname "$(find "$work/host" -name liblog.so)")"/. "$libraries/"
# The installed examples are a project that builds.
configure "$work/use/share/doc/OrbSdlSdk/examples" "$work/examples.build" "$place" -DORB_WERROR=ON
run "$cmake" --build "$work/examples.build"
"${emulator[@]}" "$work/examples.build/lce_monitor" --wrong >"$work/log" 2>&1 || true
grep -q '^Usage: lce_monitor' "$work/log" || fail "an example does not start: $(cat "$work/log")"
rm -rf "$work"
