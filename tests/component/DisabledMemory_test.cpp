// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The memory of a disabled service while another service keeps the SDK client.
#include <gtest/gtest.h>
#include <malloc.h>
#include <orb/sdl.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "RecordingPlatform.h"
#include "orbsim/Daemon.h"

namespace {

std::atomic<int64_t> allocated{0};

// Each block ends with its size, or with 0 for lines that the recording platform keeps: at its end,
// because memcheck takes a block for lost if there are only pointers behind its beginning.
char* noteIn(void* memory) {
  return static_cast<char*>(memory) + malloc_usable_size(memory) - sizeof(size_t);
}

}  // namespace

void* operator new(size_t size) {
  void* const memory = malloc(size + sizeof size);
  if (memory == nullptr) throw std::bad_alloc();
  const size_t counted = recording::isWorking() ? 0 : size;
  std::memcpy(noteIn(memory), &counted, sizeof counted);
  allocated += static_cast<int64_t>(counted);
  return memory;
}
void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  size_t counted = 0;
  std::memcpy(&counted, noteIn(memory), sizeof counted);
  allocated -= static_cast<int64_t>(counted);
  free(memory);
}
void operator delete(void* memory, size_t) noexcept { operator delete(memory); }

namespace {

void onStatus(status_e) {}
void onCriteria(LceReportingCriteriaStatus) {}

TEST(DisabledMemory, UnansweredCriteriaAreGivenBack) {
  constexpr size_t kRequests = 20000;
  constexpr size_t kPiece = 200;
  orbsim::Daemon daemon;
  daemon.setAutoAnswer(false);
  ASSERT_TRUE(daemon.start()) << daemon.error();
  ASSERT_EQ(1, orb_lle_enable(onStatus));
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(daemon.waitForFrames(2));
  daemon.clearRecords();
  const int64_t before = allocated;
  const LceReportingCriteria criteria = {};
  // In small frames, so that the daemon keeps little memory for them.
  for (size_t i = 0; i < kRequests; i += kPiece) {
    for (size_t n = 0; n < kPiece; ++n)
      ASSERT_LT(0, lceSetReportingCriteria(&criteria, onCriteria));
    ASSERT_TRUE(daemon.waitForFrames(kPiece));
    daemon.clearRecords();
  }
  const int64_t pending = allocated - before;
  ASSERT_EQ(1, orb_lce_disable());
  ASSERT_TRUE(daemon.waitForSessionsClosed(1));
  daemon.clearRecords();
  EXPECT_GT(pending, static_cast<int64_t>(kRequests * sizeof(uint32_t))) << "they do wait";
  EXPECT_LT(allocated - before, pending / 10);
  EXPECT_EQ(1, orb_lle_disable());
  daemon.stop();
}

}  // namespace
