// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The time of the daemon stand-in's device, which all services of all sessions share.

#include "OrbdSimClient.h"
#include "OrbdSimCourse.h"
#include "orbsim/World.h"

namespace orbsimtest {
namespace {

using namespace std::chrono_literals;
using orbsim::Begin;
using orbsim::Estimate;
using orbsim::HandoffOrder;
using orbsim::Ramp;

class OrbdSimWorldTest : public OrbdSimTest {
 protected:
  void start(Begin begin, int interval, std::set<uint32_t> with = {}) {
    Options options;
    options.reportInterval = std::chrono::milliseconds(interval);
    options.model.begin = begin;
    options.model.beginWith = std::move(with);
    options.model.handoffs = false;
    startDaemon(options);
  }
};

TEST_F(OrbdSimWorldTest, TimeBeginsWithTheFirstReportThatIsWanted) {
  start(Begin::kFirstUse, 3600000);
  Client client(path());
  client.handshake();
  client.answerTo(enable(true));
  client.answerTo(criteria(1, {}, 0));
  EXPECT_FALSE(daemon().world().begun());
  EXPECT_FALSE(daemon().world().now().has_value());
  client.answerTo(getLast());
  EXPECT_TRUE(daemon().world().begun());
  ASSERT_TRUE(daemon().world().now().has_value());
}

TEST_F(OrbdSimWorldTest, TimeMayBeginWithTheDaemonOrTheFirstSession) {
  start(Begin::kListening, 0);
  EXPECT_TRUE(daemon().world().begun());
  start(Begin::kConnected, 0);
  EXPECT_FALSE(daemon().world().begun());
  Client client(path());
  client.handshake();
  ASSERT_TRUE(daemon().waitForSessions(1));
  client.answerTo(enable(true));
  EXPECT_TRUE(daemon().world().begun());
}

TEST_F(OrbdSimWorldTest, TimeThatWaitsForServicesBeginsForAllOfThemTogether) {
  start(Begin::kReporting, 3600000, {orbsim::kSdkTypeLce, orbsim::kSdkTypeLle});
  Client lce(path());
  lce.handshake();
  lce.answerTo(criteria(1, {}, 0));
  lce.send(action(LceProto::START));
  ASSERT_TRUE(daemon().waitForLceState(1, [](const auto& state) { return state.reporting; }));
  EXPECT_FALSE(daemon().world().begun());
  EXPECT_FALSE(lce.hasInput());
  Client lle(path(), kLlePid);
  lle.handshake();
  lle.answerTo(lleCriteria(1));
  const auto latency = parse<LleProto::ServiceMsg>(lle.readFrame()).data().ind_report_resp();
  const auto capacity = parse(lce.readFrame()).data().estimation_reports_resp();
  orbsim::ModelSettings settings;
  settings.handoffs = false;
  orbsim::Device device(1, settings);
  const Estimate first = device.step(0);
  EXPECT_EQ(first.link.rate, capacity.rate());
  EXPECT_EQ(first.latency.ulLatency, latency.ul_latency_estimation());
}

TEST_F(OrbdSimWorldTest, ServicesOfDifferentSessionsTellTheSameMoment) {
  start(Begin::kFirstUse, 3600000);
  daemon().world().orderRate(Ramp{{}, 4321, {}});
  daemon().world().orderLatency(Ramp{{}, 56789, {}});
  Client lce(path());
  Client lle(path(), kLlePid);
  lce.handshake();
  lle.handshake();
  lce.answerTo(criteria(1, {}, 0));
  lce.send(action(LceProto::START));
  EXPECT_EQ(4321u, parse(lce.readFrame()).data().estimation_reports_resp().rate());
  lle.answerTo(lleCriteria(1));
  const auto report = parse<LleProto::ServiceMsg>(lle.readFrame()).data().ind_report_resp();
  EXPECT_EQ(56789u, report.ul_latency_estimation());
  EXPECT_EQ(56789u, report.dl_latency_estimation());
}

TEST_F(OrbdSimWorldTest, OrderedHandoffIsToldAtItsTimesToWhoeverIsRegistered) {
  using Request = LliProto::ServiceMsg;
  start(Begin::kFirstUse, 0);
  Client client(path(), kLliPid);
  client.handshake();
  client.answerTo(lliRegister(true));
  HandoffOrder order;
  order.target = "wlan";
  order.notice = 0ms;
  order.duration = 30ms;
  const auto before = std::chrono::steady_clock::now();
  daemon().world().orderHandoff(order);
  std::vector<LliProto::HandoffInfo> infos;
  std::chrono::steady_clock::time_point outcome;
  for (int i = 0; i < 4; ++i) {
    const auto step = parse<Request>(client.readFrame()).data().lli_ind_resp();
    EXPECT_EQ(LliProto::LLI_3GPP_WLAN, step.target_rat());
    infos.push_back(step.handoff_info());
    if (i == 2) outcome = std::chrono::steady_clock::now();
  }
  EXPECT_EQ((std::vector<LliProto::HandoffInfo>{LliProto::PRE_HANDOFF, LliProto::HANDOFF_START,
                                                LliProto::HANDOFF_SUCCESS, LliProto::PRE_HANDOFF}),
            infos);
  EXPECT_GE(outcome - before, 29ms) << "as long as it was told";
  EXPECT_EQ("wlan", daemon().world().view().rat);
}

TEST_F(OrbdSimWorldTest, NothingIsToldUnaskedWhilePausedAndThePastIsNotToldLater) {
  start(Begin::kFirstUse, 1);
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  client.send(action(LceProto::START));
  client.readFrame();
  daemon().world().setPaused(true);
  EXPECT_TRUE(daemon().world().paused());
  // Reports on their way come before this answer, and nothing comes after it.
  client.send(enable(true));
  while (parse(client.readFrame()).event_id() != LceProto::STATUS_IND) {
  }
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
  const auto told = daemon().lceState(1).reports;
  const auto tick = daemon().world().tick(std::chrono::steady_clock::now());
  while (daemon().world().tick(std::chrono::steady_clock::now()) < tick + 20) {
    EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
  }
  EXPECT_EQ(told, daemon().lceState(1).reports);
  daemon().world().setPaused(false);
  const auto next = parse(client.readFrame()).data().estimation_reports_resp();
  orbsim::ModelSettings settings;
  settings.handoffs = false;
  orbsim::Device device(1, settings);
  uint64_t found = 0;
  for (uint64_t i = 0; i < 100000 && found == 0; ++i) {
    const Estimate estimate = device.step(static_cast<int64_t>(i));
    const bool same =
        estimate.link.rate == next.rate() && estimate.link.queueSizeUl == next.queue_size_ul();
    if (same && i >= tick + 20) found = i;
  }
  EXPECT_GE(found, tick + 20);
}

TEST(WorldTest, TicksAreThoseOfTheModelsTimeHoweverLateTheyAreAsked) {
  orbsim::ModelSettings settings;
  settings.begin = Begin::kListening;
  orbsim::World world(1, settings, 1ms);
  world.listening();
  Course course(1);
  uint64_t number = 0;
  for (uint64_t i = 0; i < 50; ++i) {
    const Estimate estimate = world.estimate(i);
    while (world.tick(std::chrono::steady_clock::now()) < i) std::this_thread::yield();
    Estimate expected = course.next();
    const Estimate told = world.estimate(i);
    // A test that the machine kept from running finds the oldest one that is remembered.
    const bool forgotten =
        world.tick(std::chrono::steady_clock::now()) >= i + orbsim::World::kRemembered;
    EXPECT_TRUE(told.at == static_cast<int64_t>(i) || forgotten) << told.at << ", not " << i;
    for (i = static_cast<uint64_t>(told.at); expected.at < told.at;) expected = course.next();
    EXPECT_EQ(expected.link.rate, told.link.rate);
    EXPECT_EQ(expected.latency.ulLatency, told.latency.ulLatency);
    EXPECT_LE(estimate.at, told.at);
  }
  // A thread that is too late continues with the current tick.
  while (world.tick(std::chrono::steady_clock::now()) < 300) std::this_thread::yield();
  ASSERT_TRUE(world.tickDue(number).has_value());
  EXPECT_GE(number, 300u);
}

TEST(WorldTest, ChangedIntervalGoesOnFromThePresent) {
  orbsim::ModelSettings settings;
  settings.begin = Begin::kListening;
  orbsim::World world(1, settings, 3600000ms);
  world.listening();
  EXPECT_EQ(0u, world.tick(std::chrono::steady_clock::now()));
  world.setInterval(60000ms);
  uint64_t next = 1;
  const auto due = world.tickDue(next);
  ASSERT_TRUE(due.has_value());
  EXPECT_EQ(1u, next);
  const auto wait = *due - std::chrono::steady_clock::now();
  EXPECT_GT(wait, 0s);
  EXPECT_LE(wait, 60s);
}

}  // namespace
}  // namespace orbsimtest
