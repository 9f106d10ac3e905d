// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The LCE messages on the wire, byte by byte. Names in these tests are those of the messages.
#include <google/protobuf/arena.h>
#include <google/protobuf/stubs/logging.h>

#include <type_traits>

#include "ProtoTest.h"
#include "lce.pb.h"

namespace {

using namespace prototest;

TEST(LceProtoEnums, NumbersAndNamesAreFixed) {
  EXPECT_STATUS_ENUM(LceProto);
  EXPECT_ENUM(LceProto, ServiceEventId, "ENABLE", "REG_ESTIMATION_REPORTS",
              "SET_REPORTING_CRITERIA", "GET_LAST_ESTIMATION_REPORT", "PERFORM_REPORTING_ACTION");
  EXPECT_ENUM(LceProto, AccessNetwork, "NONE", "WCDMA", "LTE", "NR5G");
  EXPECT_ENUM(LceProto, ReportingAction, "STOP", "START", "RESET");
  EXPECT_ENUM(LceProto, ClientEventId, "STATUS_IND", "GET_LAST_ESTIMATION_REPORT_IND",
              "ESTIMATION_REPORTS_IND", "SET_REPORTING_CRITERIA_ASYNC_RESULT");
  EXPECT_ENUM(LceProto, ConfidenceLevel, "L0", "L1", "L2", "L3", "L4", "L5", "L6", "L7");
  EXPECT_ENUM(LceProto, LinkDirection, "UP_LINK", "DOWN_LINK");
}

TEST(LceProtoEnums, NamesAreMatchedExactly) {
  LceProto::Status status = LceProto::SUCCESS;
  EXPECT_FALSE(LceProto::Status_Parse("success", &status));
  EXPECT_FALSE(LceProto::Status_Parse("", &status));
  EXPECT_FALSE(LceProto::Status_Parse("SUCCESS ", &status));
}

TEST(LceProtoEnums, UnlistedNumbersParseAndAreKept) {
  const Bytes bytes = {0x08, 0x0A};
  const auto status = parse<LceProto::StatusInd>(bytes);
  EXPECT_EQ(10, status.status());
  EXPECT_FALSE(LceProto::Status_IsValid(status.status()));
  EXPECT_EQ(bytes, serialize(status));
}

TEST(LceProtoTypes, AreLiteMessagesWithTheirFullNames) {
  EXPECT_EQ("LceProto.EnableService", LceProto::EnableService().GetTypeName());
  EXPECT_EQ("LceProto.RegEstimationReports", LceProto::RegEstimationReports().GetTypeName());
  EXPECT_EQ("LceProto.SetReportingCriteria", LceProto::SetReportingCriteria().GetTypeName());
  EXPECT_EQ("LceProto.GetLastEstimationReport", LceProto::GetLastEstimationReport().GetTypeName());
  EXPECT_EQ("LceProto.PerformReportingAction", LceProto::PerformReportingAction().GetTypeName());
  EXPECT_EQ("LceProto.ServiceData", LceProto::ServiceData().GetTypeName());
  EXPECT_EQ("LceProto.ServiceMsg", LceProto::ServiceMsg().GetTypeName());
  EXPECT_EQ("LceProto.StatusInd", LceProto::StatusInd().GetTypeName());
  EXPECT_EQ("LceProto.GetLastEstimationReportResp",
            LceProto::GetLastEstimationReportResp().GetTypeName());
  EXPECT_EQ("LceProto.EstimationReportsResp", LceProto::EstimationReportsResp().GetTypeName());
  EXPECT_EQ("LceProto.SetReportingCriteriaResp",
            LceProto::SetReportingCriteriaResp().GetTypeName());
  EXPECT_EQ("LceProto.ClientData", LceProto::ClientData().GetTypeName());
  EXPECT_EQ("LceProto.ClientMsg", LceProto::ClientMsg().GetTypeName());
  EXPECT_TRUE((std::is_base_of<google::protobuf::MessageLite, LceProto::ServiceMsg>::value));
  EXPECT_TRUE(LceProto::ServiceMsg().IsInitialized());
}

TEST(LceProtoTypes, TransactionIdsHave64UnsignedBits) {
  EXPECT_TRUE((std::is_same<uint64_t, decltype(LceProto::ServiceMsg().transaction_id())>::value));
  LceProto::ClientMsg message;
  message.set_transaction_id(UINT64_MAX);
  EXPECT_EQ((Bytes{0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}),
            serialize(message));
}

TEST(LceProtoRequests, EnableTrueIsSixBytes) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::ENABLE);
  message.mutable_data()->mutable_enable_msg()->set_enable(true);
  EXPECT_EQ((Bytes{0x1A, 0x04, 0x0A, 0x02, 0x08, 0x01}), serialize(message));
}

TEST(LceProtoRequests, EnableFalseWritesOnlyTheEmptyMember) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::ENABLE);
  message.mutable_data()->mutable_enable_msg()->set_enable(false);
  EXPECT_EQ((Bytes{0x1A, 0x02, 0x0A, 0x00}), serialize(message));
}

TEST(LceProtoRequests, SetReportingCriteriaWritesAllFieldsInAscendingOrder) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA);
  message.set_transaction_id(300);
  auto* criteria = message.mutable_data()->mutable_set_reporting_criteria();
  criteria->set_criteria_value_1(1);
  criteria->set_second_list_count(2);
  criteria->add_second_list(5);
  criteria->add_second_list(300);
  criteria->set_first_list_count(1);
  criteria->add_first_list(0);
  criteria->set_access_network(LceProto::NR5G);
  criteria->set_criteria_value_2(128);
  EXPECT_EQ((Bytes{0x08, 0x02, 0x10, 0xAC, 0x02, 0x1A, 0x15, 0x12, 0x13,  // envelope and body
                   0x08, 0x01,                                            // criteria_value_1
                   0x10, 0x02, 0x1A, 0x03, 0x05, 0xAC, 0x02,              // second list
                   0x20, 0x01, 0x2A, 0x01, 0x00,                          // first list
                   0x30, 0x03, 0x38, 0x80, 0x01}),                        // network, value 2
            serialize(message));
}

TEST(LceProtoRequests, SetReportingCriteriaWithEmptyListsWritesNoListAndNoCount) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA);
  message.set_transaction_id(1);
  auto* criteria = message.mutable_data()->mutable_set_reporting_criteria();
  criteria->set_criteria_value_1(7);
  criteria->set_first_list_count(0);
  criteria->set_second_list_count(0);
  EXPECT_EQ((Bytes{0x08, 0x02, 0x10, 0x01, 0x1A, 0x04, 0x12, 0x02, 0x08, 0x07}),
            serialize(message));
}

TEST(LceProtoRequests, ListsAreReadPackedAndUnpacked) {
  const auto packed = parse<LceProto::SetReportingCriteria>({0x2A, 0x03, 0x05, 0xAC, 0x02});
  const auto unpacked = parse<LceProto::SetReportingCriteria>({0x28, 0x05, 0x28, 0xAC, 0x02});
  for (const auto& message : {packed, unpacked}) {
    ASSERT_EQ(2, message.first_list_size());
    EXPECT_EQ(5u, message.first_list(0));
    EXPECT_EQ(300u, message.first_list(1));
  }
  const auto second = parse<LceProto::SetReportingCriteria>({0x18, 0x07});
  ASSERT_EQ(1, second.second_list_size());
  EXPECT_EQ(7u, second.second_list(0));
}

TEST(LceProtoRequests, GetLastEstimationReportIsAnEmptyMember) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  EXPECT_EQ((Bytes{0x08, 0x03, 0x1A, 0x02, 0x1A, 0x00}), serialize(message));
}

TEST(LceProtoRequests, PerformReportingActionWritesItsActionUnlessStop) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::PERFORM_REPORTING_ACTION);
  auto* action = message.mutable_data()->mutable_perform_reporting_action();
  action->set_action(LceProto::STOP);
  EXPECT_EQ((Bytes{0x08, 0x04, 0x1A, 0x02, 0x22, 0x00}), serialize(message));
  action->set_action(LceProto::START);
  EXPECT_EQ((Bytes{0x08, 0x04, 0x1A, 0x04, 0x22, 0x02, 0x08, 0x01}), serialize(message));
  action->set_action(LceProto::RESET);
  EXPECT_EQ((Bytes{0x08, 0x04, 0x1A, 0x04, 0x22, 0x02, 0x08, 0x02}), serialize(message));
}

TEST(LceProtoRequests, RegEstimationReportsExistsAndIsEmpty) {
  EXPECT_TRUE(serialize(LceProto::RegEstimationReports()).empty());
}

TEST(LceProtoResponses, StatusIndication) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::STATUS_IND);
  message.mutable_data()->mutable_status_msg()->set_status(LceProto::SERVICE_UP);
  EXPECT_EQ((Bytes{0x1A, 0x04, 0x0A, 0x02, 0x08, 0x06}), serialize(message));
}

TEST(LceProtoResponses, LastEstimationReport) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  auto* report = message.mutable_data()->mutable_get_last_estimation_report_resp();
  report->set_rate(300);
  report->set_confidence_level(LceProto::L7);
  report->set_link_direction(LceProto::DOWN_LINK);
  report->set_queue_size_ul(9);
  report->set_error_string("NONE");
  EXPECT_EQ((Bytes{0x08, 0x01, 0x1A, 0x11, 0x12, 0x0F, 0x08, 0xAC, 0x02, 0x10, 0x07,
                   0x18, 0x01, 0x20, 0x09, 0x2A, 0x04, 'N',  'O',  'N',  'E'}),
            serialize(message));
}

TEST(LceProtoResponses, EstimationReportWritesNoZeroFields) {
  LceProto::EstimationReportsResp report;
  report.set_rate(5);
  report.set_confidence_level(LceProto::L0);
  report.set_link_direction(LceProto::UP_LINK);
  report.set_queue_size_ul(6);
  report.set_error_string("");
  EXPECT_EQ((Bytes{0x08, 0x05, 0x20, 0x06}), serialize(report));

  LceProto::ClientMsg message;
  message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  *message.mutable_data()->mutable_estimation_reports_resp() = report;
  EXPECT_EQ((Bytes{0x08, 0x02, 0x1A, 0x06, 0x1A, 0x04, 0x08, 0x05, 0x20, 0x06}),
            serialize(message));
}

TEST(LceProtoResponses, CriteriaResultCarriesTheTransactionId) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  message.set_transaction_id(4294967295u);
  auto* result = message.mutable_data()->mutable_set_reporting_criteria_resp();
  result->set_success(true);
  result->set_error("NONE");
  EXPECT_EQ((Bytes{0x08, 0x03, 0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0x1A, 0x0A,
                   0x22, 0x08, 0x08, 0x01, 0x12, 0x04, 'N',  'O',  'N',  'E'}),
            serialize(message));
}

TEST(LceProtoParsing, EmptyBlobReadsAsDefaults) {
  const auto message = parse<LceProto::ClientMsg>({});
  EXPECT_EQ(LceProto::STATUS_IND, message.event_id());
  EXPECT_EQ(0u, message.transaction_id());
  EXPECT_FALSE(message.has_data());
}

TEST(LceProtoParsing, OtherMemberThanTheEventNamesReadsAsDefault) {
  const auto message = parse<LceProto::ClientMsg>({0x08, 0x02, 0x1A, 0x04, 0x0A, 0x02, 0x08, 0x06});
  EXPECT_EQ(LceProto::ESTIMATION_REPORTS_IND, message.event_id());
  EXPECT_EQ(LceProto::ClientData::kStatusMsg, message.data().msg_type_case());
  EXPECT_FALSE(message.data().has_estimation_reports_resp());
  EXPECT_EQ(0u, message.data().estimation_reports_resp().rate());
  EXPECT_EQ("", message.data().estimation_reports_resp().error_string());
}

TEST(LceProtoParsing, FieldsMayComeInAnyOrderAndTheLastScalarWins) {
  const auto report =
      parse<LceProto::EstimationReportsResp>({0x20, 0x06, 0x08, 0x01, 0x10, 0x03, 0x08, 0x02});
  EXPECT_EQ(2u, report.rate());
  EXPECT_EQ(LceProto::L3, report.confidence_level());
  EXPECT_EQ(6u, report.queue_size_ul());
}

TEST(LceProtoParsing, AnotherOneofMemberReplacesTheFirst) {
  const auto data = parse<LceProto::ClientData>({0x0A, 0x02, 0x08, 0x06, 0x1A, 0x02, 0x08, 0x05});
  EXPECT_EQ(LceProto::ClientData::kEstimationReportsResp, data.msg_type_case());
  EXPECT_FALSE(data.has_status_msg());
  EXPECT_EQ(5u, data.estimation_reports_resp().rate());
}

TEST(LceProtoParsing, SameOneofMemberTwiceIsMerged) {
  const auto data = parse<LceProto::ClientData>({0x1A, 0x02, 0x08, 0x05, 0x1A, 0x02, 0x20, 0x06});
  EXPECT_EQ(5u, data.estimation_reports_resp().rate());
  EXPECT_EQ(6u, data.estimation_reports_resp().queue_size_ul());
}

TEST(LceProtoParsing, UnknownFieldsAreKeptAndWrittenLast) {
  const auto status = parse<LceProto::StatusInd>({0x78, 0x2A, 0x08, 0x01});
  EXPECT_EQ(LceProto::SUCCESS, status.status());
  EXPECT_EQ((Bytes{0x08, 0x01, 0x78, 0x2A}), serialize(status));
}

TEST(LceProtoParsing, MalformedBlobsAreRefused) {
  EXPECT_FALSE(parses<LceProto::ClientMsg>({0x1A, 0x05, 0x0A}));        // cut short
  EXPECT_FALSE(parses<LceProto::ClientMsg>({0x08}));                    // tag without value
  EXPECT_FALSE(parses<LceProto::ClientMsg>({0x08, 0xFF}));              // varint cut short
  EXPECT_FALSE(parses<LceProto::ClientMsg>({0x00, 0x01}));              // field number 0
  EXPECT_FALSE(parses<LceProto::ClientMsg>(Bytes(12, 0xFF)));           // varint too long
  EXPECT_FALSE(parses<LceProto::ClientMsg>({0x1A, 0x02, 0x0A, 0x01}));  // inner length too long
}

// The log output of the protobuf runtime while this object lives; it does not go to standard error.
class RuntimeReport {
 public:
  RuntimeReport() : mPrevious(google::protobuf::SetLogHandler(record)) { text().clear(); }
  ~RuntimeReport() { google::protobuf::SetLogHandler(mPrevious); }
  static std::string& text() {
    static std::string report;
    return report;
  }

 private:
  static void record(google::protobuf::LogLevel, const char*, int, const std::string& message) {
    text() += message;
  }
  google::protobuf::LogHandler* mPrevious;
};

TEST(LceProtoParsing, InvalidUtf8IsRefused) {
  RuntimeReport report;
  EXPECT_FALSE(parses<LceProto::GetLastEstimationReportResp>({0x2A, 0x01, 0xFF}));
  EXPECT_FALSE(parses<LceProto::EstimationReportsResp>({0x2A, 0x01, 0xFF}));
  EXPECT_FALSE(parses<LceProto::SetReportingCriteriaResp>({0x12, 0x01, 0xFF}));
  EXPECT_NE(std::string::npos, report.text().find("invalid UTF-8"));
}

// The lite runtime knows a field's name when it writes, but not when it parses.
TEST(LceProtoMessages, InvalidUtf8IsReportedUnderTheFullFieldNameWhenWritten) {
  RuntimeReport report;
  LceProto::GetLastEstimationReportResp last;
  last.set_error_string("\xFF");
  EXPECT_EQ((Bytes{0x2A, 0x01, 0xFF}), serialize(last));
  EXPECT_NE(std::string::npos,
            report.text().find("'LceProto.GetLastEstimationReportResp.error_string'"));
  LceProto::EstimationReportsResp periodic;
  periodic.set_error_string("\xFF");
  serialize(periodic);
  EXPECT_NE(std::string::npos, report.text().find("'LceProto.EstimationReportsResp.error_string'"));
  LceProto::SetReportingCriteriaResp criteria;
  criteria.set_error("\xFF");
  serialize(criteria);
  EXPECT_NE(std::string::npos, report.text().find("'LceProto.SetReportingCriteriaResp.error'"));
}

TEST(LceProtoMessages, LiveOnTheHeapAndInAnArena) {
  google::protobuf::Arena arena;
  auto* message = google::protobuf::Arena::CreateMessage<LceProto::ServiceMsg>(&arena);
  EXPECT_EQ(&arena, message->GetArena());
  message->mutable_data()->mutable_enable_msg()->set_enable(true);
  LceProto::ServiceMsg copy(*message);
  EXPECT_EQ(nullptr, copy.GetArena());
  EXPECT_EQ(serialize(*message), serialize(copy));
}

TEST(LceProtoMessages, AccessorsOfTheOneofSwitchAndClear) {
  LceProto::ServiceData data;
  EXPECT_EQ(LceProto::ServiceData::MSG_TYPE_NOT_SET, data.msg_type_case());
  data.set_allocated_get_last_estination_report(new LceProto::GetLastEstimationReport);
  EXPECT_EQ(LceProto::ServiceData::kGetLastEstinationReport, data.msg_type_case());
  data.mutable_enable_msg();
  EXPECT_FALSE(data.has_get_last_estination_report());
  EXPECT_TRUE(data.has_enable_msg());
  delete data.release_enable_msg();
  EXPECT_EQ(LceProto::ServiceData::MSG_TYPE_NOT_SET, data.msg_type_case());
  data.mutable_perform_reporting_action();
  data.clear_msg_type();
  EXPECT_FALSE(data.has_perform_reporting_action());
}

TEST(LceProtoMessages, ClearCopyAndMergeWork) {
  LceProto::EstimationReportsResp first;
  first.set_rate(1);
  first.set_error_string("NONE");
  LceProto::EstimationReportsResp second;
  second.set_queue_size_ul(2);
  second.MergeFrom(first);
  EXPECT_EQ(1u, second.rate());
  EXPECT_EQ(2u, second.queue_size_ul());
  second.CopyFrom(first);
  EXPECT_EQ(0u, second.queue_size_ul());
  second.Clear();
  EXPECT_EQ(0u, second.ByteSizeLong());
}

}  // namespace
