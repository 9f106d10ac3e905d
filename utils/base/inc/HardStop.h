// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>

#include "Mutex.h"

// The documented end of the process where the library cannot go on: the line at error priority,
// then exit(-1). exit() is not for two threads at once, so of several that stop only the first one
// ends the process, and the others wait for that.
[[noreturn]] void hardStop(const char* message);

// The calling thread is in exit() already: no other one may call it any more.
void noteProcessExit();

// One of the two has come: what threads were about to do may never be done now.
bool processStops();

// A wait without a bound for what another thread does; false when the process stops before that.
template <class Predicate>
bool awaitUnlessStopped(Condition& condition, UniqueLock& lock, Predicate predicate) {
  constexpr std::chrono::milliseconds kLook(20);
  while (!condition.wait_for(lock, kLook, predicate)) {
    if (processStops()) return false;
  }
  return true;
}
