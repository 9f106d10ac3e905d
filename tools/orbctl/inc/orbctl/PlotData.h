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
// Points joined by a line. A new piece begins after the daemon was away.
using Curve = std::vector<std::vector<Point>>;

struct TimeSpan {
  double from = 0;
  double to = 0;
};

// The contents of a recording as numbers, in Mbit/s and ms over seconds. No text of the file is
// kept.
struct PlotData {
  Curve downlinkCapacity, uplinkCapacity;
  Curve downlinkLatency, uplinkLatency;
  std::vector<TimeSpan> preparations;   // a handoff is announced
  std::vector<TimeSpan> interruptions;  // a handoff is running
  std::vector<TimeSpan> absences;       // the daemon is away
  double end = 0;
  size_t unreadable = 0;  // records that cannot be read, also a cut-off last one

  bool empty() const;
};

// Reads a file that --csv wrote. False with a reason if it is another file.
bool readPlotData(const std::string& text, PlotData& data, std::string& reason);

}  // namespace orbctl
