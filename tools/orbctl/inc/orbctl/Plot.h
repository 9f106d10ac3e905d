// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "orbctl/PlotData.h"

namespace orbctl {

enum class PlotForm { kSvg, kPng };

struct PlotSize {
  int width = 1200;
  int height = 700;
};

// The input for gnuplot: commands, and data as blocks of numbers. gnuplot writes the picture to
// standard output, so the input contains no file names and no text of the recording.
std::string plotScript(const PlotData& data, PlotForm form, PlotSize size);

// Runs gnuplot from PATH and returns the picture. False with a reason on failure.
bool drawPlot(const std::string& script, std::string& picture, std::string& reason);

}  // namespace orbctl
