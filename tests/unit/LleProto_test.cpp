// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The LLE messages on the wire, byte by byte. Names in these tests are those of the messages.
#include <google/protobuf/arena.h>

#include <type_traits>

#include "ProtoTest.h"
#include "lle.pb.h"

namespace {

using namespace prototest;

TEST(LleProtoEnums, NumbersAndNamesAreFixed) {
  EXPECT_STATUS_ENUM(LleProto);
  EXPECT_ENUM(LleProto, ServiceEventId, "ENABLE", "REG_ESTIMATION_REPORTS",
              "SET_REPORTING_CRITERIA", "GET_LAST_ESTIMATION_REPORT");
  EXPECT_ENUM(LleProto, ClientEventId, "STATUS_IND", "GET_REPORT_RESP", "IND_REPORT_RESP");
  EXPECT_ENUM(LleProto, RatType, "WCDMA", "LTE", "NR5G");
}

TEST(LleProtoTypes, AreLiteMessagesWithTheirFullNames) {
  EXPECT_EQ("LleProto.EnableService", LleProto::EnableService().GetTypeName());
  EXPECT_EQ("LleProto.RegEstimationReports", LleProto::RegEstimationReports().GetTypeName());
  EXPECT_EQ("LleProto.SetReportingCriteria", LleProto::SetReportingCriteria().GetTypeName());
  EXPECT_EQ("LleProto.GetLastEstimationReport", LleProto::GetLastEstimationReport().GetTypeName());
  EXPECT_EQ("LleProto.ServiceData", LleProto::ServiceData().GetTypeName());
  EXPECT_EQ("LleProto.ServiceMsg", LleProto::ServiceMsg().GetTypeName());
  EXPECT_EQ("LleProto.StatusInd", LleProto::StatusInd().GetTypeName());
  EXPECT_EQ("LleProto.GetReportResp", LleProto::GetReportResp().GetTypeName());
  EXPECT_EQ("LleProto.IndReportResp", LleProto::IndReportResp().GetTypeName());
  EXPECT_EQ("LleProto.ClientData", LleProto::ClientData().GetTypeName());
  EXPECT_EQ("LleProto.ClientMsg", LleProto::ClientMsg().GetTypeName());
  EXPECT_TRUE((std::is_base_of<google::protobuf::MessageLite, LleProto::ServiceMsg>::value));
}

TEST(LleProtoTypes, TransactionIdsHave64UnsignedBits) {
  EXPECT_TRUE((std::is_same<uint64_t, decltype(LleProto::ServiceMsg().transaction_id())>::value));
  LleProto::ClientMsg message;
  message.set_transaction_id(UINT64_MAX);
  EXPECT_EQ((Bytes{0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}),
            serialize(message));
}

TEST(LleProtoRequests, EnableIsSixBytesAndDisableFour) {
  LleProto::ServiceMsg message;
  message.mutable_data()->mutable_enable_msg()->set_enable(true);
  EXPECT_EQ((Bytes{0x1A, 0x04, 0x0A, 0x02, 0x08, 0x01}), serialize(message));
  message.mutable_data()->mutable_enable_msg()->set_enable(false);
  EXPECT_EQ((Bytes{0x1A, 0x02, 0x0A, 0x00}), serialize(message));
}

TEST(LleProtoRequests, CriteriaOfZeroWriteNoField) {
  LleProto::ServiceMsg message;
  message.set_event_id(LleProto::SET_REPORTING_CRITERIA);
  auto* criteria = message.mutable_data()->mutable_set_reporting_criteria();
  criteria->set_reporting_criteria(0);
  EXPECT_TRUE(serialize(*criteria).empty());
  EXPECT_EQ((Bytes{0x08, 0x02, 0x1A, 0x02, 0x12, 0x00}), serialize(message));
  criteria->set_reporting_criteria(300);
  EXPECT_EQ((Bytes{0x08, 0x02, 0x1A, 0x05, 0x12, 0x03, 0x08, 0xAC, 0x02}), serialize(message));
}

TEST(LleProtoRequests, GetLastEstimationReportIsAnEmptyMember) {
  LleProto::ServiceMsg message;
  message.set_event_id(LleProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  EXPECT_EQ((Bytes{0x08, 0x03, 0x1A, 0x02, 0x1A, 0x00}), serialize(message));
}

TEST(LleProtoRequests, RegEstimationReportsExistsAndIsEmpty) {
  EXPECT_TRUE(serialize(LleProto::RegEstimationReports()).empty());
}

TEST(LleProtoRequests, MembersOfTheOneofReplaceEachOther) {
  LleProto::ServiceData data;
  EXPECT_EQ(LleProto::ServiceData::MSG_TYPE_NOT_SET, data.msg_type_case());
  data.mutable_enable_msg();
  data.mutable_get_last_estination_report();
  EXPECT_EQ(LleProto::ServiceData::kGetLastEstinationReport, data.msg_type_case());
  EXPECT_FALSE(data.has_enable_msg());
  data.mutable_set_reporting_criteria();
  EXPECT_FALSE(data.has_get_last_estination_report());
}

// The answer and the indication have the same fields with the same numbers.
template <class Report>
class LleProtoReport : public ::testing::Test {
 protected:
  static Report full() {
    Report report;
    report.set_status(true);
    report.set_ul_report_status(1);
    report.set_ul_latency_estimation(300);
    report.set_ul_variance_estimation(4);
    report.set_dl_report_status(5);
    report.set_dl_latency_estimation(6);
    report.set_dl_variance_estimation(7);
    report.set_report_interval(1000);
    report.set_rat(LleProto::NR5G);
    return report;
  }
};

struct ReportNames {
  template <class Report>
  static std::string GetName(int) {
    return std::is_same<Report, LleProto::GetReportResp>::value ? "Answer" : "Indication";
  }
};

using Reports = ::testing::Types<LleProto::GetReportResp, LleProto::IndReportResp>;
TYPED_TEST_SUITE(LleProtoReport, Reports, ReportNames);

TYPED_TEST(LleProtoReport, FieldsAreWrittenInAscendingOrder) {
  EXPECT_EQ((Bytes{0x08, 0x01, 0x10, 0x01, 0x18, 0xAC, 0x02, 0x20, 0x04, 0x28,
                   0x05, 0x30, 0x06, 0x38, 0x07, 0x40, 0xE8, 0x07, 0x48, 0x02}),
            serialize(TestFixture::full()));
}

TYPED_TEST(LleProtoReport, ReportOfZerosIsEmptyAndReadsAsTheFirstTechnology) {
  TypeParam report = TestFixture::full();
  report.Clear();
  report.set_status(false);
  report.set_rat(LleProto::WCDMA);
  EXPECT_TRUE(serialize(report).empty());
  EXPECT_EQ(LleProto::WCDMA, parse<TypeParam>({}).rat());
}

TYPED_TEST(LleProtoReport, EstimatesKeep64Bits) {
  TypeParam report;
  const uint64_t large = (uint64_t{1} << 32) + 1;
  report.set_ul_latency_estimation(large);
  EXPECT_EQ((Bytes{0x18, 0x81, 0x80, 0x80, 0x80, 0x10}), serialize(report));
  report.set_ul_variance_estimation(large << 1);
  report.set_dl_latency_estimation(UINT64_MAX);
  report.set_dl_variance_estimation(large << 31);
  const auto copy = parse<TypeParam>(serialize(report));
  EXPECT_EQ(large, copy.ul_latency_estimation());
  EXPECT_EQ(large << 1, copy.ul_variance_estimation());
  EXPECT_EQ(UINT64_MAX, copy.dl_latency_estimation());
  EXPECT_EQ(large << 31, copy.dl_variance_estimation());
}

TYPED_TEST(LleProtoReport, UnlistedTechnologyIsKept) {
  const Bytes bytes{0x48, 0x03};
  const auto report = parse<TypeParam>(bytes);
  EXPECT_EQ(3, report.rat());
  EXPECT_FALSE(LleProto::RatType_IsValid(report.rat()));
  EXPECT_EQ(bytes, serialize(report));
}

TEST(LleProtoResponses, StatusIndication) {
  LleProto::ClientMsg message;
  message.mutable_data()->mutable_status_msg()->set_status(LleProto::SERVICE_UP);
  EXPECT_EQ((Bytes{0x1A, 0x04, 0x0A, 0x02, 0x08, 0x06}), serialize(message));
}

TEST(LleProtoResponses, EmptyReportsAreMembersOfNoLength) {
  LleProto::ClientMsg message;
  message.set_event_id(LleProto::GET_REPORT_RESP);
  message.mutable_data()->mutable_get_report_resp()->set_rat(LleProto::WCDMA);
  EXPECT_EQ((Bytes{0x12, 0x00}), serialize(message.data()));
  EXPECT_EQ((Bytes{0x08, 0x01, 0x1A, 0x02, 0x12, 0x00}), serialize(message));
  message.set_event_id(LleProto::IND_REPORT_RESP);
  message.mutable_data()->mutable_ind_report_resp();
  EXPECT_EQ((Bytes{0x08, 0x02, 0x1A, 0x02, 0x1A, 0x00}), serialize(message));
}

TEST(LleProtoParsing, EmptyBlobReadsAsDefaults) {
  const auto message = parse<LleProto::ClientMsg>({});
  EXPECT_EQ(LleProto::STATUS_IND, message.event_id());
  EXPECT_EQ(0u, message.transaction_id());
  EXPECT_FALSE(message.has_data());
}

TEST(LleProtoParsing, OtherMemberThanTheEventNamesReadsAsDefault) {
  const auto message = parse<LleProto::ClientMsg>({0x08, 0x01, 0x1A, 0x04, 0x1A, 0x02, 0x08, 0x01});
  EXPECT_EQ(LleProto::ClientData::kIndReportResp, message.data().msg_type_case());
  EXPECT_FALSE(message.data().has_get_report_resp());
  EXPECT_FALSE(message.data().get_report_resp().status());
}

TEST(LleProtoParsing, UnknownFieldsAreKeptAndWrittenLast) {
  const auto status = parse<LleProto::StatusInd>({0x78, 0x2A, 0x08, 0x0A});
  EXPECT_EQ(10, status.status());
  EXPECT_EQ((Bytes{0x08, 0x0A, 0x78, 0x2A}), serialize(status));
}

TEST(LleProtoParsing, MalformedBlobsAreRefused) {
  EXPECT_FALSE(parses<LleProto::ClientMsg>({0x1A, 0x05, 0x0A}));
  EXPECT_FALSE(parses<LleProto::ClientMsg>({0x08}));
  EXPECT_FALSE(parses<LleProto::ClientMsg>({0x1A, 0x02, 0x12, 0x01}));
  EXPECT_FALSE(parses<LleProto::ClientMsg>(Bytes(12, 0xFF)));
}

TEST(LleProtoMessages, LiveOnTheHeapAndInAnArena) {
  google::protobuf::Arena arena;
  auto* message = google::protobuf::Arena::CreateMessage<LleProto::ClientMsg>(&arena);
  EXPECT_EQ(&arena, message->GetArena());
  message->mutable_data()->mutable_get_report_resp()->set_report_interval(1);
  LleProto::ClientMsg copy(*message);
  EXPECT_EQ(nullptr, copy.GetArena());
  EXPECT_EQ(serialize(*message), serialize(copy));
}

}  // namespace
