// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Thread.h"

#include <android/log.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "RecordingPlatform.h"

namespace {

class ThreadTest : public testing::Test {
 protected:
  ThreadTest() { recording::clear(); }

  // Runs @p body to its end; what was logged meanwhile is of this one thread.
  template <class Body>
  static void run(const char* name, const Body& body) {
    std::thread thread;
    ASSERT_TRUE(startThread(thread, name, body));
    thread.join();
  }
  static void expectOneError(const std::string& text) {
    ASSERT_EQ(1u, recording::lines().size());
    const recording::Line line = recording::lines()[0];
    EXPECT_EQ(ANDROID_LOG_ERROR, line.priority);
    EXPECT_FALSE(line.hasTag);
    EXPECT_EQ(text, line.text);
  }
};

TEST_F(ThreadTest, NameIsCutOffAfterFifteenCharacters) {
  char name[32] = "";
  run("orb-a-name-of-22-chars", [&] { pthread_getname_np(pthread_self(), name, sizeof name); });
  EXPECT_STREQ("orb-a-name-of-2", name);
}

TEST_F(ThreadTest, OnlySignalsOfItsOwnFaultsAreLetThrough) {
  sigset_t inside;
  run("orb-test", [&] { pthread_sigmask(SIG_BLOCK, nullptr, &inside); });
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
    EXPECT_EQ(0, sigismember(&inside, signal)) << signal;
  }
  for (const int signal : {SIGPIPE, SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1, SIGUSR2}) {
    EXPECT_EQ(1, sigismember(&inside, signal)) << signal;
  }
}

TEST_F(ThreadTest, StarterKeepsItsOwnSignalMask) {
  sigset_t before, after;
  pthread_sigmask(SIG_BLOCK, nullptr, &before);
  run("orb-test", [] {});
  pthread_sigmask(SIG_BLOCK, nullptr, &after);
  for (int signal = 1; signal < SIGRTMIN; ++signal) {
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
  }
}

TEST_F(ThreadTest, ExceptionEndsTheThreadWithALine) {
  run("orb-test", [] { throw std::runtime_error("a reason"); });
  expectOneError("thread orb-test ended: a reason");
}

TEST_F(ThreadTest, WhateverElseIsThrownEndsTheThreadWithALineToo) {
  run("orb-test", [] { throw 1; });
  expectOneError("thread orb-test ended by an exception");
}

TEST_F(ThreadTest, WhatTheBodyHoldsGoesWithTheThread) {
  const auto held = std::make_shared<int>();
  run("orb-test", [copy = held] { EXPECT_GT(copy.use_count(), 1); });
  EXPECT_EQ(1, held.use_count());
}

}  // namespace
