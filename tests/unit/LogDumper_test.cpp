// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <sys/wait.h>
#include <unistd.h>

#include <limits>
#include <map>
#include <memory>
#include <thread>

#include "LogTestPeer.h"
#include "QuietThreads.h"
#include "RecordDumpPeer.h"

namespace {

using std::chrono::milliseconds;

// When the library is loaded, before any test.
const milliseconds kShippedInterval = LogTestPeer::recordDump().getTimerInterval();

bool isCompletion(const recording::Line& line, const std::string& request) {
  const std::string head =
      "|ORB|Log::dumper:142 Dump completed, request type: " + request + ", elapsed time = ";
  return line.priority == 3 && line.text.compare(0, head.size(), head) == 0 &&
         endsWith(line.text, " ms");
}

bool waitForDump(const std::string& request) {
  return recording::waitFor(
      [&request](const recording::Line& line) { return isCompletion(line, request); });
}

size_t completedDumps(const std::string& request) {
  size_t count = 0;
  for (const recording::Line& line : recording::lines()) count += isCompletion(line, request);
  return count;
}

class LogDumperTest : public LogFixture {};

TEST_F(LogDumperTest, DumpEmptiesTheQueueInOrder) {
  recording::setDiagListening(true);
  for (int i = 0; i < 100; ++i)
    queueRecord(LogTestPeer::recordDump(), "record " + std::to_string(i));
  log.addDumpRequest(Log::USER_COMMAND);
  log.init("app");
  ASSERT_TRUE(waitForDump("USER_COMMAND"));
  std::vector<std::string> dumped;
  for (const recording::Packet& packet : recording::packets()) {
    const std::string text = packetText(packet);
    const size_t at = text.find(" : record ");
    if (at != std::string::npos) dumped.push_back(text.substr(at));
  }
  ASSERT_EQ(100u, dumped.size());
  for (size_t i = 0; i < 100; ++i) EXPECT_EQ(" : record " + std::to_string(i), dumped[i]);
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogDumperTest, EveryRequestIsCompletedUnderItsName) {
  log.init("app");
  log.addDumpRequest(Log::BUFFER_IS_FULL);
  log.addDumpRequest(Log::LOGGING_TIMER_EXPIRED);
  log.addDumpRequest(Log::CRASH_DETECTED);
  log.addDumpRequest(static_cast<Log::DumpRequestType>(7));
  log.addDumpRequest(Log::USER_COMMAND);
  log.addDumpRequest(Log::USER_COMMAND);
  log.release();
  for (const char* name : {"BUFFER_IS_FULL", "LOGGING_TIMER_EXPIRED", "CRASH_DETECTED", "UNKNOWN"})
    EXPECT_EQ(1u, completedDumps(name)) << name;
  EXPECT_EQ(2u, completedDumps("USER_COMMAND"));
}

TEST_F(LogDumperTest, QueueThatFillsUpDuringADumpIsDumpedOnceMore) {
  recording::setDiagListening(true);  // the dumper's lines have records, so they take the mutex
  log.init("app");
  {
    const LockGuard lock(LogTestPeer::mutex());  // the dumper cannot report that it is done
    log.addDumpRequest(Log::BUFFER_IS_FULL);
    quiet::awaitThreads();
    EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRequests());
    for (int i = 0; i < 3000; ++i) queueRecord(LogTestPeer::recordDump(), "text");
    for (int i = 0; i < 10; ++i) log.printToAdb(3, "ORB", "File.cpp", "f", 1, "text");
    EXPECT_EQ(1u, LogTestPeer::recordDump().queuedRequests());
  }
  log.release();  // after the earlier requests
  EXPECT_EQ(2u, completedDumps("BUFFER_IS_FULL"));
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogDumperTest, RecordWithoutAValidTimeIsLeftOut) {
  recording::setDiagListening(true);
  LogRecord record;
  record.time.tv_sec = std::numeric_limits<time_t>::max();
  LogTestPeer::recordDump().queueRecord(record, "never");
  queueRecord(LogTestPeer::recordDump(), "after");
  log.init("app");
  log.addDumpRequest(Log::USER_COMMAND);
  ASSERT_TRUE(waitForDump("USER_COMMAND"));
  EXPECT_TRUE(recording::hasEndingWith(" Unable to obtain valid time"));
  size_t after = 0;
  for (const recording::Packet& packet : recording::packets()) {
    EXPECT_FALSE(endsWith(packetText(packet), "never"));
    after += endsWith(packetText(packet), " : after");
  }
  EXPECT_EQ(1u, after);
}

// Creating it costs more than keeping it.
TEST_F(LogDumperTest, TextOfARecordIsMadeForAListenerOnly) {
  LogRecord record;
  record.time.tv_sec = std::numeric_limits<time_t>::max();
  LogTestPeer::recordDump().queueRecord(record, "never");
  log.init("app");
  log.addDumpRequest(Log::USER_COMMAND);
  ASSERT_TRUE(waitForDump("USER_COMMAND"));
  EXPECT_FALSE(recording::hasEndingWith(" Unable to obtain valid time"));
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogDumperTest, TimerRequestsADumpOfAnEmptyQueueToo) {
  LogTestPeer::recordDump().setTimerInterval(milliseconds(5));
  log.init("app");
  EXPECT_TRUE(waitForDump("LOGGING_TIMER_EXPIRED"));
  recording::clear();
  EXPECT_TRUE(waitForDump("LOGGING_TIMER_EXPIRED"));
}

TEST_F(LogDumperTest, ReleaseEndsBothThreadsWithoutWaitingForTheTimer) {
  log.init("app");
  log.release();
  EXPECT_FALSE(LogTestPeer::initialised());
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRequests());
  EXPECT_EQ(0u, RecordDumpPeer::stopRequests(LogTestPeer::recordDump()));
  EXPECT_EQ(0u, completedDumps("LOGGING_TIMER_EXPIRED"));
}

TEST_F(LogDumperTest, RecordsStillQueuedAtShutdownAreNotWritten) {
  recording::setDiagListening(true);
  recording::setProperty(kLoggingProperty, "1");
  log.init("app");
  log.release();
  EXPECT_TRUE(recording::packets().empty());
  EXPECT_EQ(2u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogDumperTest, InitAfterReleaseStartsFreshThreads) {
  log.init("app");
  log.release();
  recording::clear();
  LogTestPeer::recordDump().setTimerInterval(milliseconds(5));
  log.init("app");
  EXPECT_TRUE(waitForDump("LOGGING_TIMER_EXPIRED"));
  log.addDumpRequest(Log::USER_COMMAND);
  EXPECT_TRUE(waitForDump("USER_COMMAND"));
}

TEST_F(LogDumperTest, ReleaseWithoutThreadsLeavesNothingForTheNextInit) {
  log.release();
  log.release();
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRequests());
  EXPECT_EQ(0u, RecordDumpPeer::stopRequests(LogTestPeer::recordDump()));
  log.init("app");
  log.addDumpRequest(Log::USER_COMMAND);
  EXPECT_TRUE(waitForDump("USER_COMMAND"));
}

TEST_F(LogDumperTest, StopRequestsAddUpUnlessLatched) {
  RecordDumpPeer::requestTimerStop(LogTestPeer::recordDump());
  RecordDumpPeer::requestTimerStop(LogTestPeer::recordDump());
  EXPECT_EQ(2u, RecordDumpPeer::stopRequests(LogTestPeer::recordDump()));
  LogTestPeer::recordDump().latchStopRequests();
  RecordDumpPeer::requestTimerStop(LogTestPeer::recordDump());
  EXPECT_EQ(1u, RecordDumpPeer::stopRequests(LogTestPeer::recordDump()));
}

// A hundred thousand records of ten threads. Dumps are requested by the threads, the full queue and
// the timer.
TEST_F(LogDumperTest, EachRecordOfManyWritersReachesTheChannelOnceAndInOrder) {
  constexpr int kThreads = 10, kLines = 10000;
  recording::setProperty(kLoggingProperty, "1");
  LogTestPeer::recordDump().setTimerInterval(milliseconds(3));
  log.init("app");
  recording::setDiagListening(true);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, this] {
      for (int i = 0; i < kLines; ++i) {
        log.addLogRecord(3, "W", "File.cpp", "f", t, "%d", i);
        if (i % 100 == 0) log.addDumpRequest(Log::USER_COMMAND);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  log.addDumpRequest(Log::CRASH_DETECTED);
  log.release();  // after the earlier requests
  EXPECT_GT(completedDumps("USER_COMMAND"), 0u);
  std::map<std::string, int> next;  // per writer: the number that must come next
  for (const recording::Packet& packet : recording::packets()) {
    const std::string text = packetText(packet);
    const size_t at = text.find("|W|File::f:");
    if (at == std::string::npos) continue;
    const size_t blank = text.find(' ', at);
    ASSERT_EQ(std::to_string(next[text.substr(at, blank - at)]++), text.substr(blank + 1));
  }
  ASSERT_EQ(size_t{kThreads}, next.size());
  for (const auto& writer : next) EXPECT_EQ(kLines, writer.second) << writer.first;
}

TEST_F(LogDumperTest, TimerIsSetToThirtySeconds) {
  EXPECT_EQ(milliseconds(30000), kShippedInterval);
}

TEST_F(LogDumperTest, WakeUpWithoutAStopRequestNeitherEndsTheTimerNorRequestsADump) {
  log.init("app");
  for (int i = 0; i < 100; ++i) RecordDumpPeer::wakeTimer(LogTestPeer::recordDump());
  log.release();
  EXPECT_EQ(0u, completedDumps("LOGGING_TIMER_EXPIRED"));
  LogTestPeer::recordDump().setTimerInterval(milliseconds(5));
  log.init("app");
  RecordDumpPeer::wakeTimer(LogTestPeer::recordDump());
  EXPECT_TRUE(waitForDump("LOGGING_TIMER_EXPIRED"));
}

TEST_F(LogDumperTest, LatchedStopRequestEndsTheTimer) {
  LogTestPeer::recordDump().latchStopRequests();
  log.init("app");
  log.release();
  EXPECT_EQ(0u, RecordDumpPeer::stopRequests(LogTestPeer::recordDump()));
}

TEST_F(LogDumperTest, ForkedChildEndsWithoutWaitingForThreadsItDoesNotHave) {
  log.init("app");
  quiet::awaitThreads();
  const pid_t child = fork();
  if (child == 0) {
    alarm(10);
    LogTestPeer::log().release();
    _exit(0);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

}  // namespace
