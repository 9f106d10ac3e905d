// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace orblog {

// A moment of local time as lines carry it, as one number that orders like it. It knows no zone and
// no summer time: an hour that the clocks repeat is repeated in the lines too.
using Stamp = int64_t;
constexpr Stamp kNoStamp = -1;  // before every moment

// The parts of a record's text, which they point into:
//   2025-05-24 13:02:07.045  1234  1240 E ORB : |ORB|Log::init:225 cannot open liborbalog.so
// The application's locale decides how the time of day is written. Besides the 24-hour time the one
// of 12 hours is understood, "01:02:07 PM.045", with AM and PM in either case and with points or
// not.
struct LogLine {
  std::string time;  // always in the form above
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
// the minute, the date alone, or a time of `today` alone; the time of day in either form. What is
// left out is the least there is, or with `latest` the greatest, so that "until 13:02" includes
// that minute.
std::optional<Stamp> parseMoment(std::string_view text, const tm& today, bool latest);

}  // namespace orblog
