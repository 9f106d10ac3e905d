// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The device of the daemon stand-in: the values of its services must agree.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "OrbdSimPhases.h"

namespace orbsimtest {
namespace {

using namespace std::chrono_literals;
using orbsim::Estimate;
using orbsim::HandoffOrder;
using orbsim::ModelSettings;
using orbsim::Ramp;
using orbsim::Technology;
using orbsim::technologyOf;

// All values, so that no difference is missed.
std::vector<uint64_t> numbers(const Estimate& estimate) {
  const auto& link = estimate.link;
  const auto& latency = estimate.latency;
  return {link.rate,         link.confidence,    link.downlink ? 1u : 0u,
          link.queueSizeUl,  latency.ulLatency,  latency.ulVariance,
          latency.dlLatency, latency.dlVariance, static_cast<uint64_t>(latency.rat)};
}

ModelSettings still() {
  ModelSettings settings;
  settings.handoffs = false;
  return settings;
}

TEST(DeviceTest, SameSeedDoesTheSame) {
  Device one(7, {});
  Device two(7, {});
  Device other(8, {});
  for (Device* const device : {&one, &two, &other}) device->setStep(500);
  bool differs = false;
  for (int i = 0; i < 300; ++i) {
    const auto first = numbers(one.step(i * 500));
    EXPECT_EQ(first, numbers(two.step(i * 500)));
    differs = differs || first != numbers(other.step(i * 500));
  }
  EXPECT_TRUE(differs);
  const auto ones = phasesOf(one);
  const auto twos = phasesOf(two);
  ASSERT_EQ(ones.size(), twos.size());
  EXPECT_GT(ones.size(), 50u);
  for (size_t i = 0; i < ones.size(); ++i) {
    EXPECT_EQ(ones[i].at, twos[i].at);
    EXPECT_EQ(ones[i].indication.SerializeAsString(), twos[i].indication.SerializeAsString());
  }
}

// The same on every machine and with every compiler.
TEST(DeviceTest, SeedOneDoesWhatItAlwaysDid) {
  Device device(1, {});
  device.setStep(500);
  Estimate last;
  for (int i = 0; i < 200; ++i) last = device.step(i * 500);
  EXPECT_EQ((std::vector<uint64_t>{69172, 4, 0, 2848, 7305, 942239, 3943, 1471836, 2}),
            numbers(last));
}

TEST(DeviceTest, WhoLooksInBetweenChangesNothing) {
  Device one(3, {});
  Device two(3, {});
  one.setStep(500);
  two.setStep(500);
  for (int i = 0; i < 300; ++i) {
    two.moveTo(i * 500 - 123);
    two.moveTo(i * 500 - 1);
    EXPECT_EQ(numbers(one.step(i * 500)), numbers(two.step(i * 500)));
  }
}

TEST(DeviceTest, EstimatesVaryWithinWhatTheTechnologyCanDo) {
  Device device(1, {});
  device.setStep(500);
  int uplinks = 0;
  int moved = 0;
  std::set<uint32_t> confidences;
  std::set<std::string> seen;
  Estimate last = device.step(0);
  for (int i = 1; i < 4000; ++i) {
    const Estimate estimate = device.step(i * 500);
    const Technology& technology = device.technology();
    seen.insert(technology.word);
    EXPECT_EQ(technology.latencyRat, estimate.latency.rat);
    const int64_t best = estimate.link.downlink ? technology.downlinkRate : technology.uplinkRate;
    EXPECT_LE(estimate.link.rate, best + best / 50);
    EXPECT_LE(estimate.link.confidence, 7u);
    EXPECT_LE(estimate.link.queueSizeUl, 64000u);
    EXPECT_GT(estimate.latency.ulVariance, 0u);
    EXPECT_GT(estimate.latency.dlVariance, 0u);
    if (estimate.link.rate > 0) {
      const auto within = [](uint64_t value, Technology::Range range) {
        return value >= static_cast<uint64_t>(range.low) &&
               value <= static_cast<uint64_t>(range.high);
      };
      EXPECT_TRUE(within(estimate.latency.ulLatency, technology.uplinkLatency));
      EXPECT_TRUE(within(estimate.latency.dlLatency, technology.downlinkLatency));
    }
    confidences.insert(estimate.link.confidence);
    uplinks += estimate.link.downlink ? 0 : 1;
    moved += estimate.latency.ulLatency != last.latency.ulLatency &&
                     estimate.latency.dlLatency != last.latency.dlLatency &&
                     estimate.latency.ulVariance != last.latency.ulVariance &&
                     estimate.latency.dlVariance != last.latency.dlVariance
                 ? 1
                 : 0;
    last = estimate;
  }
  EXPECT_GT(uplinks, 1200);
  EXPECT_LT(uplinks, 2800);
  EXPECT_GT(moved, 3600);
  EXPECT_GT(confidences.size(), 1u);
  EXPECT_EQ(6u, seen.size());
}

TEST(DeviceTest, NothingGoesThroughAnInterruptedLinkAndLatenciesGrow) {
  Device device(1, still());
  device.setStep(10);
  HandoffOrder order;
  order.target = "ehrpd";
  order.notice = 100ms;
  order.duration = 200ms;
  device.orderHandoff(50, order);
  uint64_t last = 0;
  for (int at = 0; at <= 500; at += 10) {
    const Estimate estimate = device.step(at);
    const bool interrupted = at >= 150 && at < 350;
    EXPECT_EQ(interrupted, estimate.link.rate == 0) << at;
    if (interrupted) {
      EXPECT_GT(estimate.latency.dlLatency, last) << at;
      last = estimate.latency.dlLatency;
      EXPECT_EQ(LleProto::LTE, estimate.latency.rat);
    }
    if (at >= 350) {
      EXPECT_STREQ("ehrpd", device.technology().word);
      EXPECT_EQ(LleProto::WCDMA, estimate.latency.rat) << "the nearest that there is";
      EXPECT_LE(estimate.link.rate, 3162u);
      EXPECT_GE(estimate.latency.dlLatency, 60000u);
    }
  }
  EXPECT_GE(last, 190000u);
}

TEST(DeviceTest, SignalFadesBeforeAHandoffAndComesBackAfterIt) {
  ModelSettings settings = still();
  settings.rat = "wcdma";
  Device device(1, settings);
  device.setStep(100);
  HandoffOrder order;
  order.target = "lte";
  order.notice = 3000ms;
  device.orderHandoff(100, order);
  const auto best = [&device](const Estimate& estimate) {
    const Technology& technology = device.technology();
    return estimate.link.rate * 1000 /
           (estimate.link.downlink ? technology.downlinkRate : technology.uplinkRate);
  };
  device.step(0);
  Estimate estimate;
  for (int at = 100; at < 3100; at += 100) estimate = device.step(at);
  EXPECT_LT(best(estimate), 200u);
  EXPECT_GT(best(device.step(3200)), 300u);
}

TEST(DeviceTest, HandoffToWhereTheDeviceIsByThenChangesNothing) {
  Device device(1, still());
  HandoffOrder order;
  order.target = "lte";
  const uint64_t toTheSame = device.orderHandoff(100, order);
  EXPECT_FALSE(device.isPointless(toTheSame)) << "it may be elsewhere by then";
  device.moveTo(100);
  EXPECT_TRUE(device.isPointless(toTheSame));
  EXPECT_TRUE(phasesOf(device).empty());

  order.target = "5g";
  const uint64_t away = device.orderHandoff(200, order);
  order.target = "lte";
  device.orderHandoff(300, order);
  device.moveTo(5000);
  EXPECT_FALSE(device.isPointless(away));
  EXPECT_STREQ("5g", device.technology().word) << "the one under way goes on";
}

TEST(DeviceTest, FailedHandoffLeavesTheDeviceWhereItWas) {
  Device device(1, still());
  device.setStep(100);
  HandoffOrder order;
  order.target = "5g";
  order.result = HandoffOrder::Result::kFailure;
  device.orderHandoff(0, order);
  device.step(5000);
  EXPECT_STREQ("lte", device.technology().word);
  EXPECT_FALSE(device.inHandoff());
  const auto all = infos(phasesOf(device));
  EXPECT_EQ(1, std::count(all.begin(), all.end(), LliProto::HANDOFF_FAILURE));
  EXPECT_EQ(0, std::count(all.begin(), all.end(), LliProto::HANDOFF_SUCCESS));
}

TEST(DeviceTest, OrderedHandoffThatIsCalledOffNeverStarts) {
  Device device(1, still());
  HandoffOrder order;
  order.target = "5g";
  order.result = HandoffOrder::Result::kCalledOff;
  device.orderHandoff(0, order);
  device.moveTo(5000);
  const auto phases = phasesOf(device);
  ASSERT_EQ(2u, phases.size());
  EXPECT_EQ(LliProto::ENTRY, phases[0].indication.pre_handoff_state());
  EXPECT_EQ(1000u, phases[0].indication.estimated_time_to_interruption());
  EXPECT_EQ(LliProto::EXIT, phases[1].indication.pre_handoff_state());
}

TEST(DeviceTest, NewOrderEndsTheHandoffUnderWay) {
  Device device(1, still());
  device.setStep(100);
  HandoffOrder order;
  order.target = "5g";
  order.notice = 0ms;
  order.duration = 1000ms;
  device.orderHandoff(0, order);
  order.target = "wcdma";
  device.orderHandoff(500, order);
  device.moveTo(500);
  const auto phases = phasesOf(device);
  EXPECT_EQ((std::vector<LliProto::HandoffInfo>{LliProto::PRE_HANDOFF, LliProto::HANDOFF_START,
                                                LliProto::HANDOFF_FAILURE, LliProto::PRE_HANDOFF,
                                                LliProto::PRE_HANDOFF, LliProto::HANDOFF_START}),
            infos(phases));
  EXPECT_EQ(LliProto::EXIT, phases[3].indication.pre_handoff_state());
  EXPECT_EQ(LliProto::LLI_3GPP_5G, phases[3].indication.target_rat());
  device.moveTo(5000);
  EXPECT_STREQ("wcdma", device.technology().word);
}

TEST(DeviceTest, RampGoesFromOneRateToTheOtherAndStaysThere) {
  Device device(1, still());
  device.orderRate(1000, Ramp{50000, 2000, 1000ms});
  EXPECT_GT(device.step(999).link.rate, 0u);
  EXPECT_EQ(50000u, device.step(1000).link.rate);
  EXPECT_EQ(26000u, device.step(1500).link.rate);
  EXPECT_EQ(2000u, device.step(2000).link.rate);
  EXPECT_EQ(2000u, device.step(9000).link.rate);
  device.orderRate(10000, Ramp{{}, 4000, 1000ms});
  EXPECT_EQ(3000u, device.step(10500).link.rate) << "from what it was";
  device.orderRate(12000, std::nullopt);
  EXPECT_GT(device.step(12000).link.rate, 4000u) << "wanders again";
}

TEST(DeviceTest, LatencyIsHeldInBothDirections) {
  ModelSettings settings = still();
  settings.latency = 30000;
  settings.rate = 7000;
  Device device(1, settings);
  EXPECT_EQ(7000u, device.step(0).link.rate);
  EXPECT_EQ(30000u, device.step(1).latency.ulLatency);
  device.orderLatency(10, Ramp{{}, 130000, 100ms});
  EXPECT_EQ(80000u, device.step(60).latency.dlLatency);
  EXPECT_EQ(130000u, device.step(200).latency.ulLatency);
}

TEST(DeviceTest, TechnologyCanBeChangedWithoutAHandoff) {
  ModelSettings settings = still();
  settings.rat = "wcdma";
  Device device(1, settings);
  EXPECT_EQ(LleProto::WCDMA, device.step(0).latency.rat);
  device.orderTechnology(10, "5g");
  EXPECT_EQ(LleProto::NR5G, device.step(10).latency.rat);
  EXPECT_TRUE(phasesOf(device).empty());
  device.orderTechnology(20, "none");
  EXPECT_EQ(0u, device.step(20).link.rate);
}

TEST(TechnologyTest, EachOneThatAnIndicationCanNameHasAWord) {
  std::set<std::string> words;
  for (int rat = LliProto::LliRatType_MIN; rat <= LliProto::LliRatType_MAX; ++rat) {
    const Technology& technology = technologyOf(static_cast<LliProto::LliRatType>(rat));
    EXPECT_EQ(rat, technology.rat);
    EXPECT_EQ(&technology, orbsim::technologyNamed(technology.word));
    EXPECT_LE(technology.uplinkRate, technology.downlinkRate);
    EXPECT_LT(technology.uplinkLatency.low, technology.uplinkLatency.high);
    EXPECT_LT(technology.downlinkLatency.low, technology.downlinkLatency.high);
    words.insert(technology.word);
  }
  EXPECT_EQ(12u, words.size());
  EXPECT_EQ("none wcdma geran lte tdscdma wlan 5g ciwlan 1x hrpd ehrpd wlan2",
            orbsim::technologyWords());
  EXPECT_FALSE(orbsim::isTechnologyWord("6g"));
}

}  // namespace
}  // namespace orbsimtest
