// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "RecordingPlatform.h"

namespace servicetest {

// A line "|tag|unit::function:number message". Number 0 stands for any: not every line has one that
// log consumers rely on.
struct LogLine {
  LogLine() = default;
  LogLine(std::string inFunction, std::string text)
      : function(std::move(inFunction)), message(std::move(text)) {}
  LogLine(std::string inFunction, int at, std::string text)
      : function(std::move(inFunction)), number(at), message(std::move(text)) {}

  std::string function;
  int number = 0;
  std::string message;
};

inline bool operator==(const LogLine& a, const LogLine& b) {
  return a.function == b.function && a.message == b.message &&
         (a.number == b.number || a.number == 0 || b.number == 0);
}

inline std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << line.function << ':' << line.number << ' ' << line.message;
}

using LogLines = std::vector<LogLine>;

// False for a line of another tag or unit.
inline bool parseLine(const std::string& text, const std::string& tag, const std::string& unit,
                      LogLine& line) {
  const std::string head = "|" + tag + "|" + unit + "::";
  if (text.compare(0, head.size(), head) != 0) return false;
  const size_t colon = text.find(':', head.size());
  const size_t blank = text.find(' ', head.size());
  if (colon == std::string::npos || blank == std::string::npos || blank < colon) return false;
  line = {text.substr(head.size(), colon - head.size()), std::atoi(text.c_str() + colon + 1),
          text.substr(blank + 1)};
  return true;
}

// The recorded lines of a unit; all go out at debug priority under the default tag.
inline LogLines linesOfUnit(const std::string& tag, const std::string& unit) {
  LogLines result;
  for (const recording::Line& line : recording::lines()) {
    LogLine parsed;
    if (!parseLine(line.text, tag, unit, parsed)) continue;
    EXPECT_EQ(3, line.priority) << line.text;
    EXPECT_FALSE(line.hasTag) << line.text;
    result.push_back(std::move(parsed));
  }
  return result;
}

}  // namespace servicetest
