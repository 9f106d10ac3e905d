# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The one date that is in what is installed: that of the release, in seconds since 1970, or what
# SOURCE_DATE_EPOCH says. It is no build's, so that two builds give the same bytes.
set(ORB_RELEASE_EPOCH 1795305600)

# orb_release_date(RESULT FORMAT): in UTC.
function(orb_release_date RESULT FORMAT)
  set(told "$ENV{SOURCE_DATE_EPOCH}")
  if(told STREQUAL "")
    set(ENV{SOURCE_DATE_EPOCH} ${ORB_RELEASE_EPOCH})
  endif()
  string(TIMESTAMP date "${FORMAT}" UTC)
  if(told STREQUAL "")
    unset(ENV{SOURCE_DATE_EPOCH})
  endif()
  set(${RESULT} "${date}" PARENT_SCOPE)
endfunction()
