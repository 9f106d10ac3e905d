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

// What each thread did last, for a person who wants to understand a finding. Any thread; mMutex
// guards all.
class ModelHistory {
 public:
  // Forgets everything; times count from now.
  void clear();
  void add(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // All threads' events in the order of time.
  std::string text() const;

  // A number of the calling thread, and what it is called in the text.
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
