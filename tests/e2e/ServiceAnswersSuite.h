// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "ServiceFixture.h"

// Messages that the daemon of any service may send: statuses, and unusable messages. Each service's
// *Answers_test.cpp instantiates the suite.
namespace servicetest {

struct StatusRow {
  int proto;
  status_e status;
  status_v2_e v2;
};

constexpr StatusRow kStatusRows[] = {
    {0, STATUS_INVALID, STATUS_V2_INVALID},
    {1, STATUS_SUCCESS, STATUS_V2_SUCCESS},
    {2, STATUS_INVALID_ARG, STATUS_V2_INVALID_ARG},
    {3, STATUS_INTERNAL_ERROR, STATUS_V2_INTERNAL_ERROR},
    {4, STATUS_NOT_SUPPORTED, STATUS_V2_NOT_SUPPORTED},
    {5, STATUS_INVALID_OPERATION, STATUS_V2_INVALID_OPERATION},
    {6, STATUS_SERVICE_UP, STATUS_V2_SERVICE_UP},
    {7, STATUS_SERVICE_DOWN, STATUS_V2_SERVICE_DOWN},
    {8, STATUS_INVALID_SLOT, STATUS_V2_INVALID},
    {9, STATUS_RESERVED, STATUS_V2_RESERVED},
    {10, STATUS_INVALID, STATUS_V2_INVALID},
    {11, STATUS_INVALID, STATUS_V2_INVALID},
    {12, STATUS_INVALID, STATUS_V2_INVALID},
};

template <class S>
class ServiceAnswers : public ServiceTest<S> {
 protected:
  using typename ServiceTest<S>::CallList;

  void checkStatus(const StatusRow& row) {
    SCOPED_TRACE(row.proto);
    this->forgetAll();
    this->send(statusMessage<S>(row.proto));
    EXPECT_EQ(this->waitForCalls(2), (CallList{{"status", row.status, {}}, {"v2", row.v2, {}}}));
    EXPECT_EQ(this->linesOf(kBlobListener),
              (LogLines{this->entered(), this->said("STATUS_IND"),
                        this->said("status_msg " + std::to_string(row.proto)),
                        this->said("status " + std::to_string(row.status))}));
    const LogLines unknown{{"protoStatusToClient", "Unknown Status!"}};
    EXPECT_EQ(linesOfUnit("OrbSdk", "Client" + std::string(S::kName) + "Utils"),
              row.proto > 9 ? unknown : LogLines{});
    size_t withoutV2 = 0;
    for (const recording::Line& line : recording::lines()) {
      if (line.text != "Unknown Status!") continue;
      EXPECT_EQ(6, line.priority);
      EXPECT_FALSE(line.hasTag);
      ++withoutV2;
    }
    EXPECT_EQ(row.proto == 8 ? 1u : 0u, withoutV2);
  }
};

TYPED_TEST_SUITE_P(ServiceAnswers);

TYPED_TEST_P(ServiceAnswers, EveryStatusReachesBothCallbacksFirstGenerationFirst) {
  this->enableBothQuietly();
  for (const StatusRow& row : kStatusRows) this->checkStatus(row);
}

TYPED_TEST_P(ServiceAnswers, StatusReachesTheSecondGenerationAlone) {
  ASSERT_EQ(0, TypeParam::create(this->onV2));
  ASSERT_TRUE(this->daemon().waitForFrames(1));
  this->send(statusMessage<TypeParam>(6));
  EXPECT_EQ(this->waitForCalls(1),
            (typename TestFixture::CallList{{"v2", STATUS_V2_SERVICE_UP, {}}}));
}

TYPED_TEST_P(ServiceAnswers, InternalServiceUpReachesNoCallback) {
  this->enable();
  EXPECT_TRUE(this->settle().empty());
  EXPECT_EQ(this->listenerLines(),
            (LogLines{this->entered(), this->said("unknown internal status 3")}));
}

TYPED_TEST_P(ServiceAnswers, MessageWithoutItsMemberIsDroppedWithTheDocumentedLine) {
  this->enableQuietly();
  for (const Request& request : TypeParam::requests()) request.valid();
  LogLines expected;
  uint8_t event = 0;
  for (const EventTexts& texts : TypeParam::events()) {
    // The key of a member of another event: that of the second or of the first event.
    const uint8_t other = event == 0 ? 0x12 : 0x0a;
    this->sendRaw({0x08, event, 0x1a, 0x00});
    this->sendRaw({0x08, event, 0x1a, 0x02, other, 0x00});
    for (int i = 0; i < 2; ++i) {
      expected.push_back(this->entered());
      expected.push_back(this->said(texts.name));
      expected.push_back(this->said(texts.empty));
    }
    ++event;
  }
  EXPECT_TRUE(this->settle().empty());
  EXPECT_EQ(this->listenerLines(), expected);
}

TYPED_TEST_P(ServiceAnswers, UnknownEventIsDropped) {
  this->enableQuietly();
  LogLines expected;
  for (const int number : {static_cast<int>(TypeParam::events().size()), 100, -1}) {
    auto message = statusMessage<TypeParam>(1);
    message.set_event_id(event<TypeParam>(number).event_id());
    this->send(message);
    expected.push_back(this->entered());
    expected.push_back(this->said("Unknown message type"));
  }
  EXPECT_TRUE(this->settle().empty());
  EXPECT_EQ(this->listenerLines(), expected);
}

TYPED_TEST_P(ServiceAnswers, BlobThatDoesNotParseReadsAsTheDefaultMessage) {
  this->enableQuietly();
  for (const Request& request : TypeParam::requests()) request.valid();
  LogLines expected;
  // Nothing, random bytes, a key without a value, and members that are cut off, before or after
  // their length.
  for (const Blob& blob : std::vector<Blob>{{},
                                            {0xff, 0xff, 0xff},
                                            {0x08},
                                            {0x08, 0x01, 0x1a, 0x7f},
                                            {0x08, 0x01, 0x1a, 0x04, 0x12, 0x03, 0x08, 0x01},
                                            {0x1a, 0x03, 0x0a, 0x02, 0x08}}) {
    this->sendRaw(blob);
    expected.push_back(this->entered());
    expected.push_back(this->said("STATUS_IND"));
    expected.push_back(this->said("Status IND message data not filled"));
  }
  EXPECT_TRUE(this->settle().empty());
  EXPECT_EQ(this->listenerLines(), expected);
}

REGISTER_TYPED_TEST_SUITE_P(ServiceAnswers, EveryStatusReachesBothCallbacksFirstGenerationFirst,
                            StatusReachesTheSecondGenerationAlone,
                            InternalServiceUpReachesNoCallback,
                            MessageWithoutItsMemberIsDroppedWithTheDocumentedLine,
                            UnknownEventIsDropped, BlobThatDoesNotParseReadsAsTheDefaultMessage);

}  // namespace servicetest
