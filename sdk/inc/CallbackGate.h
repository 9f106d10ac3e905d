// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "Mutex.h"

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

  // Whether the calling thread is inside a callback of any service: it must not wait for anything
  // then.
  static bool insideCallback();

 private:
  bool enter();

  Mutex mMutex;
  Condition mDrained;
  bool mClosed ORB_GUARDED_BY(mMutex) = false;
  unsigned mRunning ORB_GUARDED_BY(mMutex) = 0;
};
