// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

#include "lli.pb.h"
#include "orbsim/TypedService.h"

namespace orbsim {

// Link interruption indication. Sends the phases of the device's handoffs at their time, from the
// registration of the client until it unregisters or disables the service. After a new
// registration, the client gets the next handoff from its beginning. Times are in milliseconds.
// Owned by the session and used only on the session's thread, so it has no lock.
class LliService
    : public TypedService<LliProto::ServiceMsg, LliProto::ClientMsg, LliState, kSdkTypeLli,
                          /*kDropsStale=*/false> {
 public:
  LliService(Session& session, Control& control);

 private:
  bool handleRequest(const LliProto::ServiceMsg& request) override;
  bool reporting() const override { return mState.registered; }
  void stopReporting() override { mState.registered = false; }
  void startReports() override;
  std::optional<Clock::time_point> reportDue() override { return mWorld.phaseDue(mNext); }
  bool makeReport(LliProto::ClientMsg& report) override;
  std::string describe(const LliProto::ServiceData& data) const override;
  std::string describe(const LliProto::ClientData& data) const override;

  void handleRegister(const LliProto::ServiceMsg& request);

  World& mWorld;
  uint64_t mNext = 0;  // number of the next phase
};

}  // namespace orbsim
