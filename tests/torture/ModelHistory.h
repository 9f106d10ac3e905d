// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace torture {

// The last actions of each thread, to help understand a finding. Used by any thread; mMutex guards
// everything.
class ModelHistory {
 public:
  // Removes all events; times count from now.
  void clear();
  void add(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // The events of all threads in the order of their times.
  std::string text() const;

  // A number for the calling thread, and its name in the text.
  static int thread();
  static void nameThread(const std::string& name);

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr size_t kPerThread = 48;
  struct Event {
    std::chrono::microseconds time{0};
    std::string text;
  };
  struct Ring {
    std::string thread;
    std::vector<Event> events;
    size_t next = 0;
  };

  mutable std::mutex mMutex;
  Clock::time_point mStart = Clock::now();
  std::map<int, Ring> mRings;
};

}  // namespace torture
