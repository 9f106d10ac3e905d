// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The text of scenarios: the values that are read, and the messages for errors.

#include <algorithm>
#include <set>

#include "OrbdSimClient.h"
#include "orbsim/Model.h"
#include "orbsim/Scenario.h"

namespace orbsimtest {
namespace {

using namespace std::chrono_literals;
using orbsim::Scenario;
using Lines = std::vector<std::string>;

std::string wrong(const std::string& text) {
  std::string error;
  EXPECT_FALSE(Scenario::fromText(text, error).has_value()) << text;
  EXPECT_EQ(std::string::npos, error.find('\n')) << "one line: " << error;
  return error;
}

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
          "/: unknown member speed; allowed: $schema, begin, description, end, expect, interval, "
          "model, name, seed, timeline",
          R"(/begin: wrong value "soon"; allowed: listening, connected or a list without duplicates of lce, lle, lli)",
          "/end: wrong value -1; allowed: a number from 0 to 1000000",
          R"(/timeline/0/refuse/with: wrong value "DENIED"; allowed: INVALID, SUCCESS, INVALID_ARG, )"
          "INTERNAL_ERROR, NOT_SUPPORTED, INVALID_OPERATION, SERVICE_UP, SERVICE_DOWN, "
          "INVALID_SLOT, RESERVED, INVALID_ARGUMENTS, TYPE_MISMATCH",
          "/timeline/1/fault/words: no such fault: loud; faults are refuse, no-accept, silent, "
          "stop-after-init, half-record, wrong-id, die-after-init, die-after-response, no-read, "
          "no-answer, garbage, cut-frame, close-after=N, connections=N",
          R"(/timeline/2/at: wrong value "3"; allowed: a number from 0 to 1000000)",
          "/timeline/2/rate: to is missing",
          "/timeline/2/rate: unknown member two; allowed: from, over, to",
          "/timeline/3: rat and rate together; " + steps,
          "/timeline/4: a member is missing; " + steps,
          "/expect/0/sends/fields: no such field: value3; fields are transaction value1 value2 "
          "first second network",
          "/expect/1/reconnects: wrong value true; allowed: an object of after, within"}),
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
      "/timeline/0/refuse/with: TYPE_MISMATCH is for set-criteria of lce only",
      wrong(R"({"timeline": [{"at": 0, "refuse": {"service": "lli", "with": "TYPE_MISMATCH"}}]})"));
  EXPECT_EQ(
      "/timeline/0/refuse/request: lle has no request register",
      wrong(
          R"({"timeline": [{"at": 0, "refuse": {"service": "lle", "request": "register", "with": "INVALID"}}]})"));
  EXPECT_EQ(
      "/timeline/0/send/fields: no such field: speed",
      wrong(R"({"timeline": [{"at": 0, "send": {"service": "lce", "fields": {"speed": 1}}}]})"));
  EXPECT_EQ(
      "/timeline/1: the previous handoff is not over",
      wrong(
          R"({"timeline": [{"at": 0, "handoff": {"to": "5g"}}, {"at": 1, "handoff": {"to": "lte"}}]})"));
  EXPECT_EQ("/timeline/0: the daemon is gone already",
            wrong(R"({"timeline": [{"at": 2, "vanish": 1}, {"at": 1, "vanish": 4}]})"));
  EXPECT_EQ("/timeline/0/pause: must be true or a number of seconds",
            wrong(R"({"timeline": [{"at": 0, "pause": false}]})"));
  EXPECT_EQ("/timeline/0/drop: must be true or a session number",
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

}  // namespace
}  // namespace orbsimtest
