// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Actions of the application on its threads, signals, descriptors and memory that the library must
// tolerate.
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>

#include "AllServicesFixture.h"
#include "QuietThreads.h"

namespace allservices {
namespace {

class HostProcess : public AllServicesTest {};

void onCriteria(LceReportingCriteriaStatus) {}

// Makes the calls on a cancelled thread and continues to a cancellation point. There it holds no
// object, because AddressSanitizer does not follow how such a thread leaves its scopes.
struct CancelledThread {
  std::array<int64_t, 3> results{};
  bool wentOn = false;

  void call() {
    pthread_cancel(pthread_self());
    results = {kLle.enable(), kLle.requests().front().valid(), kLle.disable()};
  }
  static void* run(void* data) {
    static_cast<CancelledThread*>(data)->call();
    pthread_testcancel();
    static_cast<CancelledThread*>(data)->wentOn = true;
    return nullptr;
  }
};

TEST_F(HostProcess, CancelledThreadFinishesItsCallsFirst) {
  ASSERT_NO_FATAL_FAILURE(enable(kLce));
  CancelledThread thread;
  pthread_t handle;
  ASSERT_EQ(0, pthread_create(&handle, nullptr, CancelledThread::run, &thread));
  void* result = nullptr;
  ASSERT_EQ(0, pthread_join(handle, &result));
  EXPECT_EQ(PTHREAD_CANCELED, result);
  EXPECT_FALSE(thread.wentOn);
  EXPECT_EQ((std::array<int64_t, 3>{1, 0, 1}), thread.results);
  expectHearsJustThis(kLce);
  ASSERT_NO_FATAL_FAILURE(enable(kLli));
  expectHearsJustThis(kLli);
}

TEST_F(HostProcess, ServicesConnectWhereStandardInputIsClosed) {
  const int input = dup(STDIN_FILENO);
  ASSERT_NO_FATAL_FAILURE(enable(kLce));  // opens all descriptors except connections
  close(STDIN_FILENO);
  ASSERT_NO_FATAL_FAILURE(enable(kLle));
  expectHearsJustThis(kLle);
  disable(kLle);  // by now the number may belong to the daemon's side of this connection
  quiet::awaitThreads();
  dup2(input, STDIN_FILENO);
  close(input);
}

TEST_F(HostProcess, SignalThatIsBlockedEverywhereIsLeftToItsDescriptor) {
  daemon().stop();
  sigset_t waited, before;
  sigemptyset(&waited);
  sigaddset(&waited, SIGUSR1);
  sigaddset(&waited, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &waited, &before);
  ASSERT_TRUE(daemon().start());  // its threads inherit the setting, like an application's threads
  const int descriptor = signalfd(-1, &waited, SFD_CLOEXEC);
  ASSERT_NO_FATAL_FAILURE(enableAll());
  for (const int number : {SIGUSR1, SIGTERM}) {
    ASSERT_EQ(0, kill(getpid(), number));
    pollfd ready = {descriptor, POLLIN, 0};
    ASSERT_EQ(1, poll(&ready, 1, 20000));
    signalfd_siginfo got = {};
    ASSERT_EQ(static_cast<ssize_t>(sizeof got), read(descriptor, &got, sizeof got));
    EXPECT_EQ(static_cast<uint32_t>(number), got.ssi_signo);
  }
  close(descriptor);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(HostProcess, CriteriaAreNotReadWithoutTheService) {
  void* const nothing = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(MAP_FAILED, nothing);
  const auto* const criteria = static_cast<const LceReportingCriteria*>(nothing);
  EXPECT_EQ(-5, lceSetReportingCriteria(criteria, onCriteria));
  munmap(nothing, 4096);
}

}  // namespace
}  // namespace allservices
