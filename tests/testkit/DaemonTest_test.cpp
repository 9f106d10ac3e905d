// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The fixture for GoogleTest: its behaviour with scenarios that are wrong or not met.
#include <gtest/gtest-spi.h>

#include <cstring>

#include "KitClient.h"

namespace {

using namespace orbsim::testkit;

class Fixture : public DaemonTest {};

TEST_F(Fixture, RunsADaemonForEachTest) {
  EXPECT_TRUE(daemon().running());
  EXPECT_EQ("", daemon().error());
}

TEST_F(Fixture, FailsWithEachExpectationThatIsNotMet) {
  play(R"({"begin": "listening", "expect": [
    {"sends": {"service": "lle", "within": 0.01}}, {"at-most": {"requests": 1, "within": 0.01}}]})");
  EXPECT_NONFATAL_FAILURE(expectAsPlayed(), "/expect/0: ");
  EXPECT_FALSE(daemon().running());
}

TEST_F(Fixture, PassesWhenAllAreMet) {
  play(R"({"begin": "listening", "expect": [{"sends-not": {"service": "lle", "within": 0.01}}]})");
  expectAsPlayed();
}

TEST_F(Fixture, FailsWhenTheScenarioDoesNotBegin) {
  play(R"({"begin": "connected", "expect": [{"sends-not": {"service": "lle", "within": 0.01}}]})");
  EXPECT_NONFATAL_FAILURE(expectAsPlayed(Milliseconds(1)), "the scenario has not ended");
}

TEST_F(Fixture, ShowsRequestsAsText) {
  Request request;
  request.service = Service::kLce;
  request.name = "set-criteria";
  request.fields = {{"value1", "5"}, {"value2", "6"}};
  EXPECT_EQ("lce set-criteria value1=5 value2=6", testing::PrintToString(request));
}

TEST_F(Fixture, DoesNotWaitForAScenarioThatIsNotPlayed) {
  const std::string undecided =
      R"({"begin": "connected", "expect": [{"sends-not": {"service": "lle", "within": 60}}]})";
  play(undecided);
  testing::TestPartResultArray results;
  {
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    play("{");
    expectAsPlayed(std::chrono::hours(1));
  }
  ASSERT_EQ(2, results.size());
  EXPECT_NE(nullptr, std::strstr(results.GetTestPartResult(1).message(), "no scenario is played"));
  play(undecided);
  EXPECT_NONFATAL_FAILURE(expectAsPlayed(Milliseconds(1)), "the scenario has not ended");
}

TEST_F(Fixture, NamesWhatIsWrongWithAScenario) {
  testing::TestPartResultArray results;
  {
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    play(R"({"timeline": 1})");
    playFile("/nowhere.json");
  }
  ASSERT_EQ(2, results.size());
  EXPECT_NE(nullptr, std::strstr(results.GetTestPartResult(0).message(), "/timeline"));
  EXPECT_NE(nullptr, std::strstr(results.GetTestPartResult(1).message(), "/nowhere.json"));
}

}  // namespace
