// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Removals from any position of the queue, compared with a simple list.
#include <memory>
#include <random>

#include "OrbTimerFixture.h"

namespace {

using orbtimer::ManualTimer;

constexpr int kEvents = 100;
constexpr int kLongest =
    3000;  // milliseconds: several seconds, and several events at the same time

struct Event {
  int id;
  long delay;
  std::vector<long>* ran;
};

int noteDelay(void* data) {
  const Event& event = *static_cast<Event*>(data);
  event.ran->push_back(event.delay);
  return -1;
}

class OrbTimerRemovalTest : public ::testing::Test {
 protected:
  void add(long delay) {
    mEvents.push_back(std::make_unique<Event>(Event{0, delay, &mRan}));
    mEvents.back()->id = mTimer.addTimedCallback(delay, noteDelay, mEvents.back().get());
  }
  void remove(int id) {
    mTimer.removeTimedCallback(id);
    mEvents.erase(std::remove_if(mEvents.begin(), mEvents.end(),
                                 [id](const auto& event) { return event->id == id; }),
                  mEvents.end());
  }
  void expectTheRestInOrder() {
    std::vector<long> left;
    for (const auto& event : mEvents) left.push_back(event->delay);
    std::sort(left.begin(), left.end());
    mTimer.advanceMillis(kLongest);
    EXPECT_EQ(-1, mTimer.processEvents());
    EXPECT_EQ(left, mRan);
  }

  ManualTimer mTimer;
  std::vector<std::unique_ptr<Event>> mEvents;
  std::vector<long> mRan;
};

TEST_F(OrbTimerRemovalTest, EachEventCanBeTakenFromAnyQueue) {
  std::mt19937 random(1);
  for (int round = 0; round < 50; ++round) {
    SCOPED_TRACE(round);
    mEvents.clear();
    mRan.clear();
    for (int i = 0; i < kEvents; ++i) add(static_cast<long>(random() % kLongest));
    for (int i = 0; i < kEvents / 2; ++i) remove(mEvents[random() % mEvents.size()]->id);
    expectTheRestInOrder();
  }
}

TEST_F(OrbTimerRemovalTest, AllEventsWithAnIdGoFromWhereverTheyAre) {
  std::mt19937 random(2);
  for (int round = 0; round < 50; ++round) {
    SCOPED_TRACE(round);
    mEvents.clear();
    mRan.clear();
    for (int i = 0; i < kEvents; ++i) {
      mTimer.setLastId(i % 7);  // ids are reused again and again
      add(static_cast<long>(random() % kLongest));
    }
    remove(3);
    remove(7);
    expectTheRestInOrder();
  }
}

TEST_F(OrbTimerRemovalTest, LastEventLeavesAnEmptyQueue) {
  add(5);
  remove(mEvents[0]->id);
  EXPECT_EQ(-1, mTimer.timeUntilNextEvent());
  expectTheRestInOrder();
}

// Events on whose way to the top others were removed, and half of all at once.
TEST_F(OrbTimerRemovalTest, WhatIsLeftOfManyRunsInOrder) {
  std::mt19937 random(3);
  for (const size_t left : {99u, 60u, 50u, 49u, 10u, 1u, 0u}) {
    SCOPED_TRACE(left);
    mEvents.clear();
    mRan.clear();
    for (int i = 0; i < kEvents; ++i) add(static_cast<long>(random() % kLongest));
    while (mEvents.size() > left) {
      remove(mEvents[random() % mEvents.size()]->id);
      const auto first =
          std::min_element(mEvents.begin(), mEvents.end(),
                           [](const auto& a, const auto& b) { return a->delay < b->delay; });
      ASSERT_EQ(mEvents.empty() ? -1 : (*first)->delay, mTimer.timeUntilNextEvent());
    }
    expectTheRestInOrder();
  }
}

TEST_F(OrbTimerRemovalTest, RemovedEventDoesNotComeBackWithItsId) {
  for (const long delay : {100, 200, 300, 400}) add(delay);
  const int id = mEvents[2]->id;
  remove(id);
  mTimer.setLastId(id - 1);
  add(500);
  ASSERT_EQ(id, mEvents.back()->id);
  expectTheRestInOrder();
}

// Ids of a few values, so that many wait at the same time, some of them removed before.
TEST_F(OrbTimerRemovalTest, IdsThatComeAgainTakeNobodyElseAlong) {
  std::mt19937 random(4);
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    mEvents.clear();
    mRan.clear();
    for (int step = 0; step < kEvents; ++step) {
      if (random() % 10 == 0) mTimer.setLastId(static_cast<int>(random() % 20));
      if (random() % 3 == 0) {
        remove(static_cast<int>(random() % 30));
      } else {
        add(static_cast<long>(random() % kLongest));
      }
    }
    expectTheRestInOrder();
  }
}

TEST_F(OrbTimerRemovalTest, RemovedEventsAreNotCounted) {
  for (const long delay : {100, 200, 300}) add(delay);
  remove(mEvents[1]->id);
  recording::clear();
  mTimer.log();
  EXPECT_EQ("    items queued: 2", recording::lines()[1].text);
}

TEST(OrbTimerOrderTest, EventsCompareLikeTheirTimes) {
  const std::vector<timespec> times = {{-1, 0}, {0, -5}, {0, 0},        {0, 7},
                                       {1, -5}, {1, 0},  {9, 999999999}};
  for (const timespec& a : times) {
    for (const timespec& b : times) {
      const OrbTimer::TimedEvent first{1, a, nullptr, nullptr, 0};
      const OrbTimer::TimedEvent second{2, b, nullptr, nullptr, 0};
      EXPECT_EQ(OrbTimer::cmpTimeSpec(a, b) == 1, OrbTimer::TimedEventCmp()(first, second));
    }
  }
}

}  // namespace
