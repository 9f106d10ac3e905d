// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The prefixes of lines, which the compiler makes, and the lines of the macros that use them.
#include "LogHead.h"

#include <gtest/gtest.h>

#include <climits>

#include "Log.h"
#include "RecordingPlatform.h"
#include "SdkLog.h"

namespace {

constexpr LogHead kHead("ORB", "le/some/src/Unit.cpp", "function", 120);

TEST(LogHeadTest, HasTagUnitFunctionAndLine) {
  EXPECT_EQ("|ORB|Unit::function:120 ", kHead.text());
}

TEST(LogHeadTest, UnitIsTheLastComponentWithoutItsExtension) {
  EXPECT_EQ("Unit", LogHead::baseName("Unit.cpp"));
  EXPECT_EQ("Unit", LogHead::baseName("a.b/Unit"));
  EXPECT_EQ("Unit.pb", LogHead::baseName("a/Unit.pb.cc"));
  EXPECT_EQ("", LogHead::baseName("a/"));
  EXPECT_EQ("", LogHead::baseName(""));
}

TEST(LogHeadTest, LineIsWrittenInDecimal) {
  EXPECT_EQ("||::f:0 ", LogHead("", "", "f", 0).text());
  EXPECT_EQ("||::f:9 ", LogHead("", "", "f", 9).text());
  EXPECT_EQ("||::f:10 ", LogHead("", "", "f", 10).text());
  EXPECT_EQ("||::f:" + std::to_string(INT_MAX) + " ", LogHead("", "", "f", INT_MAX).text());
}

class LogHeadLinesTest : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }
  // Returns the only line except the log's own, and clears it.
  static recording::Line takeLine() {
    const auto lines = recording::lines();
    recording::clear();
    return lines.size() == 1 ? lines[0] : recording::Line();
  }
};

TEST_F(LogHeadLinesTest, RecordOfAMacroReadsLikeThatOfTheFunction) {
  Log* const log = Log::getInstance();
  for (const char* text : {"", "text", "text that is not short at all"}) {
    log->addLogRecord(ANDROID_LOG_ERROR, "ORB", __FILE__, __func__, 7, "%d %s", 5, text);
    const auto expected = takeLine();
    ORB_LOG_AT(ANDROID_LOG_ERROR, 7, "%d %s", 5, text);
    const auto line = takeLine();
    EXPECT_EQ(expected.text, line.text);
    EXPECT_EQ(expected.priority, line.priority);
    EXPECT_EQ(expected.hasTag, line.hasTag);
  }
}

TEST_F(LogHeadLinesTest, SdkLineOfAMacroReadsLikeThatOfTheFunction) {
  // Cut within a pair of percent signs: the prefixes leave an odd and an even number of characters.
  for (const size_t size : {4u, 600u, 601u}) {
    const std::string text(size, '%');
    SdkLog::print(ANDROID_LOG_ERROR, "Tag", __FILE__, __func__, 7, "%s", text.c_str());
    const auto expected = takeLine();
    SDK_LOG_AT("Tag", 7, "%s", text.c_str());
    const auto line = takeLine();
    EXPECT_EQ(expected.text, line.text);
    EXPECT_EQ(expected.priority, line.priority);
    EXPECT_EQ(expected.hasTag, line.hasTag);
  }
}

TEST_F(LogHeadLinesTest, LineOfAMacroIsCutAtTheSamePlace) {
  const std::string text(600, 'a');
  Log::getInstance()->addLogRecord(ANDROID_LOG_DEBUG, "ORB", "x/Unit.cpp", "f", 1, "%s",
                                   text.c_str());
  const auto expected = takeLine();
  ORB_LOG_HEAD(ANDROID_LOG_DEBUG, "x/Unit.cpp", "f", 1, "%s", text.c_str());
  EXPECT_EQ(expected.text, takeLine().text);
  EXPECT_EQ(511u, expected.text.size());
}

}  // namespace
