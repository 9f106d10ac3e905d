// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Applications are compiled against numbers, layouts and signatures. This is the record of what
// they were compiled against; a change here breaks them.
#include <gtest/gtest.h>
#include <orb/sdl.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace {

// The records as they were shipped first, in plain types.
struct ShippedCriteria {
  uint32_t firstList[20];
  uint8_t firstListCount;
  uint32_t secondList[20];
  uint8_t secondListCount;
  uint32_t criteriaValue1;
  uint32_t criteriaValue2;
  int32_t accessNetworkType;
};

struct ShippedReport {
  uint32_t rate;
  int32_t confidenceLevel;
  int32_t linkDirection;
  uint32_t queueSizeUL;
};

template <typename Enum>
constexpr bool isInt32() {
  return std::is_same<std::underlying_type_t<Enum>, int32_t>::value;
}

TEST(PublicHeader, EveryEnumerationIsASigned32BitInteger) {
  EXPECT_TRUE(isInt32<status_e>());
  EXPECT_TRUE(isInt32<status_v2_e>());
  EXPECT_TRUE(isInt32<SdlAccessNetworkType>());
  EXPECT_TRUE(isInt32<LceReportingAction>());
  EXPECT_TRUE(isInt32<LceReportingCriteriaStatus>());
  EXPECT_TRUE(isInt32<LceEstimationReportStatus>());
  EXPECT_TRUE(isInt32<LceConfidenceLevel>());
  EXPECT_TRUE(isInt32<LceLinkDirection>());
}

TEST(PublicHeader, StatusesKeepTheirNumbers) {
  EXPECT_EQ(-1, STATUS_INVALID);
  EXPECT_EQ(0, STATUS_SUCCESS);
  EXPECT_EQ(1, STATUS_INVALID_ARG);
  EXPECT_EQ(2, STATUS_INTERNAL_ERROR);
  EXPECT_EQ(3, STATUS_NOT_SUPPORTED);
  EXPECT_EQ(4, STATUS_INVALID_OPERATION);
  EXPECT_EQ(5, STATUS_SERVICE_UP);
  EXPECT_EQ(6, STATUS_SERVICE_DOWN);
  EXPECT_EQ(7, STATUS_INVALID_SLOT);
  EXPECT_EQ(8, STATUS_RESERVED);
}

TEST(PublicHeader, SecondGenerationStatusesKeepTheirNumbers) {
  EXPECT_EQ(0, STATUS_V2_SUCCESS);
  EXPECT_EQ(-1, STATUS_V2_INVALID);
  EXPECT_EQ(-2, STATUS_V2_INVALID_ARG);
  EXPECT_EQ(-3, STATUS_V2_INTERNAL_ERROR);
  EXPECT_EQ(-4, STATUS_V2_NOT_SUPPORTED);
  EXPECT_EQ(-5, STATUS_V2_INVALID_OPERATION);
  EXPECT_EQ(-6, STATUS_V2_RESERVED);
  EXPECT_EQ(-7, STATUS_V2_SERVICE_UP);
  EXPECT_EQ(-8, STATUS_V2_SERVICE_DOWN);
}

TEST(PublicHeader, LceValuesKeepTheirNumbers) {
  EXPECT_EQ(0, SDL_ACCESS_NETWORK_TYPE_NONE);
  EXPECT_EQ(1, SDL_ACCESS_NETWORK_TYPE_WCDMA);
  EXPECT_EQ(2, SDL_ACCESS_NETWORK_TYPE_LTE);
  EXPECT_EQ(3, SDL_ACCESS_NETWORK_TYPE_NR5G);
  EXPECT_EQ(1, LCE_REPORTING_ACTION_STOP);
  EXPECT_EQ(2, LCE_REPORTING_ACTION_START);
  EXPECT_EQ(3, LCE_REPORTING_ACTION_RESET);
  EXPECT_EQ(1, LCE_REPORTING_CRITERIA_STATUS_SUCCESS);
  EXPECT_EQ(2, LCE_REPORTING_CRITERIA_STATUS_INVALID_ARGUMENTS);
  EXPECT_EQ(3, LCE_REPORTING_CRITERIA_STATUS_TYPE_MISMATCH);
  EXPECT_EQ(4, LCE_REPORTING_CRITERIA_STATUS_OTHER);
  EXPECT_EQ(1, LCE_ESTIMATION_REPORT_STATUS_SUCCESS);
  EXPECT_EQ(2, LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET);
  EXPECT_EQ(3, LCE_ESTIMATION_REPORT_STATUS_OTHER);
  EXPECT_EQ(0, LCE_CONFIDENCE_LEVEL_L0);
  EXPECT_EQ(1, LCE_CONFIDENCE_LEVEL_L1);
  EXPECT_EQ(2, LCE_CONFIDENCE_LEVEL_L2);
  EXPECT_EQ(3, LCE_CONFIDENCE_LEVEL_L3);
  EXPECT_EQ(4, LCE_CONFIDENCE_LEVEL_L4);
  EXPECT_EQ(5, LCE_CONFIDENCE_LEVEL_L5);
  EXPECT_EQ(6, LCE_CONFIDENCE_LEVEL_L6);
  EXPECT_EQ(7, LCE_CONFIDENCE_LEVEL_L7);
  EXPECT_EQ(0, LCE_LINK_DIRECTION_UPLINK);
  EXPECT_EQ(1, LCE_LINK_DIRECTION_DOWNLINK);
}

TEST(PublicHeader, CriteriaKeepTheShippedLayout) {
  EXPECT_EQ(180u, sizeof(LceReportingCriteria));
  EXPECT_EQ(4u, alignof(LceReportingCriteria));
  EXPECT_EQ(sizeof(ShippedCriteria), sizeof(LceReportingCriteria));
  EXPECT_EQ(offsetof(ShippedCriteria, firstList), offsetof(LceReportingCriteria, firstList));
  EXPECT_EQ(offsetof(ShippedCriteria, firstListCount),
            offsetof(LceReportingCriteria, firstListCount));
  EXPECT_EQ(offsetof(ShippedCriteria, secondList), offsetof(LceReportingCriteria, secondList));
  EXPECT_EQ(offsetof(ShippedCriteria, secondListCount),
            offsetof(LceReportingCriteria, secondListCount));
  EXPECT_EQ(offsetof(ShippedCriteria, criteriaValue1),
            offsetof(LceReportingCriteria, criteriaValue1));
  EXPECT_EQ(offsetof(ShippedCriteria, criteriaValue2),
            offsetof(LceReportingCriteria, criteriaValue2));
  EXPECT_EQ(offsetof(ShippedCriteria, accessNetworkType),
            offsetof(LceReportingCriteria, accessNetworkType));
}

TEST(PublicHeader, CriteriaFilledByAnOldApplicationReadTheSame) {
  ShippedCriteria old = {};
  old.firstList[19] = 0x01020304;
  old.firstListCount = 20;
  old.secondList[0] = 0xFFFFFFFF;
  old.secondListCount = 1;
  old.criteriaValue1 = 11;
  old.criteriaValue2 = 22;
  old.accessNetworkType = 3;

  LceReportingCriteria now;
  std::memcpy(&now, &old, sizeof(now));

  EXPECT_EQ(0x01020304u, now.firstList[19]);
  EXPECT_EQ(20, now.firstListCount);
  EXPECT_EQ(0xFFFFFFFFu, now.secondList[0]);
  EXPECT_EQ(1, now.secondListCount);
  EXPECT_EQ(11u, now.criteriaValue1);
  EXPECT_EQ(22u, now.criteriaValue2);
  EXPECT_EQ(SDL_ACCESS_NETWORK_TYPE_NR5G, now.accessNetworkType);
}

TEST(PublicHeader, ReportKeepsTheShippedLayout) {
  EXPECT_EQ(16u, sizeof(LceEstimationReport));
  EXPECT_EQ(4u, alignof(LceEstimationReport));
  EXPECT_EQ(offsetof(ShippedReport, rate), offsetof(LceEstimationReport, rate));
  EXPECT_EQ(offsetof(ShippedReport, confidenceLevel),
            offsetof(LceEstimationReport, confidenceLevel));
  EXPECT_EQ(offsetof(ShippedReport, linkDirection), offsetof(LceEstimationReport, linkDirection));
  EXPECT_EQ(offsetof(ShippedReport, queueSizeUL), offsetof(LceEstimationReport, queueSizeUL));
}

// Only the types: this test is not linked to the functions.
TEST(PublicHeader, FunctionsAndCallbacksKeepTheirSignatures) {
  using std::is_same;
  EXPECT_TRUE((is_same<LceStatusIndCb, void (*)(status_e)>::value));
  EXPECT_TRUE((is_same<LceStatusV2Cb, void (*)(status_v2_e)>::value));
  EXPECT_TRUE((is_same<LceReportingCriteriaCb, void (*)(LceReportingCriteriaStatus)>::value));
  EXPECT_TRUE((is_same<LceEstimationReportCb,
                       void (*)(LceEstimationReportStatus, LceEstimationReport)>::value));
  EXPECT_TRUE((is_same<decltype(orb_lce_enable), int(LceStatusIndCb)>::value));
  EXPECT_TRUE((is_same<decltype(orb_lce_disable), int()>::value));
  EXPECT_TRUE((is_same<decltype(createLceClient), int(LceStatusV2Cb)>::value));
  EXPECT_TRUE((is_same<decltype(destroySdfClient), int()>::value));
  EXPECT_TRUE((is_same<decltype(lceSetReportingCriteria),
                       int64_t(const LceReportingCriteria*, LceReportingCriteriaCb)>::value));
  EXPECT_TRUE(
      (is_same<decltype(lceGetLastEstimationReport), int64_t(LceEstimationReportCb)>::value));
  EXPECT_TRUE((is_same<decltype(lcePerformReportingAction), int64_t(LceReportingAction)>::value));
  EXPECT_TRUE((is_same<decltype(lceRegEstimationReports), int64_t(LceEstimationReportCb)>::value));
}

}  // namespace
