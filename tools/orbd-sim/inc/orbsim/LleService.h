// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <string>

#include "lle.pb.h"
#include "orbsim/Reporter.h"
#include "orbsim/TypedService.h"

namespace orbsim {

// Link latency estimation. There is no request to start or stop: reports are sent while the
// criteria are not 0. The value does not matter otherwise. A disable sets the criteria to 0.
// Latencies are in microseconds, variances in square microseconds, the interval in milliseconds. A
// report has status 1 with an estimate and 0 without. Owned by the session and used only on the
// session's thread, so it has no lock.
class LleService
    : public TypedService<LleProto::ServiceMsg, LleProto::ClientMsg, LleState, kSdkTypeLle> {
 public:
  LleService(Session& session, Control& control);

 private:
  bool handleRequest(const LleProto::ServiceMsg& request) override;
  bool reporting() const override { return mState.criteria != 0; }
  void stopReporting() override { mState.criteria = 0; }
  void startReports() override { mReporter.start(); }
  std::optional<Clock::time_point> reportDue() override { return mReporter.due(); }
  bool makeReport(LleProto::ClientMsg& report) override;
  std::string describe(const LleProto::ServiceData& data) const override;
  std::string describe(const LleProto::ClientData& data) const override;

  void handleSetCriteria(const LleProto::ServiceMsg& request);
  void handleGetLastReport();
  template <class Report>
  void fillReport(const LatencyEstimate& estimate, Report& report) const;

  Reporter mReporter;
};

}  // namespace orbsim
