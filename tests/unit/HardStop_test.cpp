// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "HardStop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "RecordingPlatform.h"

namespace {

constexpr int kStatus = 255;  // the exit status of exit(-1)

// In the child: an exit handler of an application, which prints the lines so far on stderr.
void printLines() {
  for (const recording::Line& line : recording::lines()) {
    std::fprintf(stderr, "%d/%s/%s\n", line.priority, line.hasTag ? "tag" : "no tag",
                 line.text.c_str());
  }
}

bool waitForLine(const char* text) {
  return recording::waitFor([text](const recording::Line& line) { return line.text == text; });
}

// The child is a new process, and must not outlive a test in which it hangs.
class HardStopDeathTest : public testing::Test {
 protected:
  HardStopDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

  static void prepareChild() {
    alarm(30);
    recording::clear();
  }
};

TEST_F(HardStopDeathTest, LeavesItsLineAndEndsTheProcess) {
  EXPECT_EXIT(
      {
        prepareChild();
        atexit(printLines);
        hardStop("a reason, 100% of it");
      },
      testing::ExitedWithCode(kStatus), "^6/no tag/a reason, 100% of it\n$");
}

// The handlers run one after the other on the first thread, even if other threads stop at the same
// time.
TEST_F(HardStopDeathTest, OfTwoThreadsOneEndsTheProcess) {
  static pid_t exiting = 0;
  const auto child = [] {
    prepareChild();
    atexit([] { std::fprintf(stderr, gettid() == exiting ? "once\n" : "twice\n"); });
    atexit([] {
      exiting = gettid();
      if (!waitForLine("first") || !waitForLine("second")) _exit(1);
      printLines();
    });
    std::thread([] { hardStop("second"); }).detach();
    hardStop("first");
  };
  EXPECT_EXIT(child(), testing::ExitedWithCode(kStatus),
              "^(6/no tag/first\n6/no tag/second\n|6/no tag/second\n6/no tag/first\n)once\n$");
}

TEST_F(HardStopDeathTest, StopInsideAnExitHandlerEndsTheProcessAtOnce) {
  const auto child = [] {
    prepareChild();
    atexit([] { std::fprintf(stderr, "not reached\n"); });
    atexit([] { hardStop("second"); });
    hardStop("first");
  };
  EXPECT_EXIT(child(), testing::ExitedWithCode(kStatus), "^$");
}

// A thread that stops during the exit waits for the end of the exit.
TEST_F(HardStopDeathTest, StopOfAThreadThatAnExitHandlerStartsLeavesTheEndToTheFirst) {
  const auto child = [] {
    prepareChild();
    atexit([] {
      std::thread([] { hardStop("second"); }).detach();
      if (!waitForLine("second")) _exit(1);
      printLines();
    });
    hardStop("first");
  };
  EXPECT_EXIT(child(), testing::ExitedWithCode(kStatus), "^6/no tag/first\n6/no tag/second\n$");
}

}  // namespace
