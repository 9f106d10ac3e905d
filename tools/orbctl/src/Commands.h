// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <string>

#include "orbctl/Plot.h"

// Functions that run the commands after their options are read. Each returns the exit status.
// `watch` and `report` are in orbctl/Watch.h.
namespace orbctl {

struct StatusSettings {
  std::string socket;
  std::chrono::milliseconds timeout{0};
  bool json = false;
};
int runStatus(const StatusSettings& settings);

struct PlotSettings {
  std::string input;  // "-" for standard input
  std::string output;
  PlotForm form = PlotForm::kSvg;
  PlotSize size;
};
int runPlot(const PlotSettings& settings);

}  // namespace orbctl
