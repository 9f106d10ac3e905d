// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The daemon stand-in's link interruption service and its log.

#include "OrbdSimClient.h"
#include "OrbdSimCourse.h"

namespace orbsimtest {
namespace {

using Request = LliProto::ServiceMsg;
using LliProto::LliIndResp;
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
  // Skips the indications that were on their way before the status.
  void readStatus() {
    while (read().event_id() != LliProto::STATUS_IND) {
    }
  }

  std::unique_ptr<Client> mClient;
};

TEST_F(OrbdSimLliTest, RegistrationIsAnsweredWithSuccessAndKept) {
  setInterval(0);
  EXPECT_EQ(LliProto::SUCCESS, statusOf(lliRegister(true)));
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return state.registered; }));
  EXPECT_EQ(LliProto::SUCCESS, statusOf(lliRegister(false)));
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return !state.registered; }));
  EXPECT_EQ(0u, daemon().lliState(1).reports);
}

TEST_F(OrbdSimLliTest, RegisteredClientHearsTheHandoffsOfTheDevice) {
  setInterval(1);
  statusOf(lliRegister(true));
  Course course(1);
  for (int i = 0; i < 100; ++i) {
    const LliIndResp expected = course.nextPhase();
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
  Course course(1);
  EXPECT_EQ(serialize(course.nextPhase()), serialize(readStep()));
  client().send(lliRegister(true));
  bool answered = false;
  for (int steps = 0; steps < 20 || !answered;) {
    const auto message = read();
    if (message.event_id() == LliProto::STATUS_IND) {
      answered = true;
      continue;
    }
    ++steps;
    ASSERT_EQ(serialize(course.nextPhase()), serialize(message.data().lli_ind_resp()));
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

TEST_F(OrbdSimLliTest, FirstNumberBehindTheRequestsIsNotSupported) {
  Request request;
  request.set_event_id(static_cast<LliProto::ServiceEventId>(2));
  EXPECT_EQ(LliProto::NOT_SUPPORTED, statusOf(request));
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

}  // namespace
}  // namespace orbsimtest
