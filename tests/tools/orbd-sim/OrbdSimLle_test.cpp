// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The daemon stand-in's link latency service and its log.

#include "OrbdSimClient.h"
#include "OrbdSimCourse.h"

namespace orbsimtest {
namespace {

using Request = LleProto::ServiceMsg;
using orbsim::LatencyEstimate;
using orbsim::LleState;

class OrbdSimLleTest : public OrbdSimTest {
 protected:
  void SetUp() override {
    OrbdSimTest::SetUp();
    connect();
  }
  void connect() {
    mClient = std::make_unique<Client>(path(), kLlePid);
    mClient->handshake();
  }
  void setInterval(int milliseconds) {
    daemon().setReportInterval(std::chrono::milliseconds(milliseconds));
  }
  Client& client() { return *mClient; }
  LleProto::Status statusOf(const Request& request) {
    const auto answer = client().answerTo(request);
    EXPECT_EQ(LleProto::STATUS_IND, answer.event_id());
    return answer.data().status_msg().status();
  }
  LleProto::ClientMsg read() { return parse<Request>(client().readFrame()); }
  LleProto::GetReportResp lastReport() {
    const auto answer = client().answerTo(lleGetLast());
    EXPECT_EQ(LleProto::GET_REPORT_RESP, answer.event_id());
    EXPECT_TRUE(answer.data().has_get_report_resp());
    return answer.data().get_report_resp();
  }
  // Skips the reports that were on their way before the status.
  void readStatus() {
    while (read().event_id() != LleProto::STATUS_IND) {
    }
  }

  std::unique_ptr<Client> mClient;
};

template <class Report>
void expectEstimate(const LatencyEstimate& expected, uint32_t interval, const Report& report) {
  EXPECT_TRUE(report.status());
  EXPECT_EQ(1u, report.ul_report_status());
  EXPECT_EQ(expected.ulLatency, report.ul_latency_estimation());
  EXPECT_EQ(expected.ulVariance, report.ul_variance_estimation());
  EXPECT_EQ(1u, report.dl_report_status());
  EXPECT_EQ(expected.dlLatency, report.dl_latency_estimation());
  EXPECT_EQ(expected.dlVariance, report.dl_variance_estimation());
  EXPECT_EQ(interval, report.report_interval());
  EXPECT_EQ(expected.rat, report.rat());
}

TEST_F(OrbdSimLleTest, CriteriaAreKeptAndAnsweredWithSuccess) {
  setInterval(0);
  EXPECT_EQ(LleProto::SUCCESS, statusOf(lleCriteria(4294967295u)));
  ASSERT_TRUE(
      daemon().waitForLleState(1, [](const auto& state) { return state.criteria == 4294967295u; }));
  EXPECT_EQ(LleProto::SUCCESS, statusOf(lleCriteria(0)));
  ASSERT_TRUE(daemon().waitForLleState(1, [](const auto& state) { return state.criteria == 0; }));
}

TEST_F(OrbdSimLleTest, CriteriaOtherThanZeroStartReportsThatFollowTheDevice) {
  setInterval(kUnhurried);
  EXPECT_EQ(LleProto::SUCCESS, statusOf(lleCriteria(7)));
  Course course(kUnhurried);
  for (int i = 0; i < 60; ++i) {
    const auto message = read();
    ASSERT_EQ(LleProto::IND_REPORT_RESP, message.event_id());
    ASSERT_TRUE(message.data().has_ind_report_resp());
    expectEstimate(course.next().latency, kUnhurried, message.data().ind_report_resp());
  }
  ASSERT_TRUE(daemon().waitForLleState(1, [](const auto& state) { return state.reports >= 60; }));
}

TEST_F(OrbdSimLleTest, CriteriaOfZeroStopReports) {
  setInterval(1);
  statusOf(lleCriteria(7));
  EXPECT_EQ(LleProto::IND_REPORT_RESP, read().event_id());
  client().send(lleCriteria(0));
  readStatus();
  const auto sent = daemon().lleState(1).reports;
  EXPECT_EQ(LleProto::SUCCESS, statusOf(enable<Request>(true)));
  EXPECT_EQ(sent, daemon().lleState(1).reports);
}

TEST_F(OrbdSimLleTest, DisableForgetsTheCriteria) {
  setInterval(1);
  statusOf(lleCriteria(7));
  client().send(enable<Request>(false));
  ASSERT_TRUE(daemon().waitForLleState(
      1, [](const LleState& state) { return !state.enabled && state.criteria == 0; }));
  readStatus();
  EXPECT_FALSE(lastReport().status());
}

TEST_F(OrbdSimLleTest, LastReportWithoutCriteriaIsNotValidAndEmpty) {
  client().send(lleGetLast());
  EXPECT_EQ((Blob{8, 0, 0, 0, 8, 1, 0x1A, 2, 0x12, 0}), client().readFrame().payload);
}

TEST_F(OrbdSimLleTest, LastReportIsNewWhileNoReportsAreRunning) {
  setInterval(0);
  statusOf(lleCriteria(1));
  Course course(0);
  expectEstimate(course.next().latency, 0, lastReport());
  expectEstimate(course.next().latency, 0, lastReport());
}

TEST_F(OrbdSimLleTest, LastReportIsTheOneSentWhileReportsAreRunning) {
  setInterval(3600000);
  statusOf(lleCriteria(1));
  const auto sent = read().data().ind_report_resp();
  const LatencyEstimate expected = Course(3600000).next().latency;
  expectEstimate(expected, 3600000, sent);
  expectEstimate(expected, 3600000, lastReport());
  expectEstimate(expected, 3600000, lastReport());
}

TEST_F(OrbdSimLleTest, RequestWithoutItsBodyIsAnInvalidArgument) {
  Request request;
  EXPECT_EQ(LleProto::INVALID_ARG, statusOf(request));
  request.set_event_id(LleProto::SET_REPORTING_CRITERIA);
  EXPECT_EQ(LleProto::INVALID_ARG, statusOf(request));
}

TEST_F(OrbdSimLleTest, RequestThatLleDoesNotHaveIsNotSupported) {
  Request request;
  request.set_event_id(LleProto::REG_ESTIMATION_REPORTS);
  EXPECT_EQ(LleProto::NOT_SUPPORTED, statusOf(request));
}

TEST_F(OrbdSimLleTest, LogTellsEachEventInOneLine) {
  LogLines log;
  Options options;
  options.reportInterval = std::chrono::milliseconds(0);
  options.log = log.sink();
  startDaemon(options);
  connect();
  client().answerTo(enable<Request>(true));
  client().answerTo(lleGetLast());
  client().answerTo(lleCriteria(9));
  const auto report = lastReport();
  client().sendPayload({8, 0, 0, 0, 0x1A, 0x7F});
  read();
  client().close();
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  mDaemon.reset();
  const std::string session = sessionOf(kLlePid) + "lle: ";
  EXPECT_EQ(
      (std::vector<std::string>{
          "listening on " + path(), sessionOf(kLlePid) + "open", session + "ENABLE enable=true",
          session + "-> STATUS_IND SUCCESS", session + "GET_LAST_ESTIMATION_REPORT",
          session + "-> GET_REPORT_RESP status=false rat=WCDMA ul_status=0 ul_latency=0 "
                    "ul_variance=0 dl_status=0 dl_latency=0 dl_variance=0 interval=0",
          session + "SET_REPORTING_CRITERIA criteria=9", session + "-> STATUS_IND SUCCESS",
          session + "GET_LAST_ESTIMATION_REPORT",
          session + "-> GET_REPORT_RESP status=true rat=LTE ul_status=1 ul_latency=" +
              std::to_string(report.ul_latency_estimation()) +
              " ul_variance=" + std::to_string(report.ul_variance_estimation()) +
              " dl_status=1 dl_latency=" + std::to_string(report.dl_latency_estimation()) +
              " dl_variance=" + std::to_string(report.dl_variance_estimation()) + " interval=0",
          session + "request of 2 bytes cannot be read", session + "-> STATUS_IND INVALID_ARG",
          sessionOf(kLlePid) + "closed", "stopped"}),
      log.lines());
}

}  // namespace
}  // namespace orbsimtest
