// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>

#include "Interposed.h"

// The program's own write(). The next calls fail or are short. Used by one thread at a time.
namespace writes {

// An error, or a limit for the number of bytes; `before` runs first.
struct Outcome {
  int error;
  size_t most;
  std::function<void()> before = {};
};
constexpr size_t kAll = SIZE_MAX;
constexpr int kEveryFd = -1;

inline int fd = kEveryFd;             // calls for this descriptor are affected and counted
inline std::deque<Outcome> outcomes;  // results of the next calls; all later calls succeed
inline size_t calls = 0;

inline void forget() {
  fd = kEveryFd;
  outcomes.clear();
  calls = 0;
}

}  // namespace writes

extern "C" ssize_t write(int fd, const void* data, size_t size) {
  if (writes::fd != writes::kEveryFd && writes::fd != fd) return ORB_NEXT(write)(fd, data, size);
  ++writes::calls;
  if (!writes::outcomes.empty()) {
    const writes::Outcome outcome = writes::outcomes.front();
    writes::outcomes.pop_front();
    if (outcome.before) outcome.before();
    if (outcome.error != 0) {
      errno = outcome.error;
      return -1;
    }
    size = std::min(size, outcome.most);
  }
  return ORB_NEXT(write)(fd, data, size);
}
