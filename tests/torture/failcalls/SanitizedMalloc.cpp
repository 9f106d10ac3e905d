// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Replaces Malloc.cpp in builds with a sanitizer, whose malloc must be the first.
#include <cstdlib>

#include "Memory.h"

void* failcalls::uncountedMalloc(std::size_t size) { return std::malloc(size); }

// The test also tries a length for which there is no memory.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
// Each run ends its process. TSan is not to wait there for races of other threads.
extern "C" const char* __tsan_default_options() {
  return "allocator_may_return_null=1:atexit_sleep_ms=20";
}
