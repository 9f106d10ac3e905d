// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Passes a blob to the listener of LLE. Input: the blob.
#include "FuzzTarget.h"
#include "Lle.h"
#include "QuietService.h"
#include "Watchdog.h"
#include "lle.pb.h"

namespace {

QuietService* service = nullptr;

void note(const char* name, int32_t result, const LleEstimationReport* report) {
  FUZZ_CHECK(report != nullptr);
  called(callOf(name, result, report->ulReportStatus, report->ulLatencyEstimation,
                report->ulVarianceEstimation, report->dlReportStatus, report->dlLatencyEstimation,
                report->dlVarianceEstimation, report->reportInterval, report->rat));
}
void onLast(int32_t result, const LleEstimationReport* report) { note("last", result, report); }
void onReport(int32_t result, const LleEstimationReport* report) { note("report", result, report); }

// Messages have other numbers for the access network. An unknown one counts as none.
template <class Report>
Call reportCall(const char* name, int result, const Report& report) {
  const int rat = report.rat();
  return callOf(name, result, report.ul_report_status() % 256, report.ul_latency_estimation(),
                report.ul_variance_estimation(), report.dl_report_status() % 256,
                report.dl_latency_estimation(), report.dl_variance_estimation(),
                report.report_interval() == 0 ? 0 : 1, rat >= 0 && rat <= 2 ? rat + 1 : 0);
}

Calls expectedCalls(const LleProto::ClientMsg& message) {
  Calls expected;
  const auto& data = message.data();
  const int event = message.event_id();
  if (event == LleProto::STATUS_IND && data.has_status_msg())
    expectStatus(data.status_msg().status(), expected);
  if (event == LleProto::GET_REPORT_RESP && data.has_get_report_resp()) {
    const auto& report = data.get_report_resp();
    expected.push_back(reportCall("last", report.status() ? 0 : 1, report));
  }
  if (event == LleProto::IND_REPORT_RESP && data.has_ind_report_resp())
    expected.push_back(reportCall("report", 0, data.ind_report_resp()));
  return expected;
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  const Watchdog::Step step("set-up");
  service = new QuietService(orb_lle_enable, createLleClient, Lle::mInstance());
  FUZZ_CHECK(lleRegEstimationReports(onReport) == 0);
  FUZZ_CHECK(lleGetLastEstimationReport(onLast) == 0);
  service->forgetRequests(1);
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Watchdog::Step step("blob_lle");
  const std::vector<uint8_t> blob(data, data + size);
  service->deliver(blob);
  FUZZ_CHECK(takeCalls() == expectedCalls(QuietService::messageIn<LleProto::ClientMsg>(blob)));
  return 0;
}
