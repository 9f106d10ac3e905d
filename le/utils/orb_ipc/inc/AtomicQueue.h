// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <deque>
#include <utility>

#include "Mutex.h"

// First in, first out between threads. mMutex guards the queue for the length of one operation.
template <class T>
class AtomicQueue {
 public:
  void push(T item) {
    const LockGuard lock(mMutex);
    mQueue.push_back(std::move(item));
  }
  // The caller has seen that the queue is not empty and is the only one to take from it.
  T pop() {
    const LockGuard lock(mMutex);
    T item = std::move(mQueue.front());
    mQueue.pop_front();
    return item;
  }
  bool empty() const {
    const LockGuard lock(mMutex);
    return mQueue.empty();
  }

 private:
  std::deque<T> mQueue ORB_GUARDED_BY(mMutex);
  mutable Mutex mMutex;
};
