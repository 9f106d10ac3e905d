// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A GoogleTest fixture in which each test has its own daemon:
//
//   class MyApplication : public orbsim::testkit::DaemonTest {};
//   TEST_F(MyApplication, SlowsDownWithTheLink) {
//     Application application;
//     ASSERT_TRUE(daemon().waitForRequest(orbsim::testkit::Service::kLce, "start"));
//     daemon().send(orbsim::testkit::Capacity{2000});
//     ...
//   }
//
// A test that plays a scenario fails for each expectation that was not met:
//
//   TEST_F(MyApplication, ReconnectsInTime) {
//     ASSERT_NO_FATAL_FAILURE(
//         play(R"({"timeline": [{"at": 1, "vanish": 1}], "expect": [{"reconnects": {}}]})"));
//     Application application;
//     expectAsPlayed();
//   }
//
// If the environment variable ORBSIM_LOG is set, the daemon's log goes to standard error.
#ifndef ORBSIM_GTEST_H
#define ORBSIM_GTEST_H

#include <gtest/gtest.h>
#include <orbsim/testkit.h>

#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <string>

namespace orbsim::testkit {

inline void PrintTo(const Request& request, std::ostream* stream) { *stream << request.text(); }

// Owns the daemon, which runs from SetUp() to TearDown(). Used on the test's thread.
class DaemonTest : public ::testing::Test {
 protected:
  explicit DaemonTest(Settings settings = {}) : mDaemon(withLog(std::move(settings))) {}

  void SetUp() override { ASSERT_TRUE(mDaemon.start()) << mDaemon.error(); }
  void TearDown() override { mDaemon.stop(); }

  TestDaemon& daemon() { return mDaemon; }

  // Call it before the application connects: restarts the daemon with this scenario. A wrong
  // scenario is a failure of the test, but only ASSERT_NO_FATAL_FAILURE ends the test there;
  // otherwise it continues with the old daemon.
  void play(const std::string& text) { restartIf(mDaemon.useScenario(text)); }
  void playFile(const std::string& file) { restartIf(mDaemon.useScenarioFile(file)); }

  // Waits for the end of the scenario. Each expectation that was not met is a failure of the test.
  // If play() failed, it does not wait.
  void expectAsPlayed(Milliseconds timeout = patience()) {
    ASSERT_TRUE(mPlays) << "no scenario is played";
    EXPECT_TRUE(mDaemon.waitUntilDecided(timeout)) << "the scenario has not ended";
    mDaemon.stop();
    for (const std::string& failure : mDaemon.failures()) ADD_FAILURE() << failure;
  }

 private:
  static Settings withLog(Settings settings) {
    if (!settings.log && std::getenv("ORBSIM_LOG") != nullptr) {
      settings.log = [](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); };
    }
    return settings;
  }
  void restartIf(bool used) {
    mPlays = false;
    ASSERT_TRUE(used) << mDaemon.error();
    mDaemon.stop();
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    mPlays = true;
  }

  TestDaemon mDaemon;
  bool mPlays = true;  // false: play() failed
};

}  // namespace orbsim::testkit

#endif  // ORBSIM_GTEST_H
