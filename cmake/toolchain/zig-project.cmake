# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# CMake names the compiler's own libraries in a link by the C compiler, if a part of it is C++. The compiler adds
# them by itself. Named before the C library, they would give a library a stack protector of its own; and which
# ones CMake finds depends on whether the compiler has built them before.
foreach(language C CXX)
  set(CMAKE_${language}_IMPLICIT_LINK_LIBRARIES "")
endforeach()
