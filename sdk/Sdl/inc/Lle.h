// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lle.h>

#include <vector>

#include "Service.h"
#include "lle.pb.h"

// The link latency estimation service of the process. Requests come on application threads, answers
// on the receiver thread. No lock of its own: callbacks are in slots.
class Lle : public ServiceOf<Lle> {
 public:
  static constexpr LogSource kSource{"Lle", "sdk/Sdl/src/Lle.cpp"};
  static const ServiceTable kTable;
  static const RequestPoints kSetReportingCriteria;

  int64_t setReportingCriteria(uint32_t criteria);
  int64_t getLastEstimationReport(LleEstimationReportCb cb);
  int64_t regEstimationReports(LleEstimationReportCb cb);

 protected:
  void handleBlob(const std::vector<uint8_t>& blob) override;

 private:
  template <class Report>
  void handleReport(const Report& report, const CallbackSlot<LleEstimationReportCb>& slot,
                    int32_t result, const ReportPoints& points);

  CallbackSlot<LleEstimationReportCb> mEstimationReportInd;
  CallbackSlot<LleEstimationReportCb> mLastEstimationReportCb;
};
