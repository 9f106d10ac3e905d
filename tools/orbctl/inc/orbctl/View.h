// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <vector>

#include "orbctl/Following.h"
#include "orbctl/Model.h"
#include "orbctl/Styled.h"

namespace orbctl {

// The states of the services as the screen shows them.
struct Situation {
  std::vector<Service> services;
  PerService<Following::State> states = {};
  PerService<std::optional<status_e>> statuses;
  std::optional<Clock::time_point> nextAttempt;
};

struct Canvas {
  size_t columns = 80;
  size_t rows = 24;
  bool unicode = true;  // whether the terminal can show bars and arrows
};

// The whole screen, with at most the rows and columns of the canvas. A small screen shows less; the
// least important parts are left out first.
std::vector<Row> screenOf(const Model& model, const Situation& situation, const Canvas& canvas,
                          Clock::time_point now, WallClock::time_point wall);

// The newest values as bars from zero to the greatest value, one column per value; gaps are blanks.
std::string sparkline(const std::deque<double>& values, size_t columns, bool unicode);

}  // namespace orbctl
