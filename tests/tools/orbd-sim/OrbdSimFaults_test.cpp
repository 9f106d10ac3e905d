// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The faults of the daemon stand-in, as an application sees them through the library.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Application.h"
#include "RecordingPlatform.h"
#include "orbsim/Daemon.h"
#include "orbsim/Faults.h"

using namespace application;

namespace {

class OrbdSimFaults : public testing::Test {
 protected:
  void TearDown() override {
    orb_lce_disable();
    mDaemon.stop();
    state().clear();
    recording::clear();
  }
  void startWith(const std::string& list) {
    orbsim::Faults faults;
    std::string error;
    ASSERT_TRUE(faults.parse(list, error)) << error;
    faults.prepare(mDaemon);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    faults.apply(mDaemon);
  }
  void enableWith(const std::string& list) {
    ASSERT_NO_FATAL_FAILURE(startWith(list));
    ASSERT_EQ(1, orb_lce_enable(onStatus));
  }
  static bool waitForLine(const std::string& tail) {
    return recording::waitFor(
        [&](const recording::Line& line) { return line.text.find(tail) != std::string::npos; });
  }
  void expectDownThenUp() {
    EXPECT_TRUE(state().waitFor(Event::Status, STATUS_SERVICE_DOWN));
    ASSERT_EQ(1, orb_lce_enable(onStatus));
    EXPECT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  }
  orbsim::Daemon mDaemon;
};

class OrbdSimHandshakeFaults : public OrbdSimFaults,
                               public testing::WithParamInterface<const char*> {};

TEST_P(OrbdSimHandshakeFaults, EndInServiceDownAndTheNextConnectionWorks) {
  ASSERT_NO_FATAL_FAILURE(enableWith(std::string(GetParam()) + ",connections=1"));
  expectDownThenUp();
}

INSTANTIATE_TEST_SUITE_P(Each, OrbdSimHandshakeFaults,
                         testing::Values("half-record", "wrong-id", "die-after-init",
                                         "die-after-response"),
                         [](const auto& fault) {
                           std::string name;
                           for (const char* c = fault.param; *c != '\0'; ++c) {
                             if (*c != '-') name += *c;
                           }
                           return name;
                         });

TEST_F(OrbdSimFaults, SilentDaemonSaysNothing) {
  ASSERT_NO_FATAL_FAILURE(enableWith("silent"));
  ASSERT_TRUE(mDaemon.waitForConnections(1));
  EXPECT_EQ(1, orb_lce_disable());
  EXPECT_TRUE(mDaemon.waitForConnectionsClosed(1));
  EXPECT_EQ(0u, state().count());
}

TEST_F(OrbdSimFaults, StopAfterInitGetsTheAnswerAndNothingFollows) {
  ASSERT_NO_FATAL_FAILURE(enableWith("stop-after-init"));
  EXPECT_TRUE(waitForLine("Sending HANDSHAKE_RESP"));
  EXPECT_EQ(1, orb_lce_disable());
  EXPECT_TRUE(mDaemon.waitForConnectionsClosed(1));
}

TEST_F(OrbdSimFaults, RefusedConnectionsAreTriedAgain) {
  ASSERT_NO_FATAL_FAILURE(enableWith("refuse"));
  EXPECT_TRUE(waitForLine("Connect ret: -1"));
}

TEST_F(OrbdSimFaults, ConnectionsThatAreNotAcceptedStayInTheBacklog) {
  ASSERT_NO_FATAL_FAILURE(enableWith("no-accept"));
  EXPECT_TRUE(waitForLine("Connect ret: 0"));
  EXPECT_EQ(0u, mDaemon.totals().connections);
}

TEST_F(OrbdSimFaults, NothingIsRead) {
  ASSERT_NO_FATAL_FAILURE(enableWith("no-read"));
  ASSERT_TRUE(mDaemon.waitForSessions(1));
  EXPECT_TRUE(waitForLine("send: length: "));
  EXPECT_EQ(0u, mDaemon.totals().frames);
}

TEST_F(OrbdSimFaults, NoAnswerComes) {
  ASSERT_NO_FATAL_FAILURE(enableWith("no-answer"));
  EXPECT_TRUE(mDaemon.waitForFrames(1));
  EXPECT_EQ(0u, state().count());
}

TEST_F(OrbdSimFaults, GarbageReadsAsAStatusWithoutData) {
  ASSERT_NO_FATAL_FAILURE(enableWith("garbage"));
  EXPECT_TRUE(waitForLine("Status IND message data not filled"));
}

TEST_F(OrbdSimFaults, CutFrameEndsTheConnection) {
  ASSERT_NO_FATAL_FAILURE(enableWith("cut-frame,connections=1"));
  expectDownThenUp();
}

TEST_F(OrbdSimFaults, ConnectionIsClosedAfterSoManyFrames) {
  ASSERT_NO_FATAL_FAILURE(enableWith("close-after=2,connections=1"));
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  state().clear();
  ASSERT_EQ(0, lceGetLastEstimationReport(onReport));
  expectDownThenUp();
}

TEST(OrbdSimFaultList, WrongWordsAreNamedAndChangeNothing) {
  orbsim::Faults faults;
  std::string error;
  EXPECT_FALSE(faults.parse("silent,loud", error));
  EXPECT_EQ(
      "no such fault: loud; faults are refuse, no-accept, silent, stop-after-init, half-record, "
      "wrong-id, die-after-init, die-after-response, no-read, no-answer, garbage, cut-frame, "
      "close-after=N, connections=N",
      error);
  EXPECT_FALSE(faults.parse("", error));
  EXPECT_FALSE(faults.parse("close-after", error));
  EXPECT_EQ("not a number from 1: close-after", error);
  EXPECT_FALSE(faults.parse("close-after=0", error));
  EXPECT_FALSE(faults.parse("close-after=-1", error));
  EXPECT_FALSE(faults.parse("silent=1", error));
  EXPECT_EQ("takes no number: silent=1", error);
  EXPECT_FALSE(faults.parse("connections=3", error));
  EXPECT_EQ("connections needs a fault that it limits: connections=3", error);
  EXPECT_TRUE(faults.parse("silent,connections=3", error));
}

// Of all pairs of words, in both orders, only these can be combined.
TEST(OrbdSimFaultList, WordsThatExcludeEachOtherAreRefused) {
  const std::vector<std::string> words = {
      "refuse",      "no-accept",  "silent",         "stop-after-init",
      "half-record", "wrong-id",   "die-after-init", "die-after-response",
      "no-read",     "no-answer",  "garbage",        "cut-frame",
      "close-after", "connections"};
  std::set<std::set<std::string>> possible = {{"no-answer", "close-after"},
                                              {"garbage", "close-after"}};
  for (size_t i = 2; i < words.size(); ++i) {
    if (words[i] != "no-read") possible.insert({words[i], "connections"});
  }
  const auto item = [](const std::string& word) {
    return word == "close-after" || word == "connections" ? word + "=3" : word;
  };
  for (const std::string& first : words) {
    for (const std::string& second : words) {
      orbsim::Faults faults;
      std::string error;
      const bool taken = faults.parse(item(first) + "," + item(second), error);
      EXPECT_EQ(first != second && possible.count({first, second}) == 1, taken)
          << first << " " << second;
      if (taken) continue;
      EXPECT_EQ(first == second ? "given twice: " + first
                                : first + " and " + second + " exclude each other",
                error);
    }
  }
  orbsim::Faults faults;
  std::string error;
  EXPECT_TRUE(faults.parse("close-after=3,connections=2,garbage", error)) << error;
  EXPECT_FALSE(faults.parse("close-after=3,connections=2,cut-frame", error));
}

}  // namespace
