// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "HardStop.h"

#include <android/log.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace {

constexpr int kStatus = -1;

std::atomic<bool> stopping{false};
thread_local bool stoppingHere = false;

}  // namespace

void hardStop(const char* message) {
  __android_log_print(ANDROID_LOG_ERROR, nullptr, "%s", message);
  if (stoppingHere) _exit(kStatus);  // again, from something that exit() called
  if (!stopping.exchange(true)) {
    stoppingHere = true;
    exit(kStatus);
  }
  for (;;) pause();
}
