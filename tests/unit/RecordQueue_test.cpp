// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "RecordQueue.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

RecordStamp stampOf(long number) {
  RecordStamp stamp;
  stamp.tid = number;
  stamp.pid = 7;
  stamp.time = {1748091727 + number, 45999};
  stamp.level = 4;
  stamp.dmap = number % 2 != 0;
  return stamp;
}

class RecordQueueTest : public testing::Test {
 protected:
  // The text of the oldest record with its number; "none" if there is none.
  std::string take(long number) {
    RecordStamp stamp;
    std::string_view message;
    if (!queue.tryPop(stamp, mText, message)) return "none";
    const RecordStamp wanted = stampOf(number);
    EXPECT_EQ(wanted.tid, stamp.tid);
    EXPECT_EQ(wanted.pid, stamp.pid);
    EXPECT_EQ(wanted.time.tv_sec, stamp.time.tv_sec);
    EXPECT_EQ(wanted.time.tv_usec, stamp.time.tv_usec);
    EXPECT_EQ(wanted.level, stamp.level);
    EXPECT_EQ(wanted.dmap, stamp.dmap);
    return std::string(message);
  }
  // Records of every length of a line.
  static std::string textOf(long number) {
    return std::to_string(number) + std::string(static_cast<size_t>(number) % 500, 'x');
  }

  RecordQueue queue;

 private:
  RecordQueue::Text mText;
};

TEST_F(RecordQueueTest, RecordsComeOutInTheOrderTheyWentIn) {
  constexpr long kRecords = 5000;
  for (long i = 0; i < kRecords; ++i) queue.push(stampOf(i), textOf(i));
  EXPECT_EQ(static_cast<size_t>(kRecords), queue.size());
  for (long i = 0; i < kRecords; ++i) ASSERT_EQ(textOf(i), take(i));
  EXPECT_EQ(0u, queue.size());
  EXPECT_EQ("none", take(0));
}

TEST_F(RecordQueueTest, RecordsMayBeTakenWhileOthersCome) {
  long taken = 0;
  for (long i = 0; i < 5000; ++i) {
    queue.push(stampOf(i), textOf(i));
    if (i % 3 == 0) continue;
    ASSERT_EQ(textOf(taken), take(taken));
    ++taken;
  }
  while (queue.size() > 0) {
    ASSERT_EQ(textOf(taken), take(taken));
    ++taken;
  }
  EXPECT_EQ(5000, taken);
}

TEST_F(RecordQueueTest, RecordWithoutATextIsOne) {
  queue.push(stampOf(3), "");
  EXPECT_EQ(1u, queue.size());
  EXPECT_EQ("", take(3));
}

TEST_F(RecordQueueTest, NoMoreOfATextIsKeptThanARecordShows) {
  queue.push(stampOf(1), std::string(600, 'x'));
  queue.push(stampOf(2), "next");
  EXPECT_EQ(std::string(512, 'x'), take(1));
  EXPECT_EQ("next", take(2));
}

TEST_F(RecordQueueTest, EveryRecordOfManyWritersIsTakenOnceAndInItsWritersOrder) {
  constexpr long kWriters = 4, kRecords = 2000;
  std::vector<std::thread> writers;
  for (long w = 0; w < kWriters; ++w) {
    writers.emplace_back([this, w] {
      for (long i = 0; i < kRecords; ++i) queue.push(stampOf(w), std::to_string(i));
    });
  }
  std::map<long, long> next;
  RecordStamp stamp;
  RecordQueue::Text text;
  std::string_view message;
  for (long taken = 0; taken < kWriters * kRecords;) {
    if (!queue.tryPop(stamp, text, message)) {
      std::this_thread::yield();
      continue;
    }
    ++taken;
    EXPECT_EQ(std::to_string(next[stamp.tid]++), message);
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(0u, queue.size());
}

}  // namespace
