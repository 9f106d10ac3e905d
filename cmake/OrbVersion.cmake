# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The version stands twice: here, where packages and file names take it from, and in the header that
# applications are compiled with, which is used as it lies in the tree. They are the same.
set(header ${PROJECT_SOURCE_DIR}/include/orb/version.h)
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
file(READ ${header} text)
set(told)
foreach(part MAJOR MINOR PATCH)
  if(text MATCHES "#define ORB_SDL_SDK_VERSION_${part} ([0-9]+)\n")
    list(APPEND told ${CMAKE_MATCH_1})
  endif()
endforeach()
string(REPLACE ";" "." told "${told}")
if(NOT told STREQUAL PROJECT_VERSION OR NOT text MATCHES "#define ORB_SDL_SDK_VERSION \"${told}\"\n")
  message(FATAL_ERROR "include/orb/version.h says ${told}, CMakeLists.txt ${PROJECT_VERSION}: "
    "change the version in both, in the header as numbers and as text")
endif()
unset(header)
unset(text)
unset(told)
