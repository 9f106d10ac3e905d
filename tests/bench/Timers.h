// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <time.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "OrbTimer.h"

// The library's timers on the real clock plus what forward() adds, so that no time passes in waits.
class ForwardTimer : public OrbTimer {
 public:
  ForwardTimer() : OrbTimer(nullptr) {}
  void forward(long ms) { addDelayToTimeval(ms, mAhead); }

 protected:
  int now(timespec& t) const override {
    timespec read{};
    if (OrbTimer::now(read) != 0) return -1;
    addTimeSpec(read, mAhead, t);
    return 0;
  }

 private:
  timespec mAhead{0, 0};
};

// The library's timers on a clock that advances by the same step each time it is read, so that
// every run does the same.
class SteppingTimer : public OrbTimer {
 public:
  SteppingTimer() : OrbTimer(nullptr) {}
  void forward(long ms) { addDelayToTimeval(ms, mNow); }

 protected:
  int now(timespec& t) const override {
    addTimeSpec(mNow, {0, 100}, mNow);
    t = mNow;
    return 0;
  }

 private:
  mutable timespec mNow{1000, 0};
};

// The least cost of timers: a heap with the few members that a timer needs, ordered by nanoseconds
// of the real clock. To remove a timer, it searches the heap and orders it again.
class BareTimers {
 public:
  using Callback = int (*)(void* data);

  void forward(long ms) { mAhead += ms * kNanosPerMilli; }
  int addTimedCallback(long delay, Callback callback, void* data) {
    mHeap.push_back({now() + delay * kNanosPerMilli, callback, data, ++mLastId});
    std::push_heap(mHeap.begin(), mHeap.end());
    return mLastId;
  }
  void processEvents() {
    while (!mHeap.empty() && mHeap.front().when <= now()) {
      const Entry entry = mHeap.front();
      std::pop_heap(mHeap.begin(), mHeap.end());
      mHeap.pop_back();
      entry.callback(entry.data);
    }
  }
  void removeTimedCallback(int id) {
    const auto found = std::find_if(mHeap.begin(), mHeap.end(),
                                    [id](const Entry& entry) { return entry.id == id; });
    if (found == mHeap.end()) return;
    *found = mHeap.back();
    mHeap.pop_back();
    std::make_heap(mHeap.begin(), mHeap.end());
  }

 private:
  static constexpr int64_t kNanosPerMilli = 1000000;

  struct Entry {
    int64_t when;
    Callback callback;
    void* data;
    int id;
    bool operator<(const Entry& other) const { return when > other.when; }
  };

  int64_t now() const {
    timespec t{};
    clock_gettime(CLOCK_BOOTTIME, &t);
    return int64_t{t.tv_sec} * 1000000000 + t.tv_nsec + mAhead;
  }

  std::vector<Entry> mHeap;
  int64_t mAhead = 0;
  int mLastId = 0;
};
