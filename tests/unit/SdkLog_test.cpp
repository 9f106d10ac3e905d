// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkLog.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "RecordingPlatform.h"

namespace {

const std::string kHead = "|Lce|Lce::f:1 ";

class SdkLogTest : public testing::Test {
 protected:
  SdkLogTest() { recording::clear(); }

  static std::string printed(const std::string& text) {
    recording::clear();
    SdkLog::print(3, "Lce", "sdk/Sdl/src/Lce.cpp", "f", 1, "%s", text.c_str());
    return recording::texts().at(0);
  }
};

TEST_F(SdkLogTest, LineShowsTagFileFunctionNumberAndText) {
  SdkLog::print(3, "OrbSdk", "/x/sdk/src/SdkClientBase.cpp", "sdkThread", 43, "sdkThread loop");
  ASSERT_EQ(1u, recording::lines().size());
  EXPECT_EQ("|OrbSdk|SdkClientBase::sdkThread:43 sdkThread loop", recording::texts()[0]);
}

TEST_F(SdkLogTest, EveryLevelComesOutAsDebugUnderTheDefaultTag) {
  for (int level = 0; level < 8; ++level) SdkLog::print(level, "Lce", "F.cpp", "f", 1, "text");
  ASSERT_EQ(8u, recording::lines().size());
  for (const recording::Line& line : recording::lines()) {
    EXPECT_EQ(3, line.priority);
    EXPECT_FALSE(line.hasTag);
  }
}

TEST_F(SdkLogTest, MacrosFillThePosition) {
  SDK_LOG("Lce", "text %d", 1);
  const int line = __LINE__ - 1;
  SDK_LOG_AT("Lce", 20, "Enable");
  EXPECT_EQ("|Lce|SdkLog_test::TestBody:" + std::to_string(line) + " text 1",
            recording::texts().at(0));
  EXPECT_EQ("|Lce|SdkLog_test::TestBody:20 Enable", recording::texts().at(1));
}

TEST_F(SdkLogTest, LineIsCutTo511Characters) {
  EXPECT_EQ(kHead + std::string(511 - kHead.size(), 'x'), printed(std::string(600, 'x')));
}

TEST_F(SdkLogTest, LongestUncutLineStaysWhole) {
  const std::string text(511 - kHead.size(), 'x');
  EXPECT_EQ(kHead + text, printed(text));
}

TEST_F(SdkLogTest, PercentIsFormattedASecondTime) {
  EXPECT_EQ(kHead + "50% off", printed("50%% off"));
  SdkLog::print(3, "Lce", "Lce.cpp", "f", 1, "100%%%%");
  EXPECT_EQ(kHead + "100%", recording::texts().back());
}

TEST_F(SdkLogTest, EscapedTextComesOutAsItWas) {
  for (const std::string text : {"%", "100%", "%s%n%d", "%%", "a%%%b", "", "plain"})
    EXPECT_EQ(kHead + text, printed(escapePercent(text)));
}

TEST_F(SdkLogTest, CutNeverSplitsAPairOfPercents) {
  // The last character that fits is the first or the second of a pair, with and without other pairs
  // before.
  const size_t room = 511 - kHead.size();
  for (size_t percents = 1; percents <= 4; ++percents) {
    for (size_t before = room - 2 * percents; before <= room + 1; ++before) {
      const std::string text = std::string(before, 'x') + std::string(percents, '%');
      const std::string line = printed(escapePercent(text));
      const size_t pairs = before >= room ? 0 : std::min(percents, (room - before) / 2);
      EXPECT_EQ(kHead + std::string(std::min(before, room), 'x') + std::string(pairs, '%'), line);
    }
  }
}

TEST_F(SdkLogTest, EscapeDoublesEveryPercent) {
  EXPECT_EQ("", escapePercent(""));
  EXPECT_EQ("a%%b%%%%", escapePercent("a%b%%"));
}

TEST_F(SdkLogTest, LongTextIsEscapedAsFarAsALineShowsIt) {
  for (const char last : {'x', '%'}) {
    for (size_t size = 450; size <= 600; ++size) {
      std::string text(size, 'x'), escaped(size, 'x');
      text.push_back(last);
      escaped.append(last == '%' ? 2 : 1, last);
      text.append(1000, 'y');
      escaped.append(1000, 'y');
      EXPECT_EQ(printed(escaped), printed(escapePercent(text))) << size;
    }
  }
  EXPECT_GE(1024u, escapePercent(std::string(1000000, '%')).size());
}

TEST_F(SdkLogTest, ErrnoSurvives) {
  errno = ENOTTY;
  SDK_LOG("Lce", "text %d", 1);
  EXPECT_EQ(ENOTTY, errno);
}

TEST_F(SdkLogTest, LineWithoutFileIsALogicError) {
  EXPECT_THROW(SdkLog::print(3, "Lce", nullptr, "f", 1, "text"), std::logic_error);
}

}  // namespace
