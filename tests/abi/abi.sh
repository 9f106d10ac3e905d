#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The library must match the committed description: the same functions with the same arguments, and
# types of the same size, layout and values. Run by ctest: abi.sh LIBRARY HEADERS DESCRIPTION ABIDW
# ABIDIFF
set -euo pipefail

library=$1 headers=$2 description=$3 abidw=$4 abidiff=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

# The description must not depend on the place or the tools of the build.
"$abidw" --headers-dir "$headers" --exported-interfaces-only --no-corpus-path --no-comp-dir-path \
  --no-show-locs --no-architecture --no-elf-needed --type-id-style hash "$library" >"$work/now" ||
  fail "$library cannot be read"
grep -q "<function-decl name='lceSetReportingCriteria'" "$work/now" ||
  fail "$library has no debug information"

[[ -z ${ORB_GOLDEN_UPDATE-} ]] || cp "$work/now" "$description"
# differs DESCRIPTION: whether the library differs from it; $work/difference has the details.
differs() {
  local status=0
  "$abidiff" --no-architecture --no-show-locs "$1" "$work/now" \
    >"$work/difference" 2>&1 || status=$?
  (((status & 3) == 0)) || fail "abidiff: $(<"$work/difference")"
  ((status != 0))
}
if differs "$description"; then
  cat "$work/difference" >&2
  fail "the interface is no longer that of $description. Applications in the field were compiled
against that one: names, numbers and layouts that exist stay as they are within a SONAME. Where
something was only added, write the description anew with
  ORB_GOLDEN_UPDATE=1 ctest --preset dev -R '^abi\$'
and add to CHANGELOG.md what is new."
fi

# The check detects a difference.
changed() {
  sed "$2" "$description" >"$work/changed"
  ! cmp -s "$description" "$work/changed" || fail "the description has no $1"
  differs "$work/changed" || fail "not seen: another $1"
}
changed "value of an enumerator" "s/<enumerator name='STATUS_V2_SERVICE_DOWN' value='-8'/<enumerator name='STATUS_V2_SERVICE_DOWN' value='-9'/"
changed "name of an enumerator" "s/<enumerator name='LLI_RAT_3GPP2_WLAN'/<enumerator name='LLI_RAT_OTHER'/"
changed "size of a record" "/name='LceReportingCriteria' size-in-bits='1440'/s/1440/1472/"
changed "set of functions" "s/orbSdlSdkVersion/orbSdlSdkOther/g"
