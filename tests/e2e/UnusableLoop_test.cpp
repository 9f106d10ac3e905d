// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The worker's loop when it cannot wait any more, for example because the application closed
// descriptors of the library.
#include <errno.h>
#include <signal.h>
#include <sys/epoll.h>

#include <atomic>
#include <chrono>

#include "AllServicesFixture.h"
#include "Interposed.h"

namespace {

std::atomic<int> waitError{0};
std::atomic<size_t> failedWaits{0};

}  // namespace

// Replaces the function of the C library.
extern "C" int epoll_wait(int fd, epoll_event* events, int size, int timeout) {
  if (const int error = waitError) {
    ++failedWaits;
    errno = error;
    return -1;
  }
  return ORB_NEXT(epoll_wait)(fd, events, size, timeout);
}

namespace allservices {
namespace {

class UnusableLoop : public AllServicesTest {
 protected:
  void TearDown() override {
    waitError = 0;
    AllServicesTest::TearDown();
  }
  // From now on the worker's waits fail; returns after the first failure.
  void breakWaits(int error) {
    failedWaits = 0;
    waitError = error;
    ASSERT_LE(0, kLce.requests().front().valid());  // ends the current wait
    ASSERT_TRUE(comesTo([] { return failedWaits > 0; }));
  }
};

TEST_F(UnusableLoop, GoesOnWithoutSpinning) {
  using Clock = std::chrono::steady_clock;
  ASSERT_NO_FATAL_FAILURE(enable(kLce));
  ASSERT_NO_FATAL_FAILURE(breakWaits(EBADF));
  // Requests are still sent; their time is not measured here.
  const auto start = Clock::now();
  const size_t before = failedWaits;
  for (int i = 0; i < 3; ++i) {
    const size_t frames = daemon().totals().frames;
    ASSERT_LE(0, kLce.requests().front().valid());
    ASSERT_TRUE(daemon().waitForFrames(frames + 1));
  }
  const size_t waits = failedWaits - before;  // in no more than what is measured
  const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  // Ten per second, plus one for each end of the time.
  EXPECT_LE(waits, static_cast<size_t>(passed.count()) / 100 + 2);
}

TEST_F(UnusableLoop, ServicesAreStillDisabledInTheirOrder) {
  ASSERT_NO_FATAL_FAILURE(enableAll());
  ASSERT_NO_FATAL_FAILURE(breakWaits(EINVAL));
  for (const ServiceOps& service : kServices) {
    const size_t frames = daemon().totals().frames;
    disable(service);
    EXPECT_GE(daemon().totals().frames, frames + 1) << service.name;
  }
  EXPECT_TRUE(libraryThreadsEnd());
}

TEST_F(UnusableLoop, WorksOnAsBeforeWhenTheWaitWorksAgain) {
  ASSERT_NO_FATAL_FAILURE(enable(kLce));
  ASSERT_NO_FATAL_FAILURE(breakWaits(EBADF));
  waitError = 0;
  const size_t frames = daemon().totals().frames;
  ASSERT_LE(0, kLce.requests().front().valid());
  ASSERT_TRUE(daemon().waitForFrames(frames + 1));
  EXPECT_FALSE(recording::hasEndingWith("SHOULD NEVER HAPPEN."));
}

TEST_F(UnusableLoop, SignalIsNoReasonToPause) {
  ASSERT_NO_FATAL_FAILURE(enable(kLce));
  ASSERT_NO_FATAL_FAILURE(breakWaits(EINTR));
  EXPECT_TRUE(comesTo([] { return failedWaits > 1000; }));
}

}  // namespace
}  // namespace allservices
