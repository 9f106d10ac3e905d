// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Decoding every message of the three services for a trace, and bytes that are not a message.

#include <gtest/gtest.h>

#include <string>

#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"
#include "orbsim/Trace.h"

namespace {

using orbsim::Blob;
using orbsim::Direction;
using orbsim::TraceItem;

// The text after the message's name.
std::string textOf(uint32_t sdkType, Direction direction, const Blob& blob) {
  TraceItem item;
  item.kind = TraceItem::Kind::kFrame;
  item.direction = direction;
  item.sdkType = sdkType;
  if (!orbsim::decodeTraceMessage(sdkType, direction, blob, item.message, item.reason)) {
    item.bytes = blob;
    item.size = blob.size();
  }
  const std::string text = orbsim::traceText(item);
  const std::string name = std::string(orbsim::traceServiceName(sdkType)) + " " +
                           orbsim::traceMessageName(direction) + " ";
  const size_t start = text.find(name);
  return start == std::string::npos ? text : text.substr(start + name.size());
}

template <class Message>
Blob serialize(const Message& message) {
  const std::string text = message.SerializeAsString();
  return Blob(text.begin(), text.end());
}

template <class Message>
std::string request(uint32_t sdkType, const Message& message) {
  return textOf(sdkType, Direction::kToDaemon, serialize(message));
}
template <class Message>
std::string answer(uint32_t sdkType, const Message& message) {
  return textOf(sdkType, Direction::kToClient, serialize(message));
}

constexpr uint32_t kLce = orbsim::kSdkTypeLce;
constexpr uint32_t kLle = orbsim::kSdkTypeLle;
constexpr uint32_t kLli = orbsim::kSdkTypeLli;

template <class Request>
std::string enableText(uint32_t sdkType) {
  Request message;
  message.mutable_data()->mutable_enable_msg()->set_enable(true);
  return request(sdkType, message);
}

TEST(TraceMessage, EnableOfEachService) {
  const std::string wanted =
      "event_id: ENABLE transaction_id: 0 data { enable_msg { enable: true } }";
  EXPECT_EQ(wanted, enableText<LceProto::ServiceMsg>(kLce));
  EXPECT_EQ(wanted, enableText<LleProto::ServiceMsg>(kLle));
  EXPECT_EQ(wanted, enableText<LliProto::ServiceMsg>(kLli));
}

TEST(TraceMessage, LceCriteria) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA);
  message.set_transaction_id(~uint64_t{0});
  auto* criteria = message.mutable_data()->mutable_set_reporting_criteria();
  criteria->set_criteria_value_1(1);
  criteria->set_second_list_count(2);
  criteria->add_second_list(21);
  criteria->add_second_list(4294967295u);
  criteria->set_first_list_count(3);
  criteria->add_first_list(11);
  criteria->set_access_network(LceProto::NR5G);
  criteria->set_criteria_value_2(7);
  EXPECT_EQ(
      "event_id: SET_REPORTING_CRITERIA transaction_id: 18446744073709551615 data { "
      "set_reporting_criteria { criteria_value_1: 1 second_list_count: 2 second_list: 21 "
      "second_list: 4294967295 first_list_count: 3 first_list: 11 access_network: NR5G "
      "criteria_value_2: 7 } }",
      request(kLce, message));
}

TEST(TraceMessage, OtherLceRequests) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  EXPECT_EQ(
      "event_id: GET_LAST_ESTIMATION_REPORT transaction_id: 0 data { get_last_estination_report {} "
      "}",
      request(kLce, message));
  message.set_event_id(LceProto::PERFORM_REPORTING_ACTION);
  message.mutable_data()->mutable_perform_reporting_action()->set_action(LceProto::RESET);
  EXPECT_EQ(
      "event_id: PERFORM_REPORTING_ACTION transaction_id: 0 data { perform_reporting_action { "
      "action: RESET } }",
      request(kLce, message));
}

template <class Report>
void fillCapacity(Report* report) {
  report->set_rate(50000);
  report->set_confidence_level(LceProto::L5);
  report->set_link_direction(LceProto::DOWN_LINK);
  report->set_queue_size_ul(12);
  report->set_error_string("NONE");
}

TEST(TraceMessage, LceAnswers) {
  LceProto::ClientMsg message;
  message.mutable_data()->mutable_status_msg()->set_status(LceProto::SERVICE_UP);
  EXPECT_EQ("event_id: STATUS_IND transaction_id: 0 data { status_msg { status: SERVICE_UP } }",
            answer(kLce, message));
  const std::string report =
      " { rate: 50000 confidence_level: L5 link_direction: DOWN_LINK queue_size_ul: 12 "
      "error_string: \"NONE\" } }";
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  fillCapacity(message.mutable_data()->mutable_get_last_estimation_report_resp());
  EXPECT_EQ(
      "event_id: GET_LAST_ESTIMATION_REPORT_IND transaction_id: 0 data { "
      "get_last_estimation_report_resp" +
          report,
      answer(kLce, message));
  message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  fillCapacity(message.mutable_data()->mutable_estimation_reports_resp());
  EXPECT_EQ(
      "event_id: ESTIMATION_REPORTS_IND transaction_id: 0 data { estimation_reports_resp" + report,
      answer(kLce, message));
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  message.set_transaction_id(9);
  auto* result = message.mutable_data()->mutable_set_reporting_criteria_resp();
  result->set_success(true);
  result->set_error("say \"no\"\\\n\x1b[2J\xc3\xa9");
  EXPECT_EQ(
      "event_id: SET_REPORTING_CRITERIA_ASYNC_RESULT transaction_id: 9 data { "
      "set_reporting_criteria_resp { success: true error: "
      "\"say \\\"no\\\"\\\\\\x0a\\x1b[2J\\xc3\\xa9\" } }",
      answer(kLce, message));
}

TEST(TraceMessage, LleRequests) {
  LleProto::ServiceMsg message;
  message.set_event_id(LleProto::SET_REPORTING_CRITERIA);
  message.mutable_data()->mutable_set_reporting_criteria()->set_reporting_criteria(3);
  EXPECT_EQ(
      "event_id: SET_REPORTING_CRITERIA transaction_id: 0 data { set_reporting_criteria { "
      "reporting_criteria: 3 } }",
      request(kLle, message));
  message.set_event_id(LleProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  EXPECT_EQ(
      "event_id: GET_LAST_ESTIMATION_REPORT transaction_id: 0 data { get_last_estination_report {} "
      "}",
      request(kLle, message));
}

template <class Report>
void fillLatency(Report* report) {
  report->set_status(true);
  report->set_ul_report_status(1);
  report->set_ul_latency_estimation(20000);
  report->set_ul_variance_estimation(30);
  report->set_dl_report_status(2);
  report->set_dl_latency_estimation(10000000000);
  report->set_dl_variance_estimation(15);
  report->set_report_interval(500);
  report->set_rat(LleProto::LTE);
}

TEST(TraceMessage, LleAnswers) {
  LleProto::ClientMsg message;
  message.mutable_data()->mutable_status_msg()->set_status(LleProto::SUCCESS);
  EXPECT_EQ("event_id: STATUS_IND transaction_id: 0 data { status_msg { status: SUCCESS } }",
            answer(kLle, message));
  const std::string report =
      " { status: true ul_report_status: 1 ul_latency_estimation: 20000 ul_variance_estimation: 30 "
      "dl_report_status: 2 dl_latency_estimation: 10000000000 dl_variance_estimation: 15 "
      "report_interval: 500 rat: LTE } }";
  message.set_event_id(LleProto::GET_REPORT_RESP);
  fillLatency(message.mutable_data()->mutable_get_report_resp());
  EXPECT_EQ("event_id: GET_REPORT_RESP transaction_id: 0 data { get_report_resp" + report,
            answer(kLle, message));
  message.set_event_id(LleProto::IND_REPORT_RESP);
  fillLatency(message.mutable_data()->mutable_ind_report_resp());
  EXPECT_EQ("event_id: IND_REPORT_RESP transaction_id: 0 data { ind_report_resp" + report,
            answer(kLle, message));
}

TEST(TraceMessage, LliMessages) {
  LliProto::ServiceMsg message;
  message.set_event_id(LliProto::REG_LINK_INTERRUPT_IND);
  message.mutable_data()->mutable_reg_link_interrupt_ind()->set_register_ind(true);
  EXPECT_EQ(
      "event_id: REG_LINK_INTERRUPT_IND transaction_id: 0 data { reg_link_interrupt_ind { "
      "register_ind: true } }",
      request(kLli, message));
  LliProto::ClientMsg indication;
  indication.mutable_data()->mutable_status_msg()->set_status(LliProto::NOT_SUPPORTED);
  EXPECT_EQ("event_id: STATUS_IND transaction_id: 0 data { status_msg { status: NOT_SUPPORTED } }",
            answer(kLli, indication));
  indication.set_event_id(LliProto::LLI_IND_RESP);
  auto* handoff = indication.mutable_data()->mutable_lli_ind_resp();
  handoff->set_handoff_info(LliProto::HANDOFF_IMMINENT);
  handoff->set_pre_handoff_state(LliProto::EXIT);
  handoff->set_source_rat(LliProto::LLI_3GPP_LTE);
  handoff->set_target_rat(LliProto::LLI_3GPP2_EHRPD);
  handoff->set_estimated_time_to_interruption(100);
  handoff->set_estimated_interruption_duration(40);
  EXPECT_EQ(
      "event_id: LLI_IND_RESP transaction_id: 0 data { lli_ind_resp { handoff_info: "
      "HANDOFF_IMMINENT pre_handoff_state: EXIT source_rat: LLI_3GPP_LTE target_rat: "
      "LLI_3GPP2_EHRPD estimated_time_to_interruption: 100 estimated_interruption_duration: 40 } }",
      answer(kLli, indication));
}

// An absent field is shown with its default value.
TEST(TraceMessage, AbsentNumbersAreShownAsTheirReaderTakesThem) {
  EXPECT_EQ("event_id: ENABLE transaction_id: 0", textOf(kLce, Direction::kToDaemon, {}));
  EXPECT_EQ(
      "event_id: STATUS_IND transaction_id: 0 data { estimation_reports_resp { rate: 0 "
      "confidence_level: L0 link_direction: UP_LINK queue_size_ul: 0 error_string: \"\" } }",
      textOf(kLce, Direction::kToClient, {0x1a, 2, 0x1a, 0}));
}

TEST(TraceMessage, EnumeratorWithoutANameIsItsNumber) {
  EXPECT_EQ("event_id: 77 transaction_id: 0", textOf(kLli, Direction::kToDaemon, {8, 77}));
  EXPECT_EQ("event_id: -1 transaction_id: 0",
            textOf(kLli, Direction::kToDaemon,
                   {8, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 1}));
}

TEST(TraceMessage, LaterValuesCountAsTheyDoForTheReader) {
  // A number again; a message again, which is merged; another member of the oneof.
  EXPECT_EQ("event_id: 3 transaction_id: 0", textOf(kLli, Direction::kToDaemon, {8, 2, 8, 3}));
  EXPECT_EQ(
      "event_id: ENABLE transaction_id: 0 data { set_reporting_criteria { criteria_value_1: 5 "
      "second_list_count: 6 first_list_count: 0 access_network: NONE criteria_value_2: 0 } }",
      textOf(kLce, Direction::kToDaemon, {0x1a, 4, 0x12, 2, 8, 5, 0x1a, 4, 0x12, 2, 0x10, 6}));
  EXPECT_EQ(
      "event_id: ENABLE transaction_id: 0 data { reg_link_interrupt_ind { register_ind: true } }",
      textOf(kLli, Direction::kToDaemon, {0x1a, 8, 0x0a, 2, 8, 1, 0x12, 2, 8, 1}));
}

TEST(TraceMessage, UnpackedListIsReadAsThePackedOne) {
  EXPECT_EQ(
      "event_id: ENABLE transaction_id: 0 data { set_reporting_criteria { criteria_value_1: 0 "
      "second_list_count: 0 second_list: 1 second_list: 2 second_list: 300 first_list_count: 0 "
      "access_network: NONE criteria_value_2: 0 } }",
      textOf(kLce, Direction::kToDaemon, {0x1a, 10, 0x12, 8, 0x18, 1, 0x18, 2, 0x1a, 2, 0xac, 2}));
}

TEST(TraceMessage, UnknownFieldsAreNamedByNumber) {
  EXPECT_EQ(
      "event_id: ENABLE transaction_id: 0 unknown field 9: varint 300 unknown field 10: fixed64 "
      "18446744073709551615 unknown field 11: bytes 6869 unknown field 12: fixed32 255 unknown "
      "field 13: group ",
      textOf(kLli, Direction::kToDaemon, {0x48, 0xac, 2,                                         //
                                          0x51, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,  //
                                          0x5a, 2,    'h',  'i',                                 //
                                          0x65, 0xff, 0,    0,    0,                             //
                                          0x6b, 0x08, 1,    0x6c}));
}

// A number instead of a message: it is an unknown field.
TEST(TraceMessage, FieldOfAnotherTypeIsUnknown) {
  EXPECT_EQ("event_id: ENABLE transaction_id: 0 unknown field 3: varint 1",
            textOf(kLli, Direction::kToDaemon, {0x18, 1}));
}

TEST(TraceMessage, CutMessageIsShownAsFarAsItGoesAndAsBytes) {
  EXPECT_EQ(
      "event_id: SET_REPORTING_CRITERIA not decoded (ServiceMsg.transaction_id is cut or damaged): "
      "080210ff",
      textOf(kLce, Direction::kToDaemon, {8, 2, 0x10, 0xff}));
  EXPECT_EQ(
      "event_id: SET_REPORTING_CRITERIA data { enable_msg {} } not decoded "
      "(ServiceMsg.data.enable_msg.enable is cut or damaged): 08021a030a0108",
      textOf(kLce, Direction::kToDaemon, {8, 2, 0x1a, 3, 0x0a, 1, 8}));
  EXPECT_EQ("not decoded (ServiceMsg.field 9 is cut or damaged): 4a05",
            textOf(kLce, Direction::kToDaemon, {0x4a, 5}));
  EXPECT_EQ("not decoded (ServiceMsg has bytes that are not a field): 00",
            textOf(kLce, Direction::kToDaemon, {0}));
}

// Every truncated message is decoded without reading beyond its end.
TEST(TraceMessage, EveryBeginningIsDecodedOrSaysWhyNot) {
  LceProto::ClientMsg message;
  fillCapacity(message.mutable_data()->mutable_estimation_reports_resp());
  const Blob whole = serialize(message);
  size_t decoded = 0;
  for (size_t size = 0; size <= whole.size(); ++size) {
    orbsim::TraceMessage tree;
    std::string reason;
    const bool done = orbsim::decodeTraceMessage(
        kLce, Direction::kToClient,
        Blob(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), tree, reason);
    EXPECT_EQ(done, reason.empty()) << size;
    EXPECT_EQ(done, LceProto::ClientMsg().ParseFromArray(whole.data(), static_cast<int>(size)))
        << size;
    decoded += done ? 1 : 0;
  }
  EXPECT_EQ(2u, decoded);
}

TEST(TraceMessage, ServiceThatIsNotKnown) {
  orbsim::TraceMessage message;
  std::string reason;
  EXPECT_FALSE(orbsim::decodeTraceMessage(4, Direction::kToDaemon, {8, 1}, message, reason));
  EXPECT_EQ("no such service", reason);
  EXPECT_EQ(nullptr, orbsim::traceServiceName(4));
}

}  // namespace
