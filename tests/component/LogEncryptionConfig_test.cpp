// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The configuration file of encrypted logging: missing, correct, and with all kinds of errors.
#include <openssl/err.h>

#include <functional>

#include "LogEncryptionFixture.h"

namespace logtest {
namespace {

class LogEncryptionConfigTest : public LogEncryptionFixture {
 protected:
  // Starts with an unusable configuration: the log has the size of its key, printToAdb reports the
  // failure, and the log continues without encryption.
  void expectOff(size_t keySize, bool wrappingFails = false) {
    recording::clear();
    testing::internal::CaptureStderr();
    log.init("app");
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(LogTestPeer::encryptionEnabled());
    EXPECT_EQ(0u, ERR_peek_error());
    std::vector<recording::Line> lines = recording::lines();
    if (wrappingFails) {
      ASSERT_EQ(5u, lines.size());
      EXPECT_EQ(6, lines[2].priority);
      EXPECT_TRUE(endsWith(lines[2].text, " encryptWithRSAPubKey failed")) << lines[2].text;
      lines.erase(lines.begin() + 2);
    }
    ASSERT_EQ(4u, lines.size());
    EXPECT_EQ("|ORB|Log::init:225 cannot open liborbalog.so", lines[0].text);
    EXPECT_EQ(6, lines[1].priority);
    EXPECT_EQ("app", lines[1].tag);
    EXPECT_EQ(0u, lines[1].text.find("|ORB|CryptoUtil::initializeRsaEncryption:"));
    EXPECT_TRUE(endsWith(lines[1].text, " public_key size " + std::to_string(keySize)))
        << lines[1].text;
    EXPECT_EQ(6, lines[2].priority);
    EXPECT_EQ("app", lines[2].tag);
    EXPECT_EQ(kInitFailedLine, lines[2].text);
    EXPECT_EQ(kVersionLine, lines[3].text);
    EXPECT_EQ(1u, LogTestPeer::recordDump().queuedRecords());  // printToAdb's
    say("goes on");
    EXPECT_TRUE(recording::has("|T|File::f:1 goes on"));
    EXPECT_TRUE(namesIn(kMain).empty());
    EXPECT_TRUE(namesIn(kOther).empty());
    LogTestPeer::reset();
  }
  void expectOffWith(const std::string& config) {
    write(kConfig, config);
    expectOff(config.size() > 9 ? config.size() - 9 : 0);
  }
  void expectOffWithKey(const std::string& pem) { expectOffWith(head(3000, 3) + pem); }
};

TEST_F(LogEncryptionConfigTest, MissingFileIsNoFailureAndNothingIsSaid) {
  const auto startsSilently = [this] {
    recording::clear();
    log.init("orb");
    EXPECT_FALSE(LogTestPeer::encryptionEnabled());
    EXPECT_EQ((Texts{"|ORB|Log::init:225 cannot open liborbalog.so", kVersionLine}),
              recording::texts());
    EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
    LogTestPeer::reset();
  };
  startsSilently();
  EXPECT_TRUE(namesIn(kMain).empty());
  fs::remove_all("/data/vendor/orb_logs");
  startsSilently();
  clearData();
  fs::create_symlink(kConfig, kConfig);  // a link to itself cannot be opened
  startsSilently();
}

TEST_F(LogEncryptionConfigTest, UsableFileIsFollowedByItsKeySizeAndTheVersion) {
  configure();
  log.init("app");
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  const std::vector<recording::Line> lines = recording::lines();
  ASSERT_EQ(3u, lines.size());
  EXPECT_EQ(6, lines[1].priority);
  EXPECT_TRUE(endsWith(lines[1].text, " public_key size " +
                                          std::to_string(testkeys::rsaKey(2048).publicPem.size())));
  EXPECT_EQ(kVersionLine, lines[2].text);
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogEncryptionConfigTest, TextAroundTheKeyDoesNoHarm) {
  write(kConfig, head(3000, 3) + "the key of the field team\n" + testkeys::rsaKey(2048).publicPem +
                     std::string(5000, '\n'));
  log.init("orb");
  EXPECT_EQ(1u, linesIn(fs::path(kMain) / "orb_log_p0_00").size());
}

TEST_F(LogEncryptionConfigTest, FileThatEndsBeforeTheKey) {
  for (size_t size = 0; size <= 10; ++size) expectOffWith((head(3000, 3) + "-").substr(0, size));
}

TEST_F(LogEncryptionConfigTest, FileWithoutAPublicKey) {
  expectOffWithKey("no key");
  expectOffWithKey(testkeys::rsaKey(2048).privatePem);
  expectOffWithKey(testkeys::rsaKey(2048).privatePkcs1Pem);
  expectOffWithKey(testkeys::rsaKey(2048).publicPkcs1Pem);
  expectOffWithKey(testkeys::rsaKey(2048).encryptedPem);
  expectOffWithKey(testkeys::ecPublicPem());
  expectOffWithKey(testkeys::rsaKey(2048).publicPem.substr(0, 200));
  expectOffWithKey(std::string(1000, '\0') + testkeys::ecPrivatePem());
}

TEST_F(LogEncryptionConfigTest, KeyThatIsUnsafeOrHasNoRoomInTheHeader) {
  for (const std::string& pem :
       {testkeys::madeUpPublicPem(2048, "1"), testkeys::madeUpPublicPem(2048, "10000"),
        testkeys::madeUpPublicPem(4104), testkeys::madeUpPublicPem(16384)}) {
    write(kConfig, head(3000, 3) + pem);
    expectOff(pem.size(), true);
  }
}

// The log is written with a header of zeros, and standard error explains this.
TEST_F(LogEncryptionConfigTest, KeyThatIsTooSmallGivesALogThatNobodyCanRead) {
  const std::string pem = testkeys::madeUpPublicPem(512);
  write(kConfig, head(3000, 3) + pem);
  testing::internal::CaptureStderr();
  log.init("orb");
  for (int i = 0; i < 10; ++i) say("text");
  EXPECT_EQ(
      "RSA key of 512 bits cannot wrap a session key: nobody will be able to read the encrypted "
      "logs\n",
      testing::internal::GetCapturedStderr());
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  EXPECT_FALSE(recording::hasEndingWith("C-Logging Init failed"));
  const Bytes content = contentOf(fs::path(kMain) / "orb_log_p0_00");
  ASSERT_GT(content.size(), kHeaderSize);
  EXPECT_EQ(Bytes(kHeaderSize), Bytes(content.begin(), content.begin() + kHeaderSize));
  EXPECT_EQ(11u, recordsOf(content).size());
}

// No key has a text of more than 64 KiB. The length of a longer file is logged, and the file is not
// read.
TEST_F(LogEncryptionConfigTest, HundredMegabytesOfGarbage) {
  std::string garbage(1 << 20, '\0');
  uint32_t state = 1;
  for (char& c : garbage) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  write(kConfig, garbage);
  fs::resize_file(kConfig, 100 << 20);
  expectOff((100 << 20) - 9);
}

TEST_F(LogEncryptionConfigTest, LineWithoutAnEnd) {
  expectOffWithKey("-----BEGIN PUBLIC KEY-----" + std::string(60000, 'A'));
  expectOffWithKey("-----BEGIN PUBLIC KEY-----\n" + std::string(60000, '\n'));
}

TEST_F(LogEncryptionConfigTest, DirectoryInItsPlace) {
  fs::create_directory(kConfig);
  expectOff(0);
}

TEST_F(LogEncryptionConfigTest, PipeInItsPlaceIsNotWaitedFor) {
  ASSERT_EQ(0, mkfifo(kConfig, 0666));
  expectOff(0);
  // Also not a configuration that another user could write to.
  const int end = open(kConfig, O_RDWR | O_NONBLOCK | O_CLOEXEC);
  ASSERT_NE(-1, end);
  expectOff(0);
  close(end);
}

TEST_F(LogEncryptionConfigTest, DeviceInItsPlace) {
  fs::create_symlink("/dev/zero", kConfig);
  expectOff(64 * 1024);
}

TEST_F(LogEncryptionConfigTest, InitAfterReleaseTakesTheNewConfiguration) {
  write(kConfig, head(3000, 3) + "no key");
  testing::internal::CaptureStderr();
  log.init("orb");
  testing::internal::GetCapturedStderr();
  EXPECT_FALSE(LogTestPeer::encryptionEnabled());
  log.release();

  configure(4000, 5);
  log.init("orb");
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  EXPECT_EQ(4000u, LogTestPeer::encryptedLog().getRecordsPerFile());
  EXPECT_EQ(5, LogTestPeer::encryptedLog().getMaxFiles());
  log.release();

  configure(5000, 6, testkeys::otherRsaKey());
  log.init("app");
  EXPECT_EQ(5000u, LogTestPeer::encryptedLog().getRecordsPerFile());
  EXPECT_EQ(6, LogTestPeer::encryptedLog().getMaxFiles());
  EXPECT_EQ(1u, linesIn(fs::path(kOther) / "orb_log_app_00", testkeys::otherRsaKey()).size());
  log.release();

  fs::remove(kConfig);
  log.init("app");
  EXPECT_FALSE(LogTestPeer::encryptionEnabled());
  say("in the clear only");
  const Texts lines = linesIn(fs::path(kOther) / "orb_log_app_00", testkeys::otherRsaKey());
  ASSERT_EQ(2u, lines.size());  // the last init() ends encryption after its first line
  EXPECT_TRUE(endsWith(lines[1], " cannot open liborbalog.so"));
}

TEST_F(LogEncryptionConfigTest, FileIsReadByTheFirstInitOnly) {
  log.init("orb");
  configure();
  log.init("orb");
  EXPECT_FALSE(LogTestPeer::encryptionEnabled());
}

}  // namespace
}  // namespace logtest
