// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Running scenarios: the events, and the results for the client.

#include <fstream>

#include "OrbdSimPlay.h"

namespace orbsimtest {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

class OrbdSimScenarioTest : public OrbdSimPlayTest {
 protected:
  Lines failuresAtEnd() {
    run().stop();
    return run().failures();
  }
  // A failure without its times, which vary.
  static std::string head(const std::string& line) { return line.substr(0, line.find(" at ")); }
};

TEST_F(OrbdSimScenarioTest, FileThatCannotBeReadIsNamed) {
  std::string error;
  EXPECT_FALSE(Scenario::fromFile(mDirectory + "/none.json", error).has_value());
  EXPECT_EQ(mDirectory + "/none.json: No such file or directory", error);
  EXPECT_FALSE(Scenario::fromFile(mDirectory, error).has_value());
  EXPECT_EQ(mDirectory + ": Is a directory", error);
  std::ofstream(mDirectory + "/bad.json") << "[]";
  EXPECT_FALSE(Scenario::fromFile(mDirectory + "/bad.json", error).has_value());
  EXPECT_EQ(mDirectory + "/bad.json: /: ", error.substr(0, mDirectory.size() + 14));
}

TEST_F(OrbdSimScenarioTest, ReadyScenariosAreThoseOfTheFolderAndNotTheSchema) {
  for (const char* const name : {"two.json", "one.json", "schema.json", "notes.txt"})
    std::ofstream(mDirectory + "/" + name) << "{}";
  std::filesystem::create_directory(mDirectory + "/folder.json");
  ASSERT_EQ(0, ::setenv("ORB_SCENARIOS", mDirectory.c_str(), 1));
  std::string error;
  EXPECT_EQ((Lines{"one", "two"}), Scenario::readyNames());
  EXPECT_TRUE(Scenario::fromFile("one", error).has_value()) << error;
  EXPECT_FALSE(Scenario::fromFile("schema", error).has_value());
  EXPECT_EQ("schema: No such file or directory", error);
  ASSERT_EQ(0, ::setenv("ORB_SCENARIOS", "/nowhere", 1));
  EXPECT_EQ(Lines{}, Scenario::readyNames());
  ::unsetenv("ORB_SCENARIOS");
}

TEST_F(OrbdSimScenarioTest, RateFallsAsTheTimelineSays) {
  play(R"({"begin": ["lce"], "interval": 0.02, "model": {"rate": 50},
           "timeline": [{"at": 0.2, "rate": {"from": 50, "to": 2, "over": 0.2}},
                        {"at": 0.5, "latency": 300}, {"at": 0.5, "rat": "5g"}]})");
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  client.send(action(LceProto::START));
  for (int tick = 0; tick <= 25; ++tick) {
    const int at = tick * 20;
    const int expected = at <= 200 ? 50000 : at >= 400 ? 2000 : 50000 - 48000 * (at - 200) / 200;
    EXPECT_EQ(static_cast<uint32_t>(expected),
              parse(client.readFrame()).data().estimation_reports_resp().rate())
        << "at " << at << " ms";
  }
  const auto view = world().view();
  EXPECT_EQ("5g", view.rat);
  EXPECT_EQ(300000u, view.estimate.latency.ulLatency);
}

TEST_F(OrbdSimScenarioTest, HandoffComesAtItsTime) {
  play(R"({"begin": ["lli"], "interval": 0.05,
           "timeline": [{"at": 0.1, "handoff": {"to": "5g", "notice": 0.1, "duration": 0.05,
                                                "result": "failure"}}]})");
  Client client(path(), kLliPid);
  client.handshake();
  client.answerTo(lliRegister(true));
  std::vector<LliProto::HandoffInfo> infos;
  for (int i = 0; i < 5; ++i) {
    const auto step = parse<LliProto::ServiceMsg>(client.readFrame()).data().lli_ind_resp();
    infos.push_back(step.handoff_info());
    if (i == 0) {
      EXPECT_GE(*world().now(), 100ms);
      EXPECT_EQ(100u, step.estimated_time_to_interruption());
      EXPECT_EQ(50u, step.estimated_interruption_duration());
    }
  }
  EXPECT_GE(*world().now(), 250ms);
  EXPECT_EQ((std::vector<LliProto::HandoffInfo>{LliProto::PRE_HANDOFF, LliProto::HANDOFF_IMMINENT,
                                                LliProto::HANDOFF_START, LliProto::HANDOFF_FAILURE,
                                                LliProto::PRE_HANDOFF}),
            infos);
  EXPECT_EQ("lte", world().view().rat);
}

TEST_F(OrbdSimScenarioTest, ClientThatComesBackIsAsExpected) {
  play(R"({"begin": "connected", "timeline": [{"at": 0.1, "vanish": 0.2}],
           "expect": [{"reconnects": {"after": 0.1, "within": 60}},
                      {"sends": {"service": "lce", "request": "enable", "after": 0.1, "within": 60}},
                      {"sends-not": {"service": "lle"}}, {"at-most": {"requests": 5}}]})");
  {
    Client client(path());
    client.handshake();
    EXPECT_TRUE(client.atEnd());
    // Absent for the time in the timeline.
    const bool there = Client(path()).connected();
    EXPECT_TRUE(!there || *world().now() >= 300ms);
  }
  std::unique_ptr<Client> again;
  do {
    again = std::make_unique<Client>(path());
  } while (!again->connected());
  EXPECT_GE(*world().now(), 300ms);
  again->handshake();
  EXPECT_EQ(1u, again->sessionId()) << "counted anew";
  again->answerTo(enable(true));
  EXPECT_TRUE(run().waitUntilDecided());
  EXPECT_EQ(Lines{}, run().failures());
  EXPECT_EQ(Lines{}, failuresAtEnd());
}

TEST_F(OrbdSimScenarioTest, FirstConnectionsAreNoReconnections) {
  play(R"({"expect": [{"reconnects": {"within": 3600}}]})");
  Client lce(path());
  Client lle(path(), kLlePid);
  lce.handshake();
  lle.handshake();
  ASSERT_TRUE(daemon().waitForSessions(2));
  EXPECT_FALSE(run().waitUntilDecided(1ms));
  Client again(path());
  again.handshake();
  EXPECT_TRUE(run().waitUntilDecided())
      << "the same client, though its first session is there still";
  EXPECT_EQ(Lines{}, failuresAtEnd());
}

TEST_F(OrbdSimScenarioTest, EachKindOfExpectationFailsWithALineOfItsOwn) {
  play(R"({"begin": "connected",
           "expect": [{"reconnects": {"within": 0.2}},
                      {"sends": {"service": "lce", "request": "set-criteria",
                                 "fields": {"value1": 3, "first": [1, 2]}, "after": 0.1, "within": 0.1}},
                      {"sends-not": {"service": "lce", "request": "get-last-report"}},
                      {"at-most": {"requests": 2, "service": "lce"}},
                      {"at-most": {"requests": 0, "service": "lle"}}]})");
  Client client(path());
  client.handshake();
  for (int i = 0; i < 3; ++i) client.send(getLast());
  client.send(criteria(1, {1, 2}, 2));
  for (int i = 0; i < 4; ++i) client.readFrame();
  EXPECT_TRUE(run().waitUntilDecided());
  const Lines lines = failuresAtEnd();
  ASSERT_EQ(4u, lines.size());
  EXPECT_EQ("/expect/0: no reconnection within 0.2 s", lines[0]);
  EXPECT_EQ("/expect/1: no lce set-criteria first=[1,2] value1=3 within 0.1 s after 0.1 s",
            lines[1]);
  EXPECT_EQ("/expect/2: lce get-last-report", head(lines[2]));
  EXPECT_EQ("/expect/3: 3 requests in the second up to ", lines[3].substr(0, 42));
  EXPECT_EQ(" s, at most 2 expected", lines[3].substr(lines[3].size() - 22));
}

TEST_F(OrbdSimScenarioTest, WhatIsNotDecidedFailsAtTheEnd) {
  play(R"({"expect": [{"sends": {"service": "lli", "within": 3600}},
                      {"sends": {"service": "lli", "request": "register"}}]})");
  EXPECT_EQ(Lines{}, run().failures());
  EXPECT_FALSE(run().waitUntilDecided(1ms));
  EXPECT_EQ((Lines{"/expect/0: no lli within 3600 s", "/expect/1: no lli register"}),
            failuresAtEnd());
}

TEST_F(OrbdSimScenarioTest, ScenarioThatNeverBeganSaysSo) {
  play(R"({"begin": "connected", "timeline": [{"at": 0.1, "drop": true}]})");
  EXPECT_FALSE(run().waitUntilDecided(1ms));
  EXPECT_EQ(Lines{"the scenario never began"}, failuresAtEnd());
}

TEST_F(OrbdSimScenarioTest, StateOfTheBeginningIsThereBeforeTheFirstRequest) {
  play(R"({"begin": "connected", "interval": 0,
           "timeline": [{"at": 0, "refuse": {"service": "lce", "with": "NOT_SUPPORTED", "times": 2}},
                        {"at": 0, "delay": 0.1}]})");
  Client client(path());
  client.handshake();
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(LceProto::NOT_SUPPORTED, client.answerTo(enable(true)).data().status_msg().status());
  EXPECT_GE(std::chrono::steady_clock::now() - before, 100ms);
  EXPECT_EQ(LceProto::NOT_SUPPORTED, client.answerTo(enable(true)).data().status_msg().status());
  EXPECT_EQ(LceProto::SUCCESS, client.answerTo(enable(true)).data().status_msg().status());
}

TEST_F(OrbdSimScenarioTest, FaultEndsAfterItsTime) {
  play(R"({"timeline": [{"at": 0, "fault": {"words": "die-after-init", "for": 0.2}}]})");
  for (bool served = false; !served;) {
    Client client(path());
    Blob init = client.readOnce();
    if (init.size() != 8) continue;
    uint32_t id = 0;
    std::memcpy(&id, init.data() + 4, sizeof id);
    const Blob reply = Client::reply(id);
    if (!client.tryWrite(reply)) continue;
    served = client.readOnce().size() == 8;
  }
  EXPECT_GE(*world().now(), 200ms);
}

TEST_F(OrbdSimScenarioTest, RefusedConnectionsAreTakenAgainAfterTheFault) {
  play(R"({"timeline": [{"at": 0, "fault": {"words": "refuse", "for": 0.2}}]})");
  const bool taken = Client(path()).connected();
  EXPECT_TRUE(!taken || *world().now() >= 200ms);
  while (!Client(path()).connected()) {
  }
  EXPECT_GE(*world().now(), 200ms);
}

TEST_F(OrbdSimScenarioTest, SendAndPauseHappen) {
  play(R"({"begin": ["lce"], "interval": 0.01,
           "timeline": [{"at": 0.1, "pause": true},
                        {"at": 0.4, "send": {"service": "lce", "fields": {"rate": 123456789}}},
                        {"at": 0.5, "resume": true}]})");
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  client.send(action(LceProto::START));
  const auto rate = [&client] {
    return parse(client.readFrame()).data().estimation_reports_resp().rate();
  };
  while (rate() != 123456789) ASSERT_FALSE(HasFailure()) << "the message did not come";
  // Nothing else comes between the message and the end of the pause.
  client.readFrame();
  EXPECT_GE(*world().now(), 500ms);
}

TEST_F(OrbdSimScenarioTest, DropHappens) {
  play(R"({"begin": "connected", "timeline": [{"at": 0.1, "drop": true}]})");
  Client client(path());
  client.handshake();
  EXPECT_TRUE(client.atEnd());
  EXPECT_GE(*world().now(), 100ms);
}

TEST_F(OrbdSimScenarioTest, EndIsTold) {
  play(R"({"end": 0.05})");
  EXPECT_TRUE(waitForEnd());
  EXPECT_GE(*world().now(), 50ms);
}

}  // namespace
}  // namespace orbsimtest
