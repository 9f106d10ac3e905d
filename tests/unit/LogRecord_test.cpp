// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <sys/types.h>
#include <unistd.h>

#include <cstdlib>
#include <limits>

#include "LogTestPeer.h"

namespace {

// 2025-05-24 13:02:07 UTC.
constexpr time_t kSecond = 1748091727;

class LogRecordTest : public LogFixture {
 protected:
  LogRecordTest() {
    setZone("UTC0");
    record.message = "|ORB|Log::init:225 cannot open liborbalog.so";
    record.tid = 1240;
    record.pid = 1234;
    record.time = {kSecond, 45999};
    record.level = 6;
  }
  ~LogRecordTest() override {
    unsetenv("TZ");
    tzset();
  }

  static void setZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }

  Log::LogRecord record;
};

TEST_F(LogRecordTest, EntryShowsTimeIdsLevelTagAndMessage) {
  EXPECT_EQ(
      "2025-05-24 13:02:07.045  1234  1240 E ORB : |ORB|Log::init:225 cannot open liborbalog.so",
      record.getDiagEntry());
}

TEST_F(LogRecordTest, DmapEntryShowsItsTag) {
  record.dmap = true;
  record.message = "text";
  EXPECT_EQ("2025-05-24 13:02:07.045  1234  1240 E DMAP : text", record.getDiagEntry());
}

TEST_F(LogRecordTest, LevelsShowAsLetters) {
  std::string letters;
  for (record.level = -1; record.level <= 8; ++record.level)
    letters += record.getDiagEntry().at(36);
  EXPECT_EQ("XXXVDIWEFX", letters);  // the levels around the table read as unknown
}

TEST_F(LogRecordTest, EntryIsCutTo511Characters) {
  record.message.assign(600, 'x');
  const std::string head = "2025-05-24 13:02:07.045  1234  1240 E ORB : ";
  EXPECT_EQ(head + std::string(511 - head.size(), 'x'), record.getDiagEntry());
}

TEST_F(LogRecordTest, TimeZoneChangeCountsFromTheNextSecond) {
  EXPECT_EQ("2025-05-24 13:02:07", record.getDiagEntry().substr(0, 19));
  setZone("TST-2");
  ++record.time.tv_sec;
  EXPECT_EQ("2025-05-24 15:02:08", record.getDiagEntry().substr(0, 19));
}

TEST_F(LogRecordTest, RecordsOfAnySecondsMayAlternate) {
  for (int round = 0; round < 3; ++round) {
    record.time = {kSecond, 0};
    EXPECT_EQ("2025-05-24 13:02:07.000", record.getDiagEntry().substr(0, 23));
    record.time = {kSecond - 1, 999999};
    EXPECT_EQ("2025-05-24 13:02:06.999", record.getDiagEntry().substr(0, 23));
  }
}

TEST_F(LogRecordTest, RecordsOfAnyThreadsMayAlternate) {
  for (int round = 0; round < 3; ++round) {
    record.tid = 5;
    EXPECT_EQ("2025-05-24 13:02:07.045  1234     5 E ORB", record.getDiagEntry().substr(0, 41));
    record.tid = 1234567;
    record.pid = 1;
    EXPECT_EQ("2025-05-24 13:02:07.045     1 1234567 E ORB", record.getDiagEntry().substr(0, 43));
    record.pid = 1234;
  }
}

TEST_F(LogRecordTest, RecordAfterAnImpossibleTimeIsWhole) {
  const std::string entry = record.getDiagEntry();
  record.time.tv_sec = std::numeric_limits<time_t>::max();
  EXPECT_EQ("", record.getDiagEntry());
  record.time.tv_sec = kSecond;
  EXPECT_EQ(entry, record.getDiagEntry());
}

TEST_F(LogRecordTest, ImpossibleTimeGivesNoEntryAndAnErrorLine) {
  log.init("app");
  recording::clear();
  record.time.tv_sec = std::numeric_limits<time_t>::max();
  EXPECT_EQ("", record.getDiagEntry());
  ASSERT_EQ(1u, recording::lines().size());
  const recording::Line line = recording::lines()[0];
  EXPECT_EQ(6, line.priority);
  EXPECT_EQ("app", line.tag);
  EXPECT_EQ(0u, line.text.find("|ORB|Log::getDiagEntry:"));
  EXPECT_TRUE(endsWith(line.text, " Unable to obtain valid time"));
}

TEST_F(LogRecordTest, InitLeavesTheTag) {
  Log::LogRecord tagged;
  tagged.dmap = true;
  tagged.init(4, "text");
  EXPECT_NE(std::string::npos, tagged.getDiagEntry().find(" I DMAP : text"));
}

TEST_F(LogRecordTest, InitTakesIdsAndTimeOfTheWriter) {
  const time_t before = time(nullptr);
  Log::LogRecord fresh;
  fresh.init(4, "text");
  EXPECT_EQ(4, fresh.level);
  EXPECT_EQ("text", fresh.message);
  EXPECT_EQ(getpid(), fresh.pid);
  EXPECT_EQ(gettid(), fresh.tid);
  EXPECT_FALSE(fresh.dmap);
  EXPECT_GE(fresh.time.tv_sec + 1, before);
}

}  // namespace
