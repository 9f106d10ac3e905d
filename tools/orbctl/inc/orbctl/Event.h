// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/sdl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <variant>

namespace orbctl {

using Clock = std::chrono::steady_clock;
using WallClock = std::chrono::system_clock;

// In the order in which they are named, asked and shown.
enum class Service { kLce, kLle, kLli };
constexpr size_t kServices = 3;
constexpr std::array<Service, kServices> kAllServices = {Service::kLce, Service::kLle,
                                                         Service::kLli};
constexpr size_t indexOf(Service service) { return static_cast<size_t>(service); }

// A value for each service.
template <typename T>
using PerService = std::array<T, kServices>;

// What the library told of a service.
struct StatusEvent {
  status_e status;
};
// The answer to LCE's criteria.
struct CriteriaEvent {
  LceReportingCriteriaStatus status;
};
struct CapacityEvent {
  LceEstimationReportStatus status;
  LceEstimationReport report;
};
struct LatencyEvent {
  bool valid;
  LleEstimationReport report;
};
struct HandoffEvent {
  LliHandoffIndType type;
  LliPreHandoffState preState;
  LliInterruptInfo info;
};
// What this program concludes from the statuses: whether any service works.
struct DaemonEvent {
  bool up;
};

using EventData = std::variant<StatusEvent, CriteriaEvent, CapacityEvent, LatencyEvent,
                               HandoffEvent, DaemonEvent>;

// One thing that happened, with its time on both clocks: what is shown and what is measured. It is
// copied from a callback's thread to the main thread and owns nothing.
struct Event {
  Service service = Service::kLce;  // of a DaemonEvent: the one that showed it
  uint32_t generation = 0;          // of the service's enabling, see LibraryClient
  Clock::time_point at;
  WallClock::time_point wall;
  EventData data;
};

// Whether it carries what a service is asked for: a report or an indication.
inline bool isReport(const Event& event) {
  return std::holds_alternative<CapacityEvent>(event.data) ||
         std::holds_alternative<LatencyEvent>(event.data) ||
         std::holds_alternative<HandoffEvent>(event.data);
}

}  // namespace orbctl
