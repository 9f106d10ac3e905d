// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "GrowthDaemon.h"

#include <string>

#include "LceFrames.h"
#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"

namespace growth {
namespace {

using lceframes::serialized;

template <class Message>
Message parsed(const orbsim::Blob& blob) {
  Message message;
  message.ParseFromArray(blob.data(), static_cast<int>(blob.size()));
  return message;
}

orbsim::Blob lleReport() {
  LleProto::ClientMsg answer;
  answer.set_event_id(LleProto::GET_REPORT_RESP);
  auto& report = *answer.mutable_data()->mutable_get_report_resp();
  report.set_status(true);
  report.set_ul_latency_estimation(12);
  report.set_dl_latency_estimation(34);
  return serialized(answer);
}

orbsim::Blob lliIndication() {
  LliProto::ClientMsg answer;
  answer.set_event_id(LliProto::LLI_IND_RESP);
  auto& interrupt = *answer.mutable_data()->mutable_lli_ind_resp();
  interrupt.set_handoff_info(LliProto::HANDOFF_START);
  interrupt.set_source_rat(LliProto::LLI_3GPP_LTE);
  interrupt.set_target_rat(LliProto::LLI_3GPP_5G);
  return serialized(answer);
}

orbsim::Blob criteriaResult(uint64_t id) {
  LceProto::ClientMsg answer;
  answer.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  answer.set_transaction_id(id);
  auto& result = *answer.mutable_data()->mutable_set_reporting_criteria_resp();
  result.set_success(true);
  result.set_error("NONE");
  return serialized(answer);
}

bool asksForReport(const orbsim::Frame& frame) {
  switch (frame.sdkType()) {
    case orbsim::kSdkTypeLce:
      return parsed<LceProto::ServiceMsg>(frame.blob()).event_id() ==
             LceProto::GET_LAST_ESTIMATION_REPORT;
    case orbsim::kSdkTypeLle:
      return parsed<LleProto::ServiceMsg>(frame.blob()).event_id() ==
             LleProto::GET_LAST_ESTIMATION_REPORT;
    case orbsim::kSdkTypeLli:
      return parsed<LliProto::ServiceMsg>(frame.blob()).event_id() ==
             LliProto::REG_LINK_INTERRUPT_IND;
    default:
      return false;
  }
}

orbsim::Options quietly() {
  orbsim::Options options;
  options.record = false;
  options.reportInterval = std::chrono::milliseconds(0);
  return options;
}

}  // namespace

Daemon::Daemon() : mDaemon(quietly()) {
  mDaemon.setFrameHandler([this](orbsim::Session& session, const orbsim::Frame& frame) {
    return answer(session, frame);
  });
}

void Daemon::setPayload(size_t payload) {
  const LockGuard lock(mLock);
  mPayload = payload;
  mReady.clear();
}

bool Daemon::answer(orbsim::Session& session, const orbsim::Frame& frame) {
  if (asksForReport(frame)) return session.send(answerOf(session, frame.sdkType()));
  if (frame.sdkType() != orbsim::kSdkTypeLce) return false;
  const auto request = parsed<LceProto::ServiceMsg>(frame.blob());
  if (request.event_id() != LceProto::SET_REPORTING_CRITERIA) return false;
  return !mAnswering ||
         session.sendBlob(orbsim::kSdkTypeLce, criteriaResult(request.transaction_id()));
}

// Created once for each session.
orbsim::Blob Daemon::answerOf(const orbsim::Session& session, uint32_t service) {
  const LockGuard lock(mLock);
  orbsim::Blob& frame = mReady[{session.id(), service}];
  if (frame.empty()) {
    const orbsim::Blob blob = service == orbsim::kSdkTypeLce
                                  ? lceframes::answerBlob(std::string(mPayload, 'x'))
                              : service == orbsim::kSdkTypeLle ? lleReport()
                                                               : lliIndication();
    const orbsim::Blob payload = orbsim::encodeBlobPayload(service, blob);
    frame =
        orbsim::encodeFrame(session.headerFor(orbsim::kSendBlobMessageId, payload.size()), payload);
  }
  return frame;
}

}  // namespace growth
