// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LCE object's listener, called directly with all notifications of the SDK client.
#include "Lce.h"
#include "LceFixture.h"
#include "ServiceListenerSuite.h"

namespace servicetest {
template <>
struct ObjectOf<lcetest::LceNames> {
  using Type = Lce;
};
}  // namespace servicetest

namespace lcetest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lce, ServiceListener, LceNames, ServiceName);
INSTANTIATE_TYPED_TEST_SUITE_P(Lce, BareServiceObject, LceNames, ServiceName);

class LceListener : public ServiceListener<LceNames> {};

TEST_F(LceListener, DisabledObjectForgetsItsReportCallback) {
  enableBothQuietly();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  const auto former = object();
  ASSERT_EQ(1, orb_lce_disable());
  former->blobListener(Status::BlobReceived, serialise(lastReport(1, 1, 1, 1, "NONE")));
  EXPECT_TRUE(calls().empty());
}

TEST_F(LceListener, CriteriaDuringWhichTheServiceIsDisabledAreRefusedInSilence) {
  enableBothQuietly();
  EXPECT_EQ(-5, serviceApi::request<Lce>(requestPoints(Lce::kSource, "request", 1, 2), true,
                                         [](Lce& lce) {
                                           EXPECT_EQ(1, orb_lce_disable());
                                           return lce.setReportingCriteria({}, onCriteria);
                                         }));
  EXPECT_TRUE(linesOf("request").empty());
}

class LceObject : public BareServiceObject<LceNames> {};

TEST_F(LceObject, WithoutCallbacksReportsAndResultsAreLoggedAndDropped) {
  Lce object;
  recording::clear();
  object.blobListener(Status::BlobReceived, serialise(lastReport(1, 8, 2, 3, "")));
  object.blobListener(Status::BlobReceived, serialise(periodicReport(1, 7, 1, 3, "x")));
  object.blobListener(Status::BlobReceived, serialise(criteriaResult(4294967295, false, "")));
  std::vector<std::string> messages;
  for (const LogLine& line : lines()) {
    if (line.message != "Lce::blobListener") messages.push_back(line.message);
  }
  EXPECT_EQ(messages,
            (std::vector<std::string>{
                "GET_LAST_ESTIMATION_REPORT_IND",
                "GET_LAST_ESTIMATION_REPORT_IND rate: 1, confidenceLevel: 0, linkDirection: 0, "
                "queueSizeUL: 3, errorString: ",
                "mLastEstimationReportCb null", "ESTIMATION_REPORTS_IND",
                "ESTIMATION_REPORTS_IND rate: 1, confidenceLevel: 7, linkDirection: 1, "
                "queueSizeUL: 3, errorString: x",
                "mEstimationReportInd null", "SET_REPORTING_CRITERIA_ASYNC_RESULT",
                "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: -1, success: 0, error: ",
                "no cb found"}));
}

}  // namespace
}  // namespace lcetest
