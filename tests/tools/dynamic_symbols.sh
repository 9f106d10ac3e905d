#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# The symbols that the shared library imports, and those of its own that another library could
# replace: only names of the platform, of the C and C++ libraries, of libcrypto and of protobuf. Run
# by ctest: dynamic_symbols.sh NM LIBRARY
set -euo pipefail

nm=$1 library=$2

# The functions of the platform.
platform='__android_log_print|property_get|property_get_bool|Diag_LSM_Init|diagpkt_tbl_reg|log_status|log_alloc|log_commit'
# These libraries bind each name to a version.
versioned='[^@]+@+(GLIBC_[0-9.]+|GLIBCXX_[0-9.]+|CXXABI_[0-9.]+|GCC_[0-9.]+|OPENSSL_[0-9.]+)'
# Protobuf has no versions: its names are the mangled names of its namespace, and names made for its
# types.
protobuf='_Z(N|NK|TIN|TVN|TSN)6google8protobuf.*'
# Names that the compiler refers to without needing them.
toolchain='_ITM_deregisterTMCloneTable|_ITM_registerTMCloneTable|__gmon_start__|__cxa_finalize(@.*)?|__cxa_pure_virtual(@.*)?'

names() { "$nm" -D "$library" | awk -v kinds="$1" 'index(kinds, $(NF - 1)) { print $NF }' | sort -u; }
failed=0
# refuse HEADING PATTERN NAMES: fails for each name that does not match the whole pattern.
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
