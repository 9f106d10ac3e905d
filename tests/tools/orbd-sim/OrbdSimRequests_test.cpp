// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Requests and indications in words, and requests that the daemon stand-in refuses or answers late.

#include "OrbdSimClient.h"
#include "orbsim/Faults.h"
#include "orbsim/Requests.h"

namespace orbsimtest {
namespace {

using namespace std::chrono_literals;
using orbsim::Refusal;
using orbsim::RequestWords;
using Fields = std::map<std::string, std::string>;

template <class Request>
RequestWords wordsOf(const Request& request) {
  Frame frame;
  frame.header.messageId = orbsim::kSendBlobMessageId;
  frame.payload = orbsim::encodeBlobPayload(Wire<Request>::kSdkType, serialize(request));
  return orbsim::wordsOf(frame);
}

template <class Request>
typename Wire<Request>::Answer indication(const Fields& fields) {
  std::string error;
  const Blob blob = orbsim::indicationOf(Wire<Request>::kSdkType, fields, error);
  EXPECT_EQ("", error);
  typename Wire<Request>::Answer message;
  EXPECT_TRUE(message.ParseFromArray(blob.data(), static_cast<int>(blob.size())));
  return message;
}

std::string errorOf(uint32_t sdkType, const Fields& fields) {
  std::string error;
  EXPECT_TRUE(orbsim::indicationOf(sdkType, fields, error).empty());
  return error;
}

TEST(RequestsTest, EachRequestHasAWord) {
  EXPECT_EQ("enable", wordsOf(enable(true)).request);
  EXPECT_EQ("disable", wordsOf(enable(false)).request);
  EXPECT_EQ("get-last-report", wordsOf(getLast()).request);
  EXPECT_EQ("start", wordsOf(action(LceProto::START)).request);
  EXPECT_EQ("stop", wordsOf(action(LceProto::STOP)).request);
  EXPECT_EQ("reset", wordsOf(action(LceProto::RESET)).request);
  EXPECT_EQ("get-last-report", wordsOf(lleGetLast()).request);
  EXPECT_EQ("register", wordsOf(lliRegister(true)).request);
  EXPECT_EQ("unregister", wordsOf(lliRegister(false)).request);
  EXPECT_EQ("enable", wordsOf(enable<LliProto::ServiceMsg>(true)).request);
  EXPECT_EQ("unknown", wordsOf(LceProto::ServiceMsg()).request);
  EXPECT_EQ("unknown", orbsim::wordsOf(Frame()).request);
  EXPECT_EQ(0u, orbsim::wordsOf(Frame()).sdkType);
}

TEST(RequestsTest, CriteriaHaveTheirFields) {
  const RequestWords lce = wordsOf(criteria(12, {3, 4}, 2));
  EXPECT_EQ("set-criteria", lce.request);
  EXPECT_EQ((Fields{{"transaction", "12"},
                    {"value1", "0"},
                    {"value2", "0"},
                    {"first", "[3,4]"},
                    {"second", "[]"},
                    {"network", "NONE"}}),
            lce.fields);
  const RequestWords lle = wordsOf(lleCriteria(9));
  EXPECT_EQ("set-criteria", lle.request);
  EXPECT_EQ((Fields{{"criteria", "9"}}), lle.fields);
}

TEST(RequestsTest, EachStatusOfTheMessagesCanBeARefusal) {
  for (int status = 0; status <= 9; ++status) {
    const std::string word = LceProto::Status_Name(static_cast<LceProto::Status>(status));
    EXPECT_EQ(word, LleProto::Status_Name(static_cast<LleProto::Status>(status)));
    EXPECT_EQ(word, LliProto::Status_Name(static_cast<LliProto::Status>(status)));
    EXPECT_EQ("", orbsim::wrongWith({8, "", word, 1}));
    EXPECT_EQ(status,
              indication<LceProto::ServiceMsg>({{"status", word}}).data().status_msg().status());
    EXPECT_EQ(status,
              indication<LleProto::ServiceMsg>({{"status", word}}).data().status_msg().status());
    EXPECT_EQ(status,
              indication<LliProto::ServiceMsg>({{"status", word}}).data().status_msg().status());
  }
  EXPECT_EQ("no such status: MAYBE", orbsim::wrongWith({8, "", "MAYBE", 1}));
  EXPECT_EQ("", orbsim::wrongWith({7, "set-criteria", "TYPE_MISMATCH", 1}));
  EXPECT_EQ("TYPE_MISMATCH is for set-criteria of lce only",
            orbsim::wrongWith({8, "set-criteria", "TYPE_MISMATCH", 1}));
}

TEST(RequestsTest, IndicationsAreMadeOfWords) {
  const auto lce = indication<LceProto::ServiceMsg>(
      {{"rate", "5000"}, {"confidence", "3"}, {"direction", "up"}, {"queue", "7"}});
  EXPECT_EQ(LceProto::ESTIMATION_REPORTS_IND, lce.event_id());
  EXPECT_EQ(5000u, lce.data().estimation_reports_resp().rate());
  EXPECT_EQ(LceProto::L3, lce.data().estimation_reports_resp().confidence_level());
  EXPECT_EQ(LceProto::UP_LINK, lce.data().estimation_reports_resp().link_direction());
  EXPECT_EQ(7u, lce.data().estimation_reports_resp().queue_size_ul());
  EXPECT_EQ("NONE", lce.data().estimation_reports_resp().error_string());

  const auto lle = indication<LleProto::ServiceMsg>(
      {{"ul-latency", "1"}, {"dl-latency", "2"}, {"rat", "ehrpd"}, {"valid", "false"}});
  EXPECT_EQ(1u, lle.data().ind_report_resp().ul_latency_estimation());
  EXPECT_EQ(2u, lle.data().ind_report_resp().dl_latency_estimation());
  EXPECT_EQ(LleProto::WCDMA, lle.data().ind_report_resp().rat());
  EXPECT_FALSE(lle.data().ind_report_resp().status());

  const auto lli = indication<LliProto::ServiceMsg>(
      {{"phase", "exit"}, {"source", "5g"}, {"target", "lte"}, {"time", "4"}, {"duration", "5"}});
  EXPECT_EQ(LliProto::PRE_HANDOFF, lli.data().lli_ind_resp().handoff_info());
  EXPECT_EQ(LliProto::EXIT, lli.data().lli_ind_resp().pre_handoff_state());
  EXPECT_EQ(LliProto::LLI_3GPP_5G, lli.data().lli_ind_resp().source_rat());
  EXPECT_EQ(LliProto::LLI_3GPP_LTE, lli.data().lli_ind_resp().target_rat());
  EXPECT_EQ(4u, lli.data().lli_ind_resp().estimated_time_to_interruption());
  EXPECT_EQ(5u, lli.data().lli_ind_resp().estimated_interruption_duration());
  EXPECT_EQ(LliProto::HANDOFF_FAILURE, indication<LliProto::ServiceMsg>({{"phase", "failure"}})
                                           .data()
                                           .lli_ind_resp()
                                           .handoff_info());
}

TEST(RequestsTest, WrongFieldsOfAnIndicationAreNamed) {
  EXPECT_EQ("no such field: rates", errorOf(7, {{"rates", "1"}}));
  EXPECT_EQ("rate: wrong value: -1", errorOf(7, {{"rate", "-1"}}));
  EXPECT_EQ("rate: wrong value: 4294967296", errorOf(7, {{"rate", "4294967296"}}));
  EXPECT_EQ("confidence: wrong value: 8", errorOf(7, {{"confidence", "8"}}));
  EXPECT_EQ("rat: wrong value: 6g", errorOf(8, {{"rat", "6g"}}));
  EXPECT_EQ("phase: wrong value: end", errorOf(9, {{"phase", "end"}}));
  EXPECT_EQ("no such status: MAYBE", errorOf(9, {{"status", "MAYBE"}}));
}

using OrbdSimRefusalTest = OrbdSimTest;

TEST_F(OrbdSimRefusalTest, RefusedCriteriaChangeNothingAndTheNextAreAccepted) {
  daemon().setReportInterval(0ms);
  daemon().refuse({orbsim::kSdkTypeLce, "set-criteria", "TYPE_MISMATCH", 1});
  Client client(path());
  client.handshake();
  EXPECT_EQ(LceProto::SUCCESS, client.answerTo(enable(true)).data().status_msg().status());
  const auto answer = client.answerTo(criteria(77, {}, 0));
  EXPECT_EQ(77u, answer.transaction_id());
  EXPECT_FALSE(answer.data().set_reporting_criteria_resp().success());
  EXPECT_EQ("REPORTING_CRITERIA_TYPE_MISMATCH",
            answer.data().set_reporting_criteria_resp().error());
  EXPECT_FALSE(daemon().lceState(1).criteriaSet);
  EXPECT_TRUE(client.answerTo(criteria(78, {}, 0)).data().set_reporting_criteria_resp().success());
}

TEST_F(OrbdSimRefusalTest, RefusalsCountAndAreForTheirRequestOnly) {
  daemon().setReportInterval(0ms);
  daemon().refuse({orbsim::kSdkTypeLle, "set-criteria", "NOT_SUPPORTED", 2});
  daemon().refuse({orbsim::kSdkTypeLli, "", "SERVICE_DOWN", 1});
  Client client(path(), kLlePid);
  client.handshake();
  const auto status = [&client](const auto& request) {
    return static_cast<int>(client.answerTo(request).data().status_msg().status());
  };
  EXPECT_EQ(LleProto::SUCCESS, status(enable<LleProto::ServiceMsg>(true)));
  EXPECT_EQ(LleProto::NOT_SUPPORTED, status(lleCriteria(1)));
  EXPECT_EQ(LleProto::NOT_SUPPORTED, status(lleCriteria(1)));
  EXPECT_EQ(LleProto::SUCCESS, status(lleCriteria(1)));
  EXPECT_EQ(LliProto::SERVICE_DOWN, status(enable<LliProto::ServiceMsg>(true)));
  EXPECT_EQ(LliProto::SUCCESS, status(enable<LliProto::ServiceMsg>(true)));
}

// A fault that handles the request comes before the refusal.
TEST_F(OrbdSimRefusalTest, RequestThatTheFaultNoAnswerTakesDoesNotUseUpTheRefusal) {
  orbsim::Faults faults;
  std::string error;
  ASSERT_TRUE(faults.parse("no-answer,connections=1", error)) << error;
  faults.prepare(daemon());
  daemon().setReportInterval(0ms);
  daemon().refuse({orbsim::kSdkTypeLce, "set-criteria", "TYPE_MISMATCH", 1});
  Client unanswered(path());
  unanswered.handshake();
  unanswered.send(criteria(77, {}, 0));
  ASSERT_TRUE(daemon().waitForFrameDealtWith([](const Frame&) { return true; }));
  EXPECT_FALSE(unanswered.hasInput());
  Client answered(path());
  answered.handshake();
  const auto isAccepted = [&answered](uint64_t transaction) {
    const auto answer = answered.answerTo(criteria(transaction, {}, 0));
    return answer.data().set_reporting_criteria_resp().success();
  };
  EXPECT_FALSE(isAccepted(78));
  EXPECT_TRUE(isAccepted(79));
}

TEST_F(OrbdSimRefusalTest, ReportsDoNotWaitForLateAnswers) {
  daemon().setReportInterval(3600000ms);
  daemon().setAnswerDelay(3600000ms);
  Client client(path(), kLlePid);
  client.handshake();
  client.send(lleCriteria(1));
  EXPECT_EQ(LleProto::IND_REPORT_RESP, parse<LleProto::ServiceMsg>(client.readFrame()).event_id());
  EXPECT_FALSE(client.hasInput());
}

TEST_F(OrbdSimRefusalTest, AnswersComeLateAndInTheirOrder) {
  daemon().setReportInterval(0ms);
  daemon().setAnswerDelay(300ms);
  Client client(path(), kLlePid);
  client.handshake();
  const auto asked = std::chrono::steady_clock::now();
  client.send(lleCriteria(1));
  ASSERT_TRUE(daemon().waitForLleState(1, [](const auto& state) { return state.criteria == 1; }));
  daemon().setAnswerDelay(0ms);
  client.send(lleGetLast());
  EXPECT_EQ(LleProto::STATUS_IND, parse<LleProto::ServiceMsg>(client.readFrame()).event_id());
  EXPECT_GE(std::chrono::steady_clock::now() - asked, 300ms);
  EXPECT_EQ(LleProto::GET_REPORT_RESP, parse<LleProto::ServiceMsg>(client.readFrame()).event_id());
}

TEST_F(OrbdSimRefusalTest, VanishedDaemonComesBackAsOneThatWasRestarted) {
  for (int round = 0; round < 3; ++round) {
    Client client(path());
    client.handshake();
    EXPECT_EQ(1u, client.sessionId());
    daemon().vanish();
    EXPECT_TRUE(client.atEnd());
    EXPECT_FALSE(Client(path()).connected());
    EXPECT_TRUE(daemon().reappear());
  }
  EXPECT_TRUE(daemon().reappear()) << "it is there";
}

TEST_F(OrbdSimRefusalTest, MessageGoesToWhoUsesTheService) {
  daemon().setReportInterval(0ms);
  Client lce(path());
  Client lle(path(), kLlePid);
  lce.handshake();
  lle.handshake();
  lce.answerTo(enable(true));
  lle.answerTo(enable<LleProto::ServiceMsg>(true));
  std::string error;
  const Blob blob = orbsim::indicationOf(orbsim::kSdkTypeLce, {{"rate", "99"}}, error);
  EXPECT_EQ(1u, daemon().sendToUsers(orbsim::kSdkTypeLce, blob));
  EXPECT_EQ(99u, parse(lce.readFrame()).data().estimation_reports_resp().rate());
  EXPECT_EQ(0u, daemon().sendToUsers(orbsim::kSdkTypeLli, blob));
  EXPECT_FALSE(lle.hasInput());
}

}  // namespace
}  // namespace orbsimtest
