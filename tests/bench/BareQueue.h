// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <deque>
#include <mutex>
#include <utility>

// The least cost of posting to a thread: a deque with a mutex, and an eventfd that counts its
// items. Any thread posts, one thread takes. mLock guards mItems.
template <class T>
class BareQueue {
 public:
  BareQueue() : mEventFd(eventfd(0, EFD_SEMAPHORE | EFD_CLOEXEC)) {}
  BareQueue(const BareQueue&) = delete;
  BareQueue& operator=(const BareQueue&) = delete;
  ~BareQueue() { close(mEventFd); }

  void post(T item) {
    const std::lock_guard<std::mutex> lock(mLock);
    mItems.push_back(std::move(item));
    const uint64_t one = 1;
    if (write(mEventFd, &one, sizeof one) != static_cast<ssize_t>(sizeof one)) mItems.pop_back();
  }

  // Waits for an item.
  T take() {
    uint64_t unit = 0;
    while (read(mEventFd, &unit, sizeof unit) < 0) {
    }
    const std::lock_guard<std::mutex> lock(mLock);
    T item = std::move(mItems.front());
    mItems.pop_front();
    return item;
  }

 private:
  const int mEventFd;
  std::mutex mLock;
  std::deque<T> mItems;
};
