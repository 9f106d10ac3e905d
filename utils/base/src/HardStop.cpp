// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "HardStop.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "PlatformLog.h"

namespace {

constexpr int kStatus = -1;

std::atomic<bool> stopping{false};
thread_local bool stoppingHere = false;

// Whether this thread is the first one.
bool beginStop() {
  const bool first = !stopping.exchange(true);
  if (first) stoppingHere = true;
  return first;
}

}  // namespace

void hardStop(const char* message) {
  PLATFORM_LOG(ERROR, "%s", message);
  if (stoppingHere) _exit(kStatus);  // from something that exit() called
  if (beginStop()) exit(kStatus);
  for (;;) pause();
}

void noteProcessExit() { beginStop(); }

bool processStops() { return stopping; }
