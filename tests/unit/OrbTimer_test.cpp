// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <climits>

#include "OrbTimerFixture.h"

using namespace orbtimer;

namespace {

TEST_F(OrbTimerTest, EmptyQueueGivesMinusOne) {
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_TRUE(recording::lines().empty());
}

TEST_F(OrbTimerTest, RemainingTimeIsRoundedUpToMilliseconds) {
  Script script{{-1}};
  mTimer.addTimedCallback(10, play, &script);
  EXPECT_EQ(10, mTimer.timeUntilNextEvent());
  mTimer.advanceNanos(1);
  EXPECT_EQ(10, mTimer.timeUntilNextEvent());
  mTimer.advanceNanos(999999);
  EXPECT_EQ(9, mTimer.timeUntilNextEvent());
}

TEST_F(OrbTimerTest, EventOneNanosecondAheadGivesOneMillisecond) {
  Script script{{-1}};
  mTimer.addTimedCallback(1, play, &script);
  mTimer.advanceNanos(999999);
  EXPECT_EQ(1, mTimer.timeUntilNextEvent());
  EXPECT_EQ(1, mTimer.processEvents());
  EXPECT_EQ(0u, script.calls);
}

TEST_F(OrbTimerTest, EventExactlyDueGivesZeroAndRuns) {
  Script script{{-1}};
  mTimer.addTimedCallback(1, play, &script);
  mTimer.advanceMillis(1);
  EXPECT_EQ(0, mTimer.timeUntilNextEvent());
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(1u, script.calls);
}

TEST_F(OrbTimerTest, OverdueEventGivesZero) {
  Script script{{-1}};
  mTimer.addTimedCallback(1, play, &script);
  mTimer.advanceMillis(5000);
  EXPECT_EQ(0, mTimer.timeUntilNextEvent());
}

TEST_F(OrbTimerTest, DelayOfZeroOrLessIsDueAtOnce) {
  for (const long delay : {0L, -1L, -999L, -1000L, -123456L}) {
    Script script{{-1}};
    ASSERT_GT(mTimer.addTimedCallback(delay, play, &script), 0);
    EXPECT_EQ(0, mTimer.timeUntilNextEvent()) << delay;
    EXPECT_EQ(-1, mTimer.processEvents());
    EXPECT_EQ(1u, script.calls) << delay;
  }
}

TEST_F(OrbTimerTest, WaitBeyondIntIsCutToIntMax) {
  Script script{{-1}};
  // 2^32 ms would wrap to 0 and fire at once, 2^31 ms to a negative number and wait forever.
  for (const long delay : {LONG_MAX, 4294967296L, 2147483648L, 2147483647L}) {
    const int id = mTimer.addTimedCallback(delay, play, &script);
    EXPECT_EQ(INT_MAX, mTimer.timeUntilNextEvent()) << delay;
    mTimer.removeTimedCallback(id);
  }
  mTimer.addTimedCallback(2147483646L, play, &script);
  EXPECT_EQ(2147483646, mTimer.timeUntilNextEvent());
}

TEST_F(OrbTimerTest, NullCallbackIsRefused) {
  EXPECT_EQ(-1, mTimer.addTimedCallback(1, nullptr, nullptr));
  expectOneLine(5, "addTimedCallback failed; cannot have NULL callback function");
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
  EXPECT_EQ(1, mTimer.getNextTimerId());
}

TEST_F(OrbTimerTest, ClockFailureWhileAddingQueuesNothing) {
  Script script{{-1}};
  mTimer.failClockAfter(0);
  EXPECT_EQ(-1, mTimer.addTimedCallback(1, play, &script));
  expectOneLine(6, "addTimedCallback failed; " + kClockError);
  mTimer.failClockAfter(-1);
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
  EXPECT_EQ(1, mTimer.getNextTimerId());
}

TEST_F(OrbTimerTest, ClockFailureWhileLookingAheadGivesMinusOne) {
  Script script{{-1}};
  mTimer.addTimedCallback(0, play, &script);
  mTimer.failClockAfter(0);
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
  expectOneLine(6, "timeUntilNextCallback failed; " + kClockError);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(0u, script.calls);
  mTimer.failClockAfter(-1);
  EXPECT_EQ(0, mTimer.timeUntilNextEvent());
}

TEST_F(OrbTimerTest, ClockFailureWhileReschedulingLosesTheEvent) {
  Script script{{0}};
  mTimer.addTimedCallback(0, play, &script);
  mTimer.failClockAfter(1);  // enough to find that the event is due
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ(1u, script.calls);
  expectOneLine(6, "timeUntilNextCallback failed; " + kClockError);
  mTimer.failClockAfter(-1);
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
}

struct Order {
  std::vector<int>& out;
  int value;
};

int appendValue(void* data) {
  const Order& order = *static_cast<Order*>(data);
  order.out.push_back(order.value);
  return -1;
}

TEST_F(OrbTimerTest, EventsRunInTheOrderTheyAreDue) {
  std::vector<int> ran;
  std::vector<Order> orders;
  for (const int delay : {50, 10, 70, 30, 20, 60, 40}) orders.push_back({ran, delay});
  for (Order& order : orders) mTimer.addTimedCallback(order.value, appendValue, &order);
  mTimer.advanceMillis(70);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ((std::vector<int>{10, 20, 30, 40, 50, 60, 70}), ran);
}

TEST_F(OrbTimerTest, EventsCenturiesAwayRunInTheOrderTheyAreDue) {
  constexpr long kCentury = 100L * 365 * 24 * 3600 * 1000;
  std::vector<int> ran;
  std::vector<Order> orders;
  for (const int centuries : {5, 2, -3, 4, -4, 1, -1, 3}) orders.push_back({ran, centuries});
  for (Order& order : orders) {
    mTimer.addTimedCallback(order.value * kCentury, appendValue, &order);
  }
  mTimer.advanceMillis(5 * kCentury);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ((std::vector<int>{-4, -3, -1, 1, 2, 3, 4, 5}), ran);
}

TEST_F(OrbTimerTest, RemovalLeavesTheOthersInOrder) {
  std::vector<int> ran;
  std::vector<Order> orders;
  std::vector<int> ids;
  for (const int delay : {50, 10, 70, 30, 20, 60, 40}) orders.push_back({ran, delay});
  for (Order& order : orders) {
    ids.push_back(mTimer.addTimedCallback(order.value, appendValue, &order));
  }
  mTimer.removeTimedCallback(ids[1]);  // due first
  mTimer.removeTimedCallback(ids[3]);
  EXPECT_EQ(20, mTimer.timeUntilNextEvent());
  mTimer.advanceMillis(70);
  EXPECT_EQ(-1, mTimer.processEvents());
  EXPECT_EQ((std::vector<int>{20, 40, 50, 60, 70}), ran);
}

TEST_F(OrbTimerTest, RemovalTakesEveryEventWithTheId) {
  Script script{{-1}};
  mTimer.addTimedCallback(1, play, &script);
  mTimer.setLastId(0);  // ids have wrapped around
  EXPECT_EQ(1, mTimer.addTimedCallback(2, play, &script));
  mTimer.removeTimedCallback(1);
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
}

TEST_F(OrbTimerTest, RemovalOfAnUnknownIdChangesNothing) {
  Script script{{-1}};
  const int id = mTimer.addTimedCallback(7, play, &script);
  mTimer.removeTimedCallback(id + 1);
  EXPECT_EQ(7, mTimer.timeUntilNextEvent());
  EXPECT_TRUE(recording::lines().empty());
}

TEST_F(OrbTimerTest, IdsCountFromOneAndStartOverBeforeIntMax) {
  Script script{{-1}};
  EXPECT_EQ(1, mTimer.addTimedCallback(1, play, &script));
  EXPECT_EQ(2, mTimer.addTimedCallback(1, play, &script));
  mTimer.setLastId(0x7FFFFFFD);
  EXPECT_EQ(0x7FFFFFFE, mTimer.getNextTimerId());
  EXPECT_EQ(1, mTimer.getNextTimerId());
  EXPECT_EQ(2, mTimer.getNextTimerId());
}

TEST_F(OrbTimerTest, DiscardedEventsAreNotCalled) {
  Script script{{-1}};
  {
    ManualTimer timer;
    timer.addTimedCallback(0, play, &script);
  }
  EXPECT_EQ(0u, script.calls);
}

TEST_F(OrbTimerTest, MonitorHearsOfANewFirstEventOnly) {
  Monitor monitor;
  ManualTimer timer(&monitor);
  Script script{{-1}};
  timer.addTimedCallback(100, play, &script);
  EXPECT_EQ(1, monitor.changes);
  timer.addTimedCallback(200, play, &script);
  EXPECT_EQ(1, monitor.changes);
  timer.addTimedCallback(50, play, &script);
  EXPECT_EQ(2, monitor.changes);
}

TEST_F(OrbTimerTest, MonitorTellsEventsApartByAllButTheId) {
  Monitor monitor;
  ManualTimer timer(&monitor);
  Script script{{-1}};
  Script other{{-1}};
  timer.addTimedCallback(100, play, &script);
  timer.addTimedCallback(100, play,
                         &script);  // equal to the first event, so it counts as the first
  EXPECT_EQ(2, monitor.changes);
  timer.addTimedCallback(100, play, &other);
  EXPECT_EQ(2, monitor.changes);
}

TEST_F(OrbTimerTest, MonitorIsNotToldOfRescheduledEvents) {
  Monitor monitor;
  ManualTimer timer(&monitor);
  Script script{{0}};
  timer.addTimedCallback(100, play, &script);
  timer.advanceMillis(100);
  EXPECT_EQ(100, timer.processEvents());
  EXPECT_EQ(1, monitor.changes);
}

TEST_F(OrbTimerTest, LogShowsQueueSizeAndWait) {
  Script script{{-1}};
  mTimer.addTimedCallback(300, play, &script);
  mTimer.addTimedCallback(40, play, &script);
  mTimer.log();
  EXPECT_EQ((std::vector<std::string>{"OrbTimer *******************************************",
                                      "    items queued: 2", "    next item in: 40ms"}),
            recording::texts());
  for (const recording::Line& line : recording::lines()) {
    EXPECT_EQ(3, line.priority);
    EXPECT_FALSE(line.hasTag);
  }
}

TEST(OrbTimerClock, RealClockMakesAnEventDue) {
  OrbTimer timer(nullptr);
  Script script{{-1}};
  timer.addTimedCallback(1, play, &script);
  while (timer.processEvents() != -1) {
  }
  EXPECT_EQ(1u, script.calls);
}

}  // namespace
