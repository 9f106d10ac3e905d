// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "orblog/LogLine.h"

namespace orblog {

// Reads a time in one of these forms:
//   2025-05-24 13:02:07.045, 2025-05-24, 13:02   local time; missing parts as in parseMoment
//   yesterday, today, tomorrow                   the day, or a time on that day
//   now, -5min, -1h30min, +2d, 3 weeks ago       relative to `now`
//   2025-05-24T13:02:07Z, 2025-05-24 13:02+02:00 with a time zone
//   @1748091727.5                                seconds since 1970
// Log lines have local time without a time zone, so all forms are converted to the time zone of
// this process. `now` is in milliseconds since 1970.
std::optional<Stamp> parseTime(std::string_view text, int64_t now, bool latest);

}  // namespace orblog
