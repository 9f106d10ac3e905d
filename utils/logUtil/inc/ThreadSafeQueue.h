// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <utility>

#include "Mutex.h"

// First-in first-out queue between threads. Any thread may push and pop; the owner keeps it alive
// until all of them are done. mMutex guards mItems and is held for one deque operation at a time.
template <class T>
class ThreadSafeQueue {
 public:
  // Appends and wakes one waiter.
  void push(T item) {
    const LockGuard lock(mMutex);
    mItems.push_back(std::move(item));
    mNotEmpty.notify_one();
  }

  // The same, unless an equal item waits already.
  void pushOnce(T item) {
    const LockGuard lock(mMutex);
    if (std::find(mItems.begin(), mItems.end(), item) != mItems.end()) return;
    mItems.push_back(std::move(item));
    mNotEmpty.notify_one();
  }

  // Waits until there is an item and takes the oldest; false when there is none and the queue has
  // been ended.
  bool waitAndPop(T& item) {
    UniqueLock lock(mMutex);
    mNotEmpty.wait(lock, [this]() ORB_REQUIRES(mMutex) { return mEnded || !mItems.empty(); });
    if (mItems.empty()) return false;
    item = std::move(mItems.front());
    mItems.pop_front();
    return true;
  }

  // Nobody waits any more, until begin().
  void end() {
    const LockGuard lock(mMutex);
    mEnded = true;
    mNotEmpty.notify_all();
  }
  void begin() {
    const LockGuard lock(mMutex);
    mEnded = false;
  }

  // Takes the oldest item; false when there is none.
  bool tryPop(T& item) {
    const LockGuard lock(mMutex);
    if (mItems.empty()) return false;
    item = std::move(mItems.front());
    mItems.pop_front();
    return true;
  }

  size_t size() const {
    const LockGuard lock(mMutex);
    return mItems.size();
  }

 private:
  mutable Mutex mMutex;
  Condition mNotEmpty;
  std::deque<T> mItems ORB_GUARDED_BY(mMutex);
  bool mEnded ORB_GUARDED_BY(mMutex) = false;
};
