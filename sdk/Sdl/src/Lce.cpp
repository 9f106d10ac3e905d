// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LCE service: its tables, its requests and its messages.
#include "Lce.h"

#include <stdlib.h>

#include "ClientLceUtils.h"

namespace {

constexpr LogPoint point(const char* function, int line, const char* text) {
  return {Lce::kSource, function, line, text};
}

void fill(LceProto::ServiceMsg& message, const LceReportingCriteria& criteria, uint32_t id) {
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
}

// All lines of the service except those of its requests, which have the line number of the caller.
struct LcePoints {
  ServicePoints service;
  ReportPoints lastReport;
  ReportPoints reportInd;
  struct {
    LogPoint entry, values, noCallback, empty;
  } criteriaResult;
};
constexpr LcePoints kPoints = [] {
  LcePoints points;
  ServicePoints& service = points.service;
  service.enable.entry = point("orb_lce_enable", __LINE__, "Enable");
  service.enable.nullCallback = point("orb_lce_enable", __LINE__, "Status ind function null");
  service.enable.noInstance = point("orb_lce_enable", __LINE__, kNoInstance);
  service.create.entry = point("createLceClient", __LINE__, "Create");
  service.create.nullCallback = point("createLceClient", __LINE__, "cb function null");
  service.create.noInstance = point("createLceClient", __LINE__, kNoInstance);
  service.disable.entry = point("orb_lce_disable", __LINE__, "Disable");
  service.disable.noInstance = point("orb_lce_disable", __LINE__, kNoInstance);
  service.disable.noClient = point("orb_lce_disable", __LINE__, kNoClient);
  service.destroy.entry = point("destroySdfClient", __LINE__, "Distroy");
  service.destroy.noInstance = point("destroySdfClient", __LINE__, kNoInstance);
  service.destroy.noClient = point("destroySdfClient", __LINE__, kNoClient);
  service.constructed = point("Lce", __LINE__, "Lce ctor");
  service.destroyed = point("~Lce", __LINE__, "~Lce called");
  service.blobListener = point(kListener, __LINE__, "Lce::blobListener");
  service.unknownStatus = point(kListener, __LINE__, "unknown internal status %d");
  service.unknownMessage = point(kListener, __LINE__, "Unknown message type");
  service.status.entry = point(kListener, __LINE__, "STATUS_IND");
  service.status.raw = point(kListener, __LINE__, "status_msg %d");
  service.status.converted = point(kListener, __LINE__, "status %d");
  service.status.empty = point(kListener, __LINE__, "Status IND message data not filled");
  points.lastReport.entry = point(kListener, __LINE__, "GET_LAST_ESTIMATION_REPORT_IND");
  points.lastReport.values =
      point(kListener, __LINE__,
            "GET_LAST_ESTIMATION_REPORT_IND rate: %d, confidenceLevel: %d, linkDirection: %d, "
            "queueSizeUL: %d, errorString: %s");
  points.lastReport.sent = point(kListener, __LINE__, "mLastEstimationReportCb sent");
  points.lastReport.noCallback = point(kListener, __LINE__, "mLastEstimationReportCb null");
  points.lastReport.empty =
      point(kListener, __LINE__, "GET_LAST_ESTIMATION_REPORT_IND message data not filled");
  points.reportInd.entry = point(kListener, __LINE__, "ESTIMATION_REPORTS_IND");
  points.reportInd.values =
      point(kListener, __LINE__,
            "ESTIMATION_REPORTS_IND rate: %d, confidenceLevel: %d, linkDirection: %d, "
            "queueSizeUL: %d, errorString: %s");
  points.reportInd.sent = point(kListener, __LINE__, "mEstimationReportInd sent");
  points.reportInd.noCallback = point(kListener, __LINE__, "mEstimationReportInd null");
  // The name of the other report, as log consumers know it.
  points.reportInd.empty =
      point(kListener, __LINE__, "GET_LAST_ESTIMATION_REPORT_IND message data not filled");
  points.criteriaResult.entry = point(kListener, __LINE__, "SET_REPORTING_CRITERIA_ASYNC_RESULT");
  points.criteriaResult.values =
      point(kListener, __LINE__,
            "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: %d, success: %d, error: %s");
  points.criteriaResult.noCallback = point(kListener, __LINE__, "no cb found");
  points.criteriaResult.empty =
      point(kListener, __LINE__, "SET_REPORTING_CRITERIA_ASYNC_RESULT message data not filled");
  return points;
}();

}  // namespace

const ServiceTable Lce::kTable{OrbSdkClientType::LCE,
                               kSource,
                               &Lce::mStatusV2Cb,
                               &Lce::mInstance,
                               &Lce::make,
                               &Service::enableMessage<LceProto::ServiceMsg, LceProto::ENABLE>,
                               kPoints.service};

Lce::PendingCriteria::iterator Lce::getNextUniqueId() {
  for (;;) {
    const auto id = static_cast<uint32_t>(rand());
    if (id == 0) continue;
    const auto [place, isNew] = mPendingCriteriaCbs.try_emplace(id, nullptr);
    if (isNew) return place;
  }
}

// The id of a new request; none if the service has no client. Released if the request is not
// accepted.
class Lce::NewId {
 public:
  explicit NewId(Lce& lce) : mLce(lce) {
    lce.accept([this]() ORB_REQUIRES(mLce.mLock) {
      mPlace = &*mLce.getNextUniqueId();
      mId = mPlace->first;
    });
  }
  NewId(const NewId&) = delete;
  NewId& operator=(const NewId&) = delete;
  ~NewId() {
    if (mPlace == nullptr || mAccepted) return;
    const LockGuard lock(mLce.mLock);
    mLce.mPendingCriteriaCbs.erase(mId);
  }
  explicit operator bool() const { return mPlace != nullptr; }
  uint32_t value() const { return mId; }
  // Called under the lock when the request is accepted. The entry still exists: only disable
  // removes it, after it has released the client. The answer goes to @p cb.
  void take(LceReportingCriteriaCb cb) {
    mPlace->second = cb;
    mAccepted = true;
  }

 private:
  Lce& mLce;
  uint32_t mId = 0;
  PendingCriteria::value_type* mPlace = nullptr;
  bool mAccepted = false;
};

int64_t Lce::setReportingCriteria(const LceReportingCriteria& criteria, LceReportingCriteriaCb cb) {
  NewId id(*this);
  if (!id) return kNoService;
  OnArena<LceProto::ServiceMsg> message;
  fill(*message, criteria, id.value());
  const int64_t result = request(*message, [&id, cb] { id.take(cb); });
  return result == kRequestDone ? id.value() : result;
}

void Lce::forgetRequests() {
  PendingCriteria pending;  // freed after the lock
  const LockGuard lock(mLock);
  pending.swap(mPendingCriteriaCbs);
}

int64_t Lce::getLastEstimationReport(LceEstimationReportCb cb) {
  return requestLastReport<LceProto::ServiceMsg, LceProto::GET_LAST_ESTIMATION_REPORT>(
      mLastEstimationReportCb, cb);
}

int64_t Lce::performReportingAction(LceReportingAction action) {
  OnArena<LceProto::ServiceMsg> message;
  message->set_event_id(LceProto::PERFORM_REPORTING_ACTION);
  message->mutable_data()->mutable_perform_reporting_action()->set_action(
      ClientLceUtils::clientReportingActionToProto(action));
  return request(*message);
}

int64_t Lce::regEstimationReports(LceEstimationReportCb cb) {
  return registerFor(mEstimationReportInd, cb);
}

void Lce::handleBlob(const std::vector<uint8_t>& blob) {
  OnArena<LceProto::ClientMsg> message;
  parse(message, blob);
  const LceProto::ClientData& data = message->data();
  switch (message->event_id()) {
    case LceProto::STATUS_IND:
      handleStatus<ClientLceUtils>(data);
      break;
    case LceProto::GET_LAST_ESTIMATION_REPORT_IND:
      handleMember(kPoints.lastReport, data.has_get_last_estimation_report_resp(), [&] {
        handleReport(data.get_last_estimation_report_resp(), mLastEstimationReportCb,
                     kPoints.lastReport);
      });
      break;
    case LceProto::ESTIMATION_REPORTS_IND:
      handleMember(kPoints.reportInd, data.has_estimation_reports_resp(), [&] {
        handleReport(data.estimation_reports_resp(), mEstimationReportInd, kPoints.reportInd);
      });
      break;
    case LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT:
      handleMember(kPoints.criteriaResult, data.has_set_reporting_criteria_resp(),
                   [&] { handleAsyncResult(*message); });
      break;
    default:
      log(kPoints.service.unknownMessage);
      break;
  }
}

template <class Report>
void Lce::handleReport(const Report& report, const CallbackSlot<LceEstimationReportCb>& slot,
                       const ReportPoints& points) {
  LceEstimationReport estimation = {};
  estimation.rate = report.rate();
  estimation.confidenceLevel =
      ClientLceUtils::protoConfidenceLevelToClient(report.confidence_level());
  estimation.linkDirection = ClientLceUtils::protoLinkDirectionToClient(report.link_direction());
  estimation.queueSizeUL = report.queue_size_ul();
  points.values.print(static_cast<int>(report.rate()), static_cast<int>(estimation.confidenceLevel),
                      static_cast<int>(estimation.linkDirection),
                      static_cast<int>(report.queue_size_ul()),
                      escapePercent(report.error_string()).c_str());
  const auto status = ClientLceUtils::protoEstimationReportStatusToClient(report.error_string());
  log(callBack(slot, status, estimation) ? points.sent : points.noCallback);
}

void Lce::handleAsyncResult(const LceProto::ClientMsg& message) {
  const auto& response = message.data().set_reporting_criteria_resp();
  const auto id = static_cast<uint32_t>(message.transaction_id());
  kPoints.criteriaResult.values.print(static_cast<int>(id), response.success() ? 1 : 0,
                                      escapePercent(response.error()).c_str());
  LceReportingCriteriaCb cb = nullptr;
  {
    const LockGuard lock(mLock);
    const auto pending = mPendingCriteriaCbs.find(id);
    if (pending != mPendingCriteriaCbs.end() && pending->second != nullptr) {
      // Removed before the call: an answer is delivered once, even if the callback makes requests.
      cb = pending->second;
      mPendingCriteriaCbs.erase(pending);
    }
  }
  if (!cb) {
    log(kPoints.criteriaResult.noCallback);
    return;
  }
  const CallbackGate::Pass pass(*mGate);
  if (pass) cb(ClientLceUtils::protoReportingCriteriaStatusToClient(response.error()));
}
