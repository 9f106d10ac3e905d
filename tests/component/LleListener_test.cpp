// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LLE object's listener, called directly with all notifications of the SDK client, and every
// log line of LLE with its number.
#include "Lle.h"
#include "LleFixture.h"
#include "ServiceListenerSuite.h"

namespace servicetest {
template <>
struct ObjectOf<lletest::LleNames> {
  using Type = Lle;
};
}  // namespace servicetest

namespace lletest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lle, ServiceListener, LleNames, ServiceName);
INSTANTIATE_TYPED_TEST_SUITE_P(Lle, BareServiceObject, LleNames, ServiceName);

using LleLines = LineSources<LleNames>;

const Estimate kValid{true, 1, 2, 3, 4, 5, 6, 0, LleProto::NR5G};
const Estimate kInvalid{false, 257, 4294967295, 4294967296, 511, 4294967298, 2147483648, 1000, 3};

void wantLast() { EXPECT_EQ(0, lleGetLastEstimationReport(onLast)); }
void wantReports() { EXPECT_EQ(0, lleRegEstimationReports(onReport)); }

TEST_F(LleLines, ApiLinesAreFixed) {
  expectLines({
      {"|Lle|Lle::orb_lle_enable:20 Enable", enableWithoutCallback},
      {"|Lle|Lle::orb_lle_enable:22 Status ind function null", enableWithoutCallback},
      {"|Lle|Lle::orb_lle_enable:29 Failed to get SDK instance.", enableWithoutMemory},
      {"|Lle|Lle::orb_lle_disable:53 Disable", disable},
      {"|Lle|Lle::orb_lle_disable:56 Failed to get SDK instance.", disable},
      {"|Lle|Lle::orb_lle_disable:61 Failed to get SDK client instance.", withoutClient(disable)},
      {"|Lle|Lle::createLleClient:82 Create", createWithoutCallback},
      {"|Lle|Lle::createLleClient:84 Cb function null", createWithoutCallback},
      {"|Lle|Lle::createLleClient:91 Failed to get SDK instance.", createWithoutMemory},
      {"|Lle|Lle::destroyLleClient:115 Destroy", destroy},
      {"|Lle|Lle::destroyLleClient:118 Failed to get SDK instance.", destroy},
      {"|Lle|Lle::destroyLleClient:123 Failed to get SDK client instance.", withoutClient(destroy)},
      {"|Lle|Lle::lleSetReportingCriteria:165 Failed to get SDK instance",
       [] { lleSetReportingCriteria(1); }},
      {"|Lle|Lle::lleSetReportingCriteria:170 Failed to get SDK client instance",
       withoutClient([] { lleSetReportingCriteria(1); })},
      {"|Lle|Lle::Lle:222 Lle ctor", live},
      {"|Lle|Lle::~Lle:229 ~Lle called", live},
  });
}

TEST_F(LleLines, ListenerLinesAreFixed) {
  const Blob status = serialise(statusMessage<LleNames>(12));
  expectLines({
      {"|Lle|Lle::blobListener:240 Lle::blobListener", told(SdkClientBase::SendFailed)},
      {"|Lle|Lle::blobListener:240 Lle::blobListener", told(SdkClientBase::ServiceDown)},
      {"|Lle|Lle::blobListener:240 Lle::blobListener", receives({})},
      {"|Lle|Lle::blobListener:249 STATUS_IND", receives(status)},
      {"|Lle|Lle::blobListener:251 status_msg 12", receives(status)},
      {"|Lle|Lle::blobListener:254 status -1", receives(status)},
      {"|Lle|Lle::blobListener:257 Status IND message data not filled", receives({0x08, 0})},
      {"|Lle|Lle::blobListener:358 Unknown message type", receives({0x08, 3})},
      {"|Lle|Lle::blobListener:367 unknown internal status 3", told(SdkClientBase::ServiceUp)},
      {"|Lle|Lle::blobListener:367 unknown internal status -7", told(-7)},
  });
}

TEST_F(LleLines, ReportLinesAreFixed) {
  const Blob last = serialise(lastReport(kValid));
  const Blob periodic = serialise(periodicReport(kInvalid));
  expectLines({
      {"|Lle|Lle::blobListener:261 GET_REPORT_RESP", receives(last)},
      {"|Lle|Lle::blobListener:278 GET_REPORT_RESP status: 1, ulReportStatus: 1, "
       "ulLatencyEstimation: 2, ulVarianceEstimation: 3, dlReportStatus: 4, "
       "dlLatencyEstimation: 5, dlVarianceEstimation: 6, reportInterval: 0, rat: 3",
       receives(last)},
      {"|Lle|Lle::blobListener:303 GET_REPORT_RESP cb sent", receives(last, wantLast)},
      {"|Lle|Lle::blobListener:305 mLastEstimationReportCb null", receives(last, wantReports)},
      {"|Lle|Lle::blobListener:308 GET_REPORT_RESP message data not filled", receives({0x08, 1})},
      {"|Lle|Lle::blobListener:312 IND_REPORT_RESP", receives(periodic)},
      {"|Lle|Lle::blobListener:329 IND_REPORT_RESP status: 0, ulReportStatus: 1, "
       "ulLatencyEstimation: -1, ulVarianceEstimation: 0, dlReportStatus: 255, "
       "dlLatencyEstimation: 2, dlVarianceEstimation: -2147483648, reportInterval: 1, rat: 0",
       receives(periodic)},
      {"|Lle|Lle::blobListener:350 IND_REPORT_RESP cb sent", receives(periodic, wantReports)},
      {"|Lle|Lle::blobListener:352 mEstimationReportInd null", receives(periodic, wantLast)},
      {"|Lle|Lle::blobListener:355 IND_REPORT_RESP message data not filled", receives({0x08, 2})},
  });
}

// These lines have no fixed number.
TEST_F(LleLines, TheOtherRequestsHaveTheSameTexts) {
  lleGetLastEstimationReport(onLast);
  lleRegEstimationReports(onReport);
  withoutClient([] {
    lleGetLastEstimationReport(onLast);
    lleRegEstimationReports(onReport);
  })();
  EXPECT_EQ(lines(), (LogLines{{"lleGetLastEstimationReport", "Failed to get SDK instance"},
                               {"lleRegEstimationReports", "Failed to get SDK instance"},
                               {"Lle", 222, "Lle ctor"},
                               {"lleGetLastEstimationReport", "Failed to get SDK client instance"},
                               {"lleRegEstimationReports", "Failed to get SDK client instance"},
                               {"~Lle", 229, "~Lle called"}}));
}

}  // namespace
}  // namespace lletest
