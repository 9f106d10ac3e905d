// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lle.h>

#include <vector>

#include "Service.h"
#include "lle.pb.h"

// The link latency estimation service of the process. Requests come on application threads, answers
// on the receiver thread; the base's mLock guards the callbacks.
class Lle : public ServiceOf<Lle> {
 public:
  static const ServiceTable kTable;
  // Where lleSetReportingCriteria says that it cannot be served; log consumers know the numbers.
  static constexpr RequestPoints kSetReportingCriteria{"lleSetReportingCriteria", 165, 170};

  int64_t setReportingCriteria(uint32_t criteria);
  int64_t getLastEstimationReport(LleEstimationReportCb cb);
  int64_t regEstimationReports(LleEstimationReportCb cb);

 protected:
  void handleBlob(const std::vector<uint8_t>& blob) override;

 private:
  template <class Report>
  void handleReport(const Report& report, const LleEstimationReportCb& cb, int32_t result,
                    const ReportPoints& points);

  LleEstimationReportCb mEstimationReportInd = nullptr;
  LleEstimationReportCb mLastEstimationReportCb = nullptr;
};
