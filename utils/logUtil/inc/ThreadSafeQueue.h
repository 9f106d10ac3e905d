// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

// First-in first-out queue between threads. Any thread may push and pop; the owner keeps it alive
// until all of them are done. mMutex guards mItems and is held for one deque operation at a time.
template <typename T>
class ThreadSafeQueue {
 public:
  // Appends and wakes one waiter.
  void push(T item) {
    std::lock_guard<std::mutex> lock(mMutex);
    mItems.push_back(std::move(item));
    mNotEmpty.notify_one();
  }

  // Waits until there is an item and takes the oldest.
  void waitAndPop(T& item) {
    std::unique_lock<std::mutex> lock(mMutex);
    mNotEmpty.wait(lock, [this] { return !mItems.empty(); });
    item = std::move(mItems.front());
    mItems.pop_front();
  }

  // Takes the oldest item; false when there is none.
  bool tryPop(T& item) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mItems.empty()) return false;
    item = std::move(mItems.front());
    mItems.pop_front();
    return true;
  }

  size_t size() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mItems.size();
  }

 private:
  mutable std::mutex mMutex;
  std::condition_variable mNotEmpty;
  std::deque<T> mItems;
};
