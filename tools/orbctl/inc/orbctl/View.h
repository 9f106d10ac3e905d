// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <vector>

#include "orbctl/Following.h"
#include "orbctl/Model.h"
#include "orbctl/Styled.h"

namespace orbctl {

// What the services are at, as the screen shows it.
struct Situation {
  std::vector<Service> services;
  PerService<Following::State> states = {};
  PerService<std::optional<status_e>> statuses;
  std::optional<Clock::time_point> nextAttempt;
};

struct Canvas {
  size_t columns = 80;
  size_t rows = 24;
  bool unicode = true;  // whether the terminal's characters have bars and arrows
};

// The whole screen, as many rows as the canvas has at the most, each within its columns. What a
// small screen has no room for is left out, the least important first.
std::vector<Row> screenOf(const Model& model, const Situation& situation, const Canvas& canvas,
                          Clock::time_point now, WallClock::time_point wall);

// The newest values as bars from zero to the greatest of them, one column each, gaps as blanks.
std::string sparkline(const std::deque<double>& values, size_t columns, bool unicode);

}  // namespace orbctl
