// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

namespace orb::utils {

// Facade for the platform's wake locks, which keep the processor awake while work is pending. This
// platform needs none, so every operation is empty; the class exists for callers that expect it to
// link and run. One object per process, made on first use and owned by the holders of the shared
// pointer. Any thread: none of its fields ever changes, and its two locks guard nothing.
class WakelockWrapper {
 public:
  static std::shared_ptr<WakelockWrapper> getInstance();

  WakelockWrapper(const WakelockWrapper&) = delete;
  WakelockWrapper& operator=(const WakelockWrapper&) = delete;

  void start();
  void acquireWakelock();
  int doResetTimer();     // always 0
  int releaseWakelock();  // always 0

 private:
  // What a held wake lock would be remembered by.
  struct LockRecord {
    int holders = 0;
  };

  WakelockWrapper();

  std::mutex mLockMutex;
  std::mutex mTimerMutex;
  std::condition_variable mTimerCondition;
  std::shared_ptr<LockRecord> mLockRecord;
};

}  // namespace orb::utils
