// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Results, refusals and log lines of the exported LLE functions.
#include "LleFixture.h"
#include "ServiceApiSuite.h"

namespace servicetest {

template <>
struct Asked<lletest::LleNames> {
  static void ask() {
    ASSERT_EQ(0, lleGetLastEstimationReport(lletest::onLast));
    ASSERT_EQ(0, lleRegEstimationReports(lletest::onReport));
  }
  static std::vector<LleProto::ClientMsg> answers() {
    const lletest::Estimate estimate{true, 1, 2, 3, 4, 5, 6, 7, LleProto::WCDMA};
    return {lletest::lastReport(estimate), lletest::periodicReport(estimate)};
  }
  static CallLog<lletest::LleNames>::List calls() {
    const LleEstimationReport report{1, 2, 3, 4, 5, 6, 1, SDL_ACCESS_NETWORK_TYPE_WCDMA};
    return {{"last", 0, report}, {"report", 0, report}};
  }
};

}  // namespace servicetest

namespace lletest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lle, ServiceApi, LleNames, ServiceName);

class LleApi : public LleTest {};

TEST_F(LleApi, EveryCriteriaValueIsAccepted) {
  enable();
  for (const uint32_t value : {0u, 1u, 2147483648u, 4294967295u}) {
    EXPECT_EQ(0, lleSetReportingCriteria(value)) << value;
  }
  EXPECT_TRUE(daemon().waitForFrames(5));
}

}  // namespace
}  // namespace lletest
