// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>

#include "lce.pb.h"
#include "orbsim/LinkModel.h"
#include "orbsim/Service.h"

namespace orbsim {

// Link capacity estimation. Requests are answered whether or not the client has enabled the
// service: a client that finds a restarted daemon goes on with whatever request comes next.
// While the answers of the service are switched off it keeps its state and sends nothing.
class LceService : public Service {
 public:
  LceService(Session& session, Control& control);

  void handleBlob(const Blob& blob) override;
  std::optional<Clock::time_point> nextDue() const override;
  void handleDue(Clock::time_point now) override;

 private:
  void handleEnable(const LceProto::ServiceMsg& request);
  void handleSetCriteria(const LceProto::ServiceMsg& request);
  void handleGetLastReport(const LceProto::ServiceMsg& request);
  void handleAction(const LceProto::ServiceMsg& request);
  void setReporting(bool on);
  void sendStatus(LceProto::Status status);
  bool send(const LceProto::ClientMsg& message);
  template <typename Report>
  void fillReport(Report& report) const;

  Session& mSession;
  Control& mControl;
  LinkModel mLink;
  LinkEstimate mLast;
  LceState mState;
  Clock::time_point mLastReportAt;  // meaningful while reporting
};

}  // namespace orbsim
