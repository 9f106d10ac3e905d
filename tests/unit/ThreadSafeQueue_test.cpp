// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ThreadSafeQueue.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace {

TEST(ThreadSafeQueueTest, ItemsComeOutInTheOrderTheyWentIn) {
  ThreadSafeQueue<int> queue;
  for (int i = 0; i < 5; ++i) queue.push(i);
  EXPECT_EQ(5u, queue.size());
  for (int i = 0; i < 5; ++i) {
    int item = -1;
    queue.waitAndPop(item);
    EXPECT_EQ(i, item);
  }
  EXPECT_EQ(0u, queue.size());
}

TEST(ThreadSafeQueueTest, TryPopOfAnEmptyQueueLeavesTheItemAlone) {
  ThreadSafeQueue<int> queue;
  int item = 7;
  EXPECT_FALSE(queue.tryPop(item));
  EXPECT_EQ(7, item);
  queue.push(1);
  EXPECT_TRUE(queue.tryPop(item));
  EXPECT_EQ(1, item);
}

TEST(ThreadSafeQueueTest, ItemPushedOnceWaitsOnceAtATime) {
  ThreadSafeQueue<int> queue;
  for (int i = 0; i < 3; ++i) {
    queue.pushOnce(1);
    queue.pushOnce(2);
  }
  EXPECT_EQ(2u, queue.size());
  int item = 0;
  EXPECT_TRUE(queue.tryPop(item));
  EXPECT_EQ(1, item);
  queue.pushOnce(1);
  EXPECT_EQ(2u, queue.size()) << "it did not wait any more";
}

TEST(ThreadSafeQueueTest, ItemsNeedOnlyBeMovable) {
  ThreadSafeQueue<std::unique_ptr<int>> queue;
  queue.push(std::make_unique<int>(3));
  std::unique_ptr<int> item;
  queue.waitAndPop(item);
  EXPECT_EQ(3, *item);
}

TEST(ThreadSafeQueueTest, PopWaitsForAPush) {
  ThreadSafeQueue<int> queue;
  int item = 0;
  std::thread waiter([&] { queue.waitAndPop(item); });
  queue.push(5);
  waiter.join();
  EXPECT_EQ(5, item);
}

TEST(ThreadSafeQueueTest, EveryItemOfManyWritersIsTakenOnce) {
  constexpr int kWriters = 3, kReaders = 3, kItems = 3000;
  ThreadSafeQueue<int> queue;
  std::vector<std::vector<int>> taken(kReaders);
  std::vector<std::thread> threads;
  for (int w = 0; w < kWriters; ++w) {
    threads.emplace_back([&queue, w] {
      for (int i = w; i < kItems; i += kWriters) queue.push(i);
    });
  }
  for (std::vector<int>& mine : taken) {
    threads.emplace_back([&queue, &mine] {
      for (int i = 0; i < kItems / kReaders; ++i) {
        int item = -1;
        queue.waitAndPop(item);
        mine.push_back(item);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<int> times(kItems, 0);
  for (const std::vector<int>& mine : taken)
    for (const int item : mine) ++times[static_cast<size_t>(item)];
  EXPECT_EQ(std::vector<int>(kItems, 1), times);
}

TEST(ThreadSafeQueueTest, EndedQueueGivesWhatItHasAndThenNothing) {
  ThreadSafeQueue<int> queue;
  queue.push(1);
  queue.push(2);
  queue.end();
  int item = 0;
  EXPECT_TRUE(queue.waitAndPop(item));
  EXPECT_EQ(1, item);
  EXPECT_TRUE(queue.waitAndPop(item));
  EXPECT_EQ(2, item);
  EXPECT_FALSE(queue.waitAndPop(item));
  EXPECT_EQ(2, item);
  EXPECT_FALSE(queue.waitAndPop(item)) << "it stays ended";
}

TEST(ThreadSafeQueueTest, EndWakesEverybodyWhoWaits) {
  ThreadSafeQueue<int> queue;
  std::vector<std::thread> waiters;
  std::vector<int> results(3, 1);
  for (int& result : results) {
    waiters.emplace_back([&queue, &result] {
      int item = -1;
      result = queue.waitAndPop(item) ? 1 : 0;
    });
  }
  queue.end();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(std::vector<int>(3, 0), results);
}

TEST(ThreadSafeQueueTest, QueueThatBeginsAgainWaitsAgain) {
  ThreadSafeQueue<int> queue;
  queue.end();
  queue.begin();
  int item = 0;
  bool taken = false;
  std::thread waiter([&] { taken = queue.waitAndPop(item); });
  queue.push(5);
  waiter.join();
  EXPECT_TRUE(taken);
  EXPECT_EQ(5, item);
}

}  // namespace
