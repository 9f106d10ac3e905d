// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "OrbTimer.h"
#include "RecordingPlatform.h"

namespace orbtimer {

// A timer with a clock that the test moves, and that fails on demand.
class ManualTimer : public OrbTimer {
 public:
  explicit ManualTimer(IOrbTimerMonitor* monitor = nullptr) : OrbTimer(monitor) {}

  void advanceMillis(long millis) { addDelayToTimeval(millis, mNow); }
  void advanceNanos(long nanos) { addTimeSpec(mNow, {0, nanos}, mNow); }
  // The clock can be read `readings` more times and then fails with EINVAL; -1: no limit.
  void failClockAfter(int readings) { mReadings = readings; }
  void setLastId(int id) { mLastId = id; }

 protected:
  int now(timespec& t) const override {
    if (mReadings == 0) {
      errno = EINVAL;
      return -1;
    }
    if (mReadings > 0) --mReadings;
    t = mNow;
    return 0;
  }

 private:
  timespec mNow{1000, 0};
  mutable int mReadings = -1;
};

// The results of a callback, and the number of its calls.
struct Script {
  std::vector<int> results;  // the last one is repeated
  size_t calls = 0;
};

inline int play(void* data) {
  Script& script = *static_cast<Script*>(data);
  const size_t index = std::min(script.calls++, script.results.size() - 1);
  return script.results[index];
}

struct Monitor : IOrbTimerMonitor {
  void onNextTimerChanged() override { ++changes; }
  int changes = 0;
};

inline const std::string kClockError = std::string("clock_gettime(): ") + strerror(EINVAL);

class OrbTimerTest : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }

  // The only line logged so far; it has no tag.
  static void expectOneLine(int priority, const std::string& text) {
    const std::vector<recording::Line> lines = recording::lines();
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ(priority, lines[0].priority);
    EXPECT_FALSE(lines[0].hasTag);
    EXPECT_EQ(text, lines[0].text);
  }

  ManualTimer mTimer;
};

}  // namespace orbtimer
