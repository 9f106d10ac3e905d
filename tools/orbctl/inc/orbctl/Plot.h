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

// What gnuplot is given: its commands, and the data as blocks of numbers. The picture goes to
// gnuplot's standard output, so neither names of files nor texts of the recording are in it.
std::string plotScript(const PlotData& data, PlotForm form, PlotSize size);

// Runs gnuplot, found on the path, and gives the picture. False with a reason.
bool drawPlot(const std::string& script, std::string& picture, std::string& reason);

}  // namespace orbctl
