// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <list>
#include <memory>

#include "Mutex.h"

// Something that a callback has left to be done when its thread is outside of callbacks again.
class AfterCallback {
 public:
  virtual ~AfterCallback() = default;

 private:
  friend class CallbackGate;
  // On the thread of the callback, with no lock held. Throws nothing.
  virtual void outside(const std::shared_ptr<AfterCallback>& self) = 0;

  std::shared_ptr<AfterCallback> mKept;  // itself, until then
  AfterCallback* mNext = nullptr;
};

// Every callback into the application goes through its service's gate. Once the gate is closed none
// begins any more, and drain() waits for those under way: together they keep the promise that no
// callback of a service runs after its disable has returned. mMutex guards state and count and is
// free while a callback runs.
class CallbackGate {
 public:
  // Held for the length of one callback; false when the gate is closed and the callback must not
  // run.
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
  // Waits until no callback runs. Not to be called from inside a callback.
  void drain();
  // Closed, and no callback runs: none ever will.
  bool isOver();

  // Whether the calling thread is inside a callback of any service: it must not wait for anything
  // then.
  static bool insideCallback();
  // For a thread inside a callback: does @p work once it has left the outermost one. Takes no
  // memory.
  static void afterCallback(std::shared_ptr<AfterCallback> work);

 private:
  static void doAfter();
  bool enter();

  Mutex mMutex;
  Condition mDrained;
  bool mClosed ORB_GUARDED_BY(mMutex) = false;
  unsigned mRunning ORB_GUARDED_BY(mMutex) = 0;
};

// The closed gates of one service behind which callbacks may still run, one gate for each time that
// the service was enabled. Who disables the service on a thread of the application waits for all of
// them: what an earlier disable inside a callback has left running included. Any thread; mMutex
// guards the list and is free while a gate is waited for.
class ClosedGates {
 public:
  struct Entry {
    std::shared_ptr<CallbackGate> gate;
    uint64_t number = 0;
  };
  // One entry, with the memory that adding it takes.
  using Place = std::list<Entry>;

  static Place placeFor(std::shared_ptr<CallbackGate> gate);
  // Adds a gate that has just been closed and returns its number. Takes no memory.
  uint64_t add(Place place);
  // Waits until no callback runs behind the gates up to and with number @p last. Not to be called
  // from inside a callback.
  void await(uint64_t last);

 private:
  // Moves the gates that are over out of the list; they are freed after the lock.
  Place takeOver() ORB_REQUIRES(mMutex);
  // The oldest gate up to @p last that is not over.
  std::shared_ptr<CallbackGate> firstUpTo(uint64_t last);

  Mutex mMutex;
  Place mGates ORB_GUARDED_BY(mMutex);  // oldest first
  uint64_t mLastNumber ORB_GUARDED_BY(mMutex) = 0;
};
