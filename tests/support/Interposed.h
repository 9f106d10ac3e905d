// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <dlfcn.h>

// If a test program defines a function of another library, all calls in the process use the
// program's definition. FailingThreads.h, FailingWrites.h and FailingRandom.h do that for calls
// that several tests make fail. Include each in only one source file of a program.
namespace interposed {

// The original definition, after the program's own.
template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace interposed

// The same, looked up once: ORB_NEXT(write)(fd, data, size).
#define ORB_NEXT(function)                                                         \
  ([] {                                                                            \
    static auto* const behind = interposed::next<decltype(::function)>(#function); \
    return behind;                                                                 \
  }())
