// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The text of a line is what snprintf makes of it, whichever way it is put together.
#include "LogLine.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

constexpr LogHead kHead("T", "File.cpp", "f", 1);
constexpr size_t kLongest = LogLine::kBufferSize - 1;

__attribute__((format(printf, 1, 2))) std::string lineOf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const LogLine line(kHead, format, args);
  va_end(args);
  EXPECT_EQ(line.view(), line.text());
  return line.text();
}

__attribute__((format(printf, 1, 2))) std::string expected(const char* format, ...) {
  char text[2048];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  return (std::string(kHead.text()) + text).substr(0, kLongest);
}

std::string lineWith(const LogHead& head, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const LogLine line(head, format, args);
  va_end(args);
  return line.text();
}

#define EXPECT_LINE(...) EXPECT_EQ(expected(__VA_ARGS__), lineOf(__VA_ARGS__))

TEST(LogLineTest, UsualConversionsReadAsTheCLibraryWritesThem) {
  for (const int value : {0, 7, -7, 10, INT_MAX, INT_MIN}) {
    EXPECT_LINE("%d", value);
    EXPECT_LINE("%u and %x", static_cast<unsigned>(value), static_cast<unsigned>(value));
  }
  for (const long value : {0L, 7L, -7L, LONG_MAX, LONG_MIN}) {
    EXPECT_LINE("%ld.", value);
    EXPECT_LINE("%lu|%lx", static_cast<unsigned long>(value), static_cast<unsigned long>(value));
  }
  EXPECT_LINE("[%s][%s]", "", "text");
  EXPECT_LINE("100%%, %d%%%s%%", 5, "%d");
}

TEST(LogLineTest, TextEndsBehindTheLongestHead) {
  static constexpr LogHead kLongestHead("0123456789012345678901234567890123456789",
                                        "0123456789012345678901234567890123456789.cpp", "123456789",
                                        1);
  static_assert(kLongestHead.text().size() == LogHead::kMaxSize);
  for (const char* const format : {"", "x", "%5d"}) {
    const std::string text = lineWith(kLongestHead, format, 7);
    EXPECT_EQ(std::string(kLongestHead.text()), text.substr(0, LogHead::kMaxSize));
    EXPECT_EQ(*format == '%' ? "    7" : format, text.substr(LogHead::kMaxSize));
  }
}

TEST(LogLineTest, ManyConversionsTakeTheirOwnValues) {
  EXPECT_LINE("%d %s %lu %x %ld %u %s %d %lx %d", 1, "two", 3UL, 4u, -5L, 6u, "seven", 8, 9UL, 10);
}

TEST(LogLineTest, OtherConversionsReadAsTheCLibraryWritesThem) {
  EXPECT_LINE("%d %5d|%-5d|%05d", 1, 2, 3, 4);
  EXPECT_LINE("%s %c %p %.2s %zu", "a", 'b', static_cast<const void*>(&kHead), "long", size_t{5});
  EXPECT_LINE("%d %lld %hhd %o %X %i", 1, 2LL, 3, 8u, 255u, 6);
}

TEST(LogLineTest, MissingTextReadsAsTheCLibraryWritesIt) {
  const char* volatile none = nullptr;
  EXPECT_LINE("%d %s %d", 1, none, 2);
}

TEST(LogLineTest, TextWithoutConversionsIsItself) {
  EXPECT_LINE("text");
  EXPECT_EQ(kHead.text(), lineOf("%s", ""));
}

TEST(LogLineTest, LineIsCutWithinAnyConversion) {
  for (size_t before = kLongest - 30; before <= kLongest; ++before) {
    const std::string text(before - kHead.text().size(), 'x');
    EXPECT_LINE("%s%d%s", text.c_str(), 1234567, "tail");
    EXPECT_LINE("%s%8d%s", text.c_str(), 1234567, "tail");
    EXPECT_LINE("%s%%%lx", text.c_str(), ULONG_MAX);
  }
}

TEST(LogLineTest, CutPairOfPercentsGoesWhicheverWayTheLineIsMade) {
  const std::string text(kLongest - kHead.text().size() - 1, 'x');
  for (const char* format : {"%s%s", "%s%3s"}) {
    const auto line = [](const char* withFormat, ...) {
      va_list args;
      va_start(args, withFormat);
      LogLine made(kHead, withFormat, args);
      va_end(args);
      made.dropSplitPercent();
      return std::string(made.view());
    };
    EXPECT_EQ(std::string(kHead.text()) + text, line(format, text.c_str(), "%%d"));
  }
}

}  // namespace
