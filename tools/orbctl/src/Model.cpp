// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Model.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "orbctl/Names.h"

namespace orbctl {

void Series::add(double value) {
  // One gap is enough.
  if (std::isnan(value) && (mValues.empty() || std::isnan(mValues.back()))) return;
  mValues.push_back(value);
  if (mValues.size() > kMost) mValues.pop_front();
}

void Model::take(const Event& event) {
  if (isReport(event)) {
    auto& times = mTimes[indexOf(event.service)];
    times.push_back(event.at);
    while (times.front() + kRateWindow < event.at) times.pop_front();
  }
  if (const auto* const capacity = std::get_if<CapacityEvent>(&event.data)) {
    takeCapacity(*capacity);
  } else if (const auto* const latency = std::get_if<LatencyEvent>(&event.data)) {
    takeLatency(*latency);
  } else if (const auto* const handoff = std::get_if<HandoffEvent>(&event.data)) {
    mHandoff = *handoff;
    mHandoffAt = event.at;
  } else if (const auto* const daemon = std::get_if<DaemonEvent>(&event.data)) {
    if (!daemon->up) addGaps();
  }
  const bool isEstimate = std::holds_alternative<CapacityEvent>(event.data) ||
                          std::holds_alternative<LatencyEvent>(event.data);
  if (!isEstimate) addNews(event);
}

double Model::rateOf(Service service, Clock::time_point now) const {
  const auto& times = mTimes[indexOf(service)];
  const Clock::time_point from = std::max(mStart, now - kRateWindow);
  const auto count = std::count_if(times.begin(), times.end(), [&](auto at) { return at > from; });
  // Too early to calculate a rate per second.
  const double seconds = std::max(std::chrono::duration<double>(now - from).count(), 1.0);
  return static_cast<double>(count) / seconds;
}

const std::optional<CapacityEvent>& Model::capacity(LceLinkDirection direction) const {
  return direction == LCE_LINK_DIRECTION_DOWNLINK ? mDownlink : mUplink;
}

void Model::takeCapacity(const CapacityEvent& event) {
  mCapacity = event;
  if (event.status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) return;
  const bool downlink = event.report.linkDirection == LCE_LINK_DIRECTION_DOWNLINK;
  (downlink ? mDownlink : mUplink) = event;
  (downlink ? mDownlinkCapacity : mUplinkCapacity).add(event.report.rate);
}

void Model::takeLatency(const LatencyEvent& event) {
  mLatency = event;
  if (!event.valid) return;
  mUplinkLatency.add(static_cast<double>(event.report.ulLatencyEstimation));
  mDownlinkLatency.add(static_cast<double>(event.report.dlLatencyEstimation));
}

void Model::addGaps() {
  for (Series* const series :
       {&mUplinkCapacity, &mDownlinkCapacity, &mUplinkLatency, &mDownlinkLatency})
    series->add(Series::kGap);
}

void Model::addNews(const Event& event) {
  const auto* const handoff = std::get_if<HandoffEvent>(&event.data);
  if (handoff != nullptr && !mNews.empty()) {
    const auto* const last = std::get_if<HandoffEvent>(&mNews.back().data);
    const bool same = last != nullptr && std::string_view(phaseOf(*last)) == phaseOf(*handoff) &&
                      last->info.sourceRat == handoff->info.sourceRat &&
                      last->info.targetRat == handoff->info.targetRat;
    if (same) mNews.pop_back();
  }
  mNews.push_back(event);
  if (mNews.size() > kMostNews) mNews.pop_front();
}

}  // namespace orbctl
