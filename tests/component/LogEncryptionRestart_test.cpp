// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The files of earlier starts that a start keeps, and the file with which it begins.
#include "ExistingLogFiles.h"
#include "LogEncryptionFixture.h"

namespace logtest {
namespace {

class LogEncryptionRestartTest : public LogEncryptionFixture {
 protected:
  // A file that was last written this number of seconds ago.
  static void leave(const std::string& name, time_t age, const fs::path& directory = kMain) {
    write(directory / name, "former");
    setAge(directory / name, age);
  }
  static void setAge(const fs::path& path, time_t age) {
    timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = time(nullptr) - age;
    ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW));
  }
  void start(uint8_t files = 10, const char* tag = "orb") {
    configure(3000, files);
    log.init(tag);
    ASSERT_TRUE(LogTestPeer::encryptionEnabled());
  }
  // A file begun by this start: a header and the version line.
  static bool isBegun(const std::string& name, const fs::path& directory = kMain) {
    return linesIn(directory / name).size() == 1;
  }
  static bool isLeft(const std::string& name, const fs::path& directory = kMain) {
    return contentOf(directory / name) == Bytes{'f', 'o', 'r', 'm', 'e', 'r'};
  }
};

TEST_F(LogEncryptionRestartTest, EmptyDirectoryBeginsWithIndex0) {
  start();
  EXPECT_EQ(Texts{"orb_log_p0_00"}, namesIn(kMain));
}

TEST_F(LogEncryptionRestartTest, IndexAfterTheYoungestFollows) {
  leave("orb_log_p0_00", 300);
  leave("orb_log_p0_05", 100);
  leave("orb_log_p0_01", 200);
  start();
  EXPECT_TRUE(isBegun("orb_log_p0_06"));
  for (const char* name : {"orb_log_p0_00", "orb_log_p0_05", "orb_log_p0_01"})
    EXPECT_TRUE(isLeft(name)) << name;
}

TEST_F(LogEncryptionRestartTest, AfterTheLastIndexComesTheFirst) {
  for (const char* youngest : {"orb_log_p0_02", "orb_log_p0_03", "orb_log_p0_09"}) {
    clearData();
    leave("orb_log_p0_01", 200);
    leave(youngest, 100);
    start(3);
    EXPECT_TRUE(isBegun("orb_log_p0_00")) << youngest;
    LogTestPeer::reset();
  }
}

TEST_F(LogEncryptionRestartTest, IndexOfTwoDigitsCountsByItsLast) {
  leave("orb_log_p0_010", 100);
  start();
  EXPECT_TRUE(isBegun("orb_log_p0_01"));
}

TEST_F(LogEncryptionRestartTest, FileToBeginWithIsNeverContinued) {
  leave("orb_log_p0_00", 200);
  leave("orb_log_p0_02", 100);
  start(3);
  EXPECT_TRUE(isBegun("orb_log_p0_00"));
  EXPECT_TRUE(isLeft("orb_log_p0_02"));
}

TEST_F(LogEncryptionRestartTest, UpToThreeFilesGoWhenOlderThanAnHour) {
  leave("orb_log_p0_00", 3700);
  leave("orb_log_p0_01", 3500);
  leave("orb_log_p0_02", 100);
  start();
  EXPECT_EQ((Texts{"orb_log_p0_01", "orb_log_p0_02", "orb_log_p0_03"}), namesIn(kMain));
}

TEST_F(LogEncryptionRestartTest, AllOfThemMayGo) {
  leave("orb_log_p0_04", 5000);
  leave("orb_log_p0_05", 4000);
  start();
  EXPECT_EQ(Texts{"orb_log_p0_06"}, namesIn(kMain));
}

TEST_F(LogEncryptionRestartTest, OfMoreThanThreeFilesTheYoungestStayWhateverTheirAge) {
  leave("orb_log_p0_00", 90000);
  leave("orb_log_p0_01", 9000);
  leave("orb_log_p0_02", 8000);
  leave("orb_log_p0_03", 7000);
  start();
  EXPECT_EQ((Texts{"orb_log_p0_01", "orb_log_p0_02", "orb_log_p0_03", "orb_log_p0_04"}),
            namesIn(kMain));
}

TEST_F(LogEncryptionRestartTest, OfMoreThanThreeFilesTheOthersGoHoweverYoung) {
  for (int i = 0; i < 7; ++i) leave("orb_log_p0_0" + std::to_string(i), 100 + i);
  start();
  EXPECT_TRUE(isBegun("orb_log_p0_01"));  // it was a kept file, but is the next to be used
  EXPECT_EQ((Texts{"orb_log_p0_00", "orb_log_p0_01", "orb_log_p0_02"}), namesIn(kMain));
}

TEST_F(LogEncryptionRestartTest, FilesOfOneAgeCountOnce) {
  leave("orb_log_p0_00", 100);
  leave("orb_log_p0_01", 200);
  leave("orb_log_p0_02", 300);
  leave("orb_log_p0_03", 300);
  start();
  EXPECT_EQ(4u, namesIn(kMain).size());  // three ages, all recent: no file is removed
}

TEST_F(LogEncryptionRestartTest, OnlyOneOfTwoOldFilesOfOneAgeGoes) {
  leave("orb_log_p0_04", 5000);
  leave("orb_log_p0_06", 5000);
  start();
  const bool first = isLeft("orb_log_p0_04");
  const bool second = isLeft("orb_log_p0_06");
  EXPECT_NE(first, second);
  EXPECT_TRUE(isBegun(first ? "orb_log_p0_07" : "orb_log_p0_05"));
}

TEST_F(LogEncryptionRestartTest, FilesOfTheFutureAreOfAgeZero) {
  leave("orb_log_p0_05", -5000);
  leave("orb_log_p0_15", -100000);
  leave("orb_log_p0_01", 100);
  leave("orb_log_p0_02", 200);
  start();
  EXPECT_TRUE(isBegun("orb_log_p0_06"));
  EXPECT_EQ(5u, namesIn(kMain).size());  // three ages in all
}

TEST_F(LogEncryptionRestartTest, NamesThatContainThePrefixCount) {
  leave("backup.orb_log_p0_07", 100);
  leave("my-orb_log_p0-old", 5000);
  start();
  EXPECT_EQ((Texts{"backup.orb_log_p0_07", "orb_log_p0_08"}), namesIn(kMain));
}

TEST_F(LogEncryptionRestartTest, OtherNamesDoNot) {
  leave("orb_log_app_07", 5000);
  leave("orb_log_p1_06", 5000);
  leave("Orb_log_p0_05", 5000);
  leave("notes", 5000);
  start();
  EXPECT_EQ(5u, namesIn(kMain).size());
  EXPECT_TRUE(isBegun("orb_log_p0_00"));
}

TEST_F(LogEncryptionRestartTest, LastCharacterThatIsNoDigitCountsAsIfItWere) {
  const struct {
    const char* youngest;
    const char* begun;
  } kCases[] = {
      {"orb_log_p0_00~", "orb_log_p0_00"},  // beyond the last index
      {"orb_log_p0_00:", "orb_log_p0_00"},
      {"orb_log_p0_00.", "orb_log_p0_0-1"},
      {"orb_log_p0_00-", "orb_log_p0_0-2"},
  };
  for (const auto& c : kCases) {
    clearData();
    leave(c.youngest, 100);
    start();
    EXPECT_TRUE(isBegun(c.begun)) << c.youngest;
    LogTestPeer::reset();
  }
}

TEST_F(LogEncryptionRestartTest, ConfigurationAndTraceFilesAreNoLogs) {
  leave("orb_log_config", 5000, kOther);
  leave("orb_log_trace", 5000, kOther);
  leave("orb_log_other_07", 5000, kOther);
  start(10, "");  // all three names have this prefix
  EXPECT_TRUE(isLeft("orb_log_config", kOther));
  EXPECT_TRUE(isLeft("orb_log_trace", kOther));
  EXPECT_FALSE(fs::exists(fs::path(kOther) / "orb_log_other_07"));
  EXPECT_TRUE(isBegun("orb_log__08", kOther));
}

TEST_F(LogEncryptionRestartTest, EachTagHasItsOwnFiles) {
  leave("orb_log_app_02", 100, kOther);
  leave("orb_log_tool_05", 5000, kOther);
  start(10, "app");
  EXPECT_TRUE(isBegun("orb_log_app_03", kOther));
  EXPECT_TRUE(isLeft("orb_log_tool_05", kOther));
}

TEST_F(LogEncryptionRestartTest, TagThatBeginsAnotherTakesItsFilesForItsOwn) {
  leave("orb_log_application_05", 5000, kOther);
  start(10, "app");
  EXPECT_EQ(Texts{"orb_log_app_06"}, namesIn(kOther));
}

TEST_F(LogEncryptionRestartTest, LinkToNowhereDoesNotCount) {
  fs::create_symlink("/nowhere", fs::path(kMain) / "orb_log_p0_05");
  start();
  EXPECT_TRUE(isBegun("orb_log_p0_00"));
  EXPECT_TRUE(fs::is_symlink(fs::path(kMain) / "orb_log_p0_05"));
}

TEST_F(LogEncryptionRestartTest, DirectoryOfSuchANameCountsButStays) {
  const fs::path directory = fs::path(kMain) / "orb_log_p0_05";
  fs::create_directory(directory);
  setAge(directory, 5000);
  start();
  EXPECT_TRUE(fs::is_directory(directory));
  EXPECT_TRUE(isBegun("orb_log_p0_06"));
}

TEST_F(LogEncryptionRestartTest, SecondInitOfAProcessGoesOnAfterTheFirst) {
  start(3);
  setAge(fs::path(kMain) / "orb_log_p0_00", 100);
  log.release();
  start(3);
  EXPECT_TRUE(isBegun("orb_log_p0_01"));
  EXPECT_EQ((Texts{"orb_log_p0_00", "orb_log_p0_01"}), namesIn(kMain));
}

// Tests the limits exactly, with a fixed clock, because a running clock would be uncertain.
TEST_F(LogEncryptionRestartTest, FileOfAnHourStaysAndOneASecondOlderGoes) {
  const fs::path directory = kMain;
  leave("orb_log_p0_00", 0);
  leave("orb_log_p0_01", 0);
  leave("orb_log_p0_02", 0);
  const ExistingLogFiles files(directory, "p0", 3);
  EXPECT_EQ(2, files.reviewExistingFiles(
                   {{3600, directory / "orb_log_p0_01"}, {3601, directory / "orb_log_p0_00"}},
                   time(nullptr)));
  EXPECT_EQ((Texts{"orb_log_p0_01", "orb_log_p0_02"}), namesIn(kMain));
}

TEST_F(LogEncryptionRestartTest, FourAgesAreMany) {
  const fs::path directory = kMain;
  for (const char* name : {"a0", "b1", "c2", "d3"}) leave(name, 0);
  const ExistingLogFiles files(directory, "p0", 3);
  EXPECT_EQ(
      1, files.reviewExistingFiles(
             {{0, directory / "a0"}, {1, directory / "b1"}, {2, directory / "c2"}}, time(nullptr)));
  EXPECT_EQ(4u, namesIn(kMain).size());
  EXPECT_EQ(0, files.reviewExistingFiles({{4000, directory / "d3"},
                                          {4001, directory / "c2"},
                                          {4002, directory / "b1"},
                                          {4003, directory / "a0"}},
                                         time(nullptr)));
  EXPECT_EQ((Texts{"b1", "c2", "d3"}), namesIn(kMain));
}

}  // namespace
}  // namespace logtest
