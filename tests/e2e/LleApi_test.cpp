// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Results, refusals and log lines of the exported LLE functions.
#include "LleFixture.h"
#include "ServiceApiSuite.h"

namespace lletest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lle, ServiceApi, LleNames, ServiceName);

class LleApi : public LleTest {};

const Estimate kEstimate{true, 1, 2, 3, 4, 5, 6, 7, LleProto::WCDMA};
const LleEstimationReport kReport{1, 2, 3, 4, 5, 6, 1, SDL_ACCESS_NETWORK_TYPE_WCDMA};

TEST_F(LleApi, EveryCriteriaValueIsAccepted) {
  enable();
  for (const uint32_t value : {0u, 1u, 2147483648u, 4294967295u}) {
    EXPECT_EQ(0, lleSetReportingCriteria(value)) << value;
  }
  EXPECT_TRUE(daemon().waitForFrames(5));
}

TEST_F(LleApi, RefusedCallsLeaveTheCallbacksOfEarlierOnes) {
  enable();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  EXPECT_EQ(0, orb_lle_enable(nullptr));
  EXPECT_EQ(-2, lleGetLastEstimationReport(nullptr));
  EXPECT_EQ(-2, lleRegEstimationReports(nullptr));
  send(lastReport(kEstimate));
  send(periodicReport(kEstimate));
  EXPECT_EQ(settle(), (CallList{{"last", 0, kReport}, {"report", 0, kReport}}));
}

TEST_F(LleApi, EnableAfterDisableStartsAfresh) {
  enableBoth();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  ASSERT_EQ(1, orb_lle_disable());
  ASSERT_EQ(1, orb_lle_enable(onStatus));
  ASSERT_TRUE(daemon().waitForFrame([](const Frame& frame) { return frame.sessionId == 2; }));
  mSession = 2;
  send(lastReport(kEstimate));
  send(periodicReport(kEstimate));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(1u, calls().size()) << "the second generation's callback is forgotten";
}

}  // namespace
}  // namespace lletest
