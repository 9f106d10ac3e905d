// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Semaphore.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr std::chrono::milliseconds kNow(0);

TEST(Semaphore, StartsAtZero) {
  Semaphore semaphore;
  EXPECT_FALSE(semaphore.decreaseFor(kNow));
}

TEST(Semaphore, CountSaturatesAtOne) {
  Semaphore semaphore;
  semaphore.increase();
  semaphore.increase();
  semaphore.decrease();
  EXPECT_FALSE(semaphore.decreaseFor(kNow));
}

TEST(Semaphore, CountsEveryIncreaseWhenNotSingle) {
  Semaphore semaphore(false);
  semaphore.increase();
  semaphore.increase();
  semaphore.decrease();
  EXPECT_TRUE(semaphore.decreaseFor(kNow));
  EXPECT_FALSE(semaphore.decreaseFor(kNow));
}

TEST(Semaphore, IncreaseAfterDecreaseCountsAgain) {
  Semaphore semaphore;
  for (int round = 0; round < 3; ++round) {
    semaphore.increase();
    EXPECT_TRUE(semaphore.decreaseFor(kNow));
  }
  EXPECT_FALSE(semaphore.decreaseFor(kNow));
}

TEST(Semaphore, DecreaseWaitsForAnIncreaseOfAnotherThread) {
  Semaphore semaphore;
  int value = 0;
  std::thread other([&] {
    value = 1;
    semaphore.increase();
  });
  semaphore.decrease();
  EXPECT_EQ(1, value);
  other.join();
}

TEST(Semaphore, OneIncreaseLetsOneWaiterPass) {
  Semaphore semaphore;
  Semaphore passed(false);
  std::thread first([&] {
    semaphore.decrease();
    passed.increase();
  });
  std::thread second([&] {
    semaphore.decrease();
    passed.increase();
  });
  semaphore.increase();
  passed.decrease();
  EXPECT_FALSE(passed.decreaseFor(kNow));
  semaphore.increase();
  passed.decrease();
  first.join();
  second.join();
}

}  // namespace
