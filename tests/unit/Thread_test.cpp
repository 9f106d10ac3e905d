// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Thread.h"

#include <android/log.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "RecordingPlatform.h"

namespace {

class ThreadTest : public testing::Test {
 protected:
  ThreadTest() { recording::clear(); }

  // Runs @p body to its end; the lines logged meanwhile are from this thread only.
  template <class Body>
  static void run(const char* name, const Body& body) {
    Thread thread;
    ASSERT_TRUE(startThread(thread, name, ThreadWork::Library, body));
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

size_t stackHere() {
  pthread_attr_t attributes;
  size_t size = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  pthread_attr_getstacksize(&attributes, &size);
  pthread_attr_destroy(&attributes);
  return size;
}

TEST_F(ThreadTest, StackIsLargeEnoughForItsWork) {
  for (const ThreadWork work : {ThreadWork::Library, ThreadWork::Callbacks}) {
    size_t size = 0;
    Thread thread;
    ASSERT_TRUE(startThread(thread, "orb-test", work, [&size] { size = stackHere(); }));
    thread.join();
    EXPECT_GE(size, orb::utils::stackFor(work));
  }
}

// A program can be linked or set up for larger stacks.
TEST_F(ThreadTest, CallbacksHaveNoLessThanThePlatformGives) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, size_t{3} << 20);
  ASSERT_EQ(0, pthread_setattr_default_np(&attributes));
  pthread_attr_destroy(&attributes);
  size_t size = 0;
  Thread thread;
  ASSERT_TRUE(
      startThread(thread, "orb-test", ThreadWork::Callbacks, [&size] { size = stackHere(); }));
  thread.join();
  EXPECT_GE(size, size_t{3} << 20);
}

TEST_F(ThreadTest, ExceptionEndsTheThreadWithALine) {
  run("orb-test", [] { throw std::runtime_error("a reason"); });
  expectOneError("thread orb-test ended: a reason");
}

TEST_F(ThreadTest, WhateverElseIsThrownEndsTheThreadWithALineToo) {
  run("orb-test", [] { throw 1; });
  expectOneError("thread orb-test ended by an exception");
}

TEST_F(ThreadTest, ThreadIsOnlyHereInItsBody) {
  Thread thread;
  bool before = thread.isHere();
  std::promise<void> assigned;
  bool inside = false;
  ASSERT_TRUE(startThread(thread, "orb-test", ThreadWork::Library, [&] {
    assigned.get_future().wait();
    inside = thread.isHere();
  }));
  before = before || thread.isHere();
  assigned.set_value();
  thread.join();
  EXPECT_FALSE(before);
  EXPECT_TRUE(inside);
  EXPECT_FALSE(thread.joinable());
}

TEST_F(ThreadTest, HandleMayMoveOn) {
  Thread first;
  bool ran = false;
  ASSERT_TRUE(startThread(first, "orb-test", ThreadWork::Library, [&ran] { ran = true; }));
  Thread second(std::move(first));
  Thread third;
  third = std::move(second);
  EXPECT_FALSE(first.joinable());
  EXPECT_FALSE(second.joinable());
  third.join();
  EXPECT_TRUE(ran);
}

TEST_F(ThreadTest, WhatTheBodyHoldsGoesWithTheThread) {
  const auto held = std::make_shared<int>();
  run("orb-test", [copy = held] { EXPECT_GT(copy.use_count(), 1); });
  EXPECT_EQ(1, held.use_count());
}

}  // namespace
