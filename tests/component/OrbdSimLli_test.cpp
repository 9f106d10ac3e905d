// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The daemon stand-in's link interruption service, its handoff model and its log.

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "OrbdSimClient.h"
#include "orbsim/HandoffModel.h"

namespace orbsimtest {
namespace {

using Request = LliProto::ServiceMsg;
using LliProto::LliIndResp;
using orbsim::HandoffModel;
using orbsim::LliState;

class OrbdSimLliTest : public OrbdSimTest {
 protected:
  void SetUp() override {
    OrbdSimTest::SetUp();
    connect();
  }
  void connect() {
    mClient = std::make_unique<Client>(path(), kLliPid);
    mClient->handshake();
  }
  Client& client() { return *mClient; }
  void setInterval(int milliseconds) {
    daemon().setReportInterval(std::chrono::milliseconds(milliseconds));
  }
  LliProto::Status statusOf(const Request& request) {
    const auto answer = client().answerTo(request);
    EXPECT_EQ(LliProto::STATUS_IND, answer.event_id());
    return answer.data().status_msg().status();
  }
  LliProto::ClientMsg read() { return parse<Request>(client().readFrame()); }
  LliIndResp readStep() {
    const auto message = read();
    EXPECT_EQ(LliProto::LLI_IND_RESP, message.event_id());
    EXPECT_TRUE(message.data().has_lli_ind_resp());
    return message.data().lli_ind_resp();
  }
  // Reads past the indications that were on their way before the status.
  void readStatus() {
    while (read().event_id() != LliProto::STATUS_IND) {
    }
  }

  std::unique_ptr<Client> mClient;
};

LliIndResp nextStep(HandoffModel& model, uint64_t stepMs) {
  for (;;) {
    if (const auto step = model.next(stepMs)) return *step;
  }
}

// One handoff of the model, from its entry to its exit.
std::vector<LliIndResp> nextHandoff(HandoffModel& model, uint64_t stepMs) {
  std::vector<LliIndResp> steps;
  do {
    steps.push_back(nextStep(model, stepMs));
  } while (steps.back().pre_handoff_state() != LliProto::EXIT);
  return steps;
}

std::vector<LliProto::HandoffInfo> infos(const std::vector<LliIndResp>& steps) {
  std::vector<LliProto::HandoffInfo> all;
  for (const LliIndResp& step : steps) all.push_back(step.handoff_info());
  return all;
}

TEST_F(OrbdSimLliTest, EnableAndDisableAreAnsweredWithSuccess) {
  EXPECT_EQ(LliProto::SUCCESS, statusOf(enable<Request>(true)));
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return state.enabled; }));
  EXPECT_EQ(LliProto::SUCCESS, statusOf(enable<Request>(false)));
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return !state.enabled; }));
}

TEST_F(OrbdSimLliTest, AnswersAreFramesOfTheInterruptionServiceToItsEndpoint) {
  client().send(enable<Request>(true));
  const Frame answer = client().readFrame();
  EXPECT_EQ(orbsim::kDaemonProcessId, answer.header.source);
  EXPECT_EQ(kLliPid, answer.header.destination);
  EXPECT_EQ(orbsim::kSendBlobMessageId, answer.header.messageId);
  EXPECT_EQ((Blob{9, 0, 0, 0, 0x1A, 4, 0x0A, 2, 8, 1}), answer.payload);
}

TEST_F(OrbdSimLliTest, RegistrationIsAnsweredWithSuccessAndKept) {
  setInterval(0);
  EXPECT_EQ(LliProto::SUCCESS, statusOf(lliRegister(true)));
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return state.registered; }));
  EXPECT_EQ(LliProto::SUCCESS, statusOf(lliRegister(false)));
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return !state.registered; }));
  EXPECT_EQ(0u, daemon().lliState(1).reports);
}

TEST_F(OrbdSimLliTest, RegisteredClientHearsTheHandoffsOfTheModel) {
  setInterval(1);
  statusOf(lliRegister(true));
  HandoffModel model(Options{}.seed);
  for (int i = 0; i < 100; ++i) {
    const LliIndResp expected = nextStep(model, 1);
    ASSERT_EQ(serialize(expected), serialize(readStep())) << "step " << i;
  }
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return state.reports >= 100; }));
}

TEST_F(OrbdSimLliTest, UnregisteredClientHearsNothingMore) {
  setInterval(1);
  statusOf(lliRegister(true));
  readStep();
  client().send(lliRegister(false));
  readStatus();
  const auto sent = daemon().lliState(1).reports;
  EXPECT_EQ(LliProto::SUCCESS, statusOf(enable<Request>(true)));
  EXPECT_EQ(sent, daemon().lliState(1).reports);
}

TEST_F(OrbdSimLliTest, NewRegistrationHearsTheNextHandoffFromItsEntry) {
  setInterval(3600000);
  statusOf(lliRegister(true));
  EXPECT_EQ(LliProto::PRE_HANDOFF, readStep().handoff_info());
  statusOf(lliRegister(false));
  statusOf(lliRegister(true));
  const LliIndResp step = readStep();
  EXPECT_EQ(LliProto::PRE_HANDOFF, step.handoff_info());
  EXPECT_EQ(LliProto::ENTRY, step.pre_handoff_state());
}

TEST_F(OrbdSimLliTest, RepeatedRegistrationDoesNotInterruptTheHandoff) {
  setInterval(1);
  statusOf(lliRegister(true));
  HandoffModel model(Options{}.seed);
  EXPECT_EQ(serialize(nextStep(model, 1)), serialize(readStep()));
  client().send(lliRegister(true));
  bool answered = false;
  for (int steps = 0; steps < 20 || !answered;) {
    const auto message = read();
    if (message.event_id() == LliProto::STATUS_IND) {
      answered = true;
      continue;
    }
    ++steps;
    ASSERT_EQ(serialize(nextStep(model, 1)), serialize(message.data().lli_ind_resp()));
  }
}

TEST_F(OrbdSimLliTest, DisableUnregisters) {
  setInterval(1);
  statusOf(lliRegister(true));
  client().send(enable<Request>(false));
  ASSERT_TRUE(daemon().waitForLliState(
      1, [](const LliState& state) { return !state.enabled && !state.registered; }));
}

TEST_F(OrbdSimLliTest, RequestWithoutItsBodyIsAnInvalidArgument) {
  Request request;
  EXPECT_EQ(LliProto::INVALID_ARG, statusOf(request));
  request.set_event_id(LliProto::REG_LINK_INTERRUPT_IND);
  EXPECT_EQ(LliProto::INVALID_ARG, statusOf(request));
}

TEST_F(OrbdSimLliTest, UnknownRequestIsNotSupported) {
  Request request;
  request.set_event_id(static_cast<LliProto::ServiceEventId>(2));
  EXPECT_EQ(LliProto::NOT_SUPPORTED, statusOf(request));
}

TEST_F(OrbdSimLliTest, BlobThatCannotBeReadIsAnInvalidArgument) {
  client().sendPayload({9, 0, 0, 0, 0x1A, 0x7F});
  EXPECT_EQ(LliProto::INVALID_ARG, read().data().status_msg().status());
}

TEST_F(OrbdSimLliTest, LogTellsEachEventInOneLine) {
  LogLines log;
  Options options;
  options.reportInterval = std::chrono::milliseconds(3600000);
  options.log = log.sink();
  startDaemon(options);
  connect();
  client().answerTo(lliRegister(true));
  const LliIndResp step = readStep();
  client().answerTo(lliRegister(false));
  client().send(Request{});
  read();
  client().close();
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  mDaemon.reset();
  const std::string session = sessionOf(kLliPid) + "lli: ";
  EXPECT_EQ((std::vector<std::string>{
                "listening on " + path(), sessionOf(kLliPid) + "open",
                session + "REG_LINK_INTERRUPT_IND register=true", session + "-> STATUS_IND SUCCESS",
                session +
                    "-> LLI_IND_RESP info=PRE_HANDOFF state=ENTRY source=LLI_3GPP_LTE "
                    "target=" +
                    LliProto::LliRatType_Name(step.target_rat()) +
                    " time=" + std::to_string(step.estimated_time_to_interruption()) +
                    " duration=" + std::to_string(step.estimated_interruption_duration()),
                session + "REG_LINK_INTERRUPT_IND register=false",
                session + "-> STATUS_IND SUCCESS", session + "ENABLE",
                session + "-> STATUS_IND INVALID_ARG", sessionOf(kLliPid) + "closed", "stopped"}),
            log.lines());
}

TEST(HandoffModelTest, SameSeedGivesSameHandoffs) {
  HandoffModel one(7);
  HandoffModel two(7);
  HandoffModel other(8);
  bool differs = false;
  for (int i = 0; i < 300; ++i) {
    const auto first = one.next(500);
    const auto second = two.next(500);
    const auto third = other.next(500);
    ASSERT_EQ(first.has_value(), second.has_value());
    if (first) {
      EXPECT_EQ(serialize(*first), serialize(*second));
    }
    differs = differs || first.has_value() != third.has_value() ||
              (first && serialize(*first) != serialize(*third));
  }
  EXPECT_TRUE(differs);
}

TEST(HandoffModelTest, StepsComeInTheOrderOfAHandoff) {
  HandoffModel model(1);
  int succeeded = 0;
  int failed = 0;
  int calledOff = 0;
  for (int i = 0; i < 300; ++i) {
    const std::vector<LliIndResp> steps = nextHandoff(model, 500);
    const auto all = infos(steps);
    ASSERT_EQ(LliProto::PRE_HANDOFF, all.front());
    ASSERT_EQ(LliProto::PRE_HANDOFF, all.back());
    for (size_t k = 0; k + 1 < steps.size(); ++k) {
      EXPECT_EQ(LliProto::ENTRY, steps[k].pre_handoff_state());
    }
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

TEST(HandoffModelTest, TimeToInterruptionCountsDownToTheStart) {
  HandoffModel model(1);
  for (int i = 0; i < 100; ++i) {
    uint64_t last = ~uint64_t{0};
    for (const LliIndResp& step : nextHandoff(model, 500)) {
      const uint64_t time = step.estimated_time_to_interruption();
      const uint64_t duration = step.estimated_interruption_duration();
      const bool over = last == 0;  // the interruption has begun, or there is none
      const bool exit = step.pre_handoff_state() == LliProto::EXIT;
      if (over || exit) {
        EXPECT_EQ(0u, time);
        EXPECT_EQ(0u, duration);
      } else {
        EXPECT_LT(time, last);
        EXPECT_TRUE(last == ~uint64_t{0} || last - time == 500) << "the time between two steps";
        EXPECT_EQ(step.handoff_info() == LliProto::HANDOFF_START, time == 0);
        EXPECT_GE(duration, 20u);
        EXPECT_LE(duration, 200u);
      }
      last = time;
    }
  }
}

TEST(HandoffModelTest, CountdownKeepsThePaceOfItsEntry) {
  HandoffModel model(1);
  uint64_t stepMs = 1;
  for (int i = 0; i < 20; ++i) {
    uint64_t last = ~uint64_t{0};
    do {
      stepMs *= 3;  // changed at every step
      const LliIndResp step = nextStep(model, stepMs % 10007);
      if (step.pre_handoff_state() == LliProto::EXIT) break;
      if (last == 0) continue;
      EXPECT_LT(step.estimated_time_to_interruption(), last);
      last = step.estimated_time_to_interruption();
    } while (true);
  }
}

TEST(HandoffModelTest, HandoffsAreBetweenTwoTechnologiesAndSetOutFromWhereTheDeviceIs) {
  HandoffModel model(1);
  LliProto::LliRatType here = LliProto::LLI_3GPP_LTE;
  std::pair<int, int> before{-1, -1};
  std::set<int> seen;
  for (int i = 0; i < 200; ++i) {
    const std::vector<LliIndResp> steps = nextHandoff(model, 500);
    const auto source = steps.front().source_rat();
    const auto target = steps.front().target_rat();
    for (const LliIndResp& step : steps) {
      EXPECT_EQ(source, step.source_rat());
      EXPECT_EQ(target, step.target_rat());
    }
    EXPECT_EQ(here, source);
    EXPECT_NE(source, target);
    EXPECT_NE(LliProto::NULL_BEARER, target);
    EXPECT_TRUE(LliProto::LliRatType_IsValid(target));
    EXPECT_NE(before, std::make_pair(int{source}, int{target}));
    before = {source, target};
    seen.insert(target);
    const auto all = infos(steps);
    if (std::count(all.begin(), all.end(), LliProto::HANDOFF_SUCCESS) == 1) here = target;
  }
  EXPECT_EQ(6u, seen.size());
}

TEST(HandoffModelTest, PauseOfSomeStepsLiesBetweenTwoHandoffs) {
  HandoffModel model(1);
  EXPECT_TRUE(HandoffModel(1).next(500).has_value()) << "none before the first";
  for (int i = 0; i < 100; ++i) {
    nextHandoff(model, 500);
    HandoffModel rest = model;
    int pause = 0;
    while (!rest.next(500)) ++pause;
    EXPECT_GE(pause, 2);
    EXPECT_LE(pause, 5);
  }
}

TEST(HandoffModelTest, AbandonedHandoffIsFollowedByAnEntry) {
  HandoffModel model(1);
  for (int taken = 1; taken < 12; ++taken) {
    for (int k = 0; k < taken; ++k) model.next(500);
    model.abandon();
    const auto step = model.next(500);
    ASSERT_TRUE(step.has_value());
    EXPECT_EQ(LliProto::PRE_HANDOFF, step->handoff_info());
    EXPECT_EQ(LliProto::ENTRY, step->pre_handoff_state());
  }
}

}  // namespace
}  // namespace orbsimtest
