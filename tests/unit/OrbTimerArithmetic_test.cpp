// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <gtest/gtest.h>
#include <time.h>

#include "OrbTimer.h"

namespace {

// The source of the tick count: the virtual counter, or without it the boot-time clock.
uint64_t counter() {
#if defined(__aarch64__)
  uint64_t ticks = 0;
  __asm__ volatile("isb\n\tmrs %0, cntvct_el0" : "=r"(ticks) : : "memory");
  return ticks;
#else
  timespec t{};
  clock_gettime(CLOCK_BOOTTIME, &t);
  return static_cast<uint64_t>(t.tv_sec) * 1000000000u + static_cast<uint64_t>(t.tv_nsec);
#endif
}

void expectTime(time_t seconds, long nanos, const timespec& t) {
  EXPECT_EQ(seconds, t.tv_sec);
  EXPECT_EQ(nanos, t.tv_nsec);
}

TEST(OrbTimerArithmetic, DelayIsAddedWithOneCarry) {
  timespec t{5, 999000000};
  OrbTimer::addDelayToTimeval(1, t);
  expectTime(6, 0, t);
  OrbTimer::addDelayToTimeval(2999, t);
  expectTime(8, 999000000, t);
  OrbTimer::addDelayToTimeval(1001, t);
  expectTime(10, 0, t);
}

TEST(OrbTimerArithmetic, NegativeDelayIsNotNormalised) {
  timespec t{5, 1000000};
  OrbTimer::addDelayToTimeval(-1500, t);
  expectTime(4, -499000000, t);
}

TEST(OrbTimerArithmetic, SumCarriesAtABillion) {
  timespec r{};
  EXPECT_TRUE(OrbTimer::addTimeSpec({1, 500000000}, {2, 499999999}, r));
  expectTime(3, 999999999, r);
  EXPECT_TRUE(OrbTimer::addTimeSpec({1, 500000000}, {2, 500000000}, r));
  expectTime(4, 0, r);
}

TEST(OrbTimerArithmetic, DifferenceBorrowsBelowZero) {
  timespec r{};
  EXPECT_TRUE(OrbTimer::subTimeSpec({3, 5}, {1, 5}, r));
  expectTime(2, 0, r);
  EXPECT_TRUE(OrbTimer::subTimeSpec({3, 4}, {1, 5}, r));
  expectTime(1, 999999999, r);
  EXPECT_TRUE(OrbTimer::subTimeSpec({1, 4}, {1, 5}, r));
  expectTime(-1, 999999999, r);
}

TEST(OrbTimerArithmetic, ComparisonIsBySecondsThenNanoseconds) {
  EXPECT_EQ(0, OrbTimer::cmpTimeSpec({1, 2}, {1, 2}));
  EXPECT_EQ(-1, OrbTimer::cmpTimeSpec({1, 9}, {2, 0}));
  EXPECT_EQ(1, OrbTimer::cmpTimeSpec({2, 0}, {1, 9}));
  EXPECT_EQ(-1, OrbTimer::cmpTimeSpec({1, 1}, {1, 2}));
  EXPECT_EQ(1, OrbTimer::cmpTimeSpec({1, 2}, {1, 1}));
  EXPECT_EQ(-1, OrbTimer::cmpTimeSpec({-1, 0}, {0, 0}));
  EXPECT_EQ(-1, OrbTimer::cmpTimeSpec({0, -1}, {0, 0}));
}

TEST(OrbTimerArithmetic, HeapOrderPutsTheLaterEventLast) {
  const OrbTimer::TimedEvent early{1, {1, 0}, nullptr, nullptr, 0};
  const OrbTimer::TimedEvent late{2, {1, 1}, nullptr, nullptr, 0};
  EXPECT_TRUE(OrbTimer::TimedEventCmp()(late, early));
  EXPECT_FALSE(OrbTimer::TimedEventCmp()(early, late));
  EXPECT_FALSE(OrbTimer::TimedEventCmp()(early, early));
}

TEST(OrbTimerClock, TickCountIsTheCounterThatTheProcessorHas) {
  const uint64_t before = counter();
  const uint64_t count = OrbTimer::getQTimerCount();
  EXPECT_LE(before, count);
  EXPECT_LE(count, counter());
}

TEST(OrbTimerClock, TickCountNeverGoesBack) {
  const uint64_t first = OrbTimer::getQTimerCount();
  EXPECT_NE(0u, first);
  EXPECT_LE(first, OrbTimer::getQTimerCount());
}

}  // namespace
