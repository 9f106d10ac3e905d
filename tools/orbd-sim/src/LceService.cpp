// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LceService.h"

#include <cinttypes>
#include <string>

#include "orbsim/Session.h"

namespace orbsim {
namespace {

constexpr int kMaxCriteria = 20;

template <typename Message>
Blob serialize(const Message& message) {
  Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

// A list is used as long as its count field says, so the two have to agree.
bool validCriteria(const LceProto::SetReportingCriteria& criteria) {
  return criteria.first_list_size() <= kMaxCriteria &&
         criteria.second_list_size() <= kMaxCriteria &&
         criteria.first_list_count() == static_cast<uint32_t>(criteria.first_list_size()) &&
         criteria.second_list_count() == static_cast<uint32_t>(criteria.second_list_size());
}

template <typename List>
std::string listText(const List& list) {
  std::string text = "[";
  for (const uint32_t value : list) {
    if (text.size() > 1) text += ' ';
    text += std::to_string(value);
  }
  return text + ']';
}

std::string requestText(const LceProto::ServiceMsg& request) {
  std::string text = LceProto::ServiceEventId_Name(request.event_id());
  if (text.empty()) text = "event " + std::to_string(request.event_id());
  if (request.transaction_id() != 0) text += " txn=" + std::to_string(request.transaction_id());
  const LceProto::ServiceData& data = request.data();
  if (data.has_enable_msg()) {
    text += data.enable_msg().enable() ? " enable=true" : " enable=false";
  } else if (data.has_perform_reporting_action()) {
    text += " action=" + LceProto::ReportingAction_Name(data.perform_reporting_action().action());
  } else if (data.has_set_reporting_criteria()) {
    const LceProto::SetReportingCriteria& criteria = data.set_reporting_criteria();
    text += " first=" + listText(criteria.first_list()) +
            " second=" + listText(criteria.second_list()) +
            " value1=" + std::to_string(criteria.criteria_value_1()) +
            " value2=" + std::to_string(criteria.criteria_value_2()) +
            " network=" + LceProto::AccessNetwork_Name(criteria.access_network());
  }
  return text;
}

template <typename Report>
std::string reportText(const Report& report) {
  return " rate=" + std::to_string(report.rate()) +
         " confidence=" + LceProto::ConfidenceLevel_Name(report.confidence_level()) +
         " direction=" + LceProto::LinkDirection_Name(report.link_direction()) +
         " queue=" + std::to_string(report.queue_size_ul()) + " error=" + report.error_string();
}

std::string answerText(const LceProto::ClientMsg& answer) {
  std::string text = LceProto::ClientEventId_Name(answer.event_id());
  if (answer.transaction_id() != 0) text += " txn=" + std::to_string(answer.transaction_id());
  const LceProto::ClientData& data = answer.data();
  if (data.has_status_msg()) text += " " + LceProto::Status_Name(data.status_msg().status());
  if (data.has_set_reporting_criteria_resp()) {
    text += " error=" + data.set_reporting_criteria_resp().error();
  }
  if (data.has_get_last_estimation_report_resp()) {
    text += reportText(data.get_last_estimation_report_resp());
  }
  if (data.has_estimation_reports_resp()) text += reportText(data.estimation_reports_resp());
  return text;
}

}  // namespace

LceService::LceService(Session& session, Control& control)
    : mSession(session), mControl(control), mLink(control.options().seed) {
  mControl.recorder().lceState(mSession.id(), mState);
}

void LceService::handleBlob(const Blob& blob) {
  LceProto::ServiceMsg request;
  if (!request.ParseFromArray(blob.data(), static_cast<int>(blob.size()))) {
    mSession.log("lce: request of %zu bytes cannot be read", blob.size());
    sendStatus(LceProto::INVALID_ARG);
    return;
  }
  if (mControl.logs()) mSession.log("lce: %s", requestText(request).c_str());
  switch (request.event_id()) {
    case LceProto::ENABLE:
      handleEnable(request);
      break;
    case LceProto::SET_REPORTING_CRITERIA:
      handleSetCriteria(request);
      break;
    case LceProto::GET_LAST_ESTIMATION_REPORT:
      handleGetLastReport(request);
      break;
    case LceProto::PERFORM_REPORTING_ACTION:
      handleAction(request);
      break;
    default:
      sendStatus(LceProto::NOT_SUPPORTED);
      break;
  }
  mControl.recorder().lceState(mSession.id(), mState);
}

void LceService::handleEnable(const LceProto::ServiceMsg& request) {
  if (!request.data().has_enable_msg()) {
    sendStatus(LceProto::INVALID_ARG);
    return;
  }
  mState.enabled = request.data().enable_msg().enable();
  if (!mState.enabled) setReporting(false);
  // After a disable the client may be gone already; nobody misses the answer then.
  sendStatus(LceProto::SUCCESS);
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

void LceService::handleGetLastReport(const LceProto::ServiceMsg& /*request*/) {
  // While reports are running the last one sent is the last one there is.
  if (mState.criteriaSet && !mState.reporting) mLast = mLink.next();
  LceProto::ClientMsg answer;
  answer.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  fillReport(*answer.mutable_data()->mutable_get_last_estimation_report_resp());
  send(answer);
}

void LceService::handleAction(const LceProto::ServiceMsg& request) {
  if (!request.data().has_perform_reporting_action()) {
    sendStatus(LceProto::INVALID_ARG);
    return;
  }
  switch (request.data().perform_reporting_action().action()) {
    case LceProto::START:
      setReporting(true);
      break;
    case LceProto::STOP:
      setReporting(false);
      break;
    case LceProto::RESET:
      // The estimate starts over; whether reports are running stays as it is.
      mLink = LinkModel(mControl.options().seed);
      mLast = LinkEstimate{};
      break;
    default:
      sendStatus(LceProto::INVALID_ARG);
      break;
  }
}

void LceService::setReporting(bool on) {
  // The first report follows at once, the next ones an interval apart.
  if (on && !mState.reporting) mLastReportAt = Clock::time_point{};
  mState.reporting = on;
}

std::optional<Clock::time_point> LceService::nextDue() const {
  const auto interval = mControl.reportInterval();
  if (!mState.reporting || interval.count() <= 0) return std::nullopt;
  if (mLastReportAt == Clock::time_point{}) return mLastReportAt;
  return mLastReportAt + interval;
}

void LceService::handleDue(Clock::time_point now) {
  mLastReportAt = now;
  // A client that does not read gets no pile of stale reports.
  if (mSession.queuedBytes() > 0) return;
  if (mState.criteriaSet) mLast = mLink.next();
  LceProto::ClientMsg report;
  report.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  fillReport(*report.mutable_data()->mutable_estimation_reports_resp());
  if (!send(report)) return;
  ++mState.reports;
  mControl.recorder().lceState(mSession.id(), mState);
}

template <typename Report>
void LceService::fillReport(Report& report) const {
  if (!mState.criteriaSet) {
    report.set_error_string("REPORTING_CRITERIA_NOT_SET");
    return;
  }
  report.set_rate(mLast.rate);
  report.set_confidence_level(static_cast<LceProto::ConfidenceLevel>(mLast.confidence));
  report.set_link_direction(mLast.downlink ? LceProto::DOWN_LINK : LceProto::UP_LINK);
  report.set_queue_size_ul(mLast.queueSizeUl);
  report.set_error_string("NONE");
}

void LceService::sendStatus(LceProto::Status status) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::STATUS_IND);
  message.mutable_data()->mutable_status_msg()->set_status(status);
  send(message);
}

bool LceService::send(const LceProto::ClientMsg& message) {
  if (!mControl.answers(kSdkTypeLce)) return false;
  const bool sent = mSession.sendBlob(kSdkTypeLce, serialize(message));
  if (mControl.logs()) {
    mSession.log("lce: %s %s", sent ? "->" : "not sent:", answerText(message).c_str());
  }
  return sent;
}

}  // namespace orbsim
