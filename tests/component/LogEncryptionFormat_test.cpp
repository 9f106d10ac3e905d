// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Every byte of encrypted log files: the key is checked with the openssl program, the records with
// another implementation of the cipher.
#include <set>
#include <thread>

#include "LogEncryptionFixture.h"
#include "QuietThreads.h"

namespace logtest {
namespace {

const fs::path kFirst = fs::path(kMain) / "orb_log_p0_00";

class LogEncryptionFormatTest : public LogEncryptionFixture {};

TEST_F(LogEncryptionFormatTest, FileBeginsWithTheWrappedKeyInAFieldOf512Bytes) {
  for (const unsigned bits : {2048u, 3072u, 4096u}) {
    clearData();
    configure(3000, 3, testkeys::rsaKey(bits));
    log.init("orb");
    const Bytes content = contentOf(kFirst);
    ASSERT_GT(content.size(), kHeaderSize);
    EXPECT_EQ(Bytes(kHeaderSize - bits / 8),
              Bytes(content.begin() + bits / 8, content.begin() + kHeaderSize));
    EXPECT_EQ(32u, sessionKeyOf(content, testkeys::rsaKey(bits)).size());
    const Texts lines = linesIn(kFirst, testkeys::rsaKey(bits));
    ASSERT_EQ(1u, lines.size());
    EXPECT_TRUE(endsWith(lines[0], std::string(" I ORB : ") + kVersionLine));
    LogTestPeer::reset();
  }
}

TEST_F(LogEncryptionFormatTest, LinesAreThoseOfTheDiagnosticChannel) {
  recording::setDiagListening(true);
  configure();
  log.init("orb");
  for (int level = 0; level < 9; ++level) log.addLogRecord(level, "T", "File.cpp", "f", 1, "text");
  say("");
  say(std::string(600, 'x'));
  say("100% \xC3\xA4\n");
  // The first two lines, about the hook and the key, come before encryption is on.
  const Texts expected = diagLines(2);
  ASSERT_EQ(13u, expected.size());
  EXPECT_EQ(expected, linesIn(kFirst));
}

TEST_F(LogEncryptionFormatTest, DeferredLinesAreEncryptedAtOnceAndReachTheChannelTheSame) {
  recording::setDiagListening(true);
  recording::setProperty(kLoggingProperty, "1");
  configure();
  log.init("orb");
  for (int i = 0; i < 100; ++i) say("text " + std::to_string(i));
  EXPECT_TRUE(recording::packets().empty());
  const Texts encrypted = linesIn(kFirst);
  ASSERT_EQ(101u, encrypted.size());
  log.addDumpRequest(Log::USER_COMMAND);
  log.release();
  EXPECT_EQ(encrypted, diagLines(2));
}

TEST_F(LogEncryptionFormatTest, NobodyNeedsToListen) {
  configure();
  log.init("orb");
  say("text");
  EXPECT_EQ(Texts{"text"}, messagesOf(linesIn(kFirst)));
  EXPECT_TRUE(recording::packets().empty());
}

// "2025-05-24 13:02:07.045  1234  1240 I ORB : " is the prefix of a line; the message fills the
// line.
TEST_F(LogEncryptionFormatTest, LineOf200CharactersIsARecordOf230Bytes) {
  recording::setDiagListening(true);
  configure();
  log.init("orb");
  say("");
  const size_t empty = diagLines().back().size();
  const size_t before = contentOf(kFirst).size();
  say(std::string(200 - empty, 'x'));
  ASSERT_EQ(200u, diagLines().back().size());
  const Bytes content = contentOf(kFirst);
  EXPECT_EQ(before + 230, content.size());
  EXPECT_EQ(228, content[before]);
  EXPECT_EQ(0, content[before + 1]);
}

TEST_F(LogEncryptionFormatTest, LengthHasItsLowByteFirst) {
  recording::setDiagListening(true);
  configure();
  log.init("orb");
  const size_t before = contentOf(kFirst).size();
  say(std::string(600, 'x'));
  ASSERT_EQ(511u, diagLines().back().size());
  const Bytes content = contentOf(kFirst);
  EXPECT_EQ(before + kRecordHeadSize + 511, content.size());
  EXPECT_EQ(539 & 0xFF, content[before]);
  EXPECT_EQ(539 >> 8, content[before + 1]);
}

TEST_F(LogEncryptionFormatTest, EveryRecordHasItsOwnIv) {
  configure(30000, 3);
  log.init("orb");
  for (int i = 0; i < 5000; ++i) say("text");
  std::set<Bytes> ivs;
  for (const Record& record : recordsOf(contentOf(kFirst)))
    EXPECT_TRUE(ivs.insert(record.iv).second);
  EXPECT_EQ(5001u, ivs.size());
}

TEST_F(LogEncryptionFormatTest, ForkedChildWritesToThePlatformLogAlone) {
  configure(30000, 3);
  recording::setDiagListening(true);
  log.init("orb");
  say("before");
  quiet::awaitThreads();
  const pid_t child = fork();
  ASSERT_NE(-1, child);
  if (child == 0) {
    recording::clear();
    log.init("other");
    for (int i = 0; i < 300; ++i) say("child");
    const bool said = recording::count("|T|File::f:1 child") == 300 &&
                      recording::lines().size() == 300 && recording::lines()[0].tag == "orb";
    _exit(said && recording::packets().empty() ? 0 : 1);
  }
  for (int i = 0; i < 300; ++i) say("parent");
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
  std::set<Bytes> ivs;
  for (const Record& record : recordsOf(contentOf(kFirst)))
    EXPECT_TRUE(ivs.insert(record.iv).second);
  EXPECT_EQ(302u, ivs.size());
  Texts expected(301, "parent");
  expected[0] = "before";
  EXPECT_EQ(expected, messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFormatTest, PrintToAdbIsNotEncrypted) {
  configure();
  log.init("orb");
  log.printToAdb(6, "T", "File.cpp", "f", 1, "in the clear");
  say("after");
  EXPECT_EQ(Texts{"after"}, messagesOf(linesIn(kFirst)));
  EXPECT_EQ(1u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogEncryptionFormatTest, ModuleDebugLinesAreNotEncrypted) {
  configure();
  log.init("orb");
  log.logModuleDebug("in the clear");
  EXPECT_EQ(1u, linesIn(kFirst).size());
}

TEST_F(LogEncryptionFormatTest, DmapLinesAreEncryptedInsteadOfSent) {
  recording::setDiagListening(true);
  configure();
  log.init("orb");
  recording::clear();
  log.dMapLog(3, "data");
  log.dMapLog(4, std::string(600, 'x'));
  EXPECT_TRUE(recording::packets().empty());
  EXPECT_TRUE(recording::lines().empty());
  const Texts lines = linesIn(kFirst);
  ASSERT_EQ(3u, lines.size());
  EXPECT_TRUE(endsWith(lines[1], " D DMAP : data"));
  EXPECT_EQ(511u, lines[2].size());
}

TEST_F(LogEncryptionFormatTest, SuppressedDmapLinesAreNotEncrypted) {
  recording::setProperty(kLoggingProperty, "4");
  configure();
  log.init("orb");
  log.dMapLog(6, "data");
  EXPECT_EQ(1u, linesIn(kFirst).size());
}

TEST_F(LogEncryptionFormatTest, NoLineOrKeyIsInTheFileInTheClear) {
  configure();
  log.init("orb");
  say("a secret that nobody may see");
  const Bytes content = contentOf(kFirst);
  const std::string text(content.begin(), content.end());
  EXPECT_EQ(std::string::npos, text.find("secret"));
  EXPECT_EQ(std::string::npos, text.find("ORB"));
  const Bytes key = sessionKeyOf(content, testkeys::rsaKey(2048));
  EXPECT_EQ(std::string::npos, text.find(std::string(key.begin(), key.end())));
}

TEST_F(LogEncryptionFormatTest, EachStartHasItsOwnSessionKey) {
  configure();
  log.init("orb");
  const Bytes first = sessionKeyOf(contentOf(kFirst), testkeys::rsaKey(2048));
  log.release();
  log.init("orb");
  const Bytes second =
      sessionKeyOf(contentOf(fs::path(kMain) / "orb_log_p0_01"), testkeys::rsaKey(2048));
  EXPECT_EQ(32u, second.size());
  EXPECT_NE(first, second);
}

TEST_F(LogEncryptionFormatTest, LinesAfterReleaseAreStillEncrypted) {
  configure();
  log.init("orb");
  log.release();
  say("late");
  EXPECT_EQ(Texts{"late"}, messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFormatTest, TagOrbGoesToTheMainDirectoryAndOthersUnderTheirTag) {
  configure();
  log.init("orb");
  EXPECT_EQ(Texts{"orb_log_p0_00"}, namesIn(kMain));
  EXPECT_TRUE(namesIn(kOther).empty());
  for (const char* tag : {"app", "p0", "orb2", ""}) {
    LogTestPeer::reset();
    clearData();
    configure();
    log.init(tag);
    EXPECT_TRUE(namesIn(kMain).empty());
    EXPECT_EQ(Texts{std::string("orb_log_") + tag + "_00"}, namesIn(kOther));
  }
}

TEST_F(LogEncryptionFormatTest, FilesAreForTheUserUnlessTheGroupMayWrite) {
  configure();
  log.init("orb");
  struct stat status = {};
  ASSERT_EQ(0, stat(kFirst.c_str(), &status));
  EXPECT_EQ(0644u, status.st_mode & 07777u);
  EXPECT_EQ(022u, umask(022));

  LogTestPeer::reset();
  clearData();
  configure();
  recording::setProperty("persist.vendor.data.orb.log_perms", "true");
  log.init("orb");
  ASSERT_EQ(0, stat(kFirst.c_str(), &status));
  EXPECT_EQ(0664u, status.st_mode & 07777u);
  EXPECT_EQ(002u, umask(077));
  fs::remove(kFirst);
  say("again");  // sets the mask for every piece that is written
  ASSERT_EQ(0, stat(kFirst.c_str(), &status));
  EXPECT_EQ(0664u, status.st_mode & 07777u);
  EXPECT_EQ(002u, umask(022));
}

TEST_F(LogEncryptionFormatTest, ManyWritersLeaveWholeRecordsInTheOrderOfTheChannel) {
  recording::setDiagListening(true);
  configure(30000, 3);
  log.init("orb");
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this] {
      for (int i = 0; i < 1000; ++i) say(std::to_string(i));
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(diagLines(2), linesIn(kFirst));
}

// The kernel handles the signal between two pages of a file, also within one write.
TEST_F(LogEncryptionFormatTest, OnlyTheEndOfAPageCutsTheLastRecordOfAKilledProcess) {
  configure(30000, 3);
  for (const size_t size : {1000u, 20000u, 54321u}) {
    fs::remove(kFirst);
    const pid_t child = fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
      log.init("orb");
      for (int i = 0; i < 20000; ++i) say("text");  // all in one file
      for (;;) pause();
    }
    std::error_code error;
    while (fs::file_size(kFirst, error) < size || error) std::this_thread::yield();
    kill(child, SIGKILL);
    ASSERT_EQ(child, waitpid(child, nullptr, 0));
    const Bytes content = contentOf(kFirst);
    const size_t end = endOfRecords(content);
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    EXPECT_TRUE(end == content.size() || content.size() % page == 0) << content.size();
    fs::resize_file(kFirst, end);
    EXPECT_FALSE(messagesOf(linesIn(kFirst)).empty());
  }
}

}  // namespace
}  // namespace logtest
