// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ClientLceUtils.h"

#include "StatusConversionSuite.h"

namespace {

struct Lce {
  using Utils = ClientLceUtils;
  using Status = LceProto::Status;
  static constexpr const char* kName = "ClientLceUtils";
};

INSTANTIATE_TYPED_TEST_SUITE_P(Lce, StatusConversion, Lce, UtilsName);

class ClientLceUtilsTest : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }

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
