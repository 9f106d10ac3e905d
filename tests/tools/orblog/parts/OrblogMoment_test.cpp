// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Times as people write them for --since and --until.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "orblog/Moment.h"

using namespace orblog;

namespace {

constexpr int64_t kNow = 1748091727045;  // 2025-05-24 13:02:07.045 UTC, a Saturday

class OrblogTime : public testing::Test {
 protected:
  OrblogTime() { setZone("UTC0"); }
  static void setZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  // The time as in a log line.
  static std::string time(const std::string& text, bool latest = false, int64_t now = kNow) {
    const std::optional<Stamp> stamp = parseTime(text, now, latest);
    if (!stamp) return "none";
    int millisecond = 0;
    const tm fields = fieldsOf(*stamp, millisecond);
    char line[40];
    std::snprintf(line, sizeof line, "%04d-%02d-%02d %02d:%02d:%02d.%03d", fields.tm_year + 1900,
                  fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec,
                  millisecond);
    return line;
  }
};

TEST_F(OrblogTime, NowIsNow) { EXPECT_EQ(time("now"), "2025-05-24 13:02:07.045"); }

TEST_F(OrblogTime, SpansAreReckonedFromNow) {
  EXPECT_EQ(time("-5min"), "2025-05-24 12:57:07.045");
  EXPECT_EQ(time("-2h"), "2025-05-24 11:02:07.045");
  EXPECT_EQ(time("-1h30min"), "2025-05-24 11:32:07.045");
  EXPECT_EQ(time("-1h 30 min"), "2025-05-24 11:32:07.045");
  EXPECT_EQ(time("+2d"), "2025-05-26 13:02:07.045");
  EXPECT_EQ(time("3 weeks ago"), "2025-05-03 13:02:07.045");
  EXPECT_EQ(time("90s ago", true), "2025-05-24 13:00:37.045");
}

TEST_F(OrblogTime, EveryUnitHasItsNames) {
  for (const char* span :
       {"-60s", "-60sec", "-60seconds", "-60 second", "-1m", "-1min", "-1minute", "-60000ms"})
    EXPECT_EQ(time(span), "2025-05-24 13:01:07.045") << span;
  for (const char* span : {"-7d", "-7days", "-1w", "-1week", "-168h", "-168hours", "-168hr"})
    EXPECT_EQ(time(span), "2025-05-17 13:02:07.045") << span;
}

TEST_F(OrblogTime, DaysHaveNames) {
  EXPECT_EQ(time("today"), "2025-05-24 00:00:00.000");
  EXPECT_EQ(time("yesterday"), "2025-05-23 00:00:00.000");
  EXPECT_EQ(time("yesterday", true), "2025-05-23 23:59:60.999");
  EXPECT_EQ(time("tomorrow"), "2025-05-25 00:00:00.000");
  EXPECT_EQ(time("yesterday 10:30"), "2025-05-23 10:30:00.000");
  EXPECT_EQ(time("yesterday", false, 1740830400000), "2025-02-28 00:00:00.000");
}

TEST_F(OrblogTime, LocalTimesAreAsInTheLines) {
  EXPECT_EQ(time("10:30"), "2025-05-24 10:30:00.000");
  EXPECT_EQ(time("2026-11-22 10:30", true), "2026-11-22 10:30:60.999");
  EXPECT_EQ(time("2026-11-22"), "2026-11-22 00:00:00.000");
}

TEST_F(OrblogTime, TimesOfAZoneBecomeThoseOfThisMachine) {
  setZone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(time("2025-05-24T10:30Z"), "2025-05-24 12:30:00.000");
  EXPECT_EQ(time("2025-01-24T10:30:05.250Z"), "2025-01-24 11:30:05.250");
  EXPECT_EQ(time("2025-05-24 10:30 UTC", true), "2025-05-24 12:30:59.999");
  for (const char* zone : {"-05:30", "-0530"})
    EXPECT_EQ(time(std::string("2025-05-24T22:30") + zone), "2025-05-25 06:00:00.000") << zone;
  EXPECT_EQ(time("2025-05-24T10:30+02"), "2025-05-24 10:30:00.000");
  EXPECT_EQ(time("now"), "2025-05-24 15:02:07.045");
  // In a night with a change to daylight saving time.
  EXPECT_EQ(time("yesterday", false, 1743361200000), "2025-03-29 00:00:00.000");
}

TEST_F(OrblogTime, SecondsSince1970MayBeGiven) {
  EXPECT_EQ(time("@1748091727"), "2025-05-24 13:02:07.000");
  EXPECT_EQ(time("@1748091727", true), "2025-05-24 13:02:07.999");
  EXPECT_EQ(time("@1748091727.5"), "2025-05-24 13:02:07.500");
  EXPECT_EQ(time("@0"), "1970-01-01 00:00:00.000");
}

TEST_F(OrblogTime, WhatIsNoTimeIsRefused) {
  for (const char* text : {"",
                           "-",
                           "+",
                           "@",
                           "@x",
                           "@1.",
                           "@1.x",
                           "ago",
                           "5min",
                           "-5",
                           "-5 parsecs",
                           "-min",
                           "-5min ago",
                           "-99999999999999999999s",
                           "-9223372036854775807w",
                           "noon",
                           "yesterday noon",
                           "yesterdays",
                           "2025-05-24Zulu",
                           "2025-05-24T10:30+25:00",
                           "2025-05-24T10:30+2",
                           "10:30Z",
                           "now now"})
    EXPECT_EQ(time(text), "none") << text;
}

TEST_F(OrblogTime, StampsCanBeTakenApart) {
  for (const char* text : {"2024-02-29 23:59:59.999", "2025-12-31 00:00:00.001"})
    EXPECT_EQ(time(text), text);
}

}  // namespace
