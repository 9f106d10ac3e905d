// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Starting a thread without memory.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

#include "FailingNew.h"
#include "Thread.h"

namespace {

TEST(ThreadMemory, LackOfMemoryIsLackOfAThread) {
  const auto held = std::make_shared<int>(0);
  std::array<char, 256> large{};  // too large for the function object itself
  large[0] = 1;
  bool started = true;
  Thread thread;
  const size_t failed = memory::failEach(
      memory::Caller::Anybody,
      [&] {
        started = startThread(thread, "orb-a-name-of-22-chars", ThreadWork::Library,
                              [held, large] { *held += large[0]; });
      },
      [&](size_t nth) {
        EXPECT_FALSE(started) << nth;
        EXPECT_FALSE(thread.joinable()) << nth;
        EXPECT_EQ(1, held.use_count()) << nth;
      });
  std::printf("%zu allocations failed\n", failed);
  EXPECT_GE(failed, 2u);
  ASSERT_TRUE(started);
  thread.join();
  EXPECT_EQ(1, *held);
}

TEST(ThreadMemory, WithoutAnyMemoryThereIsNoThread) {
  Thread thread;
  bool started = true;
  {
    const memory::NoMemory none;
    started = startThread(thread, "orb-test", ThreadWork::Library, [] {});
  }
  EXPECT_FALSE(started);
  EXPECT_FALSE(thread.joinable());
}

}  // namespace
