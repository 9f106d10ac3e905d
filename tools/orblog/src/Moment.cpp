// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Moment.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace orblog {
namespace {

constexpr int64_t kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute, kDay = 24 * kHour;
// No clock is so far from now, and sums of such numbers do not overflow.
constexpr int64_t kFarthest = 1000 * 366 * kDay;
constexpr size_t kDateSize = 10;

bool localTime(int64_t milliseconds, tm& local) {
  const int64_t seconds = milliseconds / kSecond - (milliseconds % kSecond < 0 ? 1 : 0);
  const time_t time = static_cast<time_t>(seconds);
  return time == seconds && localtime_r(&time, &local) != nullptr;
}

std::optional<Stamp> stampAt(int64_t milliseconds) {
  tm local = {};
  if (!localTime(milliseconds, local) || local.tm_year < -1900 || local.tm_year > 9999 - 1900)
    return std::nullopt;
  const int rest = static_cast<int>(milliseconds % kSecond);
  return stampOf(local, rest < 0 ? rest + static_cast<int>(kSecond) : rest);
}

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

bool takeNumber(std::string_view& text, int64_t& value) {
  if (text.empty() || text.front() == '-') return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || value > kFarthest) return false;
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  return true;
}

// 0 if it is not a unit.
int64_t unitOf(std::string_view name) {
  static constexpr struct {
    std::string_view name;
    int64_t size;
  } kUnits[] = {{"ms", 1},           {"s", kSecond},       {"sec", kSecond},
                {"second", kSecond}, {"seconds", kSecond}, {"m", kMinute},
                {"min", kMinute},    {"minute", kMinute},  {"minutes", kMinute},
                {"h", kHour},        {"hr", kHour},        {"hour", kHour},
                {"hours", kHour},    {"d", kDay},          {"day", kDay},
                {"days", kDay},      {"w", 7 * kDay},      {"week", 7 * kDay},
                {"weeks", 7 * kDay}};
  for (const auto& unit : kUnits) {
    if (unit.name == name) return unit.size;
  }
  return 0;
}

// "5min", "1h 30min"
bool takeSpan(std::string_view& text, int64_t& span) {
  const size_t before = text.size();
  while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
    int64_t number = 0;
    if (!takeNumber(text, number)) return false;
    skipBlanks(text);
    size_t size = 0;
    while (size < text.size() && text[size] >= 'a' && text[size] <= 'z') ++size;
    const int64_t unit = unitOf(text.substr(0, size));
    if (unit == 0 || number > (kFarthest - span) / unit) return false;
    span += number * unit;
    text.remove_prefix(size);
    skipBlanks(text);
  }
  return text.size() < before;
}

// With a sign or "ago"; a bare "5min" is not accepted.
std::optional<Stamp> parseRelative(std::string_view text, int64_t now) {
  const char sign = text.front();
  const bool isSigned = sign == '-' || sign == '+';
  if (isSigned) text.remove_prefix(1);
  int64_t span = 0;
  if (!takeSpan(text, span) || text != (isSigned ? "" : "ago")) return std::nullopt;
  return stampAt(sign == '+' ? now + span : now - span);
}

std::optional<Stamp> parseSeconds(std::string_view text, bool latest) {
  int64_t seconds = 0, fraction = latest ? kSecond - 1 : 0;
  if (!takeNumber(text, seconds)) return std::nullopt;
  if (!text.empty() && text.front() == '.') {
    std::string digits(text.substr(1, 3));
    if (text.find_first_not_of("0123456789", 1) != std::string_view::npos || digits.empty())
      return std::nullopt;
    digits.resize(3, '0');
    fraction = std::stoi(digits);
    text = {};
  }
  if (!text.empty()) return std::nullopt;
  return stampAt(seconds * kSecond + fraction);
}

// "Z", "UTC", "+02", "+0200" or "+02:00": minutes to the east.
std::optional<int> parseZone(std::string_view text) {
  if (text == "Z" || text == "UTC") return 0;
  if (text.size() < 3 || (text[0] != '+' && text[0] != '-')) return std::nullopt;
  std::string digits(text.substr(1));
  if (digits.size() == 5 && digits[2] == ':') digits.erase(2, 1);
  if (digits.size() == 2) digits += "00";
  if (digits.size() != 4 || digits.find_first_not_of("0123456789") != std::string::npos)
    return std::nullopt;
  const int hours = std::stoi(digits.substr(0, 2)), minutes = std::stoi(digits.substr(2));
  if (hours > 23 || minutes > 59) return std::nullopt;
  const int all = hours * 60 + minutes;
  return text[0] == '-' ? -all : all;
}

// Date and time with a time zone.
std::optional<Stamp> parseZoned(std::string_view text, const tm& today, bool latest) {
  if (text.size() <= kDateSize) return std::nullopt;
  const size_t start = text.find_first_of("Z+-U", kDateSize);
  if (start == std::string_view::npos) return std::nullopt;
  const std::optional<int> zone = parseZone(text.substr(start));
  std::string_view moment = text.substr(0, start);
  while (!moment.empty() && moment.back() == ' ') moment.remove_suffix(1);
  if (!zone || moment.find('-') != 4) return std::nullopt;
  const std::optional<Stamp> stamp = parseMoment(moment, today, latest);
  if (!stamp) return std::nullopt;
  int millisecond = 0;
  tm fields = fieldsOf(*stamp, millisecond);
  fields.tm_sec = std::min(fields.tm_sec, 59);  // not the next minute
  return stampAt((int64_t{timegm(&fields)} - int64_t{*zone} * 60) * kSecond + millisecond);
}

// The day at this distance from today, in the form of parseMoment.
std::string dateOf(tm day, int days) {
  day.tm_mday += days;
  day.tm_hour = 12;  // at noon, because clocks are not changed then
  day.tm_isdst = -1;
  (void)mktime(&day);
  char text[16];
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d", &day));
}

std::optional<Stamp> parseDay(std::string_view text, const tm& today, bool latest) {
  static constexpr struct {
    std::string_view name;
    int days;
  } kDays[] = {{"yesterday", -1}, {"today", 0}, {"tomorrow", 1}};
  for (const auto& day : kDays) {
    if (text.substr(0, day.name.size()) == day.name)
      return parseMoment(dateOf(today, day.days).append(text.substr(day.name.size())), today,
                         latest);
  }
  return std::nullopt;
}

}  // namespace

std::optional<Stamp> parseTime(std::string_view text, int64_t now, bool latest) {
  tm today = {};
  if (text.empty() || !localTime(now, today)) return std::nullopt;
  if (text == "now") return stampAt(now);
  if (text.front() == '@') return parseSeconds(text.substr(1), latest);
  for (const auto& parse : {parseMoment, parseDay, parseZoned}) {
    const std::optional<Stamp> stamp = parse(text, today, latest);
    if (stamp) return stamp;
  }
  return parseRelative(text, now);
}

}  // namespace orblog
