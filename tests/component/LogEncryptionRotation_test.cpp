// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Rotation of encrypted logs.
#include <limits>

#include "LogEncryptionFixture.h"

namespace logtest {
namespace {

constexpr int kRecords = 3000;

class LogEncryptionRotationTest : public LogEncryptionFixture {
 protected:
  static fs::path file(const std::string& index) {
    return fs::path(kMain) / ("orb_log_p0_" + index);
  }
  // Numbers each message; the version line of init() is number 0.
  void sayUpTo(int number) {
    for (; next <= number; ++next) say(std::to_string(next));
  }
  static Texts numbers(int first, int last) {
    Texts texts;
    for (int i = first; i <= last; ++i) texts.push_back(std::to_string(i));
    return texts;
  }
  static Texts messagesIn(const fs::path& path) { return messagesOf(linesIn(path)); }

  int next = 1;
};

TEST_F(LogEncryptionRotationTest, LimitsAreClamped) {
  const struct {
    uint64_t records;
    uint8_t files;
    uint64_t wantedRecords;
    int wantedFiles;
  } kCases[] = {
      {100, 20, 3000, 10},
      {0, 0, 3000, 3},
      {std::numeric_limits<uint64_t>::max(), 255, 30000, 10},
      {uint64_t{1} << 32, 128, 30000, 10},
      {2999, 2, 3000, 3},
      {3000, 3, 3000, 3},
      {3001, 4, 3001, 4},
      {15000, 7, 15000, 7},
      {30000, 10, 30000, 10},
      {30001, 11, 30000, 10},
  };
  for (const auto& c : kCases) {
    configure(c.records, c.files);
    log.init("orb");
    EXPECT_EQ(c.wantedRecords, LogTestPeer::encryptedLog().getRecordsPerFile());
    EXPECT_EQ(c.wantedFiles, LogTestPeer::encryptedLog().getMaxFiles());
    LogTestPeer::reset();
  }
}

TEST_F(LogEncryptionRotationTest, FileTakesOneRecordMoreThanTheLimit) {
  configure(kRecords, 3);
  log.init("orb");
  sayUpTo(kRecords);
  EXPECT_EQ(Texts{"orb_log_p0_00"}, namesIn(kMain));
  EXPECT_EQ(size_t{kRecords + 1}, recordsOf(contentOf(file("00"))).size());
  sayUpTo(kRecords + 1);
  EXPECT_EQ((Texts{"orb_log_p0_00", "orb_log_p0_01"}), namesIn(kMain));
}

TEST_F(LogEncryptionRotationTest, FirstRecordAfterARotationGoesToThePreviousFile) {
  configure(kRecords, 3);
  log.init("orb");
  sayUpTo(kRecords + 1);
  EXPECT_EQ(numbers(1, kRecords + 1), messagesIn(file("00")));
  EXPECT_EQ(kHeaderSize, contentOf(file("01")).size());
  // It still counts for the new file.
  sayUpTo(2 * kRecords + 1);
  EXPECT_EQ(2u, namesIn(kMain).size());
  sayUpTo(2 * kRecords + 2);
  EXPECT_EQ((Texts{"orb_log_p0_00", "orb_log_p0_01", "orb_log_p0_02"}), namesIn(kMain));
  EXPECT_EQ(numbers(kRecords + 2, 2 * kRecords + 2), messagesIn(file("01")));
}

TEST_F(LogEncryptionRotationTest, FilesOfARunShareTheSessionKeyAndItsWrappedForm) {
  configure(kRecords, 3);
  log.init("orb");
  sayUpTo(2 * kRecords + 5);
  const Bytes first = contentOf(file("00"));
  for (const char* index : {"01", "02"}) {
    const Bytes other = contentOf(file(index));
    ASSERT_GE(other.size(), kHeaderSize);
    EXPECT_TRUE(std::equal(first.begin(), first.begin() + kHeaderSize, other.begin()));
  }
}

TEST_F(LogEncryptionRotationTest, FilesAreUsedInTurnAndTheIndexOfTheirNumberStaysInTheName) {
  const Texts names{"orb_log_p0_00", "orb_log_p0_01", "orb_log_p0_02", "orb_log_p0_03"};
  configure(kRecords, 3);
  log.init("orb");
  const auto rotate = [this] {
    const int before = LogTestPeer::encryptedLog().getFileIndex();
    while (LogTestPeer::encryptedLog().getFileIndex() == before) sayUpTo(next);
  };
  rotate();
  rotate();
  EXPECT_EQ((Texts{names[0], names[1], names[2]}), namesIn(kMain));
  rotate();  // _03 is begun and _00 is removed
  EXPECT_EQ(0, LogTestPeer::encryptedLog().getFileIndex());
  EXPECT_EQ((Texts{names[1], names[2], names[3]}), namesIn(kMain));
  EXPECT_EQ(kHeaderSize, contentOf(file("03")).size());
  const int third = next;
  sayUpTo(next + 4);
  EXPECT_EQ(numbers(third, third + 4), messagesIn(file("03")));
  for (const std::string begun : {"01", "02", "03", "01"}) {
    rotate();
    EXPECT_EQ((Texts{names[1], names[2], names[3]}), namesIn(kMain));
    EXPECT_EQ(kHeaderSize, contentOf(file(begun)).size()) << begun;
  }
  EXPECT_FALSE(recording::hasEndingWith("C-Logging Init failed"));
}

TEST_F(LogEncryptionRotationTest, TenFilesEndInAnIndexOfTwoDigits) {
  configure(kRecords, 10);
  log.init("orb");
  for (int i = 0; i < 10; ++i) sayUpTo(next + kRecords);
  const Texts names = namesIn(kMain);
  EXPECT_EQ(10u, names.size());
  EXPECT_EQ("orb_log_p0_01", names.front());
  EXPECT_TRUE(fs::exists(file("010")));
  EXPECT_FALSE(fs::exists(file("00")));
}

TEST_F(LogEncryptionRotationTest, FileThatIsInTheWayIsBegunAnew) {
  configure(kRecords, 3);
  log.init("orb");
  write(file("01"), "of an earlier run");
  sayUpTo(kRecords + 2);
  EXPECT_EQ(numbers(kRecords + 2, kRecords + 2), messagesIn(file("01")));
}

// Names keep the tag from the start of encryption; the directory follows the current tag.
TEST_F(LogEncryptionRotationTest, LaterTagTakesTheNextFileToItsDirectory) {
  configure(kRecords, 3);
  log.init("orb");
  log.init("app");
  sayUpTo(kRecords + 2);
  EXPECT_EQ(Texts{"orb_log_p0_00"}, namesIn(kMain));
  EXPECT_EQ(Texts{"orb_log_p0_01"}, namesIn(kOther));
  EXPECT_EQ(numbers(kRecords + 2, kRecords + 2), messagesIn(fs::path(kOther) / "orb_log_p0_01"));
}

TEST_F(LogEncryptionRotationTest, DmapLinesCountToo) {
  configure(kRecords, 3);
  log.init("orb");
  for (int i = 0; i < kRecords; ++i) log.dMapLog(3, "data");
  EXPECT_EQ(Texts{"orb_log_p0_00"}, namesIn(kMain));
  log.dMapLog(3, "data");
  EXPECT_EQ((Texts{"orb_log_p0_00", "orb_log_p0_01"}), namesIn(kMain));
}

}  // namespace
}  // namespace logtest
