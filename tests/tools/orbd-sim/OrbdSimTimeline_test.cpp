// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Steps of a timeline with a duration: each lasts for its time, whatever happens in between.

#include <algorithm>

#include "OrbdSimPlay.h"

namespace orbsimtest {
namespace {

// The end of a scenario comes after all that was to happen before it, so what is then can be told
// without waiting for what must not come.
// The end of a scenario comes after all its steps, so the state can be checked without waiting.
class OrbdSimTimelineTest : public OrbdSimPlayTest {
 protected:
  static std::string scenarioOf(const std::string& timeline) {
    return R"({"interval": 0, "end": 0.5, "timeline": [)" + timeline + "]}";
  }
  void playToTheEnd(const std::string& timeline) {
    ASSERT_NO_FATAL_FAILURE(play(scenarioOf(timeline)));
    ASSERT_TRUE(waitForEnd());
  }
  bool dies() {
    Client client(path());
    return client.readOnce().size() == 8 && client.atEnd();
  }
};

TEST_F(OrbdSimTimelineTest, EndOfAFaultLeavesTheNextOneAlone) {
  playToTheEnd(R"({"at": 0.01, "fault": {"words": "silent", "for": 0.1}},
                  {"at": 0.02, "fault": {"words": "die-after-init", "for": 3600}})");
  EXPECT_TRUE(dies());
}

TEST_F(OrbdSimTimelineTest, EndOfAFaultOfTheBeginningLeavesTheNextOneAlone) {
  playToTheEnd(R"({"at": 0, "fault": {"words": "silent", "for": 0.1}},
                  {"at": 0.02, "fault": {"words": "die-after-init"}})");
  EXPECT_TRUE(dies());
}

TEST_F(OrbdSimTimelineTest, EndOfAPauseLeavesTheNextOneAlone) {
  playToTheEnd(R"({"at": 0.01, "pause": 0.1}, {"at": 0.02, "pause": 3600})");
  EXPECT_TRUE(world().paused());
}

TEST_F(OrbdSimTimelineTest, EndOfAPauseOfTheBeginningLeavesTheNextOneAlone) {
  playToTheEnd(R"({"at": 0, "pause": 0.1}, {"at": 0.02, "pause": true})");
  EXPECT_TRUE(world().paused());
}

TEST_F(OrbdSimTimelineTest, PauseOfTheBeginningEnds) {
  playToTheEnd(R"({"at": 0, "pause": 0.1})");
  EXPECT_FALSE(world().paused());
}

TEST_F(OrbdSimTimelineTest, FaultEndsWhileTheDaemonIsGone) {
  playToTheEnd(R"({"at": 0, "fault": {"words": "die-after-init", "for": 0.1}},
                  {"at": 0.05, "vanish": 0.3})");
  std::unique_ptr<Client> client;
  do {
    client = std::make_unique<Client>(path());
  } while (!client->connected());
  client->handshake();
  EXPECT_EQ(LceProto::SUCCESS, client->answerTo(enable(true)).data().status_msg().status());
}

TEST_F(OrbdSimTimelineTest, EndOfRefusingBringsNobodyBackWhoIsGone) {
  playToTheEnd(R"({"at": 0.01, "fault": {"words": "refuse", "for": 0.1}},
                  {"at": 0.02, "vanish": 3600})");
  EXPECT_FALSE(Client(path()).connected());
}

TEST_F(OrbdSimTimelineTest, DaemonThatIsBackRefusesForAsLongAsTheFaultSays) {
  playToTheEnd(R"({"at": 0.01, "fault": {"words": "refuse", "for": 3600}},
                  {"at": 0.02, "vanish": 0.1})");
  // It is away for as long as it says, from when it went.
  while (Client(path()).error() == ENOENT) {
  }
  EXPECT_FALSE(Client(path()).connected());
  EXPECT_EQ(ECONNREFUSED, Client(path()).error());
}

TEST_F(OrbdSimTimelineTest, HandoffToWhereTheDeviceIsByThenIsToldAndChangesNothing) {
  load(scenarioOf(R"({"at": 0.01, "handoff": {"to": "5g", "notice": 0, "duration": 0}})"));
  world().orderTechnology("5g");
  play();
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ("not done: the device is on 5g already", mLog.lines().back());
  uint64_t first = 0;
  EXPECT_FALSE(world().phase(first).has_value());
  EXPECT_EQ("5g", world().view().rat);
}

TEST_F(OrbdSimTimelineTest, HandoffThatIsOverAtOnceIsDone) {
  playToTheEnd(R"({"at": 0.01, "handoff": {"to": "5g", "notice": 0, "duration": 0}})");
  EXPECT_EQ(0u, mLog.lines().back().find(R"(scenario: {"handoff")")) << mLog.lines().back();
  EXPECT_EQ("5g", world().view().rat);
}

TEST_F(OrbdSimTimelineTest, EachStepHasALineInTheLog) {
  playToTheEnd(R"({"at": 0, "delay": 0}, {"at": 0.01, "rate": 5}, {"at": 0.02, "rat": "5g"},
                  {"at": 0.03, "pause": true}, {"at": 0.04, "drop": 9}, {"at": 0.05, "vanish": 3600})");
  const auto lines = mLog.lines();
  const auto start = std::find(lines.begin(), lines.end(), R"(scenario: {"rate":5})");
  ASSERT_EQ(R"(scenario: {"delay":0})", lines.front());
  EXPECT_EQ((std::vector<std::string>{R"(scenario: {"rate":5})", R"(scenario: {"rat":"5g"})",
                                      R"(scenario: {"pause":true})", R"(scenario: {"drop":9})",
                                      "not done: no session 9", R"(scenario: {"vanish":3600})"}),
            (std::vector<std::string>{start, lines.end()}));
}

}  // namespace
}  // namespace orbsimtest
