// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sched.h>

#include <chrono>
#include <functional>

// For conditions that nothing signals: for example, an ended thread stays in the process's list of
// threads for a moment.
inline bool comesTo(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    sched_yield();
  }
  return true;
}
