// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

#include "UniqueFd.h"
#include "orbctl/Event.h"

namespace orbctl {

// Passes events from the library's threads to the main thread in the order of arrival. Callbacks
// call push(), which returns at once. The main thread polls fd() and calls take(). The main thread
// owns the queue and keeps it until all services are disabled. `mLock` guards the events; it is
// held only for short times and never during a wait. If the main thread is too slow, the newest
// events are lost and counted.
class EventQueue {
 public:
  static constexpr size_t kMost = 65536;

  // If there is no descriptor left, fd() is -1.
  EventQueue();

  // Readable while there are events.
  int fd() const { return mWake.get(); }
  void push(const Event& event) noexcept;
  // All events since the last call; lost is the number of events that were lost since then.
  std::vector<Event> take(size_t& lost);

 private:
  const UniqueFd mWake;  // an eventfd
  std::mutex mLock;
  std::vector<Event> mEvents;
  size_t mLost = 0;
};

}  // namespace orbctl
