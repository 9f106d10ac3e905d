// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <android/log.h>
#include <gtest/gtest.h>
#include <orb/status.h>

#include <climits>
#include <string>
#include <vector>

#include "RecordingPlatform.h"

// The status conversions of every service's utility class; each class's own test instantiates the
// suite. U has the class as Utils, its messages' status as Status, and its name.
template <class U>
class StatusConversion : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }

  static int v2(int status) { return U::Utils::statusToStatusV2(static_cast<status_e>(status)); }
  static int fromProto(int status) {
    return U::Utils::protoStatusToClient(static_cast<typename U::Status>(status));
  }
};

// Names the instances of the suite.
struct UtilsName {
  template <class U>
  static std::string GetName(int) {
    return U::kName;
  }
};

// Checks that a conversion wrote exactly one line through the SDK's log functions, with the names
// of class and function.
inline void expectOneSdkLine(const std::string& unit, const std::string& function,
                             const std::string& message) {
  const std::vector<recording::Line> lines = recording::lines();
  ASSERT_EQ(1u, lines.size()) << message;
  EXPECT_EQ(ANDROID_LOG_DEBUG, lines[0].priority);
  EXPECT_FALSE(lines[0].hasTag);
  const std::string head = "|OrbSdk|" + unit + "::" + function + ":";
  const std::string& text = lines[0].text;
  ASSERT_EQ(head, text.substr(0, head.size()));
  const size_t blank = text.find_first_not_of("0123456789", head.size());
  EXPECT_GT(blank, head.size());
  EXPECT_EQ(" " + message, text.substr(blank));
}

TYPED_TEST_SUITE_P(StatusConversion);

TYPED_TEST_P(StatusConversion, StatusV2KeepsItsIrregularOrder) {
  EXPECT_EQ(-1, this->v2(-1));
  EXPECT_EQ(0, this->v2(0));
  EXPECT_EQ(-2, this->v2(1));
  EXPECT_EQ(-3, this->v2(2));
  EXPECT_EQ(-4, this->v2(3));
  EXPECT_EQ(-5, this->v2(4));
  EXPECT_EQ(-7, this->v2(5));
  EXPECT_EQ(-8, this->v2(6));
  EXPECT_EQ(-6, this->v2(8));
  EXPECT_TRUE(recording::lines().empty());
}

TYPED_TEST_P(StatusConversion, StatusWithoutV2GoesToThePlatformLogAsErrorWithoutTag) {
  for (int unknown : {7, -2, 9, 12, INT_MAX, INT_MIN}) {
    recording::clear();
    EXPECT_EQ(-1, this->v2(unknown)) << unknown;
    const std::vector<recording::Line> lines = recording::lines();
    ASSERT_EQ(1u, lines.size()) << unknown;
    EXPECT_EQ(ANDROID_LOG_ERROR, lines[0].priority);
    EXPECT_FALSE(lines[0].hasTag);
    EXPECT_EQ("Unknown Status!", lines[0].text);
  }
}

TYPED_TEST_P(StatusConversion, ListedProtoStatusIsOneMoreThanTheClients) {
  const status_e expected[] = {
      STATUS_INVALID,       STATUS_SUCCESS,           STATUS_INVALID_ARG, STATUS_INTERNAL_ERROR,
      STATUS_NOT_SUPPORTED, STATUS_INVALID_OPERATION, STATUS_SERVICE_UP,  STATUS_SERVICE_DOWN,
      STATUS_INVALID_SLOT,  STATUS_RESERVED};
  int proto = 0;
  for (const status_e status : expected) {
    EXPECT_EQ(status, this->fromProto(proto)) << proto;
    EXPECT_EQ(proto - 1, this->fromProto(proto));
    ++proto;
  }
  EXPECT_TRUE(recording::lines().empty());
}

TYPED_TEST_P(StatusConversion, UnknownProtoStatusIsInvalidAndLoggedByTheSdkFrontEnd) {
  for (int unknown : {-1, 10, 12, INT_MAX, INT_MIN}) {
    recording::clear();
    EXPECT_EQ(-1, this->fromProto(unknown)) << unknown;
    expectOneSdkLine(TypeParam::kName, "protoStatusToClient", "Unknown Status!");
  }
}

REGISTER_TYPED_TEST_SUITE_P(StatusConversion, StatusV2KeepsItsIrregularOrder,
                            StatusWithoutV2GoesToThePlatformLogAsErrorWithoutTag,
                            ListedProtoStatusIsOneMoreThanTheClients,
                            UnknownProtoStatusIsInvalidAndLoggedByTheSdkFrontEnd);
