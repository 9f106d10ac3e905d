// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A record dump alone, without a log.
#include "RecordDump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "RecordDumpPeer.h"
#include "Recorder.h"
#include "RecordingPlatform.h"

namespace {

using Completed = Recorder<std::string>;

void noteCompleted(const char* request, int milliseconds) {
  EXPECT_GE(milliseconds, 0);
  Completed::get().add(request);
}

class RecordDumpTest : public testing::Test {
 protected:
  RecordDumpTest() {
    recording::clear();
    recording::setDiagListening(true);
  }
  ~RecordDumpTest() override {
    recording::setDiagListening(false);
    Completed::get().clear();
  }

  void add(const std::string& text) {
    LogRecord record;
    record.stamp(6);
    dump.queueRecord(record, text);
  }
  static bool comes(const std::string& request) {
    return Completed::get().waitForMore(
        [&request](const std::string& completed) { return completed == request; }, 1);
  }
  static std::vector<std::string> completed() { return Completed::get().all(); }

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
