// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

// The work of a timer queue in benchmarks, always with the same delays. @p Timers adds, runs and
// removes as OrbTimer does; its forward() advances its clock by milliseconds. Used by one thread.
template <class Timers>
class TimerWork {
 public:
  TimerWork() {
    for (long& delay : mDelays) delay = 1 + static_cast<long>(mRandom() % kLongestMs);
  }

  // Adds @p count timers and runs them, a thousand at a time.
  void addAndRun(int count) {
    for (int left = count; left > 0; left -= kQueued) {
      const int now = std::min(left, kQueued);
      mRan = 0;
      for (int i = 0; i < now; ++i) add(mDelays[static_cast<size_t>(i)]);
      mTimers.forward(kLongestMs + 1);
      mTimers.processEvents();
      if (mRan != now) stop(now);
    }
  }

  // Removes a timer out of a thousand and adds another, @p count times. A later addAndRun() would
  // run the timers that it leaves.
  void removeAndAdd(int count) {
    while (mIds.size() < kQueued) mIds.push_back(add(kFarMs + static_cast<long>(mRandom() % 1000)));
    for (int i = 0; i < count; ++i) {
      int& id = mIds[mRandom() % mIds.size()];
      mTimers.removeTimedCallback(id);
      id = add(kFarMs + static_cast<long>(mRandom() % 1000));
    }
  }

 private:
  static constexpr int kQueued = 1000;
  static constexpr long kLongestMs = 20;
  static constexpr long kFarMs = 3600000;

  static int run(void* ran) {
    ++*static_cast<int*>(ran);
    return -1;
  }
  int add(long delay) { return mTimers.addTimedCallback(delay, run, &mRan); }
  [[noreturn]] void stop(int expected) const {
    std::fprintf(stderr, "%d of %d timers ran\n", mRan, expected);
    std::exit(EXIT_FAILURE);
  }

  Timers mTimers;
  std::mt19937 mRandom{1};
  std::array<long, kQueued> mDelays;
  std::vector<int> mIds;
  int mRan = 0;
};
