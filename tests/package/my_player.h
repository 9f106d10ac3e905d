// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The application whose test docs/testing-applications.md shows.
#pragma once

#include <orb/sdl.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

enum class Quality { kHigh, kLow };

// Lowers its quality when the rate is low. One at a time: its callbacks run on a thread of the
// library, and find what they need in static members, behind a lock.
class MyPlayer {
 public:
  MyPlayer() {
    const LceReportingCriteria criteria{};
    createLceClient([](status_v2_e) {});
    lceSetReportingCriteria(&criteria, [](LceReportingCriteriaStatus) {});
    lceRegEstimationReports(onReport);
    lcePerformReportingAction(LCE_REPORTING_ACTION_START);
  }
  MyPlayer(const MyPlayer&) = delete;
  MyPlayer& operator=(const MyPlayer&) = delete;
  ~MyPlayer() { destroySdfClient(); }

  bool waitForQuality(Quality quality) {
    std::unique_lock<std::mutex> lock(sLock);
    return sChanged.wait_for(lock, std::chrono::seconds(30), [&] { return sQuality == quality; });
  }

 private:
  static void onReport(LceEstimationReportStatus status, LceEstimationReport report) {
    if (status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) return;
    const std::lock_guard<std::mutex> lock(sLock);
    sQuality = report.rate < 5000 ? Quality::kLow : Quality::kHigh;
    sChanged.notify_all();
  }

  static inline std::mutex sLock;
  static inline std::condition_variable sChanged;
  static inline Quality sQuality = Quality::kHigh;
};
