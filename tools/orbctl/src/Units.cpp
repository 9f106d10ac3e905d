// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Units.h"

#include <cmath>
#include <cstdio>

namespace orbctl {
namespace {

// Three significant digits for small numbers; one decimal for large numbers.
std::string figures(double value) {
  char text[64];
  std::snprintf(text, sizeof text, value < 9.995 ? "%.2f" : "%.1f", value);
  return text;
}

}  // namespace

std::string mbitText(double kbit) { return figures(kbit / 1000.0) + " Mbit/s"; }

std::string bytesText(uint64_t bytes) {
  if (bytes < 1000) return std::to_string(bytes) + " B";
  const double count = static_cast<double>(bytes);
  return count < 1e6 ? figures(count / 1e3) + " kB" : figures(count / 1e6) + " MB";
}

std::string msText(double microseconds) { return figures(microseconds / 1000.0) + " ms"; }

std::string deviationText(uint64_t variance) {
  return figures(std::sqrt(static_cast<double>(variance)) / 1000.0);
}

std::string durationText(uint64_t milliseconds) {
  if (milliseconds < 1000) return std::to_string(milliseconds) + " ms";
  char text[64];
  std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(milliseconds) / 1000.0);
  return text;
}

}  // namespace orbctl
