// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace orblog {

// A local time of a log line as a sortable number. It has no time zone and no daylight saving time:
// if clocks repeat an hour, it is repeated here as well.
using Stamp = int64_t;
constexpr Stamp kNoStamp = -1;  // before every other stamp

// "2025-05-24 13:02:07.045", without heap memory, because there is one per log line.
class TimeText {
 public:
  static constexpr size_t kSize = 23;
  TimeText() = default;
  explicit TimeText(std::string_view text) { text.copy(mText.data(), kSize); }
  const char* c_str() const { return mText.data(); }
  std::string_view view() const { return mText.data(); }
  char& operator[](size_t place) { return mText[place]; }
  friend bool operator==(const TimeText& one, std::string_view other) {
    return one.view() == other;
  }

 private:
  std::array<char, kSize + 1> mText = {};
};

// The parts of a record's text. They point into the text:
//   2025-05-24 13:02:07.045  1234  1240 E ORB : |ORB|Log::init:225 cannot open liborbalog.so
// The application's locale decides the format of the time of day. 24-hour and 12-hour times are
// read, "01:02:07 PM.045". AM and PM can have either case, and points.
struct LogLine {
  TimeText time;  // always in the form above
  Stamp stamp = 0;
  int64_t pid = 0;
  uint64_t tid = 0;
  char level = 'X';
  std::string_view tag;
  std::string_view message;
};

// Empty if the text is not a log line.
std::optional<LogLine> parseLine(std::string_view text);

// The start of a message with a tag: "|ORB|Log::init:225 cannot open ...". The function name ends
// before the first number between a colon and a blank.
struct MessageParts {
  std::string_view tag, unit, function, text;
  uint64_t line = 0;
};

// Empty if the message has another form; then all of it is text.
std::optional<MessageParts> parseMessage(std::string_view message);

// The stamp for these fields of local time.
Stamp stampOf(const tm& local, int millisecond);
// The reverse. Fields that only a calendar knows are not set.
tm fieldsOf(Stamp stamp, int& millisecond);

// The rank of a level's letter; -1 for another letter. X comes before V.
int levelRank(char letter);

// Reads a time from the user: "2025-05-24 13:02:07.045" or a shorter form down to the minute, only
// the date, or only a time of `today`; the time of day in both formats. Missing parts get their
// minimum, or with `latest` their maximum, so that "until 13:02" includes that minute.
std::optional<Stamp> parseMoment(std::string_view text, const tm& today, bool latest);

}  // namespace orblog
