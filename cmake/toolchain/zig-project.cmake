# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The compiler links its own libraries by itself. CMake looks at what it links, and names for a link by the C
# compiler those that only the C++ compiler has. After the cache was moved, the compiler builds its libraries
# again while CMake looks, and CMake names too many.
foreach(language C CXX)
  set(CMAKE_${language}_IMPLICIT_LINK_LIBRARIES "")
endforeach()
