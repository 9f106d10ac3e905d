// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Enable and disable with a running daemon: the promises about the end of a service.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Application.h"
#include "ProcessState.h"
#include "Pulse.h"
#include "RecordingPlatform.h"
#include "orbsim/Daemon.h"

using namespace application;

namespace {

class Lifecycle : public testing::Test {
 protected:
  Lifecycle() : mDaemon(options()) {}
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(1);
    options.record = true;
    return options;
  }
  void SetUp() override { ASSERT_TRUE(mDaemon.start()) << mDaemon.error(); }
  void TearDown() override {
    orb_lce_disable();
    mDaemon.stop();
    state().clear();
    recording::clear();
  }
  void restartDaemon() {
    mDaemon.stop();
    mDaemon.clearRecords();
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
  }
  void enable() {
    ASSERT_EQ(1, orb_lce_enable(onStatus));
    ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  }
  void startReports() {
    ASSERT_EQ(0, lceRegEstimationReports(onReport));
    ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
    ASSERT_TRUE(state().waitForAny(Event::Report, 3));
  }
  bool disableMessageArrived(size_t sessions) {
    return mDaemon.waitForFrame([&](const orbsim::Frame& frame) {
      const orbsim::Blob message{7, 0, 0, 0, 0x1A, 0x02, 0x0A, 0x00};
      return frame.payload == message && frame.header.sessionId == sessions;
    });
  }
  orbsim::Daemon mDaemon;
};

TEST_F(Lifecycle, DisableReachesTheDaemonBeforeTheSocketIsClosed) {
  enable();
  EXPECT_EQ(1, orb_lce_disable());
  EXPECT_TRUE(disableMessageArrived(1));
  EXPECT_TRUE(mDaemon.waitForSessionsClosed(1));
  EXPECT_TRUE(recording::has("dtor"));
  EXPECT_TRUE(recording::hasEndingWith("~Lce called"));
}

// Each line without its log point number and without socket numbers.
std::vector<std::string> linesOfTheEnd() {
  constexpr const char* kLines[] = {
      "cleanup closing socket Fd ", "ipcReceiver Cleaning up session ",
      "ipcReceiver Notifying session ", "handleSessionEnd handleSessionEnd for session ",
      "deregisterSocket deregisterSocket: "};
  std::vector<std::string> found;
  for (const std::string& text : recording::texts()) {
    const size_t colon = text.find(':', text.find("::") + 2);
    const size_t blank = text.find(' ');
    if (colon == std::string::npos || blank == std::string::npos || colon > blank) continue;
    const std::string line = text.substr(0, colon) + text.substr(blank);
    for (const char* wanted : kLines) {
      const size_t at = line.find(wanted);
      if (at == std::string::npos) continue;
      const size_t socket = line.find(wanted == kLines[0] ? " Fd" : ", socket");
      found.push_back(line.substr(at, socket == std::string::npos ? socket : socket - at));
    }
  }
  return found;
}

TEST_F(Lifecycle, EveryDisableSaysWhoseConnectionHasEnded) {
  for (int round = 1; round <= 20; ++round) {
    state().clear();
    enable();
    startReports();
    recording::clear();
    ASSERT_EQ(1, orb_lce_disable());
    // The receiver has 50 ms while disable waits; the lines are the same whatever time it needs.
    ASSERT_TRUE(recording::waitFor([](const recording::Line& line) {
      return line.text.find("deregisterSocket: EXIT") != std::string::npos;
    }));
    const std::string session = std::to_string(round);
    EXPECT_EQ(
        (std::vector<std::string>{
            "cleanup closing socket", "ipcReceiver Cleaning up session " + session,
            "ipcReceiver Notifying session " + session,
            "handleSessionEnd handleSessionEnd for session " + session,
            "deregisterSocket deregisterSocket: ENTER", "deregisterSocket deregisterSocket: EXIT"}),
        linesOfTheEnd());
  }
}

TEST_F(Lifecycle, RequestsBeforeTheConnectionStandsArriveInOrderBeforeTheDisableMessage) {
  // Disable lets the connection come about, but does not wait for long.
  EXPECT_TRUE(goesWell([this] {
    restartDaemon();
    EXPECT_EQ(1, orb_lce_enable(onStatus));
    const LceReportingCriteria criteria = {};
    for (int i = 0; i < 10; ++i) EXPECT_GT(lceSetReportingCriteria(&criteria, onCriteria), 0);
    EXPECT_EQ(1, orb_lce_disable());
    return disableMessageArrived(1) && mDaemon.frames().size() == 12;
  }));
  EXPECT_EQ(12u, mDaemon.frames().size());
}

TEST_F(Lifecycle, NoCallbackRunsAfterDisableHasReturned) {
  for (int round = 0; round < 20; ++round) {
    state().clear();
    enable();
    startReports();
    ASSERT_EQ(1, orb_lce_disable());
    const size_t before = state().count();
    ASSERT_TRUE(mDaemon.waitForSessionsClosed(static_cast<size_t>(round) + 1));
    EXPECT_EQ(before, state().count());
  }
}

TEST_F(Lifecycle, DisableInsideAReportCallbackReturnsAndANewEnableWorks) {
  enable();
  std::atomic<int> result{-1};
  state().inNext(Event::Report, [&] { result = orb_lce_disable(); });
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
  ASSERT_TRUE(state().waitDone());
  EXPECT_EQ(1, result);
  ASSERT_TRUE(mDaemon.waitForSessionsClosed(1));
  EXPECT_TRUE(disableMessageArrived(1));
  state().clear();
  enable();
  startReports();
}

TEST_F(Lifecycle, DisableAndEnableInsideAReportCallbackWork) {
  enable();
  state().inNext(Event::Report, [] {
    EXPECT_EQ(1, orb_lce_disable());
    state().clear();
    EXPECT_EQ(1, orb_lce_enable(onStatus));
  });
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
  ASSERT_TRUE(state().waitDone());
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  ASSERT_TRUE(mDaemon.waitForSessionsClosed(1));
  state().clear();
  startReports();
}

TEST_F(Lifecycle, DisableInsideAServiceDownCallbackReturnsAndANewEnableWorks) {
  enable();
  std::atomic<int> result{-1};
  state().inNext(Event::Status, [&] { result = orb_lce_disable(); });
  mDaemon.closeAll();
  ASSERT_TRUE(state().waitDone());
  EXPECT_EQ(1, result);
  state().clear();
  enable();
}

TEST_F(Lifecycle, DisableInsideTheCallbackOfAFailedConnectionReturnsAndANewEnableWorks) {
  std::atomic<int> refused{0};
  mDaemon.setHandshake([&](int, uint32_t) {
    ++refused;
    return false;
  });
  std::atomic<int> result{-1};
  state().inNext(Event::Status, [&] { result = orb_lce_disable(); });
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(state().waitDone());
  EXPECT_EQ(1, result);
  EXPECT_EQ(1, refused);
  mDaemon.setHandshake({});
  state().clear();
  enable();
}

TEST_F(Lifecycle, EnableAndDisable200TimesGivesEverythingBack) {
  enable();
  ASSERT_EQ(1, orb_lce_disable());
  ASSERT_TRUE(mDaemon.waitForSessionsClosed(1));
  size_t fds = 0;
  size_t tasks = 0;
  for (size_t round = 2; round <= 201; ++round) {
    state().clear();
    enable();
    ASSERT_EQ(1, orb_lce_disable());
    ASSERT_TRUE(mDaemon.waitForSessionsClosed(round));
    if (round == 2) {
      fds = processstate::descriptors();
      tasks = processstate::threads();
    }
  }
  EXPECT_TRUE(comesTo([&] { return processstate::descriptors() <= fds; }))
      << fds << " -> " << processstate::descriptors();
  EXPECT_TRUE(comesTo([&] { return processstate::threads() <= tasks; }))
      << tasks << " -> " << processstate::threads();
}

TEST_F(Lifecycle, EightThreadsMayEnableDisableAndAskAtWill) {
  std::vector<std::thread> applications;
  for (unsigned seed = 0; seed < 8; ++seed) {
    applications.emplace_back([seed] {
      LceReportingCriteria criteria = {};
      unsigned dice = seed * 2654435761u + 1;
      for (int i = 0; i < 200; ++i) {
        dice = dice * 1664525u + 1013904223u;
        switch ((dice >> 16) % 6) {
          case 0:
            orb_lce_enable(onStatus);
            break;
          case 1:
            createLceClient(onStatusV2);
            break;
          case 2:
            orb_lce_disable();
            break;
          case 3:
            lceSetReportingCriteria(&criteria, onCriteria);
            break;
          case 4:
            lceGetLastEstimationReport(onReport);
            break;
          default:
            destroySdfClient();
            break;
        }
      }
    });
  }
  for (std::thread& thread : applications) thread.join();
  orb_lce_disable();
  state().clear();
  enable();
}

TEST_F(Lifecycle, ARestartedDaemonIsFoundAgainByTheNextRequest) {
  enable();
  mDaemon.stop();
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SERVICE_DOWN));
  ASSERT_TRUE(mDaemon.start());
  ASSERT_EQ(0, lceGetLastEstimationReport(onReport));
  EXPECT_TRUE(state().waitForAny(Event::Report, 1));
}

}  // namespace
