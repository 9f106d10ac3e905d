// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Record.h"

#include <cstdio>
#include <ctime>

#include "orbctl/Names.h"

namespace orbctl {
namespace {

// Adds the fields of each kind of event after time and seconds.
struct Adder {
  std::vector<Field>& fields;
  Service of;

  void head(const char* service, const char* event) const {
    fields.push_back({"service", service});
    fields.push_back({"event", event});
  }
  void operator()(const StatusEvent& event) const {
    head(nameOf(of), "status");
    fields.push_back({"status", nameOf(event.status)});
  }
  void operator()(const CriteriaEvent& event) const {
    head(nameOf(of), "criteria");
    fields.push_back({"status", nameOf(event.status)});
  }
  void operator()(const CapacityEvent& event) const {
    head(nameOf(of), "report");
    fields.push_back({"status", nameOf(event.status)});
    if (event.status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) return;
    fields.push_back({"rate", uint64_t{event.report.rate}});
    fields.push_back({"confidence", static_cast<uint64_t>(event.report.confidenceLevel)});
    fields.push_back({"direction", nameOf(event.report.linkDirection)});
    fields.push_back({"queue", uint64_t{event.report.queueSizeUL}});
  }
  void operator()(const LatencyEvent& event) const {
    head(nameOf(of), "report");
    fields.push_back({"status", event.valid ? "SUCCESS" : "INVALID"});
    if (!event.valid) return;
    fields.push_back({"ul_latency", event.report.ulLatencyEstimation});
    fields.push_back({"ul_variance", event.report.ulVarianceEstimation});
    fields.push_back({"ul_status", uint64_t{event.report.ulReportStatus}});
    fields.push_back({"dl_latency", event.report.dlLatencyEstimation});
    fields.push_back({"dl_variance", event.report.dlVarianceEstimation});
    fields.push_back({"dl_status", uint64_t{event.report.dlReportStatus}});
    fields.push_back({"interval", uint64_t{event.report.reportInterval}});
    fields.push_back({"network", nameOf(event.report.rat)});
  }
  void operator()(const HandoffEvent& event) const {
    head(nameOf(of), "handoff");
    fields.push_back({"phase", phaseOf(event)});
    fields.push_back({"source", nameOf(event.info.sourceRat)});
    fields.push_back({"target", nameOf(event.info.targetRat)});
    fields.push_back({"to_interruption", event.info.estimatedTimeToInterruption});
    fields.push_back({"duration", event.info.estimatedInterruptionDuration});
  }
  void operator()(const DaemonEvent& event) const { head("daemon", event.up ? "up" : "down"); }
};

int millisecondsOf(WallClock::time_point time) {
  const auto sinceEpoch =
      std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
  return static_cast<int>(((sinceEpoch % 1000) + 1000) % 1000);
}

std::string timeText(WallClock::time_point time, const char* format, bool local) {
  const time_t seconds = WallClock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
  tm broken = {};
  if (local) {
    localtime_r(&seconds, &broken);
  } else {
    gmtime_r(&seconds, &broken);
  }
  char text[64];
  const size_t size = std::strftime(text, sizeof text, format, &broken);
  std::snprintf(text + size, sizeof text - size, ".%03d", millisecondsOf(time));
  return text;
}

}  // namespace

std::vector<Field> fieldsOf(const Event& event, Clock::time_point start) {
  std::vector<Field> fields;
  fields.push_back({"time", utcText(event.wall)});
  const auto since = std::chrono::floor<std::chrono::milliseconds>(event.at - start).count();
  fields.push_back({"seconds", static_cast<double>(since) / 1000.0});
  std::visit(Adder{fields, event.service}, event.data);
  return fields;
}

std::string utcText(WallClock::time_point time) {
  return timeText(time, "%Y-%m-%dT%H:%M:%S", false) + "Z";
}

std::string localTimeText(WallClock::time_point time) { return timeText(time, "%H:%M:%S", true); }

}  // namespace orbctl
