// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Scenarios of the daemon stand-in: what is read, what happens, and what is said of the client.

#include <algorithm>
#include <fstream>
#include <set>

#include "OrbdSimClient.h"
#include "orbsim/Model.h"
#include "orbsim/Scenario.h"
#include "orbsim/World.h"

namespace orbsimtest {
namespace {

using namespace std::chrono_literals;
using orbsim::Scenario;
using orbsim::ScenarioRun;
using Lines = std::vector<std::string>;

std::string wrong(const std::string& text) {
  std::string error;
  EXPECT_FALSE(Scenario::fromText(text, error).has_value()) << text;
  EXPECT_EQ(std::string::npos, error.find('\n')) << "one line: " << error;
  return error;
}

class OrbdSimScenarioTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/orbd-sim-test-XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    mDirectory = pattern;
  }
  void TearDown() override {
    mRun.reset();
    std::filesystem::remove_all(mDirectory);
  }
  void play(const std::string& text) {
    std::string error;
    const auto scenario = Scenario::fromText(text, error);
    ASSERT_TRUE(scenario.has_value()) << error;
    Options options;
    options.socketPath = path();
    mRun = std::make_unique<ScenarioRun>(*scenario, options);
    ASSERT_TRUE(mRun->start()) << mRun->error();
  }
  std::string path() const { return mDirectory + "/orb"; }
  ScenarioRun& run() { return *mRun; }
  Daemon& daemon() { return mRun->daemon(); }
  Lines failuresAtEnd() {
    mRun->stop();
    return mRun->failures();
  }
  // A failure without the times at which things happened to come.
  static std::string head(const std::string& line) { return line.substr(0, line.find(" at ")); }

  std::string mDirectory;
  std::unique_ptr<ScenarioRun> mRun;
};

TEST(ScenarioTextTest, ErrorsNameThePlaceInOneLine) {
  EXPECT_EQ("/timeline/0/handoff/to",
            wrong(R"({"timeline": [{"at": 1, "handoff": {"to": "6g"}}]})").substr(0, 22));
  EXPECT_EQ("/timeline/1:",
            wrong(R"({"timeline": [{"at": 1, "rate": 3}, {"rat": "lte"}]})").substr(0, 12));
  EXPECT_EQ("/timeline/0:",
            wrong(R"({"timeline": [{"at": 1, "rate": 3, "rat": "lte"}]})").substr(0, 12));
  EXPECT_EQ("/model/rate:", wrong(R"({"model": {"rate": "fast"}})").substr(0, 12));
  EXPECT_EQ("/:", wrong(R"({"timelines": []})").substr(0, 2));
  EXPECT_EQ("/expect/0/sends/service:",
            wrong(R"({"expect": [{"sends": {"service": "lcd"}}]})").substr(0, 24));
  EXPECT_EQ("line 1, column 14:", wrong(R"({"seed": 1 "a")").substr(0, 18));
  EXPECT_EQ("/begin", wrong(R"({"begin": "soon"})").substr(0, 6));
  EXPECT_EQ("/begin", wrong(R"({"begin": ["lce", "lcd"]})").substr(0, 6));
}

TEST(ScenarioTextTest, EveryFaultIsToldWithWhatIsAllowed) {
  std::string error;
  EXPECT_FALSE(Scenario::fromText(R"({"speed": 1, "begin": "soon", "end": -1, "timeline": [
      {"at": 1, "refuse": {"service": "lle", "with": "DENIED"}},
      {"at": 2, "fault": {"words": "loud"}},
      {"at": "3", "rate": {"from": 1, "two": 2}}, {"at": 4, "rate": 1, "rat": "lte"}, {"at": 5}],
      "expect": [{"sends": {"service": "lce", "fields": {"value3": 1}}}, {"reconnects": true}]})",
                                  error)
                   .has_value());
  std::set<std::string> lines;
  for (size_t start = 0; start < error.size();) {
    const size_t end = std::min(error.find('\n', start), error.size());
    lines.insert(error.substr(start, end - start));
    start = end + 1;
  }
  const std::string steps =
      "allowed is one of delay, drop, fault, handoff, latency, pause, rat, rate, refuse, resume, "
      "send, vanish";
  EXPECT_EQ(
      (std::set<std::string>{
          "/: there is no speed, allowed are $schema, begin, description, end, expect, interval, "
          "model, name, seed, timeline",
          R"(/begin: "soon" is wrong, allowed is listening, connected or a list, nothing twice, of lce, lle, lli)",
          "/end: -1 is wrong, allowed is a number from 0 to 1000000",
          R"(/timeline/0/refuse/with: "DENIED" is wrong, allowed is INVALID, SUCCESS, INVALID_ARG, )"
          "INTERNAL_ERROR, NOT_SUPPORTED, INVALID_OPERATION, SERVICE_UP, SERVICE_DOWN, "
          "INVALID_SLOT, RESERVED, INVALID_ARGUMENTS, TYPE_MISMATCH",
          "/timeline/1/fault/words: no such fault: loud; there are refuse, no-accept, silent, "
          "stop-after-init, half-record, wrong-id, die-after-init, die-after-response, no-read, "
          "no-answer, garbage, cut-frame, close-after=N, connections=N",
          R"(/timeline/2/at: "3" is wrong, allowed is a number from 0 to 1000000)",
          "/timeline/2/rate: to is missing",
          "/timeline/2/rate: there is no two, allowed are from, over, to",
          "/timeline/3: rat and rate are too much, " + steps,
          "/timeline/4: nothing is there, " + steps,
          "/expect/0/sends/fields: no such field: value3; there are transaction value1 value2 "
          "first second network",
          "/expect/1/reconnects: true is wrong, allowed is an object of after, within"}),
      lines);
}

TEST(ScenarioTextTest, HandoffToWhereTheDeviceIsIsWrong) {
  EXPECT_EQ("/timeline/0/handoff/to: the device is on lte already",
            wrong(R"({"timeline": [{"at": 0, "handoff": {"to": "lte"}}]})"));
  EXPECT_EQ("/timeline/1/handoff/to: the device is on 5g already",
            wrong(R"({"timeline": [{"at": 0, "handoff": {"to": "5g"}},
                                   {"at": 9, "handoff": {"to": "5g"}}]})"));
  EXPECT_EQ(
      "/timeline/1/handoff/to: the device is on wlan already",
      wrong(R"({"timeline": [{"at": 0, "rat": "wlan"}, {"at": 9, "handoff": {"to": "wlan"}}]})"));
  for (
      const char* const right :
      {R"({"timeline": [{"at": 0, "handoff": {"to": "5g"}}, {"at": 9, "handoff": {"to": "lte"}}]})",
       R"({"timeline": [{"at": 0, "handoff": {"to": "5g", "result": "failure"}},
                         {"at": 9, "handoff": {"to": "5g"}}]})",
       R"({"model": {"handoffs": true}, "timeline": [{"at": 0, "handoff": {"to": "lte"}}]})"}) {
    std::string error;
    EXPECT_TRUE(Scenario::fromText(right, error).has_value()) << error;
  }
}

TEST(ScenarioTextTest, WhatASchemaCannotSayIsCheckedToo) {
  EXPECT_EQ("/timeline/0/fault/words: silent and garbage exclude each other",
            wrong(R"({"timeline": [{"at": 0, "fault": {"words": "silent,garbage"}}]})"));
  EXPECT_EQ(
      "/timeline/0/refuse/with: TYPE_MISMATCH answers set-criteria of lce only",
      wrong(R"({"timeline": [{"at": 0, "refuse": {"service": "lli", "with": "TYPE_MISMATCH"}}]})"));
  EXPECT_EQ(
      "/timeline/0/refuse/request: lle has no request register",
      wrong(
          R"({"timeline": [{"at": 0, "refuse": {"service": "lle", "request": "register", "with": "INVALID"}}]})"));
  EXPECT_EQ(
      "/timeline/0/send/fields: no such field: speed",
      wrong(R"({"timeline": [{"at": 0, "send": {"service": "lce", "fields": {"speed": 1}}}]})"));
  EXPECT_EQ(
      "/timeline/1: the handoff before it is not over",
      wrong(
          R"({"timeline": [{"at": 0, "handoff": {"to": "5g"}}, {"at": 1, "handoff": {"to": "lte"}}]})"));
  EXPECT_EQ("/timeline/0: the daemon is gone already",
            wrong(R"({"timeline": [{"at": 2, "vanish": 1}, {"at": 1, "vanish": 4}]})"));
  EXPECT_EQ("/timeline/0/pause: true, or for how many seconds",
            wrong(R"({"timeline": [{"at": 0, "pause": false}]})"));
  EXPECT_EQ("/timeline/0/drop: true, or the number of a session",
            wrong(R"({"timeline": [{"at": 0, "drop": false}]})"));
  EXPECT_EQ("/expect/0/sends/request: lli has no request start",
            wrong(R"({"expect": [{"sends": {"service": "lli", "request": "start"}}]})"));
}

TEST(ScenarioTextTest, EveryTechnologyOfTheModelIsInTheSchema) {
  std::string words = orbsim::technologyWords() + " ";
  for (size_t start = 0; start < words.size();) {
    const size_t end = words.find(' ', start);
    std::string error;
    EXPECT_TRUE(Scenario::fromText(
                    R"({"model": {"rat": ")" + words.substr(start, end - start) + "\"}}", error)
                    .has_value())
        << error;
    start = end + 1;
  }
}

TEST(ScenarioTextTest, EveryStatusCanBeARefusalAndEveryFaultAFault) {
  for (const char* const status :
       {"INVALID", "SUCCESS", "INVALID_ARG", "INTERNAL_ERROR", "NOT_SUPPORTED", "INVALID_OPERATION",
        "SERVICE_UP", "SERVICE_DOWN", "INVALID_SLOT", "RESERVED"}) {
    std::string error;
    EXPECT_TRUE(
        Scenario::fromText(R"({"timeline": [{"at": 0, "refuse": {"service": "lle", "with": ")" +
                               std::string(status) + "\"}}]}",
                           error)
            .has_value())
        << error;
  }
  for (const char* const words : {"refuse", "no-accept", "silent,connections=1", "stop-after-init",
                                  "half-record", "wrong-id", "die-after-init", "die-after-response",
                                  "no-read", "no-answer", "garbage,close-after=3", "cut-frame"}) {
    std::string error;
    EXPECT_TRUE(Scenario::fromText(R"({"timeline": [{"at": 0, "fault": {"words": ")" +
                                       std::string(words) + "\"}}]}",
                                   error)
                    .has_value())
        << error;
  }
}

TEST(ScenarioTextTest, SettingsReachTheDaemonsOptions) {
  std::string error;
  const auto scenario = Scenario::fromText(
      R"({"name": "n", "description": "d", "seed": 7, "interval": 0.25, "end": 1.5,
          "begin": ["lce", "lli"],
          "model": {"rat": "wcdma", "handoffs": true, "rate": 1.5, "latency": 80.5}})",
      error);
  ASSERT_TRUE(scenario.has_value()) << error;
  Options options;
  scenario->configure(options);
  EXPECT_EQ("n", scenario->name());
  EXPECT_EQ("d", scenario->description());
  EXPECT_EQ(1500ms, *scenario->end());
  EXPECT_EQ(7u, options.seed);
  EXPECT_EQ(250ms, options.reportInterval);
  EXPECT_EQ("wcdma", options.model.rat);
  EXPECT_TRUE(options.model.handoffs);
  EXPECT_EQ(1500u, *options.model.rate);
  EXPECT_EQ(80500u, *options.model.latency);
  EXPECT_EQ(orbsim::Begin::kReporting, options.model.begin);
  EXPECT_EQ((std::set<uint32_t>{orbsim::kSdkTypeLce, orbsim::kSdkTypeLli}),
            options.model.beginWith);
}

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
  const auto view = daemon().world().view();
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
      EXPECT_GE(*daemon().world().now(), 100ms);
      EXPECT_EQ(100u, step.estimated_time_to_interruption());
      EXPECT_EQ(50u, step.estimated_interruption_duration());
    }
  }
  EXPECT_GE(*daemon().world().now(), 250ms);
  EXPECT_EQ((std::vector<LliProto::HandoffInfo>{LliProto::PRE_HANDOFF, LliProto::HANDOFF_IMMINENT,
                                                LliProto::HANDOFF_START, LliProto::HANDOFF_FAILURE,
                                                LliProto::PRE_HANDOFF}),
            infos);
  EXPECT_EQ("lte", daemon().world().view().rat);
}

TEST_F(OrbdSimScenarioTest, ClientThatComesBackIsAsExpected) {
  play(R"({"begin": "connected", "timeline": [{"at": 0.1, "vanish": 0.2}],
           "expect": [{"reconnects": {"after": 0.1, "within": 60}},
                      {"sends": {"service": "lce", "request": "enable", "after": 0.1, "within": 60}},
                      {"sends-not": {"service": "lle"}}, {"at-most": {"requests": 5}}]})");
  {
    Client client(path());
    client.handshake();
    client.answerTo(enable(true));
    EXPECT_TRUE(client.atEnd());
    // Gone for as long as the timeline says.
    const bool there = Client(path()).connected();
    EXPECT_TRUE(!there || *daemon().world().now() >= 300ms);
  }
  std::unique_ptr<Client> again;
  do {
    again = std::make_unique<Client>(path());
  } while (!again->connected());
  EXPECT_GE(*daemon().world().now(), 300ms);
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
  EXPECT_GE(*daemon().world().now(), 200ms);
}

TEST_F(OrbdSimScenarioTest, RefusedConnectionsAreTakenAgainAfterTheFault) {
  play(R"({"timeline": [{"at": 0, "fault": {"words": "refuse", "for": 0.2}}]})");
  const bool taken = Client(path()).connected();
  EXPECT_TRUE(!taken || *daemon().world().now() >= 200ms);
  while (!Client(path()).connected()) {
  }
  EXPECT_GE(*daemon().world().now(), 200ms);
}

TEST_F(OrbdSimScenarioTest, DropAndSendAndPauseHappen) {
  play(R"({"begin": ["lce"], "interval": 0.01,
           "timeline": [{"at": 0.1, "pause": true},
                        {"at": 0.2, "send": {"service": "lce", "fields": {"rate": 123456789}}},
                        {"at": 0.3, "resume": true}, {"at": 0.4, "drop": true}]})");
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  client.send(action(LceProto::START));
  while (parse(client.readFrame()).data().estimation_reports_resp().rate() != 123456789) {
  }
  // Between the message and the resumption nothing else comes.
  client.readFrame();
  EXPECT_GE(*daemon().world().now(), 300ms);
  while (client.readExactly(1).size() == 1) {
  }
  EXPECT_GE(*daemon().world().now(), 400ms);
}

TEST_F(OrbdSimScenarioTest, EndIsTold) {
  std::string error;
  const auto scenario = Scenario::fromText(R"({"end": 0.05})", error);
  ASSERT_TRUE(scenario.has_value()) << error;
  Options options;
  options.socketPath = path();
  ScenarioRun run(*scenario, options);
  Recorder<int> ends;
  run.onEnd([&] { ends.add(0); });
  ASSERT_TRUE(run.start());
  EXPECT_TRUE(ends.waitForCount(1, 60s));
  EXPECT_GE(*run.daemon().world().now(), 50ms);
}

}  // namespace
}  // namespace orbsimtest
