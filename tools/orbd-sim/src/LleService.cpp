// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LleService.h"

namespace orbsim {
namespace {

template <class Report>
std::string reportText(const Report& report) {
  return std::string(report.status() ? " status=true" : " status=false") +
         " rat=" + LleProto::RatType_Name(report.rat()) +
         " ul_status=" + std::to_string(report.ul_report_status()) +
         " ul_latency=" + std::to_string(report.ul_latency_estimation()) +
         " ul_variance=" + std::to_string(report.ul_variance_estimation()) +
         " dl_status=" + std::to_string(report.dl_report_status()) +
         " dl_latency=" + std::to_string(report.dl_latency_estimation()) +
         " dl_variance=" + std::to_string(report.dl_variance_estimation()) +
         " interval=" + std::to_string(report.report_interval());
}

}  // namespace

LleService::LleService(Session& session, Control& control)
    : TypedService(session, control), mReporter(control.world(), kSdkTypeLle) {}

bool LleService::handleRequest(const LleProto::ServiceMsg& request) {
  switch (request.event_id()) {
    case LleProto::SET_REPORTING_CRITERIA:
      handleSetCriteria(request);
      return true;
    case LleProto::GET_LAST_ESTIMATION_REPORT:
      handleGetLastReport();
      return true;
    default:
      return false;
  }
}

void LleService::handleSetCriteria(const LleProto::ServiceMsg& request) {
  const bool valid = request.data().has_set_reporting_criteria();
  if (valid) mState.criteria = request.data().set_reporting_criteria().reporting_criteria();
  sendStatus(valid ? Outcome::kSuccess : Outcome::kInvalidArg);
}

void LleService::handleGetLastReport() {
  LleProto::ClientMsg answer;
  answer.set_event_id(LleProto::GET_REPORT_RESP);
  LleProto::GetReportResp& report = *answer.mutable_data()->mutable_get_report_resp();
  if (mState.criteria != 0) fillReport(mReporter.latest(nextDue().has_value()).latency, report);
  send(answer);
}

bool LleService::makeReport(LleProto::ClientMsg& report) {
  report.set_event_id(LleProto::IND_REPORT_RESP);
  fillReport(mReporter.next().latency, *report.mutable_data()->mutable_ind_report_resp());
  return true;
}

template <class Report>
void LleService::fillReport(const LatencyEstimate& estimate, Report& report) const {
  report.set_status(true);
  report.set_ul_report_status(1);
  report.set_ul_latency_estimation(estimate.ulLatency);
  report.set_ul_variance_estimation(estimate.ulVariance);
  report.set_dl_report_status(1);
  report.set_dl_latency_estimation(estimate.dlLatency);
  report.set_dl_variance_estimation(estimate.dlVariance);
  report.set_report_interval(static_cast<uint32_t>(mControl.reportInterval().count()));
  report.set_rat(estimate.rat);
}

std::string LleService::describe(const LleProto::ServiceData& data) const {
  if (!data.has_set_reporting_criteria()) return {};
  return " criteria=" + std::to_string(data.set_reporting_criteria().reporting_criteria());
}

std::string LleService::describe(const LleProto::ClientData& data) const {
  if (data.has_get_report_resp()) return reportText(data.get_report_resp());
  if (data.has_ind_report_resp()) return reportText(data.ind_report_resp());
  return {};
}

}  // namespace orbsim
