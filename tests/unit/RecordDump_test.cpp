// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A record dump alone, without a log.
#include "RecordDump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "RecordDumpPeer.h"
#include "RecordingPlatform.h"
#include "Semaphore.h"

namespace {

std::mutex completedMutex;  // guards the following variables
std::vector<std::string> completedDumps;
std::string awaited;
Semaphore* awaitedCame = nullptr;

void noteCompleted(const char* request, int milliseconds) {
  const std::lock_guard<std::mutex> lock(completedMutex);
  EXPECT_GE(milliseconds, 0);
  completedDumps.push_back(request);
  if (awaitedCame != nullptr && request == awaited) awaitedCame->increase();
}

class RecordDumpTest : public testing::Test {
 protected:
  RecordDumpTest() {
    recording::clear();
    recording::setDiagListening(true);
  }
  ~RecordDumpTest() override {
    recording::setDiagListening(false);
    const std::lock_guard<std::mutex> lock(completedMutex);
    completedDumps.clear();
    awaitedCame = nullptr;
  }

  void add(const std::string& text) {
    LogRecord record;
    record.stamp(6);
    dump.queueRecord(record, text);
  }
  bool comes(const std::string& request) {
    Semaphore came;
    {
      const std::lock_guard<std::mutex> lock(completedMutex);
      awaited = request;
      awaitedCame = &came;
    }
    const bool done = came.decreaseFor(std::chrono::seconds(60));
    const std::lock_guard<std::mutex> lock(completedMutex);
    awaitedCame = nullptr;
    return done;
  }
  static std::vector<std::string> completed() {
    const std::lock_guard<std::mutex> lock(completedMutex);
    return completedDumps;
  }

  RecordDump dump{noteCompleted};
};

TEST_F(RecordDumpTest, WritesWhatWaitsInOrderAndTellsWhatItWasFor) {
  add("one");
  add("two");
  EXPECT_EQ(2u, dump.queuedRecords());
  dump.dump(RecordDump::CRASH_DETECTED);
  EXPECT_EQ(0u, dump.queuedRecords());
  ASSERT_EQ(2u, recording::packets().size());
  const std::vector<recording::Packet> packets = recording::packets();
  for (size_t i = 0; i < 2; ++i) {
    const std::string text(packets[i].bytes.begin() + 4, packets[i].bytes.end());
    EXPECT_NE(std::string::npos, text.find(i == 0 ? " E ORB : one" : " E ORB : two"));
  }
  EXPECT_EQ(std::vector<std::string>{"CRASH_DETECTED"}, completed());
}

TEST_F(RecordDumpTest, AsksForADumpFromTheThreeThousandthRecordOn) {
  for (int i = 0; i < 2999; ++i) add("text");
  dump.requestDumpWhenFull();
  EXPECT_EQ(0u, dump.queuedRequests());
  add("text");
  dump.requestDumpWhenFull();
  dump.requestDumpWhenFull();
  ASSERT_EQ(1u, dump.queuedRequests());
  EXPECT_EQ(RecordDump::BUFFER_IS_FULL, RecordDumpPeer::takeRequest(dump));
}

TEST_F(RecordDumpTest, ThreadsServeRequestsAndTheTimerUntilTheyAreStopped) {
  dump.setTimerInterval(std::chrono::milliseconds(5));
  dump.start();
  EXPECT_TRUE(dump.hasDumper());
  EXPECT_TRUE(dump.hasTimer());
  EXPECT_TRUE(comes("LOGGING_TIMER_EXPIRED"));
  dump.addDumpRequest(RecordDump::USER_COMMAND);
  dump.stop(/*dumperWaits=*/false, /*exiting=*/false);
  EXPECT_FALSE(dump.hasDumper());
  EXPECT_FALSE(dump.hasTimer());
  const std::vector<std::string> all = completed();
  EXPECT_EQ(1, std::count(all.begin(), all.end(), "USER_COMMAND"));
  EXPECT_EQ(0u, RecordDumpPeer::stopRequests(dump));
}

TEST_F(RecordDumpTest, StopWithoutThreadsLeavesNothingBehind) {
  dump.stop(false, false);
  EXPECT_EQ(0u, dump.queuedRequests());
  EXPECT_EQ(0u, RecordDumpPeer::stopRequests(dump));
}

}  // namespace
