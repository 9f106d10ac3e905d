// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/sdl.h>
#include <orbsim/gtest.h>

#include <string>
#include <vector>

#include "Recorder.h"

// A small application that records the arguments of its callbacks as text. Callbacks are static
// because they have no user data.
namespace kitclient {

using Heard = Recorder<std::string>;

inline void add(const std::string& line) { Heard::get().add(line); }
inline void clear() { Heard::get().clear(); }
inline bool waitFor(const Heard::Which& which) {
  return Heard::get().waitFor(which, 1, orbsim::testkit::patience());
}
inline bool waitFor(const char* line) {
  return waitFor([line](const std::string& heard) { return heard == line; });
}
inline std::vector<std::string> lines() { return Heard::get().all(); }

inline void onLce(status_v2_e status) { add("lce status " + std::to_string(status)); }
inline void onLle(status_v2_e status) { add("lle status " + std::to_string(status)); }
inline void onLli(status_v2_e status) { add("lli status " + std::to_string(status)); }
inline void onCriteria(LceReportingCriteriaStatus status) {
  add("criteria " + std::to_string(status));
}
inline void onCapacity(LceEstimationReportStatus status, LceEstimationReport report) {
  add("capacity " + std::to_string(status) + " " + std::to_string(report.rate) + " " +
      std::to_string(report.confidenceLevel) + " " + std::to_string(report.linkDirection) + " " +
      std::to_string(report.queueSizeUL));
}
inline void onLatency(int32_t, const LleEstimationReport* report) {
  add("latency " + std::to_string(report->ulReportStatus) + " " +
      std::to_string(report->ulLatencyEstimation) + " " +
      std::to_string(report->ulVarianceEstimation) + " " +
      std::to_string(report->dlLatencyEstimation) + " " +
      std::to_string(report->dlVarianceEstimation) + " " + std::to_string(report->rat));
}
inline void onHandoff(LliHandoffIndType type, LliPreHandoffState preState,
                      const LliInterruptInfo* info) {
  const bool before = type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF;
  add((before ? "before " + std::to_string(preState)
              : "stage " + std::to_string(info->handoffState)) +
      " " + std::to_string(info->sourceRat) + " " + std::to_string(info->targetRat) + " " +
      std::to_string(info->estimatedTimeToInterruption) + " " +
      std::to_string(info->estimatedInterruptionDuration));
}

// Criteria that can be recognised in the daemon's record.
inline LceReportingCriteria criteria() {
  LceReportingCriteria some = {};
  some.criteriaValue1 = 17;
  some.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE;
  return some;
}

}  // namespace kitclient
