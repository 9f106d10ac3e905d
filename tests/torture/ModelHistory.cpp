// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ModelHistory.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace torture {
namespace {

thread_local std::string tName;

std::string nameOfThread() {
  if (!tName.empty()) return tName;
  char name[16] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  return std::string(name) + " #" + std::to_string(ModelHistory::thread());
}

}  // namespace

int ModelHistory::thread() {
  static std::atomic<int> threads{0};
  thread_local const int number = ++threads;
  return number;
}

void ModelHistory::nameThread(const std::string& name) { tName = name; }

void ModelHistory::clear() {
  const std::lock_guard<std::mutex> lock(mMutex);
  mRings.clear();
  mStart = Clock::now();
}

void ModelHistory::add(const char* format, ...) {
  char text[120];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  const std::lock_guard<std::mutex> lock(mMutex);
  Ring& ring = mRings[thread()];
  if (ring.events.empty()) {
    ring.thread = nameOfThread();
    ring.events.resize(kPerThread);
  }
  ring.events[ring.next++ % kPerThread] = {
      std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - mStart), text};
}

std::string ModelHistory::text() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  struct Line {
    std::chrono::microseconds time;
    std::string text;
  };
  std::vector<Line> lines;
  for (const auto& [number, ring] : mRings) {
    // Each thread's events from the oldest one on, so that equal times keep their order.
    for (size_t i = 0; i < kPerThread; ++i) {
      const Event& event = ring.events[(ring.next + i) % kPerThread];
      if (!event.text.empty()) lines.push_back({event.time, ring.thread + ": " + event.text});
    }
  }
  std::stable_sort(lines.begin(), lines.end(),
                   [](const Line& left, const Line& right) { return left.time < right.time; });
  std::string all;
  for (const Line& line : lines) {
    char time[32];
    snprintf(time, sizeof(time), "%9.3f ms  ", static_cast<double>(line.time.count()) / 1000);
    all += time + line.text + '\n';
  }
  return all;
}

}  // namespace torture
