// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The limit on file sizes drops pieces; no code gets its signal.
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include "EncryptedLogFileFixture.h"

namespace logfile {
namespace {

// From now on, no file of this process can grow above this size.
void limitTo(size_t size) {
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = size;
  setrlimit(RLIMIT_FSIZE, &limit);
}

bool isIn(const sigset_t& set) { return sigismember(&set, SIGXFSZ) == 1; }
bool isBlocked() {
  sigset_t set;
  return pthread_sigmask(SIG_BLOCK, nullptr, &set) == 0 && isIn(set);
}
bool isPending() {
  sigset_t set;
  return sigpending(&set) == 0 && isIn(set);
}
void block() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGXFSZ);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

volatile sig_atomic_t taken = 0;
void take(int) { ++taken; }

class EncryptedLogFileLimitTest : public EncryptedLogFileFixture {
 protected:
  EncryptedLogFileLimitTest() : EncryptedLogFileFixture("[header]") {}

  // In a child with the default action for the signal, which ends the process. True if the child
  // continues and its checks succeed.
  template <class Steps>
  static bool holdsInAChild(const Steps& steps) {
    const pid_t child = fork();
    if (child == 0) {
      signal(SIGXFSZ, SIG_DFL);
      _exit(steps() ? 7 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_FALSE(WIFSIGNALED(status)) << "ended by signal " << WTERMSIG(status);
    return WIFEXITED(status) && WEXITSTATUS(status) == 7;
  }
};

TEST_F(EncryptedLogFileLimitTest, ReachedLimitDropsThePieceAndNotTheProcess) {
  EXPECT_TRUE(holdsInAChild([this] {
    file.start();
    append("one");
    limitTo(11);
    bool none = true;
    for (int i = 0; i < 100; ++i) none = none && !append("lost");
    return none && !isBlocked() && !isPending();
  }));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileLimitTest, LimitBelowTheSizeDoesTheSame) {
  EXPECT_TRUE(holdsInAChild([this] {
    file.start();
    append("one");
    limitTo(2);
    const bool dropped = !append("lost");
    limitTo(100);
    return dropped && append("two");
  }));
  EXPECT_EQ("[header]onetwo", content());
}

TEST_F(EncryptedLogFileLimitTest, PieceThatFitsByHalfIsTakenBack) {
  EXPECT_TRUE(holdsInAChild([this] {
    file.start();
    append("one");
    limitTo(13);
    return !append("lost") && !append("lost");
  }));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileLimitTest, HeaderThatDoesNotFitIsDroppedAlike) {
  EXPECT_TRUE(holdsInAChild([this] {
    limitTo(0);
    const bool none = !file.start() && !append("lost");
    limitTo(5);
    const bool half = !file.start() && !append("lost");
    limitTo(100);
    return none && half && append("one");
  }));
  EXPECT_EQ("[header]one", content());
}

TEST_F(EncryptedLogFileLimitTest, HandlerOfTheApplicationHearsNothing) {
  EXPECT_TRUE(holdsInAChild([this] {
    signal(SIGXFSZ, take);
    file.start();
    limitTo(8);
    const bool dropped = !append("lost");
    return dropped && taken == 0 && !isBlocked();
  }));
}

TEST_F(EncryptedLogFileLimitTest, ThreadThatBlocksTheSignalFindsNoneLater) {
  EXPECT_TRUE(holdsInAChild([this] {
    block();
    file.start();
    limitTo(8);
    return !append("lost") && isBlocked() && !isPending();
  }));
}

TEST_F(EncryptedLogFileLimitTest, SignalThatWaitedBeforeStillWaits) {
  EXPECT_TRUE(holdsInAChild([this] {
    block();
    raise(SIGXFSZ);
    file.start();
    limitTo(8);
    return !append("lost") && isBlocked() && isPending();
  }));
}

TEST_F(EncryptedLogFileLimitTest, MaskIsAsItWasAfterEveryPiece) {
  EXPECT_TRUE(holdsInAChild([this] {
    const bool first = append("one") && !isBlocked();
    block();
    return first && append("two") && isBlocked() && !isPending();
  }));
  EXPECT_EQ("[header]onetwo", content());
}

}  // namespace
}  // namespace logfile
