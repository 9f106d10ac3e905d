// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "ModelBooks.h"

namespace torture {

// Tells the books when the machine keeps the process from running: the library gives its threads
// some tens of milliseconds here and there, and no more can be expected of it. A thread of its own,
// from construction to destruction; mMutex guards the end.
class ModelPulse {
 public:
  ModelPulse() : mThread([this] { run(); }) {}
  ModelPulse(const ModelPulse&) = delete;
  ModelPulse& operator=(const ModelPulse&) = delete;
  ~ModelPulse() {
    {
      const std::lock_guard<std::mutex> lock(mMutex);
      mEnd = true;
    }
    mChanged.notify_all();
    mThread.join();
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kBeat{5};
  static constexpr std::chrono::milliseconds kLate{20};

  void run() {
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
      const Clock::time_point next = Clock::now() + kBeat;
      if (mChanged.wait_until(lock, next, [this] { return mEnd; })) return;
      if (Clock::now() - next > kLate) ModelBooks::get().starve();
    }
  }

  std::mutex mMutex;
  std::condition_variable mChanged;
  bool mEnd = false;
  std::thread mThread;
};

}  // namespace torture
