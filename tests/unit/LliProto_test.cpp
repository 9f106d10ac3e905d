// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The LLI messages on the wire, byte by byte. Names in these tests are those of the messages.
#include <google/protobuf/arena.h>

#include <type_traits>

#include "ProtoTest.h"
#include "lli.pb.h"

namespace {

using namespace prototest;

TEST(LliProtoEnums, NumbersAndNamesAreFixed) {
  EXPECT_STATUS_ENUM(LliProto);
  EXPECT_ENUM(LliProto, ServiceEventId, "ENABLE", "REG_LINK_INTERRUPT_IND");
  EXPECT_ENUM(LliProto, ClientEventId, "STATUS_IND", "LLI_IND_RESP");
  EXPECT_ENUM(LliProto, HandoffInfo, "PRE_HANDOFF", "HANDOFF_START", "HANDOFF_SUCCESS",
              "HANDOFF_FAILURE", "HANDOFF_IMMINENT");
  EXPECT_ENUM(LliProto, PreHandoffState, "ENTRY", "EXIT");
  EXPECT_ENUM(LliProto, LliRatType, "NULL_BEARER", "LLI_3GPP_WCDMA", "LLI_3GPP_GERAN",
              "LLI_3GPP_LTE", "LLI_3GPP_TDSCDMA", "LLI_3GPP_WLAN", "LLI_3GPP_5G", "LLI_3GPP_CIWLAN",
              "LLI_3GPP2_1X", "LLI_3GPP2_HRPD", "LLI_3GPP2_EHRPD", "LLI_3GPP2_WLAN");
}

TEST(LliProtoTypes, AreLiteMessagesWithTheirFullNames) {
  EXPECT_EQ("LliProto.EnableService", LliProto::EnableService().GetTypeName());
  EXPECT_EQ("LliProto.RegLinkInterruptInd", LliProto::RegLinkInterruptInd().GetTypeName());
  EXPECT_EQ("LliProto.ServiceData", LliProto::ServiceData().GetTypeName());
  EXPECT_EQ("LliProto.ServiceMsg", LliProto::ServiceMsg().GetTypeName());
  EXPECT_EQ("LliProto.StatusInd", LliProto::StatusInd().GetTypeName());
  EXPECT_EQ("LliProto.LliIndResp", LliProto::LliIndResp().GetTypeName());
  EXPECT_EQ("LliProto.ClientData", LliProto::ClientData().GetTypeName());
  EXPECT_EQ("LliProto.ClientMsg", LliProto::ClientMsg().GetTypeName());
  EXPECT_TRUE((std::is_base_of<google::protobuf::MessageLite, LliProto::ServiceMsg>::value));
}

TEST(LliProtoTypes, TransactionIdsHave64UnsignedBits) {
  EXPECT_TRUE((std::is_same<uint64_t, decltype(LliProto::ServiceMsg().transaction_id())>::value));
  LliProto::ClientMsg message;
  message.set_transaction_id(UINT64_MAX);
  EXPECT_EQ((Bytes{0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}),
            serialize(message));
}

TEST(LliProtoRequests, EnableIsSixBytesAndDisableFour) {
  LliProto::ServiceMsg message;
  message.mutable_data()->mutable_enable_msg()->set_enable(true);
  EXPECT_EQ((Bytes{0x1A, 0x04, 0x0A, 0x02, 0x08, 0x01}), serialize(message));
  message.mutable_data()->mutable_enable_msg()->set_enable(false);
  EXPECT_EQ((Bytes{0x1A, 0x02, 0x0A, 0x00}), serialize(message));
}

TEST(LliProtoRequests, RegistrationHasAMemberOfItsOwn) {
  LliProto::ServiceMsg message;
  message.set_event_id(LliProto::REG_LINK_INTERRUPT_IND);
  message.mutable_data()->mutable_reg_link_interrupt_ind()->set_register_ind(true);
  EXPECT_EQ((Bytes{0x08, 0x01, 0x1A, 0x04, 0x12, 0x02, 0x08, 0x01}), serialize(message));
  message.mutable_data()->mutable_enable_msg();
  EXPECT_FALSE(message.data().has_reg_link_interrupt_ind());
}

TEST(LliProtoResponses, StatusIndication) {
  LliProto::ClientMsg message;
  message.mutable_data()->mutable_status_msg()->set_status(LliProto::SERVICE_DOWN);
  EXPECT_EQ((Bytes{0x1A, 0x04, 0x0A, 0x02, 0x08, 0x07}), serialize(message));
}

TEST(LliProtoResponses, IndicationWritesItsFieldsInAscendingOrder) {
  LliProto::ClientMsg message;
  message.set_event_id(LliProto::LLI_IND_RESP);
  auto* indication = message.mutable_data()->mutable_lli_ind_resp();
  indication->set_estimated_interruption_duration(40);
  indication->set_estimated_time_to_interruption(300);
  indication->set_target_rat(LliProto::LLI_3GPP_5G);
  indication->set_source_rat(LliProto::LLI_3GPP_LTE);
  indication->set_pre_handoff_state(LliProto::EXIT);
  indication->set_handoff_info(LliProto::HANDOFF_IMMINENT);
  EXPECT_EQ((Bytes{0x08, 0x01, 0x1A, 0x0F, 0x12, 0x0D, 0x08, 0x04, 0x10, 0x01, 0x18, 0x03, 0x20,
                   0x06, 0x28, 0xAC, 0x02, 0x30, 0x28}),
            serialize(message));
}

TEST(LliProtoResponses, IndicationOfZerosIsAMemberOfNoLength) {
  LliProto::ClientData data;
  auto* indication = data.mutable_lli_ind_resp();
  indication->set_handoff_info(LliProto::PRE_HANDOFF);
  indication->set_pre_handoff_state(LliProto::ENTRY);
  indication->set_source_rat(LliProto::NULL_BEARER);
  indication->set_target_rat(LliProto::NULL_BEARER);
  indication->set_estimated_time_to_interruption(0);
  indication->set_estimated_interruption_duration(0);
  EXPECT_TRUE(serialize(*indication).empty());
  EXPECT_EQ((Bytes{0x12, 0x00}), serialize(data));
}

TEST(LliProtoResponses, EstimatesKeep64Bits) {
  LliProto::LliIndResp indication;
  indication.set_estimated_time_to_interruption((uint64_t{1} << 32) + 1);
  indication.set_estimated_interruption_duration(UINT64_MAX);
  const Bytes bytes = serialize(indication);
  EXPECT_EQ((Bytes{0x28, 0x81, 0x80, 0x80, 0x80, 0x10, 0x30, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                   0xFF, 0xFF, 0xFF, 0x01}),
            bytes);
  const auto copy = parse<LliProto::LliIndResp>(bytes);
  EXPECT_EQ((uint64_t{1} << 32) + 1, copy.estimated_time_to_interruption());
  EXPECT_EQ(UINT64_MAX, copy.estimated_interruption_duration());
}

TEST(LliProtoParsing, TechnologyTwelveIsKeptButNotValid) {
  EXPECT_TRUE(LliProto::LliRatType_IsValid(11));
  const Bytes bytes{0x18, 0x0C, 0x20, 0x0B};
  const auto indication = parse<LliProto::LliIndResp>(bytes);
  EXPECT_EQ(12, indication.source_rat());
  EXPECT_EQ(LliProto::LLI_3GPP2_WLAN, indication.target_rat());
  EXPECT_FALSE(LliProto::LliRatType_IsValid(indication.source_rat()));
  EXPECT_EQ(bytes, serialize(indication));
}

TEST(LliProtoParsing, EmptyBlobReadsAsDefaults) {
  const auto message = parse<LliProto::ClientMsg>({});
  EXPECT_EQ(LliProto::STATUS_IND, message.event_id());
  EXPECT_EQ(0u, message.transaction_id());
  EXPECT_FALSE(message.has_data());
}

TEST(LliProtoParsing, OtherMemberThanTheEventNamesReadsAsDefault) {
  const auto message = parse<LliProto::ClientMsg>({0x08, 0x01, 0x1A, 0x04, 0x0A, 0x02, 0x08, 0x06});
  EXPECT_EQ(LliProto::ClientData::kStatusMsg, message.data().msg_type_case());
  EXPECT_FALSE(message.data().has_lli_ind_resp());
  EXPECT_EQ(LliProto::PRE_HANDOFF, message.data().lli_ind_resp().handoff_info());
}

TEST(LliProtoParsing, UnknownFieldsAreKeptAndWrittenLast) {
  const auto status = parse<LliProto::StatusInd>({0x78, 0x2A, 0x08, 0x0A});
  EXPECT_EQ(10, status.status());
  EXPECT_EQ((Bytes{0x08, 0x0A, 0x78, 0x2A}), serialize(status));
}

TEST(LliProtoParsing, MalformedBlobsAreRefused) {
  EXPECT_FALSE(parses<LliProto::ClientMsg>({0x1A, 0x05, 0x0A}));
  EXPECT_FALSE(parses<LliProto::ClientMsg>({0x08}));
  EXPECT_FALSE(parses<LliProto::ClientMsg>({0x1A, 0x02, 0x12, 0x01}));
  EXPECT_FALSE(parses<LliProto::ClientMsg>(Bytes(12, 0xFF)));
}

TEST(LliProtoMessages, LiveOnTheHeapAndInAnArena) {
  google::protobuf::Arena arena;
  auto* message = google::protobuf::Arena::CreateMessage<LliProto::ClientMsg>(&arena);
  EXPECT_EQ(&arena, message->GetArena());
  message->mutable_data()->mutable_lli_ind_resp()->set_source_rat(LliProto::LLI_3GPP_LTE);
  LliProto::ClientMsg copy(*message);
  EXPECT_EQ(nullptr, copy.GetArena());
  EXPECT_EQ(serialize(*message), serialize(copy));
}

}  // namespace
