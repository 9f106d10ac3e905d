// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>

// One thread raises it, another waits for each raise. It is the cheapest wake-up of the system, so
// that a benchmark measures little else than its subject.
class Gate {
 public:
  void raise() {
    mRaised.fetch_add(1, std::memory_order_release);
    syscall(SYS_futex, &mRaised, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
  }
  void wait() {
    ++mAwaited;
    for (;;) {
      const uint32_t seen = mRaised.load(std::memory_order_acquire);
      if (static_cast<int32_t>(seen - mAwaited) >= 0) return;
      syscall(SYS_futex, &mRaised, FUTEX_WAIT_PRIVATE, seen, nullptr, nullptr, 0);
    }
  }

 private:
  std::atomic<uint32_t> mRaised{0};
  uint32_t mAwaited = 0;
};
