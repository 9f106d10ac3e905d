// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A disable on one thread during an enable on another thread.
#include <atomic>
#include <cstdio>
#include <thread>

#include "AllServicesFixture.h"

namespace allservices {
namespace {

std::atomic<int> errors{0};
void countErrors(status_e status) { errors += status == STATUS_INTERNAL_ERROR ? 1 : 0; }

// Either it comes first and is refused, or it disables; nothing fails.
TEST_F(AllServicesTest, DisableThatMeetsAnEnableReportsNoFailure) {
  constexpr int kTimes = 1000;
  std::atomic<bool> done{false};
  std::atomic<int> disabled{0};
  std::thread other([&] {
    while (!done) disabled += orb_lle_disable();
  });
  int enabled = 0;
  for (int i = 0; i < kTimes; ++i) {
    enabled += orb_lle_enable(countErrors);
    disabled += orb_lle_disable();
  }
  done = true;
  other.join();
  printf("%d enabled, %d disabled, %d errors\n", enabled, disabled.load(), errors.load());
  EXPECT_EQ(kTimes, enabled);
  EXPECT_EQ(kTimes, disabled);
  EXPECT_EQ(0, errors);
}

}  // namespace
}  // namespace allservices
