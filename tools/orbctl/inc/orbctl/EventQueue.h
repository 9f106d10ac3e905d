// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

#include "UniqueFd.h"
#include "orbctl/Event.h"

namespace orbctl {

// Takes events from the library's threads to the main thread, in the order in which they came.
// Callbacks push() and return at once; the main thread polls fd() beside its other descriptors and
// take()s all that is there. It belongs to the main thread, which keeps it until no service is
// enabled any more. `mLock` guards the events and is held for moments only; neither side waits with
// it. A main thread that cannot keep up loses the newest events and is told how many.
class EventQueue {
 public:
  static constexpr size_t kMost = 65536;

  // Without a descriptor (none left) fd() is -1.
  EventQueue();

  // Readable while there is something to take.
  int fd() const { return mWake.get(); }
  void push(const Event& event) noexcept;
  // All events since the last time, and how many were lost since then.
  std::vector<Event> take(size_t& lost);

 private:
  const UniqueFd mWake;  // an eventfd
  std::mutex mLock;
  std::vector<Event> mEvents;
  size_t mLost = 0;
};

}  // namespace orbctl
