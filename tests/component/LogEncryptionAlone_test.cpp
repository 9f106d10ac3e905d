// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The encryption class alone, without a configuration file and without a log.
#include "EncryptedLog.h"
#include "LogEncryptionFixture.h"

namespace logtest {
namespace {

class LogEncryptionAloneTest : public LogEncryptionFixture {
 protected:
  LogEncryptionAloneTest() {
    LogTag::set("orb");
    settings.aesKey.assign(32, 7);
    settings.wrappedKey.assign(kHeaderSize, 9);
    settings.maxFiles = 5;
    settings.recordsPerFile = 4000;
  }

  static Texts lines(const fs::path& path) {
    const Bytes content = contentOf(path);
    EXPECT_EQ(Bytes(kHeaderSize, 9), Bytes(content.begin(), content.begin() + kHeaderSize));
    return linesOf(recordsOf(content), Bytes(32, 7));
  }

  EncryptedLog::Settings settings;
  EncryptedLog encrypted;
};

TEST_F(LogEncryptionAloneTest, RecordsBetweenStartAndStopAreInTheFile) {
  EXPECT_FALSE(encrypted.isEnabled());
  ASSERT_TRUE(encrypted.start(settings));
  EXPECT_TRUE(encrypted.isEnabled());
  EXPECT_EQ(4000u, encrypted.getRecordsPerFile());
  EXPECT_EQ(5, encrypted.getMaxFiles());
  encrypted.encryptLogMsg("one");
  encrypted.encryptLogMsg("two");
  encrypted.stop();
  EXPECT_FALSE(encrypted.isEnabled());
  encrypted.encryptLogMsg("never");
  EXPECT_EQ(std::string(kMain) + "/orb_log_p0_00", encrypted.currentLogFile());
  EXPECT_EQ((Texts{"one", "two"}), lines(encrypted.currentLogFile()));
}

TEST_F(LogEncryptionAloneTest, NextRunGoesOnWithTheNextFile) {
  ASSERT_TRUE(encrypted.start(settings));
  encrypted.encryptLogMsg("first run");
  encrypted.stop();
  ASSERT_TRUE(encrypted.start(settings));
  encrypted.encryptLogMsg("second run");
  EXPECT_EQ(1, encrypted.getFileIndex());
  EXPECT_EQ(Texts{"first run"}, lines(fs::path(kMain) / "orb_log_p0_00"));
  EXPECT_EQ(Texts{"second run"}, lines(fs::path(kMain) / "orb_log_p0_01"));
}

TEST_F(LogEncryptionAloneTest, FilesStandWhereTheTagSays) {
  LogTag::set("app");
  ASSERT_TRUE(encrypted.start(settings));
  EXPECT_EQ(std::string(kOther) + "/orb_log_app_00", encrypted.currentLogFile());
  EXPECT_TRUE(namesIn(kMain).empty());
}

}  // namespace
}  // namespace logtest
