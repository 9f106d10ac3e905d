#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# What the documents for developers name is there: files and folders of the repository, and targets of
# the build; and the guide tells of every status. Run by ctest: check.sh REPOSITORY BUILD CTEST
set -euo pipefail

repository=$1 build=$2 ctest=$3
failed=0
complain() {
  echo "FAILED: $1" >&2
  failed=1
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Each word in backquotes, a line each; without what follows the first blank, and the points at its end.
# shellcheck disable=SC2016
words() { grep -oE '`[^`]+`' "$1" | tr -d '`' | sed 's/ .*//; s/[.,]*$//' | sort -u; }

cd "$repository"
for page in docs/guide.md SECURITY.md CONTRIBUTING.md; do
  words "$page" >"$work/words"
  while read -r path; do
    # shellcheck disable=SC2086
    compgen -G "${path%%:*}" >/dev/null || complain "$page names $path, which is not there"
  done < <(grep -E '^(cmake|docs|examples|include|le|platform|proto|scripts|sdk|tests|tools|utils)/[A-Za-z0-9_./-]+$' "$work/words" |
    grep -vF -e /TOOL -e ...)
done

"$ctest" --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: //p' >"$work/tests"
while read -r name; do
  grep -qx -- "$name" "$work/tests" || complain "CONTRIBUTING.md names the test $name, which is not there"
done < <(words CONTRIBUTING.md | grep -E '^[A-Z][A-Za-z]*_test$|^[a-z-]+_documents$|^enumerations_')

statuses=$(sed -n 's/^  \(STATUS_V2_[A-Z_]*\) = .*/\1/p' include/orb/status.h)
[[ -n $statuses ]] || complain "no statuses found"
for status in $statuses STATUS_INVALID_SLOT LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET; do
  grep -qE "^\| \`$status\`" docs/guide.md || complain "docs/guide.md does not tell of $status"
done
exit "$failed"
