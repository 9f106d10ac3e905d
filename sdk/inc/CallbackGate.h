// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>

#include "Mutex.h"

// Work that a callback has postponed until its thread has left all callbacks. The fields are used
// on that thread only; no lock.
class AfterCallback {
 public:
  virtual ~AfterCallback() = default;

 private:
  friend class CallbackGate;
  // Runs on the thread of the callback, with no lock held. Throws nothing.
  virtual void outside(const std::shared_ptr<AfterCallback>& self) = 0;

  std::shared_ptr<AfterCallback> mKept;  // keeps this object until then
  AfterCallback* mNext = nullptr;
};

// Every callback of the application passes its service's gate. After the gate is closed no callback
// begins, and drain() waits for those that run. So no callback of a service runs after its disable
// has returned. A callback of an open gate takes no lock. The last callbacks of a closed gate leave
// under mMutex: who waits for them may free the gate as soon as it has the mutex again. The mutex
// is free while a callback runs.
class CallbackGate {
 public:
  // Exists while one callback runs. False if the gate is closed and the callback must not run.
  class Pass {
   public:
    explicit Pass(CallbackGate& gate);
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    ~Pass();
    explicit operator bool() const { return mOpen; }

   private:
    CallbackGate& mGate;
    const bool mOpen;
  };

  void close();
  // Waits until no callback of a closed gate runs. Must not be called inside a callback.
  void drain();
  // The gate is closed, and no callback runs: none will run any more.
  bool isOver();

  // Whether the calling thread is inside a callback of any service. Such a thread must not wait.
  static bool insideCallback();
  // For a thread inside a callback: does @p work after the outermost callback. Allocates nothing.
  static void afterCallback(std::shared_ptr<AfterCallback> work);

 private:
  // Of mState: closed, and how many callbacks run.
  static constexpr unsigned kClosed = 1;
  static constexpr unsigned kOneRuns = 2;

  static void doAfter();
  bool enter();
  void leave();
  bool isIdle() const { return mState < kOneRuns; }

  std::atomic<unsigned> mState{0};
  Mutex mMutex;
  Condition mDrained;
};

// The closed gates of one service whose callbacks may still run; one gate for each time that the
// service was enabled. A disable on a thread of the application waits for all of them, also for
// callbacks that an earlier disable inside a callback did not wait for. Any thread; mMutex guards
// the list and is not held during the wait.
class ClosedGates {
 public:
  struct Entry {
    std::shared_ptr<CallbackGate> gate;
    uint64_t number = 0;
  };
  // One entry, allocated in advance.
  using Place = std::list<Entry>;

  static Place placeFor(std::shared_ptr<CallbackGate> gate);
  // Adds a gate that has just been closed and returns its number. Allocates nothing.
  uint64_t add(Place place);
  // Waits until no callback of the gates with numbers up to @p last runs. Must not be called inside
  // a callback.
  void await(uint64_t last);

 private:
  // Removes the gates that are over from the list. The caller frees them after the lock.
  Place takeThoseOver() ORB_REQUIRES(mMutex);
  // The oldest gate up to @p last that is not over.
  std::shared_ptr<CallbackGate> firstUpTo(uint64_t last);

  Mutex mMutex;
  Place mGates ORB_GUARDED_BY(mMutex);  // oldest first
  uint64_t mLastNumber ORB_GUARDED_BY(mMutex) = 0;
};
