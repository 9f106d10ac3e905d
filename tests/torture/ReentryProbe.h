// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <utility>

#include "Functions.h"

namespace torture {

constexpr int kAnyValue = -1000;

// Runs @p action once, inside the next callback of this kind. Forgets the earlier calls.
inline void arm(Slot slot, int value, std::function<void()> action) {
  heard().clear();
  heard().inNext(
      [slot, value](const Heard& call) {
        return call.slot == slot && (value == kAnyValue || value == call.value);
      },
      std::move(action));
}
// These two have no time limit; the watchdog ends a run that hangs.
inline void awaitDone() { heard().waitDone(HeardCalls::kWatched); }
inline void awaitHeard(Slot slot, int value, size_t times = 1) {
  heard().waitFor(
      [slot, value](const Heard& call) { return call.slot == slot && call.value == value; }, times,
      HeardCalls::kWatched);
}

// The kernel names the main thread after the program; here it is always "caller".
inline std::string threadName() {
  if (getpid() == gettid()) return "caller";
  char name[16] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  return name;
}

}  // namespace torture
