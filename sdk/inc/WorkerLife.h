// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

// The thread lock: held by the worker from begin() to end(). Shared by the worker's thread and the
// client, so that it outlives both; others only wait for its two moments. mMutex guards the state.
class WorkerLife {
 public:
  void begin() {
    mBegun = true;
    set(State::Running);
  }
  void end() { set(State::Ended); }
  void awaitBegin() {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [this] { return mState != State::NotStarted; });
  }
  // Whether the worker came as far as begin().
  bool begun() const { return mBegun; }
  bool awaitEnd(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, timeout, [this] { return mState == State::Ended; });
  }

 private:
  enum class State { NotStarted, Running, Ended };
  void set(State state) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mState = state;
    mChanged.notify_all();
  }

  std::mutex mMutex;
  std::condition_variable mChanged;
  State mState = State::NotStarted;
  std::atomic<bool> mBegun{false};
};
