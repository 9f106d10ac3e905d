// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The daemon stand-in's link capacity service and its log.

#include "OrbdSimClient.h"
#include "OrbdSimCourse.h"

namespace orbsimtest {
namespace {

using OrbdSimLceTest = OrbdSimTest;

TEST_F(OrbdSimLceTest, CriteriaAreAnsweredUnderTheirTransactionId) {
  Client client(path());
  client.handshake();
  const auto answer = client.answerTo(criteria(4294967295u, {10, 20}, 2));
  EXPECT_EQ(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT, answer.event_id());
  EXPECT_EQ(4294967295u, answer.transaction_id());
  EXPECT_TRUE(answer.data().set_reporting_criteria_resp().success());
  EXPECT_EQ("NONE", answer.data().set_reporting_criteria_resp().error());
  ASSERT_TRUE(daemon().waitForLceState(1, [](const auto& state) { return state.criteriaSet; }));
  LceProto::SetReportingCriteria kept;
  const Blob bytes = daemon().lceState(1).criteria;
  ASSERT_TRUE(kept.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())));
  EXPECT_EQ(2, kept.first_list_size());
}

TEST_F(OrbdSimLceTest, CountThatDiffersFromItsListIsAnInvalidArgument) {
  Client client(path());
  client.handshake();
  const auto answer = client.answerTo(criteria(5, {10, 20}, 3));
  EXPECT_EQ(5u, answer.transaction_id());
  EXPECT_FALSE(answer.data().set_reporting_criteria_resp().success());
  EXPECT_EQ("INVALID_ARGUMENTS", answer.data().set_reporting_criteria_resp().error());
  const auto report = client.answerTo(getLast()).data().get_last_estimation_report_resp();
  EXPECT_EQ("REPORTING_CRITERIA_NOT_SET", report.error_string());
}

TEST_F(OrbdSimLceTest, LastReportNeedsCriteria) {
  Client client(path());
  client.handshake();
  auto answer = client.answerTo(getLast());
  EXPECT_EQ(LceProto::GET_LAST_ESTIMATION_REPORT_IND, answer.event_id());
  EXPECT_EQ("REPORTING_CRITERIA_NOT_SET",
            answer.data().get_last_estimation_report_resp().error_string());
  client.answerTo(criteria(1, {}, 0));
  answer = client.answerTo(getLast());
  EXPECT_EQ("NONE", answer.data().get_last_estimation_report_resp().error_string());
  EXPECT_NE(0u, answer.data().get_last_estimation_report_resp().rate());
}

TEST_F(OrbdSimLceTest, StartedReportsFollowTheDeviceUntilStopped) {
  daemon().setReportInterval(std::chrono::milliseconds(kUnhurried));
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  client.send(action(LceProto::START));
  Course course(kUnhurried);
  for (int i = 0; i < 20; ++i) {
    const auto message = parse(client.readFrame());
    ASSERT_EQ(LceProto::ESTIMATION_REPORTS_IND, message.event_id());
    const auto& report = message.data().estimation_reports_resp();
    const orbsim::LinkEstimate expected = course.next().link;
    EXPECT_EQ(expected.rate, report.rate());
    EXPECT_EQ(expected.confidence, static_cast<uint32_t>(report.confidence_level()));
    EXPECT_EQ(expected.downlink, report.link_direction() == LceProto::DOWN_LINK);
    EXPECT_EQ(expected.queueSizeUl, report.queue_size_ul());
    EXPECT_EQ("NONE", report.error_string());
  }
  client.send(action(LceProto::STOP));
  ASSERT_TRUE(daemon().waitForLceState(1, [](const auto& state) { return !state.reporting; }));
  // Reports on their way come before the answer to the next request; nothing comes after it.
  client.send(enable(true));
  while (parse(client.readFrame()).event_id() != LceProto::STATUS_IND) {
  }
  const auto sent = daemon().lceState(1).reports;
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
  EXPECT_EQ(sent, daemon().lceState(1).reports);
}

TEST_F(OrbdSimLceTest, DisableStopsReports) {
  daemon().setReportInterval(std::chrono::milliseconds(1));
  Client client(path());
  client.handshake();
  client.send(action(LceProto::START));
  EXPECT_EQ("REPORTING_CRITERIA_NOT_SET",
            parse(client.readFrame()).data().estimation_reports_resp().error_string());
  client.send(enable(false));
  ASSERT_TRUE(daemon().waitForLceState(1, [](const auto& state) { return !state.reporting; }));
}

TEST_F(OrbdSimLceTest, ResetStartsTheEstimateOverAndKeepsReporting) {
  daemon().setReportInterval(std::chrono::milliseconds(0));
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  const auto last = [&client] {
    return client.answerTo(getLast()).data().get_last_estimation_report_resp();
  };
  const auto first = last();
  EXPECT_NE(first.rate(), last().rate());
  EXPECT_NE(LceProto::L0, first.confidence_level());
  client.send(action(LceProto::RESET));
  EXPECT_EQ(LceProto::L0, last().confidence_level());
  EXPECT_EQ(LceProto::L1, last().confidence_level());
  client.send(action(LceProto::START));
  ASSERT_TRUE(daemon().waitForLceState(1, [](const auto& state) { return state.reporting; }));
  client.send(action(LceProto::RESET));
  EXPECT_EQ(LceProto::L0, last().confidence_level());
  EXPECT_TRUE(daemon().lceState(1).reporting);
}

TEST_F(OrbdSimLceTest, NothingIsSentBeforeTheClientsFirstFrame) {
  daemon().setReportInterval(std::chrono::milliseconds(1));
  Client silent(path());
  silent.handshake();
  // Another session connects and gets twenty reports; the first session gets none.
  Client other(path());
  other.handshake();
  other.send(action(LceProto::START));
  for (int i = 0; i < 20; ++i) other.readFrame();
  EXPECT_FALSE(silent.hasInput());
}

TEST_F(OrbdSimLceTest, LastReportIsAnEstimateAlsoWhenNoneWasSentYet) {
  daemon().setReportInterval(std::chrono::milliseconds(0));
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  client.send(action(LceProto::START));
  const auto first = client.answerTo(getLast()).data().get_last_estimation_report_resp().rate();
  EXPECT_EQ(Course(0).next().link.rate, first);
}

TEST_F(OrbdSimLceTest, MutedServiceKeepsItsStateAndSendsNothing) {
  daemon().setAutoAnswer(false);
  Client client(path());
  client.handshake();
  client.send(enable(true));
  ASSERT_TRUE(daemon().waitForLceState(1, [](const auto& state) { return state.enabled; }));
  EXPECT_FALSE(client.hasInput());
  daemon().setAutoAnswer(true);
  daemon().setAutoAnswer(orbsim::kSdkTypeLle, false);
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
}

TEST_F(OrbdSimLceTest, LogTellsEachEventInOneLine) {
  LogLines log;
  Options options;
  options.log = log.sink();
  startDaemon(options);
  {
    Client client(path());
    client.handshake();
    client.answerTo(criteria(12, {3, 4}, 2));
  }
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  daemon().stop();
  EXPECT_EQ(
      (std::vector<std::string>{
          "listening on " + path(), sessionOf(kLcePid) + "open",
          sessionOf(kLcePid) + "lce: SET_REPORTING_CRITERIA txn=12 first=[3 4] second=[] "
                               "value1=0 value2=0 network=NONE",
          sessionOf(kLcePid) + "lce: -> SET_REPORTING_CRITERIA_ASYNC_RESULT txn=12 error=NONE",
          sessionOf(kLcePid) + "closed", "stopped"}),
      log.lines());
}

}  // namespace
}  // namespace orbsimtest
