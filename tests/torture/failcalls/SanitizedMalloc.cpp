// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// In place of Malloc.cpp where a sanitizer has the first malloc.
#include <cstdlib>

#include "Memory.h"

void* failcalls::uncountedMalloc(std::size_t size) { return std::malloc(size); }

// A length that nobody has room for is part of what is tried.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
// Each run ends its process: no waiting there for threads that might still race.
extern "C" const char* __tsan_default_options() {
  return "allocator_may_return_null=1:atexit_sleep_ms=20";
}
