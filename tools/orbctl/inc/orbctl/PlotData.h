// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orbctl {

struct Point {
  double seconds = 0;
  double value = 0;
};
// Points that are joined by a line; another piece begins where the daemon was away.
using Curve = std::vector<std::vector<Point>>;

struct TimeSpan {
  double from = 0;
  double to = 0;
};

// What a recording holds, as numbers: in Mbit/s and ms over the seconds of the recording. Nothing
// of the file's text is kept.
struct PlotData {
  Curve downlinkCapacity, uplinkCapacity;
  Curve downlinkLatency, uplinkLatency;
  std::vector<TimeSpan> preparations;   // a handoff may come
  std::vector<TimeSpan> interruptions;  // a handoff is under way
  std::vector<TimeSpan> absences;       // of the daemon
  double end = 0;
  size_t unreadable = 0;  // records that are none, the last one of a file that was cut among them

  bool empty() const;
};

// Reads what --csv has written. False with a reason when it is something else.
bool readPlotData(const std::string& text, PlotData& data, std::string& reason);

}  // namespace orbctl
