// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The library ends the process inside an enable, because there are no descriptors for its event
// loop. An exit handler of the application uses the library again.
#include <gtest/gtest.h>
#include <orb/sdl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "QuietThreads.h"

namespace {

constexpr int kStopped = 255;

rlimit formerLimit;

void onStatus(status_e) {}
void onStatusV2(status_v2_e) {}
void onReport(LceEstimationReportStatus, LceEstimationReport) {}

void giveDescriptorsBack() { setrlimit(RLIMIT_NOFILE, &formerLimit); }
void disableSame() {
  if (orb_lce_disable() != 0) _exit(1);
}
void enableSame() {
  if (orb_lce_enable(onStatus) != 0) _exit(1);
}
void createAnother() {
  if (createLleClient(onStatusV2) != -1) _exit(1);
}
void joinAThreadThatAsks() {
  std::thread([] {
    if (lceRegEstimationReports(onReport) != -5) _exit(1);
  }).join();
}

// Returns only if the library does not end the process.
void stopWith(void (*atExit)()) {
  alarm(30);
  orb_lce_enable(onStatus);  // sanitizers check new types through descriptors
  orb_lce_disable();
  quiet::awaitThreads();  // also descriptors that a thread closes in its last step
  std::atexit(atExit);
  std::atexit(giveDescriptorsBack);  // runs before the other one
  getrlimit(RLIMIT_NOFILE, &formerLimit);
  const rlimit none{3, formerLimit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  orb_lce_enable(onStatus);
}

class LifecycleHardStopDeathTest : public testing::TestWithParam<void (*)()> {};

TEST_P(LifecycleHardStopDeathTest, ExitHandlerMayUseTheLibrary) {
  EXPECT_EXIT(stopWith(GetParam()), testing::ExitedWithCode(kStopped), "");
}

INSTANTIATE_TEST_SUITE_P(All, LifecycleHardStopDeathTest,
                         testing::Values(disableSame, enableSame, createAnother,
                                         joinAThreadThatAsks));

}  // namespace
