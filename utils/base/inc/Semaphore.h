// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>

#include "Mutex.h"

// Counting semaphore whose count saturates at 1 unless it was built otherwise. Any thread; mMutex
// guards the count.
class Semaphore {
 public:
  explicit Semaphore(bool singleCount = true) : mSingleCount(singleCount) {}

  void increase() {
    const LockGuard lock(mMutex);
    mCount = mSingleCount ? 1 : mCount + 1;
    // Under the lock: the waiter may destroy this object as soon as it can run.
    mCondition.notify_one();
  }

  void decrease() {
    UniqueLock lock(mMutex);
    mCondition.wait(lock, [this]() ORB_REQUIRES(mMutex) { return mCount > 0; });
    --mCount;
  }

  // As decrease(), but gives up after @p timeout and then returns false.
  bool decreaseFor(std::chrono::milliseconds timeout) {
    UniqueLock lock(mMutex);
    if (!mCondition.wait_for(lock, timeout, [this]() ORB_REQUIRES(mMutex) { return mCount > 0; })) {
      return false;
    }
    --mCount;
    return true;
  }

 private:
  const bool mSingleCount;
  Mutex mMutex;
  int64_t mCount ORB_GUARDED_BY(mMutex) = 0;
  Condition mCondition;
};
