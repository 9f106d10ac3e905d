// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A daemon that stops reading but keeps the connection: a failed send is a loss, which is reported
// once for each connection. Without a request there is no new attempt.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include "Application.h"
#include "RecordingPlatform.h"
#include "orbsim/Daemon.h"
#include "orbsim/Handshake.h"

using namespace application;

namespace {

class HalfClosedConnection : public testing::Test {
 protected:
  void SetUp() override {
    mDaemon.setHandshake([](int fd, uint32_t sessionId) {
      orbsim::HandshakeReply reply;
      orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeInit, sessionId);
      orbsim::readHandshakeReply(fd, reply);
      shutdown(fd, SHUT_RD);
      orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeComplete, sessionId);
      pollfd end = {fd, POLLHUP, 0};
      poll(&end, 1, -1);  // nothing changes until the client disconnects
      return false;
    });
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
  }
  void TearDown() override {
    orb_lce_disable();
    mDaemon.stop();
    state().clear();
    recording::clear();
  }
  static size_t countLines(const std::string& part) {
    size_t count = 0;
    for (const std::string& text : recording::texts()) {
      if (text.find(part) != std::string::npos) ++count;
    }
    return count;
  }
  orbsim::Daemon mDaemon;
};

TEST_F(HalfClosedConnection, EachFailedSendIsToldAsOneLoss) {
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  for (size_t losses = 1; losses <= 20; ++losses) {
    ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SERVICE_DOWN, losses));
    ASSERT_TRUE(mDaemon.waitForConnectionsClosed(losses));
    EXPECT_EQ(losses, mDaemon.totals().connections);
    EXPECT_EQ(losses, countLines("send: failure"));
    ASSERT_EQ(0, lceGetLastEstimationReport(onReport));  // connects again
  }
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SERVICE_DOWN, 21));
  EXPECT_EQ(1, orb_lce_disable());
  size_t downs = 0;
  for (const Event& event : state().all()) {
    downs += event.kind == Event::Status && event.value == STATUS_SERVICE_DOWN ? 1 : 0;
  }
  EXPECT_EQ(21u, downs);
}

TEST_F(HalfClosedConnection, ServiceWorksAgainOnceTheDaemonReads) {
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SERVICE_DOWN));
  mDaemon.setHandshake({});
  ASSERT_EQ(0, lceGetLastEstimationReport(onReport));
  EXPECT_TRUE(state().waitForAny(Event::Report, 1));
}

}  // namespace
