// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>

// Where a service keeps one callback of the application. Any thread sets and reads it: it is one
// pointer, so it needs no lock. It is set under SdkBase::mLock, at the moment in which the call is
// accepted: so it is clear which call's callback stays.
template <class Callback>
class CallbackSlot {
 public:
  void set(Callback callback) { mCallback.store(callback, std::memory_order_release); }
  // Null when none was set.
  Callback get() const { return mCallback.load(std::memory_order_acquire); }

 private:
  std::atomic<Callback> mCallback{nullptr};
};
