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

// In the order in which the services are named, enabled and shown.
enum class Service { kLce, kLle, kLli };
constexpr size_t kServices = 3;
constexpr std::array<Service, kServices> kAllServices = {Service::kLce, Service::kLle,
                                                         Service::kLli};
constexpr size_t indexOf(Service service) { return static_cast<size_t>(service); }

// One value per service.
template <class T>
using PerService = std::array<T, kServices>;

// A status from the library.
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
// The state of the daemon that this program derives from the statuses: whether any service works.
struct DaemonEvent {
  bool up;
};

using EventData = std::variant<StatusEvent, CriteriaEvent, CapacityEvent, LatencyEvent,
                               HandoffEvent, DaemonEvent>;

// One event with its time on both clocks: wall time for display, steady time for measurement. It is
// copied from the thread of a callback to the main thread and owns nothing.
struct Event {
  Service service = Service::kLce;  // of a DaemonEvent: the service that caused it
  uint32_t generation = 0;          // number of the enabling, see LibraryClient
  Clock::time_point at;
  WallClock::time_point wall;
  EventData data;
};

// Whether the event is a report or an indication.
inline bool isReport(const Event& event) {
  return std::holds_alternative<CapacityEvent>(event.data) ||
         std::holds_alternative<LatencyEvent>(event.data) ||
         std::holds_alternative<HandoffEvent>(event.data);
}

}  // namespace orbctl
