// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

#include <cstddef>

// What runs on a thread of the library: the library alone, or callbacks of the application as well.
enum class ThreadWork { Library, Callbacks };

namespace orb::utils {

// The library's own share of a stack: at least twice what the deepest thread of this kind uses,
// including the platform's log and a signal handler. ThreadStacks_test measures that, and
// docs/porting.md has the figures. Threads that run callbacks also parse the daemon's messages,
// which may be nested as deep as the parser allows.
constexpr size_t libraryShare(ThreadWork work) {
  return size_t{work == ThreadWork::Callbacks ? 96u : 64u} * 1024;
}

// The additional share that <orb/sdl.h> promises to a callback: as much as musl gives to a thread.
constexpr size_t kCallbackStack = size_t{128} * 1024;

constexpr size_t stackFor(ThreadWork work) {
  return libraryShare(work) + (work == ThreadWork::Callbacks ? kCallbackStack : 0);
}

// Sets the size of the stack in @p attributes, which are new: what @p work needs, plus what the C
// library itself may need there. Threads that run callbacks get at least the platform's usual size.
// False if the system refuses.
bool setStackSize(pthread_attr_t& attributes, ThreadWork work);

}  // namespace orb::utils
