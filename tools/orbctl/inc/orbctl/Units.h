// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>

// Numbers with units. The API does not define units. These functions are right for a daemon that
// uses kbit/s, bytes, microseconds (square microseconds for variances), and milliseconds for
// handoffs.
namespace orbctl {

std::string mbitText(double kbit);                // "48.0 Mbit/s"
std::string bytesText(uint64_t bytes);            // "6.0 kB"
std::string msText(double microseconds);          // "30.4 ms"
std::string deviationText(uint64_t variance);     // "3.2": the square root, in ms
std::string durationText(uint64_t milliseconds);  // "80 ms", "1.2 s"

}  // namespace orbctl
