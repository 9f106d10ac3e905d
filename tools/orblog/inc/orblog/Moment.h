// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "orblog/LogLine.h"

namespace orblog {

// A moment as people write it:
//   2025-05-24 13:02:07.045, 2025-05-24, 13:02   local time, what is left out as parseMoment has it
//   yesterday, today, tomorrow                   the day, or with a time behind it that time
//   now, -5min, -1h30min, +2d, 3 weeks ago       reckoned from `now`
//   2025-05-24T13:02:07Z, 2025-05-24 13:02+02:00 of a zone
//   @1748091727.5                                seconds since 1970
// Lines bear local time without a zone, so all are turned into that of this process's zone. `now`
// is in milliseconds since 1970.
std::optional<Stamp> parseTime(std::string_view text, int64_t now, bool latest);

}  // namespace orblog
