// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Encrypted logging while the disk, the directory or the random numbers fail. This program's
// functions of libcrypto's names come before the real ones.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <dlfcn.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <sys/resource.h>

#include <atomic>
#include <future>
#include <optional>
#include <thread>

#include "LogEncryptionFixture.h"
#include "QuietThreads.h"

namespace {

std::atomic<bool> randomFails{false};
std::optional<int> wrapResult;

}  // namespace

int RAND_bytes(unsigned char* buffer, int size) {
  using Function = int (*)(unsigned char*, int);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "RAND_bytes"));
  return randomFails ? 0 : real(buffer, size);
}

int EVP_RAND_generate(EVP_RAND_CTX* context, unsigned char* out, size_t size, unsigned strength,
                      int resistance, const unsigned char* more, size_t moreSize) {
  static const auto real =
      reinterpret_cast<decltype(&EVP_RAND_generate)>(dlsym(RTLD_NEXT, "EVP_RAND_generate"));
  return randomFails ? 0 : real(context, out, size, strength, resistance, more, moreSize);
}

int RSA_public_encrypt(int size, const unsigned char* from, unsigned char* to, RSA* key,
                       int padding) {
  using Function = int (*)(int, const unsigned char*, unsigned char*, RSA*, int);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "RSA_public_encrypt"));
  return wrapResult ? *wrapResult : real(size, from, to, key, padding);
}

namespace logtest {
namespace {

const fs::path kFirst = fs::path(kMain) / "orb_log_p0_00";

// As on a full disk: no file of this process grows beyond so many bytes.
class SizeLimit {
 public:
  explicit SizeLimit(size_t size) : mHandler(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &mFormer);
    const rlimit limit{size, mFormer.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;
  ~SizeLimit() {
    setrlimit(RLIMIT_FSIZE, &mFormer);
    signal(SIGXFSZ, mHandler);
  }

 private:
  void (*const mHandler)(int);
  rlimit mFormer{};
};

class LogEncryptionFaultsTest : public LogEncryptionFixture {
 protected:
  ~LogEncryptionFaultsTest() override {
    randomFails = false;
    wrapResult.reset();
  }

  // The platform and the diagnostic channel get a line whatever happens to the file.
  void sayToAll(const std::string& text) {
    recording::setDiagListening(true);
    recording::clear();
    say(text);
    EXPECT_EQ(Texts{"|T|File::f:1 " + text}, recording::texts());
    EXPECT_EQ(Texts{text}, messagesOf(diagLines()));
  }
  // Records of a file that has no header, under the session key of another.
  static Texts headlessMessages(const fs::path& path, const Bytes& key) {
    return messagesOf(linesOf(recordsOf(contentOf(path), 0), key));
  }
  static Bytes key() { return sessionKeyOf(contentOf(kFirst), testkeys::rsaKey(2048)); }
};

TEST_F(LogEncryptionFaultsTest, RecordThatDoesNotFitIsTakenBack) {
  configure();
  log.init("orb");
  sayToAll("one");
  const size_t size = contentOf(kFirst).size();
  {
    const SizeLimit limit(size + 20);  // a part of the next record
    for (int i = 0; i < 10; ++i) sayToAll("lost");
  }
  EXPECT_EQ(size, contentOf(kFirst).size());
  {
    const SizeLimit limit(size);  // nothing of it
    sayToAll("lost");
  }
  sayToAll("two");
  EXPECT_EQ((Texts{"one", "two"}), messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFaultsTest, HeaderThatDoesNotFitIsTakenBack) {
  configure();
  {
    const SizeLimit limit(50);
    log.init("orb");
    EXPECT_TRUE(LogTestPeer::encryptionEnabled());
    sayToAll("lost");
    EXPECT_TRUE(contentOf(kFirst).empty());
  }
  sayToAll("after");
  EXPECT_EQ(1u, recordsOf(contentOf(kFirst), 0).size());
}

TEST_F(LogEncryptionFaultsTest, MissingDirectoryIsDoneWithoutUntilItIsThere) {
  configure();
  fs::remove_all(kMain);
  log.init("orb");
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  EXPECT_FALSE(recording::hasEndingWith("C-Logging Init failed"));
  sayToAll("lost");
  fs::create_directory(kMain);
  for (int i = 0; i < 3100; ++i) say("text");
  // From the next rotation on at the latest there is a whole file.
  EXPECT_FALSE(linesIn(fs::path(kMain) / "orb_log_p0_01").empty());
}

TEST_F(LogEncryptionFaultsTest, FileInTheDirectorysPlaceIsDoneWithout) {
  configure();
  fs::remove_all(kMain);
  write(kMain, "text");
  log.init("orb");
  for (int i = 0; i < 3100; ++i) say("lost");
  sayToAll("lost");
  EXPECT_EQ((Bytes{'t', 'e', 'x', 't'}), contentOf(kMain));
}

TEST_F(LogEncryptionFaultsTest, RemovedFileIsCreatedByTheNextRecord) {
  configure();
  log.init("orb");
  const Bytes session = key();
  sayToAll("one");
  fs::remove(kFirst);
  sayToAll("two");
  sayToAll("three");
  EXPECT_EQ((Texts{"two", "three"}), headlessMessages(kFirst, session));
}

TEST_F(LogEncryptionFaultsTest, RemovedDirectoryIsDoneWithout) {
  configure();
  log.init("orb");
  fs::remove_all(kMain);
  sayToAll("one");
  EXPECT_FALSE(fs::exists(kMain));
}

TEST_F(LogEncryptionFaultsTest, ReplacedFileIsNotWrittenWhenItIsNoFile) {
  configure();
  log.init("orb");
  const Bytes session = key();
  fs::remove(kFirst);
  ASSERT_EQ(0, mkfifo(kFirst.c_str(), 0666));
  sayToAll("to nobody");
  const int reader = open(kFirst.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  sayToAll("to a pipe");
  char byte = 0;
  EXPECT_EQ(0, read(reader, &byte, 1));
  close(reader);

  fs::remove(kFirst);
  fs::create_directory(kFirst);
  sayToAll("to a directory");
  fs::remove(kFirst);
  fs::create_symlink("/dev/full", kFirst);
  sayToAll("to a device");
  fs::remove(kFirst);
  sayToAll("again");
  EXPECT_EQ(Texts{"again"}, headlessMessages(kFirst, session));
}

TEST_F(LogEncryptionFaultsTest, DirectoryInTheWayOfTheNextFileIsPassedOver) {
  configure();
  log.init("orb");
  const fs::path second = fs::path(kMain) / "orb_log_p0_01";
  fs::create_directory(second);
  for (int i = 0; i < 2 * 3001; ++i) say("text");
  sayToAll("on");
  EXPECT_TRUE(fs::is_directory(second));
  EXPECT_FALSE(linesIn(fs::path(kMain) / "orb_log_p0_02").empty());
}

TEST_F(LogEncryptionFaultsTest, RecordWithoutARandomIvIsNotWritten) {
  configure();
  log.init("orb");
  randomFails = true;
  for (int i = 0; i < 100; ++i) sayToAll("text");
  const size_t written = messagesOf(linesIn(kFirst)).size();
  EXPECT_EQ(84u, written);  // those whose IV had been drawn in advance
  randomFails = false;
  sayToAll("again");
  EXPECT_EQ(written + 1, messagesOf(linesIn(kFirst)).size());
}

TEST_F(LogEncryptionFaultsTest, WithoutARandomSessionKeyEncryptionStaysOff) {
  configure();
  randomFails = true;
  log.init("orb");
  EXPECT_FALSE(LogTestPeer::encryptionEnabled());
  ASSERT_EQ(4u, recording::lines().size());
  EXPECT_EQ(kInitFailedLine, recording::texts()[2]);
  EXPECT_EQ(6, recording::lines()[2].priority);
  EXPECT_TRUE(namesIn(kMain).empty());
}

TEST_F(LogEncryptionFaultsTest, WithoutAWrappedKeyEncryptionStaysOff) {
  configure();
  wrapResult = 0;
  log.init("orb");
  EXPECT_FALSE(LogTestPeer::encryptionEnabled());
  ASSERT_EQ(5u, recording::lines().size());
  EXPECT_TRUE(endsWith(recording::texts()[2], " encryptWithRSAPubKey failed"));
  EXPECT_EQ(kInitFailedLine, recording::texts()[3]);
}

// The field for the wrapped key stays empty then, and nobody can read the file.
TEST_F(LogEncryptionFaultsTest, MinusOneFromWrappingCountsAsSuccess) {
  configure();
  wrapResult = -1;
  log.init("orb");
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  EXPECT_FALSE(recording::hasEndingWith("C-Logging Init failed"));
  const Bytes content = contentOf(kFirst);
  ASSERT_GT(content.size(), kHeaderSize);
  EXPECT_EQ(Bytes(kHeaderSize), Bytes(content.begin(), content.begin() + kHeaderSize));
  EXPECT_EQ(1u, recordsOf(content).size());
}

// Encryption is stopped while the process exits; a forked child has no thread left that could let
// go of the log.
TEST_F(LogEncryptionFaultsTest, ForkedChildLogsAndExitsWhateverAnotherThreadWasLogging) {
  configure();
  log.init("orb");
  std::promise<void> entered, leave;
  std::thread inside([&entered, &leave] {
    const LockGuard lock(LogTestPeer::mutex());
    entered.set_value();
    leave.get_future().wait();
  });
  entered.get_future().wait();
  quiet::awaitThreads();
  const pid_t child = fork();
  if (child == 0) {
    alarm(10);
    say("child");
    log.dMapLog(4, "child");
    log.init("child");
    std::exit(recording::hasEndingWith(" child") ? 7 : 1);
  }
  int status = -1;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
  leave.set_value();
  inside.join();
}

// A hook or a sink that does not return keeps the log; that must not keep the process.
TEST_F(LogEncryptionFaultsTest, ProcessEndsWhileAThreadIsStuckInALogCall) {
  configure();
  const pid_t child = fork();
  ASSERT_NE(-1, child);
  if (child == 0) {
    alarm(20);
    log.init("orb");
    std::promise<void> entered;
    std::thread([&entered] {
      const LockGuard lock(LogTestPeer::mutex());
      entered.set_value();
      std::promise<void>().get_future().wait();
    }).detach();
    entered.get_future().wait();
    log.addDumpRequest(Log::USER_COMMAND);  // the dumper gets stuck as well
    std::exit(7);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
}

TEST_F(LogEncryptionFaultsTest, ThreadsMayLogWhileTheProcessExits) {
  configure();
  for (int i = 0; i < 5; ++i) {
    const pid_t child = fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
      alarm(20);
      log.init("orb");
      static std::atomic<int> said{0};
      for (int t = 0; t < 3; ++t) {
        std::thread([this] {
          for (;; ++said) say("text");
        }).detach();
      }
      while (said < 100) std::this_thread::yield();
      std::exit(7);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
  }
}

}  // namespace
}  // namespace logtest
