#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Counts the instructions of one operation and compares them with the committed count.
set -euo pipefail

usage() {
  cat <<'EOT'
Usage: instructions.sh FOLDER BUILT NAME
Count the instructions of the work NAME of instructions.conf and compare them with
instructions.baseline. More than 3 % above that is a failure.

  FOLDER       The programs of the benchmarks.
  BUILT        How they were built: the compiler, and what else the count depends on.
  -h, --help   Print this text and exit.

Instructions are counted by valgrind, so neither other load nor the clock changes them. Functions of the
C library and of libcrypto that have variants for some processors use the variant for all x86-64 processors.
The first line of the baseline names its build; counts of another kind of build are not compared.

  ORB_INSTRUCTIONS_UPDATE=1   Write the count to the baseline instead of comparing.
  ORB_INSTRUCTIONS_FILES      Folder of conf and baseline. [Default: that of this script]

Exit status: 0 not above the baseline, or there is none for this kind of build; 1 above it, or the
work failed; 2 wrong arguments.
EOT
}

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [[ ${1-} == -h || ${1-} == --help ]]; then
  usage
  exit 0
fi
(($# == 3)) || {
  echo "instructions.sh: three arguments are needed; try --help" >&2
  exit 2
}
folder=$1
built="$2, $(getconf GNU_LIBC_VERSION 2>/dev/null || echo 'another C library')"
name=$3
files=${ORB_INSTRUCTIONS_FILES:-$here}
baseline=$files/instructions.baseline
limit=3 # per cent

fail() {
  printf 'instructions.sh: %s\n' "$@" >&2
  exit 1
}

row=$(awk -v name="$name" '$1 == name' "$files/instructions.conf")
read -r _ first second function program arguments <<<"$row" || true
[[ ${arguments-} ]] || {
  echo "instructions.sh: instructions.conf has no work called $name" >&2
  exit 2
}
command -v valgrind >/dev/null || fail "valgrind is missing; scripts/setup installs it"

# Under valgrind a program sees the processor of this machine. These are the bits for features that not
# all processors have: wider vectors, copying by one instruction, random numbers and hashes.
hwcaps=-AVX,-AVX2,-AVX_Fast_Unaligned_Load,-AVX512F,-ERMS,-FSRM,-BMI1,-BMI2,-LZCNT,-MOVBE,-RTM
export GLIBC_TUNABLES=glibc.cpu.hwcaps=$hwcaps
export OPENSSL_ia32cap=~0x5000000000000000:0

# count OPERATIONS: prints the number of instructions for so many operations.
count() {
  local out=$PWD/instructions.$name.$1 counted=()
  local words
  if [[ $function != - ]]; then
    IFS=, read -ra words <<<"$function"
    counted=(--collect-atstart=no "${words[@]/#/--toggle-collect=}")
  fi
  read -ra words <<<"${arguments//\{\}/$1}"
  rm -f "$out"
  timeout 500 "$here/../../scripts/sandbox" valgrind -q --tool=callgrind --callgrind-out-file="$out" \
    "${counted[@]}" "$folder/$program" "${words[@]}" >"$out.said" 2>&1 || {
    cat "$out.said" >&2
    fail "$program failed"
  }
  awk '$1 == "totals:" {print $2}' "$out"
}

less=$(count "$first")
more=$(count "$second")
now=$(((more - less) / (second - first)))
((now > 0)) || fail "$name: no instruction was counted ($less for $first operations, $more for $second)"

if [[ ${ORB_INSTRUCTIONS_UPDATE-} ]]; then
  exec 9>>"$baseline"
  flock 9
  others=$(awk -v name="$name" '!/^#/ && $1 != name' "$baseline")
  former=$(sed -n '1s/^# //p' "$baseline")
  # Counts of another kind of build cannot stay beside this one.
  [[ $former == "$built" ]] || others=
  {
    echo "# $built"
    printf '%s\n' "$others" "$name $now" | sed '/^$/d' | sort
  } >"$baseline.new"
  cat "$baseline.new" >"$baseline"
  rm "$baseline.new"
  echo "$name: $now instructions, written to $baseline"
  exit 0
fi

former=$(sed -n '1s/^# //p' "$baseline")
if [[ $former != "$built" ]]; then
  echo "$name: $now instructions. The baseline is of another kind of build, so nothing is compared:"
  printf '%s\n' "  baseline: $former" "  here:     $built"
  exit 0
fi
then=$(awk -v name="$name" '$1 == name {print $2}' "$baseline")
[[ $then ]] || fail "$name has no baseline. Write it:" \
  "  ORB_INSTRUCTIONS_UPDATE=1 ctest --preset dev -R '^instructions_$name\$'"
echo "$name: $now instructions, baseline $then"
if ((now * 100 > then * (100 + limit))); then
  fail "$name takes $now instructions, more than $limit % above its baseline of $then." \
    "Where they are spent, of $second operations:" \
    "  callgrind_annotate --inclusive=yes --tree=none $PWD/instructions.$name.$second | head -60" \
    "Make the same file of the commit before and compare the two. If it has to be so, move the baseline" \
    "and say why in the commit:" \
    "  ORB_INSTRUCTIONS_UPDATE=1 ctest --preset dev -R '^instructions_$name\$'"
fi
if ((now * 100 < then * (100 - limit))); then
  echo "That is more than $limit % below it. Move the baseline to the lower count:"
  echo "  ORB_INSTRUCTIONS_UPDATE=1 ctest --preset dev -R '^instructions_$name\$'"
fi
