// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Links in the folder of encrypted logs, created by another user with write permission. No link is
// followed, and no file outside the logs is created, written, truncated or removed.
#include "LogEncryptionFixture.h"

namespace logtest {
namespace {

const fs::path kFirst = fs::path(kMain) / "orb_log_p0_00";
const fs::path kSecond = fs::path(kMain) / "orb_log_p0_01";
const fs::path kForeign = "/data/vendor/foreign";
const fs::path kNowhere = "/data/vendor/nowhere";

class LogEncryptionLinksTest : public LogEncryptionFixture {
 protected:
  LogEncryptionLinksTest() {
    fs::remove(kNowhere);
    write(kForeign, "foreign");
  }
  ~LogEncryptionLinksTest() override {
    EXPECT_FALSE(fs::exists(kNowhere));
    EXPECT_EQ((Bytes{'f', 'o', 'r', 'e', 'i', 'g', 'n'}), contentOf(kForeign));
  }
  // All kinds of links to other files.
  static void lay(int kind, const fs::path& name) {
    fs::remove(name);
    if (kind == 0) fs::create_symlink(kForeign, name);
    if (kind == 1) fs::create_symlink(kNowhere, name);
    if (kind == 2) fs::create_hard_link(kForeign, name);
    if (kind == 3) {
      EXPECT_EQ(0, mkfifo(name.c_str(), 0666));
    }
  }
  static constexpr int kKinds = 4;
  void sayUntilTheNextFile() {
    const int before = LogTestPeer::encryptedLog().getFileIndex();
    while (LogTestPeer::encryptedLog().getFileIndex() == before) say("text");
  }
};

TEST_F(LogEncryptionLinksTest, StartMakesItsFileWhereALinkWas) {
  for (int kind = 0; kind < kKinds; ++kind) {
    clearData();
    configure();
    lay(kind, kFirst);
    // The first index follows the newest file, so only links to nothing and to files of other users
    // are tested.
    if (kind >= 2) write(fs::path(kMain) / "orb_log_p0_09", "younger");
    log.init("orb");
    EXPECT_FALSE(fs::is_symlink(kFirst));
    EXPECT_EQ(1u, linesIn(kFirst).size()) << kind;
    LogTestPeer::reset();
  }
}

TEST_F(LogEncryptionLinksTest, NextFileIsMadeWhereALinkWas) {
  for (int kind = 0; kind < kKinds; ++kind) {
    clearData();
    configure();
    log.init("orb");
    lay(kind, kSecond);
    sayUntilTheNextFile();
    sayToAll("in the next");
    EXPECT_EQ(Texts{"in the next"}, messagesOf(linesIn(kSecond))) << kind;
    LogTestPeer::reset();
  }
}

TEST_F(LogEncryptionLinksTest, LinkInThePlaceOfTheOpenFileGetsNothing) {
  for (int kind = 0; kind < kKinds; ++kind) {
    clearData();
    configure();
    log.init("orb");
    lay(kind, kFirst);
    for (int i = 0; i < 100; ++i) say("lost");
    sayToAll("lost");
    fs::remove(kFirst);
    sayToAll("again");
    EXPECT_EQ(Texts{"again"}, messagesOf(linesIn(kFirst))) << kind;
    LogTestPeer::reset();
  }
}

TEST_F(LogEncryptionLinksTest, LinkThatIsRemovedInTurnLeavesItsTarget) {
  configure();
  log.init("orb");
  fs::remove(kFirst);
  fs::create_symlink(kForeign, kFirst);
  for (int i = 0; i < 3; ++i) sayUntilTheNextFile();  // then the first one is removed
  EXPECT_FALSE(fs::is_symlink(kFirst));
}

TEST_F(LogEncryptionLinksTest, LinksAmongOldFilesDoNotCount) {
  configure(3000, 10);
  write(fs::path(kMain) / "orb_log_p0_03", "former");
  timespec times[2] = {};
  times[0].tv_sec = times[1].tv_sec = time(nullptr) - 100;
  ASSERT_EQ(0, utimensat(AT_FDCWD, (fs::path(kMain) / "orb_log_p0_03").c_str(), times, 0));
  // A target that is newer than any log, one that is too old, and a directory.
  fs::create_symlink(kForeign, fs::path(kMain) / "orb_log_p0_06");
  times[0].tv_sec = times[1].tv_sec = time(nullptr) - 50000;
  write("/data/vendor/old", "old");
  ASSERT_EQ(0, utimensat(AT_FDCWD, "/data/vendor/old", times, 0));
  fs::create_symlink("/data/vendor/old", fs::path(kMain) / "orb_log_p0_07");
  fs::create_symlink("/data", fs::path(kMain) / "orb_log_p0_08");
  log.init("orb");
  EXPECT_EQ(1u, linesIn(fs::path(kMain) / "orb_log_p0_04").size());
  EXPECT_EQ(
      (Texts{"orb_log_p0_03", "orb_log_p0_04", "orb_log_p0_06", "orb_log_p0_07", "orb_log_p0_08"}),
      namesIn(kMain));
}

}  // namespace
}  // namespace logtest
