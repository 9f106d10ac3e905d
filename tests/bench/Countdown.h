// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>

// One thread sets a number of events and waits for the last one; others report them. mLock guards
// the number.
class Countdown {
 public:
  void expect(int events) {
    const std::lock_guard<std::mutex> lock(mLock);
    mLeft = events;
  }
  void one() {
    const std::lock_guard<std::mutex> lock(mLock);
    if (--mLeft == 0) mDone.notify_one();
  }
  // Ends the process if they do not come, because then there is nothing to measure.
  void wait() {
    std::unique_lock<std::mutex> lock(mLock);
    if (mDone.wait_for(lock, std::chrono::seconds(20), [this] { return mLeft <= 0; })) return;
    std::fprintf(stderr, "benchmark: %d events did not come\n", mLeft);
    std::_Exit(1);
  }

 private:
  std::mutex mLock;
  std::condition_variable mDone;
  int mLeft = 0;
};
