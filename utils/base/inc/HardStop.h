// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>

#include "Mutex.h"

// Ends the process where the library cannot go on: writes the line at error priority, then calls
// exit(-1). Two threads must not call exit() at the same time. So only the first one calls it, and
// the others wait for the end of the process.
[[noreturn]] void hardStop(const char* message);

// The calling thread is in exit() already: no other thread may call it now.
void noteProcessExit();

// True once hardStop() or noteProcessExit() ran. Threads may not finish their work any more.
bool processStops();

// Waits without a limit for another thread; false if the process stops before that.
template <class Predicate>
bool awaitUnlessStopped(Condition& condition, UniqueLock& lock, Predicate predicate) {
  constexpr std::chrono::milliseconds kLook(20);
  while (!condition.wait_for(lock, kLook, predicate)) {
    if (processStops()) return false;
  }
  return true;
}
