// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

// Notices that the machine keeps the process from running. Some waits of the library are limited to
// tens of milliseconds, and its threads cannot keep that if they do not run. It has its own thread
// from construction to destruction, which also calls mOnLate. mMutex guards mEnd.
class Pulse {
 public:
  explicit Pulse(std::function<void()> onLate = [] {})
      : mOnLate(std::move(onLate)), mThread([this] { run(); }) {}
  Pulse(const Pulse&) = delete;
  Pulse& operator=(const Pulse&) = delete;
  ~Pulse() {
    {
      const std::lock_guard<std::mutex> lock(mMutex);
      mEnd = true;
    }
    mChanged.notify_all();
    mThread.join();
  }
  // Whether a beat was late so far.
  bool wasLate() const { return mLate; }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kBeat{5};
  static constexpr std::chrono::milliseconds kLate{20};

  void run() {
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
      const Clock::time_point next = Clock::now() + kBeat;
      if (mChanged.wait_until(lock, next, [this] { return mEnd; })) return;
      if (Clock::now() - next <= kLate) continue;
      mLate = true;
      mOnLate();
    }
  }

  const std::function<void()> mOnLate;
  std::atomic<bool> mLate{false};
  std::mutex mMutex;
  std::condition_variable mChanged;
  bool mEnd = false;
  std::thread mThread;
};

// Repeats an attempt that fails, as long as the machine kept the process from running meanwhile.
// Each attempt starts from the beginning.
inline bool goesWell(const std::function<bool()>& attempt) {
  for (;;) {
    const Pulse pulse;
    if (attempt()) return true;
    if (!pulse.wasLate()) return false;
  }
}
