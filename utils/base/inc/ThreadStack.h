// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

#include <cstddef>

// What runs on a thread of the library: the library alone, or callbacks of the application as well.
enum class ThreadWork { Library, Callbacks };

namespace orb::utils {

// The library's own share of a stack: at least twice what the deepest thread of the kind takes, the
// platform's log and a signal's handler included. ThreadStacks_test measures that, and
// docs/porting.md has the figures. Threads that run callbacks also read the daemon's messages,
// which may nest as deep as the parser goes.
constexpr size_t libraryShare(ThreadWork work) {
  return size_t{work == ThreadWork::Callbacks ? 96u : 64u} * 1024;
}

// What <orb/sdl.h> promises to a callback, besides: as much as musl gives to a thread.
constexpr size_t kCallbackStack = size_t{128} * 1024;

constexpr size_t stackFor(ThreadWork work) {
  return libraryShare(work) + (work == ThreadWork::Callbacks ? kCallbackStack : 0);
}

// Sets the size of the stack in @p attributes, which are as they were made: what @p work needs, and
// what the C library may keep there for itself. Threads that run callbacks get no less than the
// platform gives to any thread. False when the system refuses.
bool setStackSize(pthread_attr_t& attributes, ThreadWork work);

}  // namespace orb::utils
