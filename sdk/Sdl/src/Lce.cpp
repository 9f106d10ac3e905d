// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LCE service: its tables, its requests and its messages.
#include "Lce.h"

#include <stdlib.h>

#include <utility>

#include "ClientLceUtils.h"
#include "NeverDestroyed.h"

namespace {

constexpr LogSource kSource{"Lce", "sdk/Sdl/src/Lce.cpp"};

std::vector<uint8_t> enableMessage(bool enable) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::ENABLE);
  message.mutable_data()->mutable_enable_msg()->set_enable(enable);
  return Service::serialise(message);
}

LceProto::ServiceMsg criteriaMessage(const LceReportingCriteria& criteria, uint32_t id) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA);
  message.set_transaction_id(id);
  auto* request = message.mutable_data()->mutable_set_reporting_criteria();
  request->set_criteria_value_1(criteria.criteriaValue1);
  request->set_second_list_count(criteria.secondListCount);
  request->mutable_second_list()->Add(criteria.secondList,
                                      criteria.secondList + criteria.secondListCount);
  request->set_first_list_count(criteria.firstListCount);
  request->mutable_first_list()->Add(criteria.firstList,
                                     criteria.firstList + criteria.firstListCount);
  request->set_access_network(ClientLceUtils::clientAccessLevelToProto(criteria.accessNetworkType));
  request->set_criteria_value_2(criteria.criteriaValue2);
  return message;
}

// Texts of the listener. The indication's branch names the other report where it has no data.
constexpr const char* kListener = "blobListener";
constexpr LogPoint kStatusInd{kListener, __LINE__, "STATUS_IND"};
constexpr LogPoint kStatusMsg{kListener, __LINE__, "status_msg %d"};
constexpr LogPoint kStatus{kListener, __LINE__, "status %d"};
constexpr LogPoint kStatusEmpty{kListener, __LINE__, "Status IND message data not filled"};
constexpr LogPoint kAsync{kListener, __LINE__, "SET_REPORTING_CRITERIA_ASYNC_RESULT"};
constexpr LogPoint kAsyncValues{
    kListener, __LINE__,
    "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: %d, success: %d, error: %s"};
constexpr LogPoint kAsyncEmpty{kListener, __LINE__,
                               "SET_REPORTING_CRITERIA_ASYNC_RESULT message data not filled"};
constexpr LogPoint kNoCallback{kListener, __LINE__, "no cb found"};
constexpr LogPoint kUnknownMessage{kListener, __LINE__, "Unknown message type"};

}  // namespace

struct ReportPoints {
  LogPoint entry, values, sent, noCallback, empty;
};

namespace {

constexpr ReportPoints kLastReport{
    {kListener, __LINE__, "GET_LAST_ESTIMATION_REPORT_IND"},
    {kListener, __LINE__,
     "GET_LAST_ESTIMATION_REPORT_IND rate: %d, confidenceLevel: %d, linkDirection: %d, "
     "queueSizeUL: %d, errorString: %s"},
    {kListener, __LINE__, "mLastEstimationReportCb sent"},
    {kListener, __LINE__, "mLastEstimationReportCb null"},
    {kListener, __LINE__, "GET_LAST_ESTIMATION_REPORT_IND message data not filled"}};
constexpr ReportPoints kReportInd{
    {kListener, __LINE__, "ESTIMATION_REPORTS_IND"},
    {kListener, __LINE__,
     "ESTIMATION_REPORTS_IND rate: %d, confidenceLevel: %d, linkDirection: %d, "
     "queueSizeUL: %d, errorString: %s"},
    {kListener, __LINE__, "mEstimationReportInd sent"},
    {kListener, __LINE__, "mEstimationReportInd null"},
    {kListener, __LINE__, "GET_LAST_ESTIMATION_REPORT_IND message data not filled"}};

}  // namespace

const ServiceTable Lce::kTable{
    OrbSdkClientType::LCE,
    kSource,
    &Lce::mInstance,
    [] { return std::static_pointer_cast<Service>(std::make_shared<Lce>()); },
    &enableMessage,
    {{"orb_lce_enable", __LINE__, "Enable"},
     {"orb_lce_enable", __LINE__, "Status ind function null"},
     {"orb_lce_enable", __LINE__, "Failed to get SDK instance."}},
    {{"createLceClient", __LINE__, "Create"},
     {"createLceClient", __LINE__, "cb function null"},
     {"createLceClient", __LINE__, "Failed to get SDK instance."}},
    {{"orb_lce_disable", __LINE__, "Disable"},
     {"orb_lce_disable", __LINE__, "Failed to get SDK instance."},
     {"orb_lce_disable", __LINE__, "Failed to get SDK client instance."}},
    {{"destroySdfClient", __LINE__, "Distroy"},
     {"destroySdfClient", __LINE__, "Failed to get SDK instance."},
     {"destroySdfClient", __LINE__, "Failed to get SDK client instance."}},
    {"Lce", __LINE__, "Lce ctor"},
    {"~Lce", __LINE__, "~Lce called"},
    {kListener, __LINE__, "Lce::blobListener"},
    {kListener, __LINE__, "unknown internal status %d"}};

ServiceSlot& Lce::mInstance() {
  static NeverDestroyed<ServiceSlot> slot;
  return slot.get();
}

Lce::Lce() : Service(kTable) {}

Lce::~Lce() = default;

uint32_t Lce::getNextUniqueId() {
  uint32_t id = 0;
  do {
    id = static_cast<uint32_t>(rand());
  } while (id == 0 || !mUsedIds.insert(id).second);
  return id;
}

void Lce::forget(uint32_t id) {
  const std::lock_guard<std::mutex> lock(mLock);
  mPendingCriteriaCbs.erase(id);
  mUsedIds.erase(id);
}

int64_t Lce::setReportingCriteria(const LceReportingCriteria& criteria, LceReportingCriteriaCb cb) {
  uint32_t id = 0;
  {
    const std::lock_guard<std::mutex> lock(mLock);
    id = getNextUniqueId();
    mPendingCriteriaCbs.emplace(id, cb);
  }
  try {
    if (request(criteriaMessage(criteria, id))) return id;
  } catch (...) {
    forget(id);  // a refused call leaves nothing behind
    throw;
  }
  forget(id);
  return kNoService;
}

int64_t Lce::getLastEstimationReport(LceEstimationReportCb cb) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  store(mLastEstimationReportCb, cb);
  return request(message) ? kRequestDone : kNoService;
}

int64_t Lce::performReportingAction(LceReportingAction action) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::PERFORM_REPORTING_ACTION);
  message.mutable_data()->mutable_perform_reporting_action()->set_action(
      ClientLceUtils::clientReportingActionToProto(action));
  return request(message) ? kRequestDone : kNoService;
}

int64_t Lce::regEstimationReports(LceEstimationReportCb cb) {
  store(mEstimationReportInd, cb);
  return kRequestDone;
}

void Lce::handleBlob(const std::vector<uint8_t>& blob) {
  LceProto::ClientMsg message;
  parse(message, blob);
  const LceProto::ClientData& data = message.data();
  switch (message.event_id()) {
    case LceProto::STATUS_IND:
      handleStatus(data);
      break;
    case LceProto::GET_LAST_ESTIMATION_REPORT_IND:
      log(kLastReport.entry);
      if (data.has_get_last_estimation_report_resp()) {
        handleReport(data.get_last_estimation_report_resp(), mLastEstimationReportCb, kLastReport);
      } else {
        log(kLastReport.empty);
      }
      break;
    case LceProto::ESTIMATION_REPORTS_IND:
      log(kReportInd.entry);
      if (data.has_estimation_reports_resp()) {
        handleReport(data.estimation_reports_resp(), mEstimationReportInd, kReportInd);
      } else {
        log(kReportInd.empty);
      }
      break;
    case LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT:
      handleAsyncResult(message);
      break;
    default:
      log(kUnknownMessage);
      break;
  }
}

void Lce::handleStatus(const LceProto::ClientData& data) {
  log(kStatusInd);
  if (!data.has_status_msg()) {
    log(kStatusEmpty);
    return;
  }
  kStatusMsg.print(kSource, static_cast<int>(data.status_msg().status()));
  const status_e status = ClientLceUtils::protoStatusToClient(data.status_msg().status());
  kStatus.print(kSource, static_cast<int>(status));
  handleStatusInd(status);
}

template <class Report>
void Lce::handleReport(const Report& report, const LceEstimationReportCb& cb,
                       const ReportPoints& points) {
  LceEstimationReport estimation = {};
  estimation.rate = report.rate();
  estimation.confidenceLevel =
      ClientLceUtils::protoConfidenceLevelToClient(report.confidence_level());
  estimation.linkDirection = ClientLceUtils::protoLinkDirectionToClient(report.link_direction());
  estimation.queueSizeUL = report.queue_size_ul();
  points.values.print(
      kSource, static_cast<int>(report.rate()), static_cast<int>(estimation.confidenceLevel),
      static_cast<int>(estimation.linkDirection), static_cast<int>(report.queue_size_ul()),
      escapePercent(report.error_string()).c_str());
  const auto status = ClientLceUtils::protoEstimationReportStatusToClient(report.error_string());
  log(callBack(cb, status, estimation) ? points.sent : points.noCallback);
}

void Lce::handleAsyncResult(const LceProto::ClientMsg& message) {
  log(kAsync);
  if (!message.data().has_set_reporting_criteria_resp()) {
    log(kAsyncEmpty);
    return;
  }
  const auto& response = message.data().set_reporting_criteria_resp();
  const auto id = static_cast<uint32_t>(message.transaction_id());
  kAsyncValues.print(kSource, static_cast<int>(id), response.success() ? 1 : 0,
                     escapePercent(response.error()).c_str());
  LceReportingCriteriaCb cb = nullptr;
  bool found = false;
  {
    const std::lock_guard<std::mutex> lock(mLock);
    const auto pending = mPendingCriteriaCbs.find(id);
    found = pending != mPendingCriteriaCbs.end();
    if (found) {
      // Out of the table before the call: an answer is delivered once, whatever the callback does.
      cb = pending->second;
      mPendingCriteriaCbs.erase(pending);
      mUsedIds.erase(id);
    }
  }
  if (!found) {
    log(kNoCallback);
    return;
  }
  const CallbackGate::Pass pass(mGate);
  if (pass) cb(ClientLceUtils::protoReportingCriteriaStatusToClient(response.error()));
}
