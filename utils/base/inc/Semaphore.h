// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

// Counting semaphore whose count saturates at 1 unless it was built otherwise. Any thread; mMutex
// guards the count.
class Semaphore {
 public:
  explicit Semaphore(bool singleCount = true) : mSingleCount(singleCount) {}

  void increase() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mCount = mSingleCount ? 1 : mCount + 1;
    // Under the lock: the waiter may destroy this object as soon as it can run.
    mCondition.notify_one();
  }

  void decrease() {
    std::unique_lock<std::mutex> lock(mMutex);
    mCondition.wait(lock, [this] { return mCount > 0; });
    --mCount;
  }

  // As decrease(), but gives up after @p timeout and then returns false.
  bool decreaseFor(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mCondition.wait_for(lock, timeout, [this] { return mCount > 0; })) return false;
    --mCount;
    return true;
  }

 private:
  const bool mSingleCount;
  int64_t mCount = 0;
  std::mutex mMutex;
  std::condition_variable_any mCondition;
};
