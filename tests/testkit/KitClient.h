// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/sdl.h>
#include <orbsim/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

// A small application that records the arguments of its callbacks as text. Callbacks are static
// because they have no user data. `lock` guards the lines.
namespace kitclient {

struct Heard {
  std::mutex lock;
  std::condition_variable changed;
  std::vector<std::string> lines;
};

inline Heard& heard() {
  static Heard all;
  return all;
}

inline void add(const std::string& line) {
  const std::lock_guard<std::mutex> guard(heard().lock);
  heard().lines.push_back(line);
  heard().changed.notify_all();
}

inline void clear() {
  const std::lock_guard<std::mutex> guard(heard().lock);
  heard().lines.clear();
}

inline bool waitFor(const std::string& line) {
  std::unique_lock<std::mutex> guard(heard().lock);
  return heard().changed.wait_for(guard, orbsim::testkit::patience(), [&] {
    return std::count(heard().lines.begin(), heard().lines.end(), line) > 0;
  });
}

inline std::vector<std::string> lines() {
  const std::lock_guard<std::mutex> guard(heard().lock);
  return heard().lines;
}

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
