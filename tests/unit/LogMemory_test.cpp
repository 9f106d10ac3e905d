// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The log without memory: it never makes its caller fail, and everything that is possible still
// works.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "DiagCmdProcessor.h"
#include "FailingNew.h"
#include "LogTestPeer.h"

namespace {

using memory::Caller;

const char kUserDump[] =
    "|ORB|Log::dumper:142 Dump completed, request type: USER_COMMAND, elapsed time = ";

class LogMemoryTest : public LogFixture {
 protected:
  void expectWorks(size_t nth) {
    recording::clear();
    log.addLogRecord(4, "T", "File.cpp", "f", 1, "text %zu", nth);
    EXPECT_TRUE(recording::has("|T|File::f:1 text " + std::to_string(nth)));
    recording::setDiagListening(true);
    log.addLogRecord(4, "T", "File.cpp", "f", 1, "to all %zu", nth);
    EXPECT_EQ(1u, recording::packets().size()) << nth;
    recording::setDiagListening(false);
  }
  static void expectCommandIsServed(size_t nth) {
    recording::clear();
    EXPECT_EQ(0, recording::callDiagCommand({1, 2, 3})) << nth;
    EXPECT_TRUE(waitForUserDump()) << nth;
  }
  static bool waitForUserDump() {
    return recording::waitFor(
        [](const recording::Line& line) { return line.text.rfind(kUserDump, 0) == 0; });
  }
};

// Objects that are made once per process can fail only once, so each allocation needs a separate
// process.
TEST_F(LogMemoryTest, FirstStartOfAProcessLeavesALogThatWorksWhateverFails) {
  constexpr int kAllThere = 0, kSomethingFailed = 2;
  size_t nth = 0;
  for (int end = kSomethingFailed; end == kSomethingFailed; ++nth) {
    const pid_t child = fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
      alarm(30);
      bool failed = false;
      {
        const memory::FailingNew failing(nth);
        log.init("orb");
        failed = failing.failed();
      }
      expectWorks(nth);
      if (LogTestPeer::recordDump().hasDumper()) {
        recording::clear();
        log.addDumpRequest(Log::USER_COMMAND);
        EXPECT_TRUE(waitForUserDump()) << nth;
      }
      log.release();
      log.init("orb");
      expectCommandIsServed(nth);
      log.release();
      _exit(HasFailure() ? 1 : failed ? kSomethingFailed : kAllThere);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status)) << "allocation " << nth << ", signal " << WTERMSIG(status);
    end = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    EXPECT_NE(1, end) << "allocation " << nth;
  }
  std::printf("%zu allocations failed\n", nth - 1);
  EXPECT_GT(nth, 1u);
}

TEST_F(LogMemoryTest, LaterStartLeavesALogThatWorksWhateverFails) {
  size_t withoutDumper = 0;
  size_t withoutTimer = 0;
  const size_t failed = memory::failEach(
      Caller::Anybody, [this] { log.init("orb"); },
      [&](size_t nth) {
        EXPECT_TRUE(LogTestPeer::initialised()) << nth;
        EXPECT_TRUE(recording::hasEndingWith("printVersion:155 version ORB-20250524-d9c57ad5"));
        if (!LogTestPeer::recordDump().hasDumper()) ++withoutDumper;
        if (!LogTestPeer::recordDump().hasTimer()) ++withoutTimer;
        expectWorks(nth);
        LogTestPeer::reset();
      });
  EXPECT_GT(failed, 0u);
  EXPECT_TRUE(LogTestPeer::recordDump().hasDumper());
  EXPECT_TRUE(LogTestPeer::recordDump().hasTimer());
  expectWorks(failed);
  std::printf("%zu allocations failed, %zu of them without a dumper, %zu without a timer\n", failed,
              withoutDumper, withoutTimer);
}

// Threads are created last, so a failure before does not affect them.
TEST_F(LogMemoryTest, EarlyStepThatFailsLeavesTheThreads) {
  size_t earliestWithout = SIZE_MAX;
  const size_t failed = memory::failEach(
      Caller::Anybody, [this] { log.init("orb"); },
      [&](size_t nth) {
        const bool complete =
            LogTestPeer::recordDump().hasDumper() && LogTestPeer::recordDump().hasTimer();
        if (complete) {
          recording::clear();
          log.addDumpRequest(Log::USER_COMMAND);
          EXPECT_TRUE(waitForUserDump()) << nth;
          EXPECT_EQ(SIZE_MAX, earliestWithout) << nth << " is not the last step";
        } else if (earliestWithout == SIZE_MAX) {
          earliestWithout = nth;
        }
        LogTestPeer::reset();
      });
  std::printf("%zu allocations failed, the threads are made from number %zu on\n", failed,
              earliestWithout);
  EXPECT_GT(earliestWithout, 0u);
  EXPECT_LT(earliestWithout, failed);
}

TEST_F(LogMemoryTest, TagThatCannotBeKeptLeavesTheFormer) {
  log.init("former");
  {
    const memory::NoMemory none;
    log.init("a tag that is new to this process");
  }
  recording::clear();
  log.addLogRecord(4, "T", "File.cpp", "f", 1, "text");
  ASSERT_EQ(1u, recording::lines().size());
  EXPECT_EQ("former", recording::lines()[0].tag);
}

TEST_F(LogMemoryTest, WritersNeedNoMemory) {
  log.init("orb");
  recording::setDiagListening(true);
  recording::clear();
  {
    const memory::NoMemory none;
    log.addLogRecord(4, "T", "File.cpp", "f", 1, "one");
    log.printToAdb(4, "T", "File.cpp", "f", 1, "two");
    log.logModuleDebug("three");
    LogTestPeer::setDeferred(true);
    log.addLogRecord(4, "T", "File.cpp", "f", 1, "four");
  }
  EXPECT_EQ((std::vector<std::string>{"|T|File::f:1 one", "|T|File::f:1 two", "| orbLog | three",
                                      "|T|File::f:1 four"}),
            recording::texts());
  EXPECT_EQ(1u, recording::packets().size()) << "that of the first; others had to be queued";
}

TEST_F(LogMemoryTest, DiagnosticCommandDoesNotThrowAndStillRequestsItsDump) {
  log.init("orb");
  unsigned char request[] = {1, 2, 3};
  const size_t failed = memory::failEach(
      Caller::Anybody,
      [&] {
        recording::clear();
        EXPECT_NO_THROW(DiagCmdProcessor::diagCmdHandler(request, sizeof(request)));
      },
      [](size_t nth) {
        EXPECT_TRUE(recording::has("Orb-Diag: retVal: 0, size: 0")) << nth;
        EXPECT_TRUE(waitForUserDump()) << nth;
      });
  std::printf("%zu allocations failed\n", failed);
  EXPECT_GT(failed, 0u);
  EXPECT_TRUE(recording::has("Orb-Diag: retVal: 0, size: 64"));
  EXPECT_TRUE(waitForUserDump());
}

// The dumper takes requests as long as the queue has space, so it cannot miss the last one.
TEST_F(LogMemoryTest, EndDoesNotWaitForADumperThatCouldNotBeTold) {
  log.init("orb");
  ASSERT_TRUE(LogTestPeer::recordDump().hasDumper());
  {
    const memory::NoMemory none;
    for (int i = 0; i < 1000; ++i) log.addDumpRequest(Log::CRASH_DETECTED);
    log.release();
  }
  EXPECT_FALSE(LogTestPeer::recordDump().hasDumper());
  EXPECT_FALSE(LogTestPeer::recordDump().hasTimer());
  log.init("orb");
  recording::clear();
  log.addDumpRequest(Log::USER_COMMAND);
  EXPECT_TRUE(waitForUserDump()) << "the next dumper works";
}

}  // namespace
