// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>

// Numbers as people read them. The API leaves units to the daemon; these are right for one that
// counts in kbit/s, bytes, microseconds (their squares for variances), and milliseconds for
// handoffs.
namespace orbctl {

std::string mbitText(double kbit);                // "48.0 Mbit/s"
std::string bytesText(uint64_t bytes);            // "6.0 kB"
std::string msText(double microseconds);          // "30.4 ms"
std::string deviationText(uint64_t variance);     // "3.2": its root, in ms
std::string durationText(uint64_t milliseconds);  // "80 ms", "1.2 s"

}  // namespace orbctl
