// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/LogLine.h"

#include <cstring>

namespace orblog {
namespace {

constexpr size_t kDateSize = 10;    // 2025-05-24
constexpr size_t kHourPlace = 11;   // 2025-05-24 13
constexpr size_t kSecondSize = 19;  // 2025-05-24 13:02:07
constexpr size_t kMillisSize = 4;   // .045

// Reads a text from its front. Functions consume nothing if the expected text is not there.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : mText(text) {}
  bool take(char wanted) {
    if (mText.empty() || mText.front() != wanted) return false;
    mText.remove_prefix(1);
    return true;
  }
  // A number with exactly this count of digits, within limits.
  bool takeField(size_t digits, int least, int greatest, int& value) {
    if (mText.size() < digits) return false;
    int number = 0;
    for (size_t i = 0; i < digits; ++i) {
      if (mText[i] < '0' || mText[i] > '9') return false;
      number = number * 10 + (mText[i] - '0');
    }
    if (number < least || number > greatest) return false;
    value = number;
    mText.remove_prefix(digits);
    return true;
  }
  bool takeNumber(uint64_t& value) {
    constexpr size_t kMostDigits = 19;
    size_t digits = 0;
    uint64_t number = 0;
    while (digits < mText.size() && mText[digits] >= '0' && mText[digits] <= '9') {
      if (digits == kMostDigits) return false;
      number = number * 10 + static_cast<uint64_t>(mText[digits++] - '0');
    }
    if (digits == 0) return false;
    value = number;
    mText.remove_prefix(digits);
    return true;
  }
  // Any of these letters, in either case.
  bool takeLetter(std::string_view letters, char& value) {
    if (mText.empty()) return false;
    const char small = static_cast<char>(mText.front() | 0x20);
    if (letters.find(small) == std::string_view::npos) return false;
    value = small;
    mText.remove_prefix(1);
    return true;
  }
  bool takeBlanks() {
    if (!take(' ')) return false;
    while (take(' ')) {
    }
    return true;
  }
  bool atEnd() const { return mText.empty(); }
  std::string_view rest() const { return mText; }

 private:
  std::string_view mText;
};

struct Fields {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;

  Stamp stamp() const {
    Stamp value = Stamp{year} * 12 + month - 1;
    value = value * 31 + day - 1;
    value = value * 24 + hour;
    value = value * 60 + minute;
    value = value * 61 + second;  // 61 because of leap seconds
    return value * 1000 + millisecond;
  }
};

int daysOf(int year, int month) {
  if (month == 2) return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

bool takeDate(Scanner& in, Fields& fields) {
  return in.takeField(4, 0, 9999, fields.year) && in.take('-') &&
         in.takeField(2, 1, 12, fields.month) && in.take('-') &&
         in.takeField(2, 1, daysOf(fields.year, fields.month), fields.day);
}

// " AM", " pm" or " p.m." makes it a 12-hour time. Otherwise nothing is consumed.
bool takeHalfDay(Scanner& in, int& hour) {
  Scanner ahead = in;
  char half = 0, m = 0;
  if (!ahead.take(' ') || !ahead.takeLetter("ap", half)) return true;
  const bool points = ahead.take('.');
  if (!ahead.takeLetter("m", m) || (points && !ahead.take('.'))) return true;
  in = ahead;
  if (hour < 1 || hour > 12) return false;
  hour = hour % 12 + (half == 'p' ? 12 : 0);
  return true;
}

// HH:MM, then :SS and .mmm if present; AM or PM is before the milliseconds.
bool takeTime(Scanner& in, Fields& fields) {
  if (!in.takeField(2, 0, 23, fields.hour) || !in.take(':') ||
      !in.takeField(2, 0, 59, fields.minute))
    return false;
  const bool seconds = in.take(':');
  if (seconds && !in.takeField(2, 0, 60, fields.second)) return false;
  if (!takeHalfDay(in, fields.hour)) return false;
  return !seconds || !in.take('.') || in.takeField(3, 0, 999, fields.millisecond);
}

// The time of a line, with a 24-hour hour. The time has this number of characters.
TimeText wholeDayTime(std::string_view text, size_t size, int hour) {
  TimeText time(text.substr(0, kSecondSize));
  time[kHourPlace] = static_cast<char>('0' + hour / 10);
  time[kHourPlace + 1] = static_cast<char>('0' + hour % 10);
  for (size_t i = 0; i < kMillisSize; ++i) time[kSecondSize + i] = text[size - kMillisSize + i];
  return time;
}

// The place of the first blank after a colon and digits; npos if there is none.
size_t endOfHead(std::string_view text) {
  for (size_t blank = text.find(' '); blank != std::string_view::npos;
       blank = text.find(' ', blank + 1)) {
    size_t digits = blank;
    while (digits > 0 && text[digits - 1] >= '0' && text[digits - 1] <= '9') --digits;
    if (digits < blank && digits > 0 && text[digits - 1] == ':') return blank;
  }
  return std::string_view::npos;
}

}  // namespace

Stamp stampOf(const tm& local, int millisecond) {
  return Fields{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                local.tm_min,         local.tm_sec,     millisecond}
      .stamp();
}

tm fieldsOf(Stamp stamp, int& millisecond) {
  const auto take = [&stamp](int radix) {
    const int value = static_cast<int>(stamp % radix);
    stamp /= radix;
    return value;
  };
  tm fields = {};
  millisecond = take(1000);
  fields.tm_sec = take(61);
  fields.tm_min = take(60);
  fields.tm_hour = take(24);
  fields.tm_mday = take(31) + 1;
  fields.tm_mon = take(12);
  fields.tm_year = static_cast<int>(stamp) - 1900;
  return fields;
}

int levelRank(char letter) {
  constexpr char kLetters[] = "XVDIWEF";
  const char* const found = letter == '\0' ? nullptr : std::strchr(kLetters, letter);
  return found == nullptr ? -1 : static_cast<int>(found - kLetters);
}

std::optional<LogLine> parseLine(std::string_view text) {
  LogLine line;
  Fields fields;
  fields.millisecond = -1;
  Scanner in(text);
  // A complete time with milliseconds is required.
  if (!takeDate(in, fields) || !in.take(' ') || !takeTime(in, fields) || fields.millisecond < 0)
    return std::nullopt;
  line.time = wholeDayTime(text, text.size() - in.rest().size(), fields.hour);
  line.stamp = fields.stamp();

  uint64_t pid = 0;
  if (!in.takeBlanks() || !in.takeNumber(pid) || !in.takeBlanks() || !in.takeNumber(line.tid) ||
      !in.takeBlanks() || in.atEnd())
    return std::nullopt;
  line.pid = static_cast<int64_t>(pid);
  line.level = in.rest().front();
  if (levelRank(line.level) < 0 || !in.take(line.level) || !in.takeBlanks()) return std::nullopt;
  const size_t colon = in.rest().find(" : ");
  if (colon == std::string_view::npos) return std::nullopt;
  line.tag = in.rest().substr(0, colon);
  line.message = in.rest().substr(colon + 3);
  return line;
}

std::optional<MessageParts> parseMessage(std::string_view message) {
  MessageParts parts;
  if (message.empty() || message.front() != '|') return std::nullopt;
  const size_t bar = message.find('|', 1);
  if (bar == std::string_view::npos) return std::nullopt;
  parts.tag = message.substr(1, bar - 1);
  message.remove_prefix(bar + 1);
  const size_t colons = message.find("::");
  const size_t blank = endOfHead(message);
  if (colons == std::string_view::npos || blank == std::string_view::npos) return std::nullopt;
  const size_t colon = message.rfind(':', blank);
  if (colon < colons + 2) return std::nullopt;
  parts.unit = message.substr(0, colons);
  parts.function = message.substr(colons + 2, colon - colons - 2);
  Scanner number(message.substr(colon + 1, blank - colon - 1));
  if (!number.takeNumber(parts.line)) return std::nullopt;
  parts.text = message.substr(blank + 1);
  return parts;
}

std::optional<Stamp> parseMoment(std::string_view text, const tm& today, bool latest) {
  Fields fields;
  if (latest) {
    fields.hour = 23;
    fields.minute = 59;
    fields.second = 60;
    fields.millisecond = 999;
  }
  Scanner in(text);
  if (text.size() >= kDateSize && text[4] == '-') {
    if (!takeDate(in, fields)) return std::nullopt;
    if (in.atEnd()) return fields.stamp();
    if (!in.take(' ') && !in.take('T')) return std::nullopt;
  } else {
    fields.year = today.tm_year + 1900;
    fields.month = today.tm_mon + 1;
    fields.day = today.tm_mday;
  }
  if (!takeTime(in, fields) || !in.atEnd()) return std::nullopt;
  return fields.stamp();
}

}  // namespace orblog
