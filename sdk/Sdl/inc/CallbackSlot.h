// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>

// Where a service keeps one callback of the application. Any thread sets and reads it: it is one
// pointer, so it needs no lock. Which call's callback stays is decided by who sets it, under
// SdkBase::mLock in the moment in which the call is accepted.
template <class Callback>
class CallbackSlot {
 public:
  void set(Callback callback) { mCallback.store(callback, std::memory_order_release); }
  // Null when none was set.
  Callback get() const { return mCallback.load(std::memory_order_acquire); }

 private:
  std::atomic<Callback> mCallback{nullptr};
};
