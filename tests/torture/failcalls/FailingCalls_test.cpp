// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Tries a sample of the points; scripts/torture failcalls tries all.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "Campaign.h"
#include "Interposer.h"

namespace failcalls {
namespace {

#ifdef ORB_SLOW_CHECKER
constexpr size_t kServicesSample = 60;
constexpr size_t kLogSample = 30;
#else
constexpr size_t kServicesSample = 300;
constexpr size_t kLogSample = 80;
#endif

void expectAsDocumented(const char* scenario, size_t sample) {
  Settings settings;
  settings.scenario = scenario;
  settings.sample = sample;
  Campaign campaign(settings);
  EXPECT_TRUE(campaign.run());
  EXPECT_GE(campaign.points(), sample / 2);
  EXPECT_EQ(0u, campaign.findings());
}

TEST(FailingCalls, OfTheServicesEndAsDocumented) {
  expectAsDocumented("services", kServicesSample);
}

TEST(FailingCalls, OfTheLogAreNoConcernOfTheApplication) { expectAsDocumented("log", kLogSample); }

TEST(FailingCalls, OfTheProgramItselfAreLeftAlone) {
  static Probe probe;
  arm({Call::Socket, {"EMFILE", Kind::Error, EMFILE}, 1, true}, probe);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const std::string text(100, 'x');
  disarm();
  EXPECT_GE(fd, 0);
  close(fd);
  for (size_t call = 0; call < kCalls; ++call) {
    EXPECT_EQ(0u, probe.reached[call]) << nameOf(static_cast<Call>(call));
  }
}

}  // namespace
}  // namespace failcalls
