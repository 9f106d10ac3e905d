// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

// While it lives, a request to cancel the calling thread waits: a call that is cut short by one
// leaves its locks behind, or ends the process where its unwinding meets noexcept.
class NoCancellation {
 public:
  NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &mBefore); }
  NoCancellation(const NoCancellation&) = delete;
  NoCancellation& operator=(const NoCancellation&) = delete;
  ~NoCancellation() { pthread_setcancelstate(mBefore, &mBefore); }

 private:
  int mBefore = PTHREAD_CANCEL_ENABLE;
};

// No exception leaves an exported function: for want of memory the call is refused with @p failed.
template <class Call, class Result>
Result guarded(const Call& call, Result failed) noexcept {
  const NoCancellation whole;
  try {
    return call();
  } catch (...) {
    return failed;
  }
}
