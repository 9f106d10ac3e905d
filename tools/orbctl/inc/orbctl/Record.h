// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "orbctl/Event.h"

namespace orbctl {

// What an event is in JSON and CSV: keys or columns, in this order. Numbers are the daemon's own,
// in its units; a field that the event does not have is left out, or empty.
constexpr std::array<const char*, 22> kFieldNames = {
    "time",       "seconds",     "service",         "event",      "status",      "rate",
    "confidence", "direction",   "queue",           "ul_latency", "ul_variance", "ul_status",
    "dl_latency", "dl_variance", "dl_status",       "interval",   "network",     "phase",
    "source",     "target",      "to_interruption", "duration"};

struct Field {
  const char* name;
  std::variant<std::string, uint64_t, double> value;
};

// The fields of an event; `start` is when the run began.
std::vector<Field> fieldsOf(const Event& event, Clock::time_point start);

// "2025-05-24T13:02:07.045Z", and "13:02:07.045" of local time.
std::string utcText(WallClock::time_point time);
std::string localTimeText(WallClock::time_point time);

}  // namespace orbctl
