// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Encrypted logging with failures of the disk, the directory or the random numbers. This program's
// definitions of libcrypto functions are used instead of the real ones.

#include <sys/resource.h>

#include <atomic>
#include <future>
#include <optional>
#include <thread>

#include "FailingRandom.h"
#include "LogEncryptionFixture.h"
#include "QuietThreads.h"
#include "Thread.h"

namespace logtest {
namespace {

const fs::path kFirst = fs::path(kMain) / "orb_log_p0_00";

// Like a full disk: no file of this process can grow above this size. Otherwise the kernel also
// sends a signal, which would end the process.
class SizeLimit {
 public:
  explicit SizeLimit(size_t size) {
    getrlimit(RLIMIT_FSIZE, &mFormer);
    const rlimit limit{size, mFormer.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;
  ~SizeLimit() { setrlimit(RLIMIT_FSIZE, &mFormer); }

 private:
  rlimit mFormer{};
};

class LogEncryptionFaultsTest : public LogEncryptionFixture {
 protected:
  ~LogEncryptionFaultsTest() override { libcrypto::forget(); }
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
  EXPECT_EQ(Texts{"after"}, messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFaultsTest, LimitOnFileSizesDropsTheRecordsOfAllThreads) {
  configure(30000, 3);
  log.init("orb");
  sayToAll("one");
  const size_t size = contentOf(kFirst).size();
  {
    const SizeLimit limit(size);
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t) {
      writers.emplace_back([this] {
        for (int i = 0; i < 500; ++i) say("text");
      });
    }
    for (std::thread& writer : writers) writer.join();
    // The library's own thread blocks the signal, so it must not keep a signal pending.
    bool waits = true;
    Thread own;
    ASSERT_TRUE(startThread(own, "orb-test", ThreadWork::Library, [this, &waits] {
      say("lost");
      sigset_t pending;
      waits = sigpending(&pending) != 0 || sigismember(&pending, SIGXFSZ) != 0;
    }));
    own.join();
    EXPECT_FALSE(waits);
  }
  EXPECT_EQ(size, contentOf(kFirst).size());
  sayToAll("two");
  EXPECT_EQ((Texts{"one", "two"}), messagesOf(linesIn(kFirst)));
}

TEST_F(LogEncryptionFaultsTest, RecordWithoutARandomIvIsNotWritten) {
  configure();
  log.init("orb");
  libcrypto::randomFails = true;
  for (int i = 0; i < 100; ++i) sayToAll("text");
  const size_t written = messagesOf(linesIn(kFirst)).size();
  EXPECT_EQ(84u, written);  // records whose IV was drawn in advance
  libcrypto::randomFails = false;
  sayToAll("again");
  EXPECT_EQ(written + 1, messagesOf(linesIn(kFirst)).size());
}

TEST_F(LogEncryptionFaultsTest, WithoutARandomSessionKeyEncryptionStaysOff) {
  configure();
  libcrypto::randomFails = true;
  log.init("orb");
  EXPECT_FALSE(LogTestPeer::encryptionEnabled());
  ASSERT_EQ(4u, recording::lines().size());
  EXPECT_EQ(kInitFailedLine, recording::texts()[2]);
  EXPECT_EQ(6, recording::lines()[2].priority);
  EXPECT_TRUE(namesIn(kMain).empty());
}

TEST_F(LogEncryptionFaultsTest, WithoutAWrappedKeyEncryptionStaysOff) {
  configure();
  libcrypto::wrapResult = 0;
  log.init("orb");
  EXPECT_FALSE(LogTestPeer::encryptionEnabled());
  ASSERT_EQ(5u, recording::lines().size());
  EXPECT_TRUE(endsWith(recording::texts()[2], " encryptWithRSAPubKey failed"));
  EXPECT_EQ(kInitFailedLine, recording::texts()[3]);
}

// The field for the wrapped key is empty then, so the file cannot be read.
TEST_F(LogEncryptionFaultsTest, MinusOneFromWrappingCountsAsSuccess) {
  configure();
  libcrypto::wrapResult = -1;
  log.init("orb");
  EXPECT_TRUE(LogTestPeer::encryptionEnabled());
  EXPECT_FALSE(recording::hasEndingWith("C-Logging Init failed"));
  const Bytes content = contentOf(kFirst);
  ASSERT_GT(content.size(), kHeaderSize);
  EXPECT_EQ(Bytes(kHeaderSize), Bytes(content.begin(), content.begin() + kHeaderSize));
  EXPECT_EQ(1u, recordsOf(content).size());
}

// Encryption stops at the exit of the process. A forked child has no other thread that could
// release the log.
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

// A hook or a sink that does not return keeps the log locked; the process must still exit.
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
    log.addDumpRequest(Log::USER_COMMAND);  // the dumper is blocked as well
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
