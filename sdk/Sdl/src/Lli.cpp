// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LLI service: its tables, its request and its messages.
#include "Lli.h"

#include "ClientLliUtils.h"

namespace {

constexpr LogSource kSource{"Lli", "sdk/Sdl/src/Lli.cpp"};

// Log consumers know the lines by these numbers.
constexpr ReportPoints kIndication{
    {kListener, 214, "LLI_IND_RESP"},
    {kListener, 233,
     "LLI_IND_RESP handoffIndType: %d, handoffState: %d, preHandoffState: %d, sourceRat: %d, "
     "targetRat: %d, estimatedTimeToInterruption: %lu, estimatedInterruptionDuration: %lu"},
    {kListener, 251, "LLI_IND_RESP cb sent"},
    {kListener, 253, "LLI_IND_RESP no cb"},
    {kListener, 257, "LLI_IND_RESP message data not filled"}};

}  // namespace

const ServiceTable Lli::kTable{
    OrbSdkClientType::LLI,
    kSource,
    &Lli::mBaseStatusV2Cb,
    &Lli::mInstance,
    &Lli::make,
    &Service::enableMessage<LliProto::ServiceMsg, LliProto::ENABLE>,
    {"orb_lli_enable", {20, "Enable"}, {22, "Status ind function null"}, 29},
    {"createLliClient", {82, "Create"}, {84, "cb function null"}, 91},
    {"orb_lli_disable", {53, "Disable"}, 56, 61},
    {"destroyLliClient", {115, "Destroy"}, 118, 123},
    {"Lli", 177, "Lli ctor"},
    {"~Lli", 183, "~Lli called"},
    {kListener, 193, "Lli::blobListener"},
    {kListener, 269, "unknown internal status %d"},
    {202, 204, 207, 210},
    {kListener, __LINE__, "Unknown message type"}};

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
      handleMember(kIndication, data.has_lli_ind_resp(),
                   [&] { handleIndication(data.lli_ind_resp()); });
      break;
    default:
      log(kTable.unknownMessage);
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
  kIndication.values.print(kSource, static_cast<int>(type), static_cast<int>(info.handoffState),
                           static_cast<int>(preState), static_cast<int>(info.sourceRat),
                           static_cast<int>(info.targetRat),
                           static_cast<unsigned long>(info.estimatedTimeToInterruption),
                           static_cast<unsigned long>(info.estimatedInterruptionDuration));
  log(callBack(mLinkInterruptInd, type, preState, &info) ? kIndication.sent
                                                         : kIndication.noCallback);
}
