# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The linker of `zig c++` knows no -rpath-link. It finds the libraries of libraries by their full names.
foreach(language C CXX)
  set(CMAKE_SHARED_LIBRARY_RPATH_LINK_${language}_FLAG "")
  set(CMAKE_EXECUTABLE_RPATH_LINK_${language}_FLAG "")
endforeach()
# It precompiles a header when it is told that the input is one, and takes -emit-pch for a request to link.
set(CMAKE_CXX_COMPILE_OPTIONS_CREATE_PCH
  -Winvalid-pch -Xclang -fno-pch-timestamp -Xclang -include -Xclang <PCH_HEADER> -x c++-header)
