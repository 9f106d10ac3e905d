// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>

namespace orblog {

// A moment of local time as lines carry it, as one number that orders like it. It knows no zone and
// no summer time: an hour that the clocks repeat is repeated in the lines too.
using Stamp = int64_t;

// The parts of a record's text, which they point into:
//   2025-05-24 13:02:07.045  1234  1240 E ORB : |ORB|Log::init:225 cannot open liborbalog.so
struct LogLine {
  std::string_view time;
  Stamp stamp = 0;
  int64_t pid = 0;
  uint64_t tid = 0;
  char level = 'X';
  std::string_view tag;
  std::string_view message;
};

// None when the text is no such line.
std::optional<LogLine> parseLine(std::string_view text);

// The letters in the order of the levels; -1 for a letter that is none. X comes before V.
int levelRank(char letter);

// Reads a moment that a user gave: "2025-05-24 13:02:07.045" or a shorter beginning of it down to
// the minute, the date alone, or a time of `today` alone. What is left out is the least there is,
// or with `latest` the greatest, so that "until 13:02" includes that minute.
std::optional<Stamp> parseMoment(std::string_view text, const tm& today, bool latest);

}  // namespace orblog
