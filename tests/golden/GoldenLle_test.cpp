// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Every byte of LLE on the socket: handshake, requests and indications.
#include "GoldenService.h"
#include "LleFixture.h"

namespace golden {
namespace {

using namespace lletest;

class GoldenLle : public GoldenService<LleNames> {
 protected:
  static std::string describe(const servicetest::Call<LleNames>& call) {
    if (call.callback == "status" || call.callback == "v2") return describeStatus(call);
    const LleEstimationReport& report = call.record;
    return call.callback + " callback: result " + std::to_string(call.status) +
           ", ulReportStatus " + std::to_string(report.ulReportStatus) + ", ulLatencyEstimation " +
           std::to_string(report.ulLatencyEstimation) + ", ulVarianceEstimation " +
           std::to_string(report.ulVarianceEstimation) + ", dlReportStatus " +
           std::to_string(report.dlReportStatus) + ", dlLatencyEstimation " +
           std::to_string(report.dlLatencyEstimation) + ", dlVarianceEstimation " +
           std::to_string(report.dlVarianceEstimation) + ", reportInterval " +
           std::to_string(report.reportInterval) + ", rat " + std::to_string(report.rat);
  }
  static std::string valuesOf(const Estimate& estimate) {
    return std::string(", status ") + (estimate.status ? "true" : "false") + ", uplink " +
           std::to_string(estimate.ulStatus) + " " + std::to_string(estimate.ulLatency) + " " +
           std::to_string(estimate.ulVariance) + ", downlink " + std::to_string(estimate.dlStatus) +
           " " + std::to_string(estimate.dlLatency) + " " + std::to_string(estimate.dlVariance) +
           ", interval " + std::to_string(estimate.interval) + ", rat " +
           std::to_string(estimate.rat);
  }
};

TEST_F(GoldenLle, Requests) {
  Transcript transcript(
      "LLE: what goes over the socket for each call of an application. tests/golden, "
      "GoldenLle_test\nSession 0x01020304, then 0x01020305 and 0x01020306.");
  recordEnableAndDisable(transcript);
  record(
      transcript, "orb_lle_enable(cb)", [] { return orb_lle_enable(onStatus); }, kEnablePieces);
  for (const uint32_t criteria : {0u, 1u, 300u, 0x01020304u, 4294967295u}) {
    record(transcript, "lleSetReportingCriteria(" + std::to_string(criteria) + ")",
           [criteria] { return lleSetReportingCriteria(criteria); });
  }
  record(transcript, "lleGetLastEstimationReport(cb)",
         [] { return lleGetLastEstimationReport(onLast); });
  record(
      transcript, "lleRegEstimationReports(cb)", [] { return lleRegEstimationReports(onReport); },
      0);
  expectGolden("lle_requests.hex", transcript.text());
}

TEST_F(GoldenLle, Indications) {
  Transcript transcript(
      "LLE: what the daemon sends, and what an application's callbacks get of it. tests/golden, "
      "GoldenLle_test");
  ASSERT_NO_FATAL_FAILURE(enableBothQuietly());
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  ASSERT_EQ(1u, wiretap::take(1).size());
  indicateStatuses(transcript, describe);
  constexpr uint64_t kMost = ~uint64_t{0};
  const Estimate estimates[] = {
      {true, 1, 31500, 11390625, 1, 23500, 8265625, 500, 1},
      {false, 0, 0, 0, 0, 0, 0, 0, 0},
      {true, 0x1ff, 0x0102030405060708, 0x1112131415161718, 0x180, 0x2122232425262728,
       0x3132333435363738, 1, 2},
      {true, 4294967295, kMost, kMost, 4294967295, kMost, kMost, 4294967295, 3},
      {true, 2, uint64_t{1} << 32, uint64_t{1} << 63, 3, 127, 128, 2, -1}};
  for (const Estimate& estimate : estimates) {
    indicate(transcript, "GET_REPORT_RESP" + valuesOf(estimate), lastReport(estimate), describe);
    indicate(transcript, "IND_REPORT_RESP" + valuesOf(estimate), periodicReport(estimate),
             describe);
  }
  expectGolden("lle_indications.hex", transcript.text());
}

TEST_F(GoldenLle, Session) {
  Transcript transcript(
      "LLE: a session from the first byte to the last. tests/golden, GoldenLle_test");
  const Estimate estimate = {true, 1, 31500, 11390625, 1, 23500, 8265625, 500, 2};
  beginSession(transcript);
  record(
      transcript, "lleRegEstimationReports(cb)", [] { return lleRegEstimationReports(onReport); },
      0);
  record(transcript, "lleSetReportingCriteria(1)", [] { return lleSetReportingCriteria(1); });
  tell(transcript, "STATUS_IND, SUCCESS", servicetest::statusMessage<LleNames>(1));
  tell(transcript, "IND_REPORT_RESP" + valuesOf(estimate), periodicReport(estimate));
  record(transcript, "lleGetLastEstimationReport(cb)",
         [] { return lleGetLastEstimationReport(onLast); });
  tell(transcript, "GET_REPORT_RESP, the same", lastReport(estimate));
  endSession(transcript);
  expectGolden("lle_session.hex", transcript.text());
}

}  // namespace
}  // namespace golden
