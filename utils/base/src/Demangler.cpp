// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Part of the library only where the C++ runtime is linked into it. Such a runtime brings along a
// translator of mangled names, more than 100 KB with its tables, for the line that it writes when
// an exception ends the process. The linker takes this in its place, and the line has the name of
// the exception as the compiler wrote it.
#include <cstddef>

extern "C" char* __cxa_demangle(const char* mangled, char* buffer, size_t* length, int* status);

extern "C" char* __cxa_demangle(const char*, char*, size_t*, int* status) {
  constexpr int kNotMangled = -2;
  if (status != nullptr) *status = kNotMangled;
  return nullptr;
}
