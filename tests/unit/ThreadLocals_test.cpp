// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// An application whose threads have very large thread-local variables. Some C libraries put these
// on the stack.
#include <gtest/gtest.h>

#include <cstring>

#include "Thread.h"

namespace {

thread_local char tLarge[size_t{300} * 1024];

__attribute__((noinline)) void useStack() {
  char own[orb::utils::libraryShare(ThreadWork::Library) / 2];
  std::memset(own, 1, sizeof own);
  asm volatile("" : : "r"(own) : "memory");
}

TEST(ThreadLocals, DoNotLessenTheStack) {
  for (const ThreadWork work : {ThreadWork::Library, ThreadWork::Callbacks}) {
    char last = 0;
    Thread thread;
    ASSERT_TRUE(startThread(thread, "orb-test", work, [&last] {
      std::memset(tLarge, 1, sizeof tLarge);
      useStack();
      last = tLarge[sizeof tLarge - 1];
    }));
    thread.join();
    EXPECT_EQ(1, last);
  }
}

}  // namespace
