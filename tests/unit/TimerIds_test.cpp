// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The ids of timers that wait, compared with a set of the C++ library.
#include "TimerIds.h"

#include <gtest/gtest.h>

#include <climits>
#include <iterator>
#include <random>
#include <set>

namespace {

void add(TimerIds& ids, int id) {
  ids.makeRoom(id);
  ids.add(id);
}

TEST(TimerIdsTest, IdIsThereUntilItIsTaken) {
  TimerIds ids;
  EXPECT_FALSE(ids.has(1));
  EXPECT_FALSE(ids.take(1));
  add(ids, 1);
  EXPECT_TRUE(ids.has(1));
  EXPECT_FALSE(ids.has(2));
  EXPECT_TRUE(ids.take(1));
  EXPECT_FALSE(ids.take(1));
}

TEST(TimerIdsTest, EveryIdCanBeThere) {
  TimerIds ids;
  for (const int id : {1, 63, 64, 65, INT_MAX - 64, INT_MAX - 1}) {
    add(ids, id);
    EXPECT_TRUE(ids.has(id)) << id;
  }
  for (const int id : {1, 63, 64, 65, INT_MAX - 64, INT_MAX - 1}) EXPECT_TRUE(ids.take(id)) << id;
}

// Ids one after the other, some of which stay; of a few values; and of all.
TEST(TimerIdsTest, WhatIsThereIsWhatWasAddedAndNotTaken) {
  std::mt19937 random(1);
  for (const uint32_t values : {0u, 300u, 0x7FFFFFFEu}) {
    SCOPED_TRACE(values);
    TimerIds ids;
    std::set<int> wanted;
    for (int step = 1; step <= 20000; ++step) {
      const int id = values == 0 ? step : static_cast<int>(random() % values);
      add(ids, id);
      wanted.insert(id);
      if (random() % 20 == 0) continue;
      const int other = *std::prev(wanted.end(), 1);
      ASSERT_TRUE(ids.take(other)) << other;
      ASSERT_FALSE(ids.has(other)) << other;
      wanted.erase(other);
    }
    for (const int id : wanted) ASSERT_TRUE(ids.take(id)) << id;
    for (const int id : wanted) ASSERT_FALSE(ids.take(id)) << id;
  }
}

}  // namespace
