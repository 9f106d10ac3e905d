// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The results of callbacks and their actions while they run.
#include "OrbTimerFixture.h"

using namespace orbtimer;

namespace {

TEST_F(OrbTimerTest, ResultZeroRepeatsWithTheFirstDelay) {
  Script script{{0}};
  mTimer.addTimedCallback(100, play, &script);
  for (size_t round = 1; round <= 3; ++round) {
    mTimer.advanceMillis(100);
    EXPECT_EQ(100, mTimer.processEvents());
    EXPECT_EQ(round, script.calls);
  }
}

TEST_F(OrbTimerTest, PositiveResultBecomesThePeriod) {
  Script script{{250, 0}};
  mTimer.addTimedCallback(100, play, &script);
  mTimer.advanceMillis(100);
  EXPECT_EQ(250, mTimer.processEvents());
  mTimer.advanceMillis(250);
  EXPECT_EQ(250, mTimer.processEvents());
  EXPECT_EQ(2u, script.calls);
}

TEST_F(OrbTimerTest, InvalidResultIsLoggedAndKeepsThePeriod) {
  Script script{{-5}};
  mTimer.addTimedCallback(100, play, &script);
  mTimer.advanceMillis(100);
  EXPECT_EQ(100, mTimer.processEvents());
  expectOneLine(5, "Invalid delay (-5), using 100 instead");
}

TEST_F(OrbTimerTest, ResultMinusOneEndsTheEvent) {
  Script script{{-1}};
  mTimer.addTimedCallback(0, play, &script);
  EXPECT_EQ(-1, mTimer.processEvents());
  mTimer.advanceMillis(1000);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(1u, script.calls);
}

TEST_F(OrbTimerTest, PeriodCountsFromTheEndOfTheCallback) {
  mTimer.addTimedCallback(
      100,
      [](void* data) {
        static_cast<ManualTimer*>(data)->advanceMillis(30);  // the callback takes its time
        return 0;
      },
      &mTimer);
  mTimer.advanceMillis(150);
  EXPECT_EQ(100, mTimer.processEvents());
}

struct SelfRemoval {
  ManualTimer& timer;
  int id;
  int result;
  int calls;
};

int removeSelf(void* data) {
  SelfRemoval& self = *static_cast<SelfRemoval*>(data);
  ++self.calls;
  self.timer.removeTimedCallback(self.id);
  return self.result;
}

TEST_F(OrbTimerTest, CallbackThatRemovesItselfIsStillRescheduled) {
  SelfRemoval self{mTimer, 0, 0, 0};
  self.id = mTimer.addTimedCallback(100, removeSelf, &self);
  mTimer.advanceMillis(100);
  EXPECT_EQ(100, mTimer.processEvents());
  self.result = -1;
  mTimer.advanceMillis(100);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(2, self.calls);
}

TEST_F(OrbTimerTest, RescheduledEventKeepsItsId) {
  Script script{{0}};
  const int id = mTimer.addTimedCallback(100, play, &script);
  mTimer.advanceMillis(100);
  mTimer.processEvents();
  mTimer.removeTimedCallback(id);
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
}

TEST_F(OrbTimerTest, CallbackMayAddAnEventThatRunsInTheSameCall) {
  struct Adder {
    ManualTimer& timer;
    Script added{{-1}};
  } adder{mTimer};
  mTimer.addTimedCallback(
      0,
      [](void* data) {
        Adder& self = *static_cast<Adder*>(data);
        self.timer.addTimedCallback(0, play, &self.added);
        return -1;
      },
      &adder);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(1u, adder.added.calls);
}

TEST_F(OrbTimerTest, EventThatAddsAnotherIsRepeatedAsItself) {
  struct Adder {
    ManualTimer& timer;
    Script added{{-1}};
    int calls = 0;
  } adder{mTimer};
  mTimer.addTimedCallback(
      100,
      [](void* data) {
        Adder& self = *static_cast<Adder*>(data);
        if (self.calls++ == 0) self.timer.addTimedCallback(30, play, &self.added);
        return 0;
      },
      &adder);
  mTimer.advanceMillis(100);
  EXPECT_EQ(30, mTimer.processEvents());
  mTimer.advanceMillis(30);
  EXPECT_EQ(70, mTimer.processEvents());
  EXPECT_EQ(1u, adder.added.calls);
  mTimer.advanceMillis(70);
  EXPECT_EQ(100, mTimer.processEvents());
  EXPECT_EQ(2, adder.calls);
}

TEST_F(OrbTimerTest, EventsOfOneInstantAllRunInOneCall) {
  Script first{{-1}};
  Script second{{-1}};
  mTimer.addTimedCallback(5, play, &first);
  mTimer.addTimedCallback(5, play, &second);
  mTimer.advanceMillis(5);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(1u, first.calls);
  EXPECT_EQ(1u, second.calls);
}

}  // namespace
