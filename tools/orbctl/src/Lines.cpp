// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Lines.h"

#include "orbctl/Names.h"
#include "orbctl/Record.h"
#include "orbctl/Units.h"

namespace orbctl {
namespace {

Style styleOf(status_e status) {
  if (status == STATUS_SUCCESS || status == STATUS_SERVICE_UP) return Style::kGood;
  return status == STATUS_SERVICE_DOWN ? Style::kBad : Style::kWarn;
}

// Adds the content of each kind of event.
struct Teller {
  Row& row;
  const bool brief;

  void operator()(const StatusEvent& event) const {
    row.add("status ").add(nameOf(event.status), styleOf(event.status));
  }
  void operator()(const CriteriaEvent& event) const {
    const bool set = event.status == LCE_REPORTING_CRITERIA_STATUS_SUCCESS;
    row.add("criteria ").add(nameOf(event.status), set ? Style::kGood : Style::kBad);
  }
  void operator()(const CapacityEvent& event) const {
    if (event.status != LCE_ESTIMATION_REPORT_STATUS_SUCCESS) {
      row.add("no estimate: ").add(nameOf(event.status), Style::kWarn);
      return;
    }
    row.add(nameOf(event.report.linkDirection))
        .add(" " + mbitText(event.report.rate), Style::kCapacity)
        .add(", confidence " + std::to_string(static_cast<int>(event.report.confidenceLevel)) +
             " of 7, uplink queue " + bytesText(event.report.queueSizeUL));
  }
  void operator()(const LatencyEvent& event) const {
    if (!event.valid) {
      row.add("no estimate", Style::kWarn);
      return;
    }
    const LleEstimationReport& report = event.report;
    row.add("uplink ")
        .add(msText(static_cast<double>(report.ulLatencyEstimation)), Style::kLatency)
        .add(" +-" + deviationText(report.ulVarianceEstimation) + ", downlink ")
        .add(msText(static_cast<double>(report.dlLatencyEstimation)), Style::kLatency)
        .add(" +-" + deviationText(report.dlVarianceEstimation) + ", ")
        .add(shortNameOf(report.rat));
  }
  void operator()(const HandoffEvent& event) const {
    row.add(std::string(shortNameOf(event.info.sourceRat)) + " to " +
            shortNameOf(event.info.targetRat) + ": ");
    row.add(phaseOf(event), orbctl::styleOf(event));
    if (brief) return;
    if (event.info.estimatedTimeToInterruption > 0)
      row.add(", interruption in " + durationText(event.info.estimatedTimeToInterruption));
    if (event.info.estimatedInterruptionDuration > 0)
      row.add(", for " + durationText(event.info.estimatedInterruptionDuration));
  }
  void operator()(const DaemonEvent& event) const {
    if (event.up) {
      row.add("is there", Style::kGood);
    } else {
      row.add("is away", Style::kBad).add("; trying again");
    }
  }
};

}  // namespace

Style styleOf(const HandoffEvent& event) {
  if (event.type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF)
    return event.preState == LLI_PRE_HANDOFF_STATE_EXIT ? Style::kDim : Style::kWarn;
  if (event.info.handoffState == LLI_HANDOFF_STATE_SUCCESS) return Style::kGood;
  return event.info.handoffState == LLI_HANDOFF_STATE_IMMINENT ? Style::kWarn : Style::kBad;
}

Row lineOf(const Event& event, bool brief) {
  constexpr size_t kWholeSeconds = 8;
  Row row(localTimeText(event.wall).substr(0, brief ? kWholeSeconds : std::string::npos),
          Style::kDim);
  const bool ofDaemon = std::holds_alternative<DaemonEvent>(event.data);
  row.add(ofDaemon ? " daemon " : std::string(" ") + nameOf(event.service) + "  ", Style::kTitle);
  std::visit(Teller{row, brief}, event.data);
  return row;
}

}  // namespace orbctl
