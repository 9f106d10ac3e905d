# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Common functions of the tests of this folder. Each test gets its work folder, CMake, and then the
# project's sources.
# shellcheck shell=bash disable=SC2034
set -euo pipefail
work=$1
cmake=$2
sources=$3
export LC_ALL=C
unset DESTDIR CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER PKG_CONFIG_PATH
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# Runs a command; prints its output if it fails.
run() {
  "$@" >"$work/log" 2>&1 || {
    cat "$work/log" >&2
    fail "$*"
  }
}

# Configures a build with the tools of this build: SOURCE, BUILD, options.
configure() {
  run "$cmake" -G Ninja -C "$work.cmake" -S "$1" -B "$2" "${@:3}"
}

# documented FILE WORDS [LANGUAGE]: prints the sample of a document that contains WORDS; commands by default.
documented() {
  awk -v words="$2" -v language="${3-sh}" '$0 == "```" { inside = 0; if (index(code, words)) { printf "%s", code; exit } }
    inside { code = code $0 "\n" }
    $0 == "```" language { inside = 1; code = "" }' "$sources/$1" | grep . || fail "$1 does not say '$2'"
}

# build_from BUILD FOLDER, options: a separate build folder without tools and examples. It uses the
# libraries of BUILD instead of building.
build_from() {
  configure "$sources" "$2" -DORB_BUILD_TOOLS=OFF -DORB_BUILD_EXAMPLES=OFF "${@:3}"
  cp -a "$1"/libOrbSdlSdk.so* "$2/"
  cp -a "$1"/platform/host/lib*.so "$2/platform/host/"
}

rm -rf "$work"
mkdir -p "$work"
cd "$work"
