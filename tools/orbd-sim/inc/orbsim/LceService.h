// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

#include "lce.pb.h"
#include "orbsim/Reporter.h"
#include "orbsim/TypedService.h"

namespace orbsim {

// Link capacity estimation. Reports are sent from START to STOP or disable. The criteria stay, and
// RESET resets the confidence. Rates are in kbit/s, the queue in bytes. Owned by the session and
// used only on the session's thread, so it has no lock.
class LceService
    : public TypedService<LceProto::ServiceMsg, LceProto::ClientMsg, LceState, kSdkTypeLce> {
 public:
  LceService(Session& session, Control& control);

 private:
  bool handleRequest(const LceProto::ServiceMsg& request) override;
  bool reporting() const override { return mState.reporting; }
  void stopReporting() override { mState.reporting = false; }
  void startReports() override { mReporter.start(); }
  std::optional<Clock::time_point> reportDue() override { return mReporter.due(); }
  bool makeReport(LceProto::ClientMsg& report) override;
  std::string describe(const LceProto::ServiceData& data) const override;
  std::string describe(const LceProto::ClientData& data) const override;

  void handleSetCriteria(const LceProto::ServiceMsg& request);
  void handleGetLastReport();
  void handleAction(const LceProto::ServiceMsg& request);

  // The estimate, with the confidence limited by the number of estimates since the last reset.
  const LinkEstimate& told(const Estimate& estimate);

  Reporter mReporter;
  uint32_t mSinceReset =
      7;  // estimates since the last reset; values above the highest confidence make no difference
  LinkEstimate mTold;
};

}  // namespace orbsim
