// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "WorkerLife.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr std::chrono::milliseconds kNotAtAll(0);
constexpr std::chrono::seconds kLong(30);

TEST(WorkerLife, HasNotEndedBeforeItBegan) {
  WorkerLife life;
  EXPECT_FALSE(life.awaitEnd(kNotAtAll));
}

TEST(WorkerLife, HasNotEndedWhileItRuns) {
  WorkerLife life;
  life.begin();
  life.awaitBegin();
  EXPECT_FALSE(life.awaitEnd(kNotAtAll));
}

TEST(WorkerLife, EndStaysVisibleToEveryWaiter) {
  WorkerLife life;
  life.begin();
  life.end();
  EXPECT_TRUE(life.awaitEnd(kNotAtAll));
  EXPECT_TRUE(life.awaitEnd(kNotAtAll));
}

TEST(WorkerLife, BeginningIsOverOnceItHasEnded) {
  WorkerLife life;
  life.begin();
  life.end();
  life.awaitBegin();
}

TEST(WorkerLife, WaitersOnOtherThreadsAreWoken) {
  WorkerLife life;
  bool ended = false;
  std::thread waiter([&] {
    life.awaitBegin();
    ended = life.awaitEnd(kLong);
  });
  life.begin();
  life.end();
  waiter.join();
  EXPECT_TRUE(ended);
}

}  // namespace
