// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Part of the library only if the C++ runtime is linked into it. Such a runtime contains a
// demangler, more than 100 KB with its tables, for the line that it writes when an exception ends
// the process. The linker uses this function instead, and the line has the mangled name of the
// exception.
#include <cstddef>

extern "C" char* __cxa_demangle(const char* mangled, char* buffer, size_t* length, int* status);

extern "C" char* __cxa_demangle(const char*, char*, size_t*, int* status) {
  constexpr int kNotMangled = -2;
  if (status != nullptr) *status = kNotMangled;
  return nullptr;
}
