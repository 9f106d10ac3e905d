// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lce.h>

#include <map>
#include <memory>
#include <unordered_set>
#include <vector>

#include "Service.h"
#include "lce.pb.h"

// The link capacity estimation service of the process. Requests come on application threads,
// answers on the receiver thread; the base's mLock guards callbacks, used ids and pending requests.
class Lce : public ServiceOf<Lce> {
 public:
  static const ServiceTable kTable;

  int64_t setReportingCriteria(const LceReportingCriteria& criteria, LceReportingCriteriaCb cb);
  int64_t getLastEstimationReport(LceEstimationReportCb cb);
  int64_t performReportingAction(LceReportingAction action);
  int64_t regEstimationReports(LceEstimationReportCb cb);

 protected:
  void handleBlob(const std::vector<uint8_t>& blob) override;
  void forgetRequests() override;

 private:
  class NewId;
  using PendingCriteria = std::map<uint32_t, LceReportingCriteriaCb>;

  uint32_t getNextUniqueId();
  void handleAsyncResult(const LceProto::ClientMsg& message);
  template <class Report>
  void handleReport(const Report& report, const LceEstimationReportCb& cb,
                    const ReportPoints& points);

  LceEstimationReportCb mEstimationReportInd = nullptr;
  LceEstimationReportCb mLastEstimationReportCb = nullptr;
  std::unordered_set<uint32_t> mUsedIds;  // issued and not yet answered
  PendingCriteria mPendingCriteriaCbs;
};
