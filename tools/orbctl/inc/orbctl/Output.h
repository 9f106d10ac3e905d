// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "orbctl/Event.h"

namespace orbctl {

enum class ColorChoice { kAuto, kAlways, kNever };

// Whether to colour what goes to a stream: a terminal that can, unless NO_COLOR is set, or as the
// choice says.
bool mayColor(ColorChoice choice, int fd);
// A terminal whose cursor can be moved.
bool isCapableTerminal(int fd);

// Writes events, in the form that its maker chose. Used by the main thread.
class Output {
 public:
  virtual ~Output() = default;
  virtual void show(const Event& event) = 0;
  // False: what was shown could not be written; then errno says why.
  virtual bool flush() = 0;
};

std::unique_ptr<Output> makeLines(std::FILE* stream, bool colored);
std::unique_ptr<Output> makeJson(std::FILE* stream, Clock::time_point start);
// Owns a file of that name, which it makes or replaces; "-" is standard output. Null with errno.
std::unique_ptr<Output> makeCsv(const std::string& path, Clock::time_point start);

}  // namespace orbctl
