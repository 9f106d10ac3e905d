// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "orbctl/Event.h"

namespace orbctl {

enum class ColorChoice { kAuto, kAlways, kNever };

// Whether to colour the output of a stream. Automatic: if it is a capable terminal and NO_COLOR is
// not set.
bool mayColor(ColorChoice choice, int fd);
// Whether the descriptor is a terminal with a movable cursor.
bool isCapableTerminal(int fd);

// Writes events in one format. Used by the main thread.
class Output {
 public:
  virtual ~Output() = default;
  virtual void show(const Event& event) = 0;
  // False if an event could not be written; errno has the reason.
  virtual bool flush() = 0;
};

std::unique_ptr<Output> makeLines(std::FILE* stream, bool colored);
std::unique_ptr<Output> makeJson(std::FILE* stream, Clock::time_point start);
// Creates or replaces the file of that name and owns it; "-" is standard output. Null with errno on
// failure.
std::unique_ptr<Output> makeCsv(const std::string& path, Clock::time_point start);

}  // namespace orbctl
