// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Applications are compiled with these numbers, layouts and signatures. This file records them; a
// change here breaks existing applications.
#include <gtest/gtest.h>
#include <orb/sdl.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace {

// The records as first shipped, in plain types.
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

struct ShippedLatency {
  uint8_t ulReportStatus;
  uint64_t ulLatencyEstimation;
  uint64_t ulVarianceEstimation;
  uint8_t dlReportStatus;
  uint64_t dlLatencyEstimation;
  uint64_t dlVarianceEstimation;
  uint32_t reportInterval;
  int32_t rat;
};

struct ShippedInterruption {
  int32_t handoffState;
  int32_t sourceRat;
  int32_t targetRat;
  uint64_t estimatedTimeToInterruption;
  uint64_t estimatedInterruptionDuration;
};

// A member has its shipped offset and size. A build with another layout must fail before its tests.
#define ASSERT_SHIPPED(RECORD, SHIPPED, MEMBER)                             \
  static_assert(offsetof(RECORD, MEMBER) == offsetof(SHIPPED, MEMBER), ""); \
  static_assert(sizeof(RECORD::MEMBER) == sizeof(SHIPPED::MEMBER), "")
#define ASSERT_LATENCY(MEMBER) ASSERT_SHIPPED(LleEstimationReport, ShippedLatency, MEMBER)
ASSERT_LATENCY(ulReportStatus);
ASSERT_LATENCY(ulLatencyEstimation);
ASSERT_LATENCY(ulVarianceEstimation);
ASSERT_LATENCY(dlReportStatus);
ASSERT_LATENCY(dlLatencyEstimation);
ASSERT_LATENCY(dlVarianceEstimation);
ASSERT_LATENCY(reportInterval);
ASSERT_LATENCY(rat);
static_assert(sizeof(LleEstimationReport) == 56 && alignof(LleEstimationReport) == 8, "");
#define ASSERT_INTERRUPTION(MEMBER) ASSERT_SHIPPED(LliInterruptInfo, ShippedInterruption, MEMBER)
ASSERT_INTERRUPTION(handoffState);
ASSERT_INTERRUPTION(sourceRat);
ASSERT_INTERRUPTION(targetRat);
ASSERT_INTERRUPTION(estimatedTimeToInterruption);
ASSERT_INTERRUPTION(estimatedInterruptionDuration);
static_assert(sizeof(LliInterruptInfo) == 32 && alignof(LliInterruptInfo) == 8, "");

template <class Enum>
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
  EXPECT_TRUE(isInt32<LliHandoffIndType>());
  EXPECT_TRUE(isInt32<LliPreHandoffState>());
  EXPECT_TRUE(isInt32<LliHandoffState>());
  EXPECT_TRUE(isInt32<LliRat>());
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

TEST(PublicHeader, LliValuesKeepTheirNumbers) {
  EXPECT_EQ(0, LLI_HANDOFF_IND_TYPE_PRE_HANDOFF);
  EXPECT_EQ(1, LLI_HANDOFF_IND_TYPE_HANDOFF);
  EXPECT_EQ(0, LLI_PRE_HANDOFF_STATE_ENTRY);
  EXPECT_EQ(1, LLI_PRE_HANDOFF_STATE_EXIT);
  EXPECT_EQ(0, LLI_HANDOFF_STATE_START);
  EXPECT_EQ(1, LLI_HANDOFF_STATE_SUCCESS);
  EXPECT_EQ(2, LLI_HANDOFF_STATE_FAILURE);
  EXPECT_EQ(3, LLI_HANDOFF_STATE_IMMINENT);
  EXPECT_EQ(0, LLI_RAT_NULL_BEARER);
  EXPECT_EQ(1, LLI_RAT_3GPP_WCDMA);
  EXPECT_EQ(2, LLI_RAT_3GPP_GERAN);
  EXPECT_EQ(3, LLI_RAT_3GPP_LTE);
  EXPECT_EQ(4, LLI_RAT_3GPP_TDSCDMA);
  EXPECT_EQ(5, LLI_RAT_3GPP_WLAN);
  EXPECT_EQ(6, LLI_RAT_3GPP_5G);
  EXPECT_EQ(7, LLI_RAT_3GPP_CIWLAN);
  EXPECT_EQ(8, LLI_RAT_3GPP2_1X);
  EXPECT_EQ(9, LLI_RAT_3GPP2_HRPD);
  EXPECT_EQ(10, LLI_RAT_3GPP2_EHRPD);
  EXPECT_EQ(11, LLI_RAT_3GPP2_WLAN);
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

// An application compiled long ago reads records that this library fills.
TEST(PublicHeader, RecordsOfTodayReadTheSameInAnOldApplication) {
  LleEstimationReport report = {};
  report.ulReportStatus = 255;
  report.dlVarianceEstimation = UINT64_MAX - 1;
  report.reportInterval = 1;
  report.rat = SDL_ACCESS_NETWORK_TYPE_NR5G;
  ShippedLatency latency;
  std::memcpy(&latency, &report, sizeof(latency));
  EXPECT_EQ(255, latency.ulReportStatus);
  EXPECT_EQ(UINT64_MAX - 1, latency.dlVarianceEstimation);
  EXPECT_EQ(1u, latency.reportInterval);
  EXPECT_EQ(3, latency.rat);

  const LliInterruptInfo info = {LLI_HANDOFF_STATE_IMMINENT, LLI_RAT_3GPP_LTE, LLI_RAT_3GPP_5G,
                                 (uint64_t{1} << 32) + 1, UINT64_MAX};
  ShippedInterruption interruption;
  std::memcpy(&interruption, &info, sizeof(interruption));
  EXPECT_EQ(3, interruption.handoffState);
  EXPECT_EQ(3, interruption.sourceRat);
  EXPECT_EQ(6, interruption.targetRat);
  EXPECT_EQ((uint64_t{1} << 32) + 1, interruption.estimatedTimeToInterruption);
  EXPECT_EQ(UINT64_MAX, interruption.estimatedInterruptionDuration);
}

// Only the types, because this test is not linked to the functions.
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

TEST(PublicHeader, LatencyFunctionsAndCallbacksKeepTheirSignatures) {
  using std::is_same;
  EXPECT_TRUE((is_same<LleStatusIndCb, void (*)(status_e)>::value));
  EXPECT_TRUE((is_same<LleStatusV2Cb, void (*)(status_v2_e)>::value));
  EXPECT_TRUE(
      (is_same<LleEstimationReportCb, void (*)(int32_t, const LleEstimationReport*)>::value));
  EXPECT_TRUE((is_same<decltype(orb_lle_enable), int(LleStatusIndCb)>::value));
  EXPECT_TRUE((is_same<decltype(orb_lle_disable), int()>::value));
  EXPECT_TRUE((is_same<decltype(createLleClient), int(LleStatusV2Cb)>::value));
  EXPECT_TRUE((is_same<decltype(destroyLleClient), int()>::value));
  EXPECT_TRUE((is_same<decltype(lleSetReportingCriteria), int64_t(uint32_t)>::value));
  EXPECT_TRUE(
      (is_same<decltype(lleGetLastEstimationReport), int64_t(LleEstimationReportCb)>::value));
  EXPECT_TRUE((is_same<decltype(lleRegEstimationReports), int64_t(LleEstimationReportCb)>::value));
}

TEST(PublicHeader, InterruptionFunctionsAndCallbacksKeepTheirSignatures) {
  using std::is_same;
  EXPECT_TRUE((is_same<LliStatusIndCb, void (*)(status_e)>::value));
  EXPECT_TRUE((is_same<LliStatusV2Cb, void (*)(status_v2_e)>::value));
  EXPECT_TRUE((is_same<LliLinkInterruptIndCb, void (*)(LliHandoffIndType, LliPreHandoffState,
                                                       const LliInterruptInfo*)>::value));
  EXPECT_TRUE((is_same<decltype(orb_lli_enable), int(LliStatusIndCb)>::value));
  EXPECT_TRUE((is_same<decltype(orb_lli_disable), int()>::value));
  EXPECT_TRUE((is_same<decltype(createLliClient), int(LliStatusV2Cb)>::value));
  EXPECT_TRUE((is_same<decltype(destroyLliClient), int()>::value));
  EXPECT_TRUE((is_same<decltype(lliRegLinkInterruptInd), int64_t(LliLinkInterruptIndCb)>::value));
}

}  // namespace
