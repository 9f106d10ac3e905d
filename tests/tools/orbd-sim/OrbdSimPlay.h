// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// A scenario that is played to clients of the test, in a directory of its own.

#pragma once

#include "OrbdSimClient.h"
#include "orbsim/Scenario.h"
#include "orbsim/World.h"

namespace orbsimtest {

using orbsim::Scenario;
using orbsim::ScenarioRun;

class OrbdSimPlayTest : public ::testing::Test {
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

  // The scenario of that text, which begins with play().
  void load(const std::string& text) {
    std::string error;
    const auto scenario = Scenario::fromText(text, error);
    ASSERT_TRUE(scenario.has_value()) << error;
    Options options;
    options.socketPath = path();
    options.log = mLog.sink();
    mRun = std::make_unique<ScenarioRun>(*scenario, options);
    mRun->onEnd([this] { mEnds.add(0); });
  }
  void play() {
    ASSERT_NE(nullptr, mRun);
    ASSERT_TRUE(mRun->start()) << mRun->error();
  }
  void play(const std::string& text) {
    ASSERT_NO_FATAL_FAILURE(load(text));
    play();
  }
  // Until the end that the scenario names has come.
  bool waitForEnd() { return mEnds.waitForCount(1, std::chrono::seconds(60)); }

  std::string path() const { return mDirectory + "/orb"; }
  ScenarioRun& run() { return *mRun; }
  Daemon& daemon() { return mRun->daemon(); }
  orbsim::World& world() { return daemon().world(); }

  std::string mDirectory;
  LogLines mLog;
  Recorder<int> mEnds;
  std::unique_ptr<ScenarioRun> mRun;
};

}  // namespace orbsimtest
