// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LCE service: its tables, its requests and its messages.
#include "Lce.h"

#include <stdlib.h>

#include <utility>

#include "ClientLceUtils.h"

namespace {

constexpr LogSource kSource{"Lce", "sdk/Sdl/src/Lce.cpp"};

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

// Lines of the listener. The indication's branch names the other report where it has no data.
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
constexpr struct {
  LogPoint entry, values, noCallback, empty;
} kAsync{{kListener, __LINE__, "SET_REPORTING_CRITERIA_ASYNC_RESULT"},
         {kListener, __LINE__,
          "SET_REPORTING_CRITERIA_ASYNC_RESULT transactionId: %d, success: %d, error: %s"},
         {kListener, __LINE__, "no cb found"},
         {kListener, __LINE__, "SET_REPORTING_CRITERIA_ASYNC_RESULT message data not filled"}};

}  // namespace

const ServiceTable Lce::kTable{
    OrbSdkClientType::LCE,
    kSource,
    &Lce::mStatusV2Cb,
    &Lce::mInstance,
    &Lce::make,
    &Service::enableMessage<LceProto::ServiceMsg, LceProto::ENABLE>,
    {"orb_lce_enable", {__LINE__, "Enable"}, {__LINE__, "Status ind function null"}, __LINE__},
    {"createLceClient", {__LINE__, "Create"}, {__LINE__, "cb function null"}, __LINE__},
    {"orb_lce_disable", {__LINE__, "Disable"}, __LINE__, __LINE__},
    {"destroySdfClient", {__LINE__, "Distroy"}, __LINE__, __LINE__},
    {"Lce", __LINE__, "Lce ctor"},
    {"~Lce", __LINE__, "~Lce called"},
    {kListener, __LINE__, "Lce::blobListener"},
    {kListener, __LINE__, "unknown internal status %d"},
    {__LINE__, __LINE__, __LINE__, __LINE__},
    {kListener, __LINE__, "Unknown message type"}};

uint32_t Lce::getNextUniqueId() {
  uint32_t id = 0;
  do {
    id = static_cast<uint32_t>(rand());
  } while (id == 0 || !mUsedIds.insert(id).second);
  return id;
}

// Out of the used ids again, unless a request has been made with it.
class Lce::NewId {
 public:
  explicit NewId(Lce& lce) : mLce(lce) {
    const LockGuard lock(lce.mLock);
    mId = lce.getNextUniqueId();
  }
  NewId(const NewId&) = delete;
  NewId& operator=(const NewId&) = delete;
  ~NewId() {
    if (mTaken) return;
    const LockGuard lock(mLce.mLock);
    mLce.mUsedIds.erase(mId);
  }
  uint32_t value() const { return mId; }
  void take() { mTaken = true; }

 private:
  Lce& mLce;
  uint32_t mId = 0;
  bool mTaken = false;
};

int64_t Lce::setReportingCriteria(const LceReportingCriteria& criteria, LceReportingCriteriaCb cb) {
  NewId id(*this);
  // Made before the request is accepted, for then nothing may fail any more.
  PendingCriteria one;
  one.emplace(id.value(), cb);
  auto pending = one.extract(id.value());
  OnArena<LceProto::ServiceMsg> message;
  fill(*message, criteria, id.value());
  const int64_t result = request(*message, [&] { mPendingCriteriaCbs.insert(std::move(pending)); });
  if (result != kRequestDone) return result;
  id.take();
  return id.value();
}

void Lce::forgetRequests() {
  PendingCriteria pending;  // freed after the lock
  std::unordered_set<uint32_t> ids;
  const LockGuard lock(mLock);
  pending.swap(mPendingCriteriaCbs);
  ids.swap(mUsedIds);
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
      handleMember(kLastReport, data.has_get_last_estimation_report_resp(), [&] {
        handleReport(data.get_last_estimation_report_resp(), mLastEstimationReportCb, kLastReport);
      });
      break;
    case LceProto::ESTIMATION_REPORTS_IND:
      handleMember(kReportInd, data.has_estimation_reports_resp(), [&] {
        handleReport(data.estimation_reports_resp(), mEstimationReportInd, kReportInd);
      });
      break;
    case LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT:
      handleMember(kAsync, data.has_set_reporting_criteria_resp(),
                   [&] { handleAsyncResult(*message); });
      break;
    default:
      log(kTable.unknownMessage);
      break;
  }
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
  const auto& response = message.data().set_reporting_criteria_resp();
  const auto id = static_cast<uint32_t>(message.transaction_id());
  kAsync.values.print(kSource, static_cast<int>(id), response.success() ? 1 : 0,
                      escapePercent(response.error()).c_str());
  LceReportingCriteriaCb cb = nullptr;
  bool found = false;
  {
    const LockGuard lock(mLock);
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
    log(kAsync.noCallback);
    return;
  }
  const CallbackGate::Pass pass(*mGate);
  if (pass) cb(ClientLceUtils::protoReportingCriteriaStatusToClient(response.error()));
}
