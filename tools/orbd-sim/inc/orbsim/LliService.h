// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

#include "lli.pb.h"
#include "orbsim/HandoffModel.h"
#include "orbsim/TypedService.h"

namespace orbsim {

// Link interruption indication: handoffs are played, one step per report interval, from the
// client's registration until it unregisters or disables the service. Who registers anew hears the
// next handoff from its beginning. Times are in milliseconds. Owned by the session and used only on
// the session's thread, so it has no lock.
class LliService
    : public TypedService<LliProto::ServiceMsg, LliProto::ClientMsg, LliState, kSdkTypeLli> {
 public:
  LliService(Session& session, Control& control);

 private:
  bool handleRequest(const LliProto::ServiceMsg& request) override;
  bool reporting() const override { return mState.registered; }
  void stopReporting() override { mState.registered = false; }
  bool makeReport(LliProto::ClientMsg& report) override;
  std::string describe(const LliProto::ServiceData& data) const override;
  std::string describe(const LliProto::ClientData& data) const override;

  void handleRegister(const LliProto::ServiceMsg& request);

  HandoffModel mHandoffs;
};

}  // namespace orbsim
