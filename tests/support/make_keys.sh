#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# Writes a header with RSA keys for tests: make_keys.sh OPENSSL FILE. On a machine that an emulator
# imitates, finding the primes would take longer than what most of these tests do with a key.
set -euo pipefail
openssl=$1
file=$2

key() { # key NAME BITS [OPTION...]
  printf 'constexpr char %s[] = R"(' "$1"
  "$openssl" genpkey -quiet -algorithm RSA -pkeyopt "rsa_keygen_bits:$2" "${@:3}"
  echo ')";'
}
{
  key kRsa2048 2048
  key kOtherRsa2048 2048
  key kRsa3072 3072
  key kRsa4096 4096 -pkeyopt rsa_keygen_primes:4  # four primes are found faster than two
} >"$file.new"
mv "$file.new" "$file"
