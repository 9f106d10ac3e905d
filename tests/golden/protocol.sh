#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The transcripts in docs/protocol.md must equal those of this folder's tests. With
# ORB_GOLDEN_UPDATE in the environment they are written. Run by ctest: protocol.sh PAGE FOLDER
set -euo pipefail

page=$1 folder=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The page up to its first transcript, and each transcript after a heading.
sed '/^### LCE$/,$d' "$page" >"$work/page"
for service in lce lle lli; do
  printf '### %s\n\n```hexdump\n' "${service^^}"
  cat "$folder/${service}_session.hex"
  printf '```\n'
  [[ $service == lli ]] || echo
done >>"$work/page"
[[ -z ${ORB_GOLDEN_UPDATE-} ]] || cp "$work/page" "$page"
diff "$page" "$work/page" || {
  echo "FAILED: $page has other transcripts than $folder: they are left < and right >" >&2
  exit 1
}
