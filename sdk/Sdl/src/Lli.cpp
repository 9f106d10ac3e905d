// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LLI service: its tables, its request and its messages.
#include "Lli.h"

#include "ClientLliUtils.h"

namespace {

constexpr LogPoint point(const char* function, int line, const char* text) {
  return {Lli::kSource, function, line, text};
}

// All fixed lines of the service. Log consumers know them by these numbers.
struct LliPoints {
  ServicePoints service;
  RequestPoints regLinkInterruptInd;
  ReportPoints indication;
};
constexpr LliPoints kPoints = [] {
  LliPoints points;
  ServicePoints& service = points.service;
  service.enable.entry = point("orb_lli_enable", 20, "Enable");
  service.enable.nullCallback = point("orb_lli_enable", 22, "Status ind function null");
  service.enable.noInstance = point("orb_lli_enable", 29, kNoInstance);
  service.disable.entry = point("orb_lli_disable", 53, "Disable");
  service.disable.noInstance = point("orb_lli_disable", 56, kNoInstance);
  service.disable.noClient = point("orb_lli_disable", 61, kNoClient);
  service.create.entry = point("createLliClient", 82, "Create");
  service.create.nullCallback = point("createLliClient", 84, "cb function null");
  service.create.noInstance = point("createLliClient", 91, kNoInstance);
  service.destroy.entry = point("destroyLliClient", 115, "Destroy");
  service.destroy.noInstance = point("destroyLliClient", 118, kNoInstance);
  service.destroy.noClient = point("destroyLliClient", 123, kNoClient);
  points.regLinkInterruptInd = requestPoints(Lli::kSource, "lliRegLinkInterruptInd", 145, 150);
  service.constructed = point("Lli", 177, "Lli ctor");
  service.destroyed = point("~Lli", 183, "~Lli called");
  service.blobListener = point(kListener, 193, "Lli::blobListener");
  service.status.entry = point(kListener, 202, "STATUS_IND");
  service.status.raw = point(kListener, 204, "status_msg %d");
  service.status.converted = point(kListener, 207, "status %d");
  service.status.empty = point(kListener, 210, "Status IND message data not filled");
  points.indication.entry = point(kListener, 214, "LLI_IND_RESP");
  points.indication.values = point(
      kListener, 233,
      "LLI_IND_RESP handoffIndType: %d, handoffState: %d, preHandoffState: %d, sourceRat: %d, "
      "targetRat: %d, estimatedTimeToInterruption: %lu, estimatedInterruptionDuration: %lu");
  points.indication.sent = point(kListener, 251, "LLI_IND_RESP cb sent");
  points.indication.noCallback = point(kListener, 253, "LLI_IND_RESP no cb");
  points.indication.empty = point(kListener, 257, "LLI_IND_RESP message data not filled");
  service.unknownMessage = point(kListener, __LINE__, "Unknown message type");
  service.unknownStatus = point(kListener, 269, "unknown internal status %d");
  return points;
}();

}  // namespace

const ServiceTable Lli::kTable{OrbSdkClientType::LLI,
                               kSource,
                               &Lli::mBaseStatusV2Cb,
                               &Lli::mInstance,
                               &Lli::make,
                               &Service::enableMessage<LliProto::ServiceMsg, LliProto::ENABLE>,
                               kPoints.service};
const RequestPoints Lli::kRegLinkInterruptInd = kPoints.regLinkInterruptInd;

int64_t Lli::regLinkInterruptInd(LliLinkInterruptIndCb cb) {
  OnArena<LliProto::ServiceMsg> message;
  message->set_event_id(LliProto::REG_LINK_INTERRUPT_IND);
  message->mutable_data()->mutable_reg_link_interrupt_ind()->set_register_ind(true);
  return requestFor(mLinkInterruptInd, cb, *message);
}

void Lli::handleBlob(const std::vector<uint8_t>& blob) {
  OnArena<LliProto::ClientMsg> message;
  parse(message, blob);
  const LliProto::ClientData& data = message->data();
  switch (message->event_id()) {
    case LliProto::STATUS_IND:
      handleStatus<ClientLliUtils>(data);
      break;
    case LliProto::LLI_IND_RESP:
      handleMember(kPoints.indication, data.has_lli_ind_resp(),
                   [&] { handleIndication(data.lli_ind_resp()); });
      break;
    default:
      log(kPoints.service.unknownMessage);
      break;
  }
}

void Lli::handleIndication(const LliProto::LliIndResp& indication) {
  // One field of the message feeds both the type of the indication and the stage of the handoff.
  const auto type = ClientLliUtils::protoHandoffInfoToClient(indication.handoff_info());
  LliInterruptInfo info = {};
  info.handoffState = ClientLliUtils::protoHandoffStateToClient(indication.handoff_info());
  const auto preState =
      ClientLliUtils::protoPreHandoffStateToClient(indication.pre_handoff_state());
  info.sourceRat = ClientLliUtils::protoRatToClient(indication.source_rat());
  info.targetRat = ClientLliUtils::protoRatToClient(indication.target_rat());
  info.estimatedTimeToInterruption = indication.estimated_time_to_interruption();
  info.estimatedInterruptionDuration = indication.estimated_interruption_duration();
  kPoints.indication.values.print(static_cast<int>(type), static_cast<int>(info.handoffState),
                                  static_cast<int>(preState), static_cast<int>(info.sourceRat),
                                  static_cast<int>(info.targetRat),
                                  static_cast<unsigned long>(info.estimatedTimeToInterruption),
                                  static_cast<unsigned long>(info.estimatedInterruptionDuration));
  log(callBack(mLinkInterruptInd, type, preState, &info) ? kPoints.indication.sent
                                                         : kPoints.indication.noCallback);
}
