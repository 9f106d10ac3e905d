// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lce.h>

#include <unordered_map>
#include <vector>

#include "Service.h"
#include "lce.pb.h"

// The link capacity estimation service of the process. Requests come on application threads,
// answers on the receiver thread; the base's mLock guards the pending requests.
class Lce : public ServiceOf<Lce> {
 public:
  static constexpr LogSource kSource{"Lce", "sdk/Sdl/src/Lce.cpp"};
  static const ServiceTable kTable;

  int64_t setReportingCriteria(const LceReportingCriteria& criteria, LceReportingCriteriaCb cb);
  int64_t getLastEstimationReport(LceEstimationReportCb cb);
  int64_t performReportingAction(LceReportingAction action);
  int64_t regEstimationReports(LceEstimationReportCb cb);

 protected:
  void handleBlob(const std::vector<uint8_t>& blob) override;
  void forgetRequests() override;

 private:
  // Requests that are not answered yet, by transaction id. The callback is null until the request
  // is accepted.
  using PendingCriteria = std::unordered_map<uint32_t, LceReportingCriteriaCb>;
  class NewId;

  // Draws an id that no pending request has, and makes an entry for it.
  PendingCriteria::iterator getNextUniqueId() ORB_REQUIRES(mLock);
  void handleAsyncResult(const LceProto::ClientMsg& message);
  template <class Report>
  void handleReport(const Report& report, const CallbackSlot<LceEstimationReportCb>& slot,
                    const ReportPoints& points);

  CallbackSlot<LceEstimationReportCb> mEstimationReportInd;
  CallbackSlot<LceEstimationReportCb> mLastEstimationReportCb;
  PendingCriteria mPendingCriteriaCbs ORB_GUARDED_BY(mLock);
};
