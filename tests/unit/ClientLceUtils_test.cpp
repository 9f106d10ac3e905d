// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ClientLceUtils.h"

#include <android/log.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "RecordingPlatform.h"

namespace {

class ClientLceUtilsTest : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }

  static int v2(int status) {
    return ClientLceUtils::statusToStatusV2(static_cast<status_e>(status));
  }
  static int fromProto(int status) {
    return ClientLceUtils::protoStatusToClient(static_cast<LceProto::Status>(status));
  }
  static bool networkValid(int type) {
    return ClientLceUtils::isAccessNwTypeValid(static_cast<SdlAccessNetworkType>(type));
  }
  static int network(int type) {
    return ClientLceUtils::clientAccessLevelToProto(static_cast<SdlAccessNetworkType>(type));
  }
  static bool actionValid(int action) {
    return ClientLceUtils::isReportingActionValid(static_cast<LceReportingAction>(action));
  }
  static int action(int action) {
    return ClientLceUtils::clientReportingActionToProto(static_cast<LceReportingAction>(action));
  }
  static int level(int level) {
    return ClientLceUtils::protoConfidenceLevelToClient(
        static_cast<LceProto::ConfidenceLevel>(level));
  }
  static int direction(int direction) {
    return ClientLceUtils::protoLinkDirectionToClient(
        static_cast<LceProto::LinkDirection>(direction));
  }
  static int reportStatus(const std::string& error) {
    return ClientLceUtils::protoEstimationReportStatusToClient(error);
  }
  static int criteriaStatus(const std::string& error) {
    return ClientLceUtils::protoReportingCriteriaStatusToClient(error);
  }
};

TEST_F(ClientLceUtilsTest, StatusV2KeepsItsIrregularOrder) {
  EXPECT_EQ(-1, v2(-1));
  EXPECT_EQ(0, v2(0));
  EXPECT_EQ(-2, v2(1));
  EXPECT_EQ(-3, v2(2));
  EXPECT_EQ(-4, v2(3));
  EXPECT_EQ(-5, v2(4));
  EXPECT_EQ(-7, v2(5));
  EXPECT_EQ(-8, v2(6));
  EXPECT_EQ(-6, v2(8));
  EXPECT_TRUE(recording::lines().empty());
}

TEST_F(ClientLceUtilsTest, InvalidSlotHasNoStatusV2AndIsLogged) {
  EXPECT_EQ(-1, v2(7));
  ASSERT_EQ(1u, recording::lines().size());
  EXPECT_EQ("Unknown Status!", recording::lines()[0].text);
}

TEST_F(ClientLceUtilsTest, UnknownStatusGoesToThePlatformLogAsErrorWithoutTag) {
  for (int unknown : {-2, 9, 12, INT_MAX, INT_MIN}) {
    recording::clear();
    EXPECT_EQ(-1, v2(unknown)) << unknown;
    const std::vector<recording::Line> lines = recording::lines();
    ASSERT_EQ(1u, lines.size()) << unknown;
    EXPECT_EQ(ANDROID_LOG_ERROR, lines[0].priority);
    EXPECT_FALSE(lines[0].hasTag);
    EXPECT_EQ("Unknown Status!", lines[0].text);
  }
}

TEST_F(ClientLceUtilsTest, ListedProtoStatusIsOneMoreThanTheClients) {
  for (int status = 0; status <= 9; status++) EXPECT_EQ(status - 1, fromProto(status));
  EXPECT_TRUE(recording::lines().empty());
}

TEST_F(ClientLceUtilsTest, EveryProtoStatusNameHasItsClientName) {
  EXPECT_EQ(STATUS_INVALID, fromProto(LceProto::INVALID));
  EXPECT_EQ(STATUS_SUCCESS, fromProto(LceProto::SUCCESS));
  EXPECT_EQ(STATUS_INVALID_ARG, fromProto(LceProto::INVALID_ARG));
  EXPECT_EQ(STATUS_INTERNAL_ERROR, fromProto(LceProto::INTERNAL_ERROR));
  EXPECT_EQ(STATUS_NOT_SUPPORTED, fromProto(LceProto::NOT_SUPPORTED));
  EXPECT_EQ(STATUS_INVALID_OPERATION, fromProto(LceProto::INVALID_OPERATION));
  EXPECT_EQ(STATUS_SERVICE_UP, fromProto(LceProto::SERVICE_UP));
  EXPECT_EQ(STATUS_SERVICE_DOWN, fromProto(LceProto::SERVICE_DOWN));
  EXPECT_EQ(STATUS_INVALID_SLOT, fromProto(LceProto::INVALID_SLOT));
  EXPECT_EQ(STATUS_RESERVED, fromProto(LceProto::RESERVED));
}

TEST_F(ClientLceUtilsTest, UnknownProtoStatusIsInvalidAndLoggedByTheSdkFrontEnd) {
  for (int unknown : {-1, 10, 12, INT_MAX, INT_MIN}) {
    recording::clear();
    EXPECT_EQ(-1, fromProto(unknown)) << unknown;
    const std::vector<recording::Line> lines = recording::lines();
    ASSERT_EQ(1u, lines.size()) << unknown;
    EXPECT_EQ(ANDROID_LOG_DEBUG, lines[0].priority);
    EXPECT_FALSE(lines[0].hasTag);
    const std::string head = "|OrbSdk|ClientLceUtils::protoStatusToClient:";
    const std::string tail = " Unknown Status!";
    const std::string& text = lines[0].text;
    ASSERT_GT(text.size(), head.size() + tail.size()) << text;
    EXPECT_EQ(head, text.substr(0, head.size()));
    EXPECT_EQ(tail, text.substr(text.size() - tail.size()));
    const std::string number = text.substr(head.size(), text.size() - head.size() - tail.size());
    EXPECT_EQ(std::string::npos, number.find_first_not_of("0123456789")) << text;
  }
}

TEST_F(ClientLceUtilsTest, AccessNetworkIsValidFromZeroToThree) {
  for (int type = 0; type <= 3; type++) EXPECT_TRUE(networkValid(type)) << type;
  for (int type : {-1, 4, 7, INT_MAX, INT_MIN}) EXPECT_FALSE(networkValid(type)) << type;
}

TEST_F(ClientLceUtilsTest, AccessNetworkKeepsItsNumberAndUnknownIsNone) {
  EXPECT_EQ(LceProto::NONE, network(0));
  EXPECT_EQ(LceProto::WCDMA, network(1));
  EXPECT_EQ(LceProto::LTE, network(2));
  EXPECT_EQ(LceProto::NR5G, network(3));
  for (int type : {-1, 4, 7, INT_MAX}) EXPECT_EQ(LceProto::NONE, network(type)) << type;
}

TEST_F(ClientLceUtilsTest, ReportingActionIsValidFromOneToThree) {
  for (int value = 1; value <= 3; value++) EXPECT_TRUE(actionValid(value)) << value;
  for (int value : {-1, 0, 4, INT_MAX, INT_MIN}) EXPECT_FALSE(actionValid(value)) << value;
}

TEST_F(ClientLceUtilsTest, ReportingActionsAreRenumberedAndUnknownIsStop) {
  EXPECT_EQ(LceProto::STOP, action(LCE_REPORTING_ACTION_STOP));
  EXPECT_EQ(LceProto::START, action(LCE_REPORTING_ACTION_START));
  EXPECT_EQ(LceProto::RESET, action(LCE_REPORTING_ACTION_RESET));
  for (int value : {-1, 0, 4, INT_MAX}) EXPECT_EQ(LceProto::STOP, action(value)) << value;
}

TEST_F(ClientLceUtilsTest, ConfidenceLevelsOneToSevenPassAndOthersAreZero) {
  for (int value = 1; value <= 7; value++) EXPECT_EQ(value, level(value));
  for (int value : {-1, 0, 8, INT_MAX, INT_MIN}) {
    EXPECT_EQ(LCE_CONFIDENCE_LEVEL_L0, level(value)) << value;
  }
}

TEST_F(ClientLceUtilsTest, OnlyDownLinkIsDownlink) {
  EXPECT_EQ(LCE_LINK_DIRECTION_DOWNLINK, direction(LceProto::DOWN_LINK));
  for (int value : {0, -1, 2, INT_MAX}) {
    EXPECT_EQ(LCE_LINK_DIRECTION_UPLINK, direction(value)) << value;
  }
}

TEST_F(ClientLceUtilsTest, EstimationReportStatusComesFromTheExactText) {
  EXPECT_EQ(1, reportStatus("NONE"));
  EXPECT_EQ(2, reportStatus("REPORTING_CRITERIA_NOT_SET"));
  for (const std::string& other :
       {std::string(), std::string("none"), std::string("NONE "), std::string("NONE\0", 5),
        std::string("INVALID_ARGUMENTS"), std::string("REPORTING_CRITERIA_NOT_SE")}) {
    EXPECT_EQ(3, reportStatus(other)) << other;
  }
}

TEST_F(ClientLceUtilsTest, ReportingCriteriaStatusComesFromTheExactText) {
  EXPECT_EQ(1, criteriaStatus("NONE"));
  EXPECT_EQ(2, criteriaStatus("INVALID_ARGUMENTS"));
  EXPECT_EQ(3, criteriaStatus("REPORTING_CRITERIA_TYPE_MISMATCH"));
  for (const std::string& other :
       {std::string(), std::string("None"), std::string(" NONE"), std::string("NONE\0", 5),
        std::string("REPORTING_CRITERIA_NOT_SET"), std::string("invalid_arguments")}) {
    EXPECT_EQ(4, criteriaStatus(other)) << other;
  }
}

TEST_F(ClientLceUtilsTest, OnlyStatusConversionsLog) {
  network(7);
  action(9);
  level(9);
  direction(9);
  reportStatus("?");
  criteriaStatus("?");
  EXPECT_TRUE(recording::lines().empty());
}

}  // namespace
