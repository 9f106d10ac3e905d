// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LceService.h"

#include <algorithm>

namespace orbsim {
namespace {

constexpr int kMaxCriteria = 20;

// Receivers use the count field as the length of the list, so both must be equal.
bool validCriteria(const LceProto::SetReportingCriteria& criteria) {
  return criteria.first_list_size() <= kMaxCriteria &&
         criteria.second_list_size() <= kMaxCriteria &&
         criteria.first_list_count() == static_cast<uint32_t>(criteria.first_list_size()) &&
         criteria.second_list_count() == static_cast<uint32_t>(criteria.second_list_size());
}

// A report with that estimate, or without one because no criteria are set.
template <class Report>
void fillReport(const LinkEstimate* estimate, Report& report) {
  if (estimate == nullptr) {
    report.set_error_string("REPORTING_CRITERIA_NOT_SET");
    return;
  }
  report.set_rate(estimate->rate);
  report.set_confidence_level(static_cast<LceProto::ConfidenceLevel>(estimate->confidence));
  report.set_link_direction(estimate->downlink ? LceProto::DOWN_LINK : LceProto::UP_LINK);
  report.set_queue_size_ul(estimate->queueSizeUl);
  report.set_error_string("NONE");
}

template <class List>
std::string listText(const List& list) {
  std::string text = "[";
  for (const uint32_t value : list) {
    if (text.size() > 1) text += ' ';
    text += std::to_string(value);
  }
  return text + ']';
}

template <class Report>
std::string reportText(const Report& report) {
  return " rate=" + std::to_string(report.rate()) +
         " confidence=" + LceProto::ConfidenceLevel_Name(report.confidence_level()) +
         " direction=" + LceProto::LinkDirection_Name(report.link_direction()) +
         " queue=" + std::to_string(report.queue_size_ul()) + " error=" + report.error_string();
}

}  // namespace

LceService::LceService(Session& session, Control& control)
    : TypedService(session, control), mReporter(control.world(), kSdkTypeLce) {}

bool LceService::handleRequest(const LceProto::ServiceMsg& request) {
  switch (request.event_id()) {
    case LceProto::SET_REPORTING_CRITERIA:
      handleSetCriteria(request);
      return true;
    case LceProto::GET_LAST_ESTIMATION_REPORT:
      handleGetLastReport();
      return true;
    case LceProto::PERFORM_REPORTING_ACTION:
      handleAction(request);
      return true;
    default:
      return false;
  }
}

void LceService::handleSetCriteria(const LceProto::ServiceMsg& request) {
  const LceProto::SetReportingCriteria& criteria = request.data().set_reporting_criteria();
  const bool valid = request.data().has_set_reporting_criteria() && validCriteria(criteria);
  if (valid) {
    mState.criteriaSet = true;
    mState.criteria = serialize(criteria);
  }
  LceProto::ClientMsg answer;
  answer.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  answer.set_transaction_id(request.transaction_id());
  auto* result = answer.mutable_data()->mutable_set_reporting_criteria_resp();
  result->set_success(valid);
  result->set_error(valid ? "NONE" : "INVALID_ARGUMENTS");
  send(answer);
}

void LceService::handleGetLastReport() {
  LceProto::ClientMsg answer;
  answer.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  const bool running = nextDue().has_value();
  fillReport(mState.criteriaSet ? &told(mReporter.latest(running)) : nullptr,
             *answer.mutable_data()->mutable_get_last_estimation_report_resp());
  send(answer);
}

void LceService::handleAction(const LceProto::ServiceMsg& request) {
  if (!request.data().has_perform_reporting_action()) {
    sendStatus(Outcome::kInvalidArg);
    return;
  }
  switch (request.data().perform_reporting_action().action()) {
    case LceProto::START:
      mState.reporting = true;
      break;
    case LceProto::STOP:
      stopReporting();
      break;
    case LceProto::RESET:
      // The estimate starts again; running reports continue.
      mSinceReset = 0;
      break;
    default:
      sendStatus(Outcome::kInvalidArg);
      break;
  }
}

const LinkEstimate& LceService::told(const Estimate& estimate) {
  mTold = estimate.link;
  if (mSinceReset < 7) mTold.confidence = std::min(mTold.confidence, mSinceReset++);
  return mTold;
}

bool LceService::makeReport(LceProto::ClientMsg& report) {
  report.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  const LinkEstimate& estimate = told(mReporter.next());
  fillReport(mState.criteriaSet ? &estimate : nullptr,
             *report.mutable_data()->mutable_estimation_reports_resp());
  return true;
}

std::string LceService::describe(const LceProto::ServiceData& data) const {
  if (data.has_perform_reporting_action()) {
    return " action=" + LceProto::ReportingAction_Name(data.perform_reporting_action().action());
  }
  if (!data.has_set_reporting_criteria()) return {};
  const LceProto::SetReportingCriteria& criteria = data.set_reporting_criteria();
  return " first=" + listText(criteria.first_list()) +
         " second=" + listText(criteria.second_list()) +
         " value1=" + std::to_string(criteria.criteria_value_1()) +
         " value2=" + std::to_string(criteria.criteria_value_2()) +
         " network=" + LceProto::AccessNetwork_Name(criteria.access_network());
}

std::string LceService::describe(const LceProto::ClientData& data) const {
  if (data.has_set_reporting_criteria_resp()) {
    return " error=" + data.set_reporting_criteria_resp().error();
  }
  if (data.has_get_last_estimation_report_resp()) {
    return reportText(data.get_last_estimation_report_resp());
  }
  if (data.has_estimation_reports_resp()) return reportText(data.estimation_reports_resp());
  return {};
}

}  // namespace orbsim
