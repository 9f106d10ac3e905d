// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/EventQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <utility>

namespace orbctl {

EventQueue::EventQueue() : mWake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void EventQueue::push(const Event& event) noexcept {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    bool kept = mEvents.size() < kMost;
    if (kept) {
      // No exception may pass through the library.
      try {
        mEvents.push_back(event);
      } catch (const std::bad_alloc&) {
        kept = false;
      }
    }
    if (!kept) ++mLost;
  }
  // This fails only if the counter is at its maximum, and then the descriptor is already readable.
  const uint64_t one = 1;
  while (write(mWake.get(), &one, sizeof one) < 0 && errno == EINTR) {
  }
}

std::vector<Event> EventQueue::take(size_t& lost) {
  // Read the counter first, then the events. An event that comes in between makes the descriptor
  // readable again.
  uint64_t count = 0;
  while (read(mWake.get(), &count, sizeof count) < 0 && errno == EINTR) {
  }
  const std::lock_guard<std::mutex> lock(mLock);
  lost = std::exchange(mLost, 0);
  return std::exchange(mEvents, {});
}

}  // namespace orbctl
