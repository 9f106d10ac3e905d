// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Disable with a daemon that misbehaves: it returns in time, and the next enable works.
#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>

#include "Application.h"
#include "RecordingPlatform.h"
#include "orbsim/Daemon.h"

using namespace application;
using std::chrono::milliseconds;

namespace {

// The limit is 500 ms; there is a large margin for sanitizers and a loaded machine.
constexpr milliseconds kDisableBound(2000);

class AbsentDaemon : public testing::Test {
 protected:
  void TearDown() override {
    orb_lce_disable();
    mDaemon.stop();
    state().clear();
    recording::clear();
  }
  static void disableInTime() {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(1, orb_lce_disable());
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_LT(std::chrono::duration_cast<milliseconds>(took).count(), kDisableBound.count());
  }
  // The daemon is normal again, and the application can enable again.
  void expectNextEnableWorks() {
    mDaemon.stop();
    mDaemon.setHandshake({});
    mDaemon.setReading(true);
    mDaemon.setAccepting(true);
    mDaemon.setAutoAnswer(true);
    ASSERT_TRUE(mDaemon.start());
    state().clear();
    ASSERT_EQ(1, orb_lce_enable(onStatus));
    EXPECT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  }
  orbsim::Daemon mDaemon;
};

TEST_F(AbsentDaemon, NoSocketFile) {
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(recording::waitFor([](const recording::Line& line) {
    return line.text.find("Connect ret: -1") != std::string::npos;
  }));
  disableInTime();
  EXPECT_EQ(0u, state().count());
  expectNextEnableWorks();
}

TEST_F(AbsentDaemon, AThousandRequestsWithoutADaemonDoNotHoldDisableUp) {
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(0, lceGetLastEstimationReport(onReport));
  disableInTime();
  expectNextEnableWorks();
}

TEST_F(AbsentDaemon, NobodyAccepts) {
  mDaemon.setAccepting(false);
  ASSERT_TRUE(mDaemon.start());
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(recording::waitFor([](const recording::Line& line) {
    return line.text.find("Connect ret: 0") != std::string::npos;
  }));
  disableInTime();
  expectNextEnableWorks();
}

TEST_F(AbsentDaemon, SilentInTheHandshake) {
  mDaemon.setHandshake([](int fd, uint32_t) {
    pollfd hangUp = {fd, POLLRDHUP, 0};
    poll(&hangUp, 1, -1);  // sends nothing until the client disconnects
    return false;
  });
  ASSERT_TRUE(mDaemon.start());
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(mDaemon.waitForConnections(1));
  disableInTime();
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(1));
  EXPECT_EQ(0u, state().count());
  expectNextEnableWorks();
}

TEST_F(AbsentDaemon, NotReading) {
  ASSERT_TRUE(mDaemon.start());
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  mDaemon.setReading(false);
  for (int i = 0; i < 20000; ++i) ASSERT_EQ(0, lceGetLastEstimationReport(onReport));
  disableInTime();
  expectNextEnableWorks();
}

TEST_F(AbsentDaemon, SilentAfterAReconnectWhenDisabledInsideTheCallback) {
  ASSERT_TRUE(mDaemon.start());
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  mDaemon.setHandshake([](int fd, uint32_t) {
    pollfd hangUp = {fd, POLLRDHUP, 0};
    poll(&hangUp, 1, -1);
    return false;
  });
  state().inNext(Event::Status, [] {
    EXPECT_EQ(0, lceGetLastEstimationReport(onReport));
    EXPECT_EQ(1, orb_lce_disable());
  });
  mDaemon.closeAll();
  ASSERT_TRUE(state().waitDone());
  expectNextEnableWorks();
}

}  // namespace
