#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The help of a tool and of each of its commands, its man page and its completions must have the
# same options and commands. tool_documents.sh TOOL MAN_PAGE COMPLETIONS [OPTION...], with the
# options of other programs that are in the page. An empty COMPLETIONS: none are installed.
set -euo pipefail

tool=$1 page=$2 built=$3
others=("${@:4}")
work=$(mktemp -d)

fail() {
  echo "FAILED: $1" >&2
  exit 1
}
# Prints the long options and commands in the help of this command and of its subcommands, one per
# line.
words_of() {
  local help command
  help=$("$tool" "$@" --help) || fail "no help of: $*"
  sed -n '/^Options:$/,/^$/p' <<<"$help" | { grep -oE -- '(^|[ ,])--[a-z][a-z-]*' || true; } | tr -d ' ,'
  sed -n '/^Commands:$/,/^$/s/^  \([a-z][a-z-]*\) .*/\1/p' <<<"$help" | while read -r command; do
    echo "$command"
    words_of "$@" "$command" </dev/null
  done
}
words_of | sort -u >"$work/words"
grep -qx -- --help "$work/words" || fail "no options found in the help"

# The text of the page without formatting.
sed -e '/^\.\\"/d' -e 's/\\f[A-Z]//g' -e 's/\\&//g' -e 's/\\-/-/g' "$page" >"$work/page"
grep -oE -- '--[a-z][a-z-]*' "$work/page" | sort -u >"$work/in_page" || true
while read -r word; do
  grep -qE -- "(^|[^a-z-])$word([^a-z-]|\$)" "$work/page" || fail "$page does not tell of $word"
done <"$work/words"
# For package builders; it is not in the help.
"$tool" --completion bash >/dev/null || fail "no --completion"
unknown=$(comm -13 "$work/words" "$work/in_page" |
  grep -vxF -e --completion -f <(printf '%s\n' "${others[@]}") || true)
[[ -z $unknown ]] || fail "$page tells of what there is not: $unknown"

for shell in bash zsh; do
  "$tool" --completion "$shell" >"$work/$shell" || fail "no completion for $shell"
  while read -r word; do
    grep -qE -- "(^|[^a-z-])$word([^a-z-]|\$)" "$work/$shell" || fail "$shell does not complete $word"
  done <"$work/words"
done
if [[ -n $built ]]; then
  name=$(basename "$page" .1)
  cmp "$work/bash" "$built/bash/$name" || fail "what is installed for bash is another"
  cmp "$work/zsh" "$built/zsh/_$name" || fail "what is installed for zsh is another"
fi
rm -rf "$work"
