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

// A moment of local time as lines carry it, as one number that orders like it. It knows no zone and
// no summer time: an hour that the clocks repeat is repeated in the lines too.
using Stamp = int64_t;
constexpr Stamp kNoStamp = -1;  // before every moment

// "2025-05-24 13:02:07.045", without memory of its own to allocate: there is one per line of a log.
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

// The parts of a record's text, which they point into:
//   2025-05-24 13:02:07.045  1234  1240 E ORB : |ORB|Log::init:225 cannot open liborbalog.so
// The application's locale decides how the time of day is written. Besides the 24-hour time the one
// of 12 hours is understood, "01:02:07 PM.045", with AM and PM in either case and with points or
// not.
struct LogLine {
  TimeText time;  // always in the form above
  Stamp stamp = 0;
  int64_t pid = 0;
  uint64_t tid = 0;
  char level = 'X';
  std::string_view tag;
  std::string_view message;
};

// None when the text is no such line.
std::optional<LogLine> parseLine(std::string_view text);

// What a message begins with when it has a tag: "|ORB|Log::init:225 cannot open ...". The function
// ends where the first number between a colon and a blank begins.
struct MessageParts {
  std::string_view tag, unit, function, text;
  uint64_t line = 0;
};

// None when the message has another form; it is all text then.
std::optional<MessageParts> parseMessage(std::string_view message);

// The moment of local time in these fields.
Stamp stampOf(const tm& local, int millisecond);
// And back; the fields that a calendar adds are not set.
tm fieldsOf(Stamp stamp, int& millisecond);

// The letters in the order of the levels; -1 for a letter that is none. X comes before V.
int levelRank(char letter);

// Reads a moment that a user gave: "2025-05-24 13:02:07.045" or a shorter beginning of it down to
// the minute, the date alone, or a time of `today` alone; the time of day in either form. What is
// left out is the least there is, or with `latest` the greatest, so that "until 13:02" includes
// that minute.
std::optional<Stamp> parseMoment(std::string_view text, const tm& today, bool latest);

}  // namespace orblog
