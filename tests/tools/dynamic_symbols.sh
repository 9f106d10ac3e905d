#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# What the shared library asks others for, and what others could put in the place of its own: no
# name but those of the platform, of the C and C++ libraries, of libcrypto and of protobuf. Run by
# ctest: dynamic_symbols.sh NM LIBRARY
set -euo pipefail

nm=$1 library=$2

# The platform's calls.
platform='__android_log_print|property_get|property_get_bool|Diag_LSM_Init|diagpkt_tbl_reg|log_status|log_alloc|log_commit'
# These libraries bind each name to a version of their own.
versioned='[^@]+@+(GLIBC_[0-9.]+|GLIBCXX_[0-9.]+|CXXABI_[0-9.]+|GCC_[0-9.]+|OPENSSL_[0-9.]+)'
# Protobuf does not: its names are those of its namespace, mangled, and of what is made for a type of it.
protobuf='_Z(N|NK|TIN|TVN|TSN)6google8protobuf.*'
# What the compiler refers to without needing it.
toolchain='_ITM_deregisterTMCloneTable|_ITM_registerTMCloneTable|__gmon_start__|__cxa_finalize(@.*)?|__cxa_pure_virtual(@.*)?'

names() { "$nm" -D "$library" | awk -v kinds="$1" 'index(kinds, $(NF - 1)) { print $NF }' | sort -u; }
failed=0
# refuse HEADING PATTERN NAMES: fails for each name that is not wholly of the pattern.
refuse() {
  local others
  others=$(grep -Evx "$2" <<<"$3" || true)
  [[ -z $others ]] && return
  printf '%s:\n%s\n' "$1" "$others" >&2
  failed=1
}

undefined=$(names U)
weak=$(names vVwWu)
own=$(names TDBRGSi)
[[ -n $undefined && -n $weak && -n $own ]] || { echo "cannot read $library" >&2; exit 1; }
refuse "taken from whoever defines it" "$platform|$versioned|$protobuf" "$undefined"
refuse "weak, so anybody may define it" "$toolchain" "$weak"
refuse "offered, but not by the C API's version" '.*@@LIBORBSDLSDK_[0-9]+' "$own"
exit "$failed"
