// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/LliService.h"

#include <optional>

namespace orbsim {

LliService::LliService(Session& session, Control& control)
    : TypedService(session, control), mWorld(control.world()) {}

bool LliService::handleRequest(const LliProto::ServiceMsg& request) {
  if (request.event_id() != LliProto::REG_LINK_INTERRUPT_IND) return false;
  handleRegister(request);
  return true;
}

void LliService::handleRegister(const LliProto::ServiceMsg& request) {
  if (!request.data().has_reg_link_interrupt_ind()) {
    sendStatus(Outcome::kInvalidArg);
    return;
  }
  const bool wanted = request.data().reg_link_interrupt_ind().register_ind();
  mState.registered = wanted;
  sendStatus(Outcome::kSuccess);
}

// mNext is set first, because wanted() can begin the model's time; so it is the first phase.
void LliService::startReports() {
  mNext = mWorld.nextHandoff();
  mWorld.wanted(kSdkTypeLli);
}

bool LliService::makeReport(LliProto::ClientMsg& report) {
  const auto phase = mWorld.phase(mNext);
  if (!phase) return false;
  ++mNext;
  report.set_event_id(LliProto::LLI_IND_RESP);
  *report.mutable_data()->mutable_lli_ind_resp() = phase->indication;
  return true;
}

std::string LliService::describe(const LliProto::ServiceData& data) const {
  if (!data.has_reg_link_interrupt_ind()) return {};
  return data.reg_link_interrupt_ind().register_ind() ? " register=true" : " register=false";
}

std::string LliService::describe(const LliProto::ClientData& data) const {
  if (!data.has_lli_ind_resp()) return {};
  const LliProto::LliIndResp& step = data.lli_ind_resp();
  return " info=" + LliProto::HandoffInfo_Name(step.handoff_info()) +
         " state=" + LliProto::PreHandoffState_Name(step.pre_handoff_state()) +
         " source=" + LliProto::LliRatType_Name(step.source_rat()) +
         " target=" + LliProto::LliRatType_Name(step.target_rat()) +
         " time=" + std::to_string(step.estimated_time_to_interruption()) +
         " duration=" + std::to_string(step.estimated_interruption_duration());
}

}  // namespace orbsim
