// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <deque>
#include <limits>
#include <optional>

#include "orbctl/Event.h"

namespace orbctl {

// Past values of a number, oldest first, with a gap while the daemon was away.
class Series {
 public:
  static constexpr size_t kMost = 512;
  static constexpr double kGap = std::numeric_limits<double>::quiet_NaN();

  void add(double value);
  const std::deque<double>& values() const { return mValues; }

 private:
  std::deque<double> mValues;
};

// The state that the screen shows, derived from the events. Used by the main thread.
class Model {
 public:
  static constexpr std::chrono::seconds kRateWindow{5};
  static constexpr size_t kMostNews = 64;

  explicit Model(Clock::time_point start) : mStart(start) {}

  void take(const Event& event);
  // Reports of a service per second, averaged over the last few seconds.
  double rateOf(Service service, Clock::time_point now) const;

  const std::optional<CapacityEvent>& capacity() const { return mCapacity; }
  const std::optional<CapacityEvent>& capacity(LceLinkDirection direction) const;
  const std::optional<LatencyEvent>& latency() const { return mLatency; }
  const std::optional<HandoffEvent>& handoff() const { return mHandoff; }
  Clock::time_point handoffAt() const { return mHandoffAt; }
  const Series& uplinkCapacity() const { return mUplinkCapacity; }
  const Series& downlinkCapacity() const { return mDownlinkCapacity; }
  const Series& uplinkLatency() const { return mUplinkLatency; }
  const Series& downlinkLatency() const { return mDownlinkLatency; }
  // Recent events other than reports, newest last. For a phase of a handoff only the latest
  // indication is kept.
  const std::deque<Event>& news() const { return mNews; }

 private:
  void takeCapacity(const CapacityEvent& event);
  void takeLatency(const LatencyEvent& event);
  void addGaps();
  void addNews(const Event& event);

  const Clock::time_point mStart;
  PerService<std::deque<Clock::time_point>> mTimes;
  std::optional<CapacityEvent> mCapacity, mUplink, mDownlink;
  std::optional<LatencyEvent> mLatency;
  std::optional<HandoffEvent> mHandoff;
  Clock::time_point mHandoffAt;
  Series mUplinkCapacity, mDownlinkCapacity, mUplinkLatency, mDownlinkLatency;
  std::deque<Event> mNews;
};

}  // namespace orbctl
