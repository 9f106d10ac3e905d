#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Each exported function has a man page, and no other; each page has what a reader looks for, and the
# formatter finds nothing wrong. They are installed with the component development. Run by ctest:
# check.sh FOLDER VERSION_SCRIPT CMAKE BUILD, with an empty CMAKE where nothing is installed
set -euo pipefail

folder=$1 script=$2 cmake=$3 build=$4
fail() {
  echo "FAILED: $1" >&2
  exit 1
}

functions=$(sed -n '/global:/,/local:/s/^ *\([A-Za-z_]*\);$/\1/p' "$script" | sort)
[[ -n $functions ]] || fail "no functions in $script"
pages=$(cd "$folder" && printf '%s\n' *.3 | sed 's/\.3$//' | grep -vx orbsdlsdk | sort)
diff <(echo "$functions") <(echo "$pages") || fail "functions < and pages >"

for page in "$folder"/*.3; do
  said=$(groff -man -Tutf8 -ww -z "$page" 2>&1)
  [[ -z $said ]] || fail "$page: $said"
done
for function in $functions; do
  for section in NAME SYNOPSIS DESCRIPTION "RETURN VALUE" THREADS HISTORY "SEE ALSO"; do
    text=$(sed -n "/^\.SH $section\$/,/^\.SH /p" "$folder/$function.3" | grep -v '^\.SH' || true)
    [[ -n $text ]] || fail "$function(3) says nothing in $section"
  done
  grep -q "^\.BR $function (3)\$" "$folder/orbsdlsdk.3" || fail "orbsdlsdk(3) does not name $function"
done
# From each page of a tool, and from the overview, a reader finds all tools and the library.
linked=("$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"/*.1 "$folder/orbsdlsdk.3")
for page in "${linked[@]}"; do
  see=$(sed -n '/^\.SH SEE ALSO$/,$p' "$page" | sed 's|\\||g')
  for other in "${linked[@]}"; do
    name=${other##*/}
    [[ $other == "$page" ]] || grep -q "^\.BR ${name%.*} (${name##*.})" <<<"$see" ||
      fail "${page##*/} does not name $name in SEE ALSO"
  done
done
# Who has only the pages finds each member of each structure and each value of each enumeration.
headers=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../include/orb" && pwd)
members=$(sed -nE '/^(ORB_EXTENSION|typedef) (enum|struct) .*\{$/,/^\}/{
    s/^  (\w+ = -?[0-9]+),.*/\1/p
    s/^  (\w+ \w[^;]*);.*/\1/p
  }' "$headers"/{status,lce,lle,lli}.h)
(($(wc -l <<<"$members") > 50)) || fail "members found in the headers: $members"
shown=$(sed -n '/^\.SH TYPES$/,/^\.SH HISTORY$/{ s/\\f.//g; s/\\-/-/g; s/^\.B "\(.*\)"$/\1/p; }' "$folder"/*.3)
while read -r member; do
  grep -qxF -- "$member" <<<"$shown" || fail "no page has $member"
done <<<"$members"
of_callback=$(sed -n '/^\.SH TYPES$/,/^\.SH HISTORY$/s/^\.SS //p' "$folder/createLceClient.3" | paste -sd ' ')
[[ $of_callback == "status_v2_e status_e" ]] || fail "types of createLceClient(3): $of_callback"
# What stands in a comment stands in the page.
grep -q '^1 to 4294967295 queued' "$folder/lceSetReportingCriteria.3" || fail "results"
grep -q '^\.SH CALLBACK LceReportingCriteriaCb$' "$folder/lceSetReportingCriteria.3" || fail "callback"
grep -q '^\.SH 3\. THREADS OF THE CALLBACKS$' "$folder/orbsdlsdk.3" || fail "rules"
grep -q '^Disable and destroy$' "$folder/orbsdlsdk.3" || fail "what follows a list is a part of its last point"

[[ -z $cmake ]] || {
  prefix=$(mktemp -d)
  trap 'rm -rf "$prefix"' EXIT
  "$cmake" --install "$build" --component development --prefix "$prefix" >/dev/null || fail "installation"
  diff -r "$folder" "$prefix/share/man/man3" || fail "other pages are installed"
}
