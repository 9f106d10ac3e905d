// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Handoffs without an order in the daemon stand-in's device.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "OrbdSimPhases.h"

namespace orbsimtest {
namespace {

using orbsim::HandoffModel;

// Automatic handoffs of the model, one after the other.
class HandoffModelTest : public ::testing::Test {
 protected:
  std::vector<HandoffPhase> next(int64_t stepMs = 500) {
    const auto phases = mModel.plan(mEntry, stepMs, mHere);
    mEntry = phases.back().at + mModel.pause() * stepMs;
    const auto all = infos(phases);
    if (std::count(all.begin(), all.end(), LliProto::HANDOFF_SUCCESS) == 1) {
      mHere = phases.front().indication.target_rat();
    }
    return phases;
  }

  HandoffModel mModel{1};
  int64_t mEntry = 0;
  LliProto::LliRatType mHere = LliProto::LLI_3GPP_LTE;
};

TEST_F(HandoffModelTest, StepsComeInTheOrderOfAHandoff) {
  int succeeded = 0;
  int failed = 0;
  int calledOff = 0;
  for (int i = 0; i < 300; ++i) {
    const std::vector<HandoffPhase> phases = next();
    const auto all = infos(phases);
    ASSERT_EQ(LliProto::PRE_HANDOFF, all.front());
    ASSERT_EQ(LliProto::PRE_HANDOFF, all.back());
    for (size_t k = 0; k + 1 < phases.size(); ++k) {
      EXPECT_EQ(LliProto::ENTRY, phases[k].indication.pre_handoff_state());
      EXPECT_LT(phases[k].at, phases[k + 1].at);
    }
    EXPECT_EQ(LliProto::EXIT, phases.back().indication.pre_handoff_state());
    if (all.size() == 2) {
      ++calledOff;
      continue;
    }
    ASSERT_GE(all.size(), 7u) << "at least three are imminent";
    const size_t start = all.size() - 3;
    for (size_t k = 1; k < start; ++k) EXPECT_EQ(LliProto::HANDOFF_IMMINENT, all[k]);
    EXPECT_EQ(LliProto::HANDOFF_START, all[start]);
    const LliProto::HandoffInfo outcome = all[start + 1];
    succeeded += outcome == LliProto::HANDOFF_SUCCESS ? 1 : 0;
    failed += outcome == LliProto::HANDOFF_FAILURE ? 1 : 0;
  }
  EXPECT_EQ(300, succeeded + failed + calledOff);
  EXPECT_GT(calledOff, 10);
  EXPECT_GT(failed, 10);
  EXPECT_GT(succeeded, failed + calledOff) << "now and then only";
}

TEST_F(HandoffModelTest, WhatIsToldOfTimesComesTrue) {
  for (int i = 0; i < 100; ++i) {
    const std::vector<HandoffPhase> phases = next();
    if (phases.size() == 2) continue;
    const HandoffPhase& start = phases[phases.size() - 3];
    const HandoffPhase& outcome = phases[phases.size() - 2];
    const auto duration = static_cast<int64_t>(start.indication.estimated_interruption_duration());
    EXPECT_GE(duration, 20);
    EXPECT_LE(duration, 200);
    EXPECT_EQ(duration, outcome.at - start.at) << "as long as it was told";
    for (const HandoffPhase& phase : phases) {
      const bool over = phase.at >= outcome.at;
      const int64_t left = over ? 0 : start.at - phase.at;
      EXPECT_EQ(left, static_cast<int64_t>(phase.indication.estimated_time_to_interruption()));
      EXPECT_EQ(over ? 0 : duration,
                static_cast<int64_t>(phase.indication.estimated_interruption_duration()));
    }
  }
}

TEST_F(HandoffModelTest, CalledOffHandoffTellsNoTimesAtItsExit) {
  int seen = 0;
  for (int i = 0; i < 100; ++i) {
    const std::vector<HandoffPhase> phases = next();
    if (phases.size() != 2) continue;
    ++seen;
    EXPECT_EQ(500, phases[1].at - phases[0].at);
    EXPECT_EQ(0u, phases[1].indication.estimated_time_to_interruption());
    EXPECT_EQ(0u, phases[1].indication.estimated_interruption_duration());
  }
  EXPECT_GT(seen, 0);
}

TEST_F(HandoffModelTest, HandoffsAreBetweenTwoTechnologiesAndSetOutFromWhereTheDeviceIs) {
  LliProto::LliRatType here = LliProto::LLI_3GPP_LTE;
  std::pair<int, int> before{-1, -1};
  std::set<int> seen;
  for (int i = 0; i < 200; ++i) {
    const std::vector<HandoffPhase> phases = next();
    const auto source = phases.front().indication.source_rat();
    const auto target = phases.front().indication.target_rat();
    for (const HandoffPhase& phase : phases) {
      EXPECT_EQ(source, phase.indication.source_rat());
      EXPECT_EQ(target, phase.indication.target_rat());
    }
    EXPECT_EQ(here, source);
    EXPECT_NE(source, target);
    EXPECT_NE(LliProto::NULL_BEARER, target);
    EXPECT_TRUE(LliProto::LliRatType_IsValid(target));
    EXPECT_NE(before, std::make_pair(int{source}, int{target}));
    before = {source, target};
    seen.insert(target);
    here = mHere;
  }
  EXPECT_EQ(6u, seen.size());
}

TEST(DeviceHandoffsTest, PauseOfSomeStepsLiesBetweenTwoHandoffs) {
  Device device(1, {});
  device.setStep(500);
  device.moveTo(200000);
  const auto phases = phasesOf(device);
  ASSERT_FALSE(phases.empty());
  EXPECT_EQ(0, phases.front().at) << "none before the first";
  int pauses = 0;
  for (size_t i = 1; i < phases.size(); ++i) {
    if (phases[i - 1].indication.pre_handoff_state() != LliProto::EXIT) continue;
    const int64_t pause = phases[i].at - phases[i - 1].at;
    EXPECT_GE(pause, 1000);
    EXPECT_LE(pause, 2500);
    EXPECT_EQ(LliProto::ENTRY, phases[i].indication.pre_handoff_state());
    ++pauses;
  }
  EXPECT_GT(pauses, 10);
}

TEST(DeviceHandoffsTest, CountdownKeepsThePaceOfItsEntry) {
  Device device(1, {});
  device.setStep(500);
  for (int i = 1; i < 300; ++i) {
    device.moveTo(i * 100);
    device.setStep(10 + i * 37 % 1000);
  }
  const auto phases = phasesOf(device);
  ASSERT_GT(phases.size(), 20u);
  int64_t start = 0;
  for (const HandoffPhase& phase : phases) {
    const auto left = static_cast<int64_t>(phase.indication.estimated_time_to_interruption());
    if (phase.indication.handoff_info() == LliProto::PRE_HANDOFF) start = phase.at + left;
    if (left > 0) {
      EXPECT_EQ(start, phase.at + left);
    }
  }
}

}  // namespace
}  // namespace orbsimtest
