// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <chrono>

#include "Mutex.h"

// Says whether the worker runs: it calls begin() and end(), other threads wait for them. Shared by
// the worker's thread and the client, so that it outlives both. mMutex guards the state.
class WorkerLife {
 public:
  void begin() {
    mBegun = true;
    set(State::Running);
  }
  void end() { set(State::Ended); }
  void awaitBegin() {
    UniqueLock lock(mMutex);
    mChanged.wait(lock, [this]() ORB_REQUIRES(mMutex) { return mState != State::NotStarted; });
  }
  // Whether the worker called begin().
  bool begun() const { return mBegun; }
  bool awaitEnd(std::chrono::milliseconds timeout) {
    UniqueLock lock(mMutex);
    return mChanged.wait_for(lock, timeout,
                             [this]() ORB_REQUIRES(mMutex) { return mState == State::Ended; });
  }

 private:
  enum class State { NotStarted, Running, Ended };
  void set(State state) {
    const LockGuard lock(mMutex);
    mState = state;
    mChanged.notify_all();
  }

  Mutex mMutex;
  Condition mChanged;
  State mState ORB_GUARDED_BY(mMutex) = State::NotStarted;
  std::atomic<bool> mBegun{false};
};
