// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The library's threads without memory, at one allocation after the other: they continue, and an
// application that loses something is notified.
#include <algorithm>

#include "OutOfMemoryFixture.h"

namespace allservices {
namespace {

using memory::Caller;

class OutOfMemoryThreads : public OutOfMemoryTest {
 protected:
  // Waits until the daemon gets a new message or the application is notified of a failure.
  void awaitSentOrTold(const ServiceOps& service, size_t frames) {
    EXPECT_TRUE(comesTo([&] {
      return daemon().frames().size() > frames || !service.waitForCalls(0).empty();
    })) << service.name
        << ": lost in silence";
    for (const int told : service.waitForCalls(0)) {
      EXPECT_TRUE(told == STATUS_INTERNAL_ERROR || told == STATUS_SERVICE_DOWN) << told;
    }
  }
  // One disable is always enough to disable the service.
  void wholeLife(const ServiceOps& service) {
    service.clearCalls();
    size_t frames = daemon().frames().size();
    const int enabled = service.enable();
    if (enabled == 1) {
      awaitSentOrTold(service, frames);
      service.clearCalls();
      frames = daemon().frames().size();
      EXPECT_LE(0, service.requests().front().valid());
      awaitSentOrTold(service, frames);
    } else {
      EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_INTERNAL_ERROR});
    }
    EXPECT_EQ(enabled, service.disable());
  }
  // The service works normally, also after the next enable.
  void expectNextLifeWorks(const ServiceOps& service) {
    service.clearCalls();
    forgetSessions(service);
    ASSERT_NO_FATAL_FAILURE(enable(service));
    expectEnabled(service);
    disable(service);
    expectNothingLeft();
  }
  // Whether an allocation failed while @p act ran.
  template <class Act>
  static bool failing(size_t nth, const char* thread, Act act) {
    const memory::FailingNew fails(nth, Caller::Library, thread);
    act();
    return fails.failed();
  }
  template <class Then>
  bool wholeLifeFails(const ServiceOps& service, size_t nth, Then then) {
    return failing(nth, kWorker, [&] {
      wholeLife(service);
      then();
    });
  }
  // Runs @p round with the first allocation of the thread failing, then with the second, and so on,
  // until a round ends without a failure. Each round returns whether an allocation failed.
  template <class Round>
  void failEach(const char* what, const ServiceOps& service, Round round) {
    size_t nth = 0;
    for (bool failed = true; failed; ++nth) {
      SCOPED_TRACE(nth);
      failed = round(nth);
      if (HasFailure()) return;
    }
    print(what, service, nth - 1);
  }
  // Earlier connections do not count.
  void forgetSessions(const ServiceOps& service) {
    for (const Frame& frame : daemon().frames()) {
      if (frame.header.source != service.endpoint) continue;
      uint32_t& last = mSessions[service.name];
      last = std::max(last, frame.sessionId);
    }
  }
};

TEST_F(OutOfMemoryThreads, WorkerLosesNothingInSilenceAndDeactivatesItsTypes) {
  for (const ServiceOps& service : kServices) {
    failEach("worker", service, [&](size_t nth) {
      const bool failed = wholeLifeFails(service, nth, [this] { expectNothingLeft(); });
      if (failed) expectNextLifeWorks(service);
      return failed;
    });
  }
}

// A failure in one service must not affect the connections of the other services.
TEST_F(OutOfMemoryThreads, WorkerThatFailsForOneServesTheOthers) {
  ASSERT_NO_FATAL_FAILURE(enable(kLce));
  failEach("worker of two", kLle, [&](size_t nth) {
    const bool failed = wholeLifeFails(kLle, nth, [] {});
    expectEnabled(kLce);
    return failed;
  });
}

TEST_F(OutOfMemoryThreads, ReceiverThatCannotDeliverEndsItsConnectionWithServiceDown) {
  for (const ServiceOps& service : kServices) {
    failEach("receiver", service, [&](size_t nth) {
      enable(service);
      if (HasFatalFailure()) return false;
      service.clearCalls();
      Statuses calls;
      const bool failed = failing(nth, kReceiver, [&] {
        send(service, status(4));
        calls = service.waitForCalls(1);
      });
      EXPECT_EQ(calls, Statuses{failed ? STATUS_SERVICE_DOWN : STATUS_NOT_SUPPORTED});
      if (failed) {
        EXPECT_LE(0, service.requests().front().valid());
        awaitSession(service);
        expectEnabled(service);
      }
      disable(service);
      expectNothingLeft();
      return failed;
    });
  }
}

TEST_F(OutOfMemoryThreads, LostConnectionIsToldWhateverTheReceiverLacks) {
  for (const ServiceOps& service : kServices) {
    failEach("receiver that ends", service, [&](size_t nth) {
      enable(service);
      if (HasFatalFailure()) return false;
      EXPECT_TRUE(comeToBe(1, kReceiver));
      service.clearCalls();
      const bool failed = failing(nth, kReceiver, [&] {
        EXPECT_TRUE(daemon().closeSession(mSessions[service.name]));
        EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_SERVICE_DOWN});
        EXPECT_TRUE(comeToBe(0, kReceiver));
      });
      EXPECT_LE(0, service.requests().front().valid());
      awaitSession(service);
      expectEnabled(service);
      disable(service);
      expectNothingLeft();
      return failed;
    });
  }
}

}  // namespace
}  // namespace allservices
