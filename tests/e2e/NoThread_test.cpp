// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The exported functions when no thread can be created.
#include <errno.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <string>
#include <thread>

#include "AllServicesFixture.h"
#include "FailingThreads.h"
#include "QuietThreads.h"

namespace allservices {
namespace {

using Statuses = std::vector<int>;

class NoThread : public AllServicesTest {
 protected:
  void TearDown() override {
    threads::forget();
    AllServicesTest::TearDown();
    application::state().clear();
  }

  // Another thread opens @p second while the opening of @p first cannot create a thread. When that
  // fails, the other thread waits for it or has already decided. Returns both results.
  std::pair<int, int> openBoth(int (*first)(), int (*second)()) {
    std::promise<void> begin;
    int result = -100;
    std::thread other([&] {
      begin.get_future().wait();
      result = second();
    });
    threads::fail = true;
    threads::beforeNext([&begin] {
      begin.set_value();
      quiet::awaitThreads();
    });
    const int own = first();
    other.join();
    threads::fail = false;
    return {own, result};
  }
};

TEST_F(NoThread, EnableFailsAndMayBeTriedAgain) {
  for (const ServiceOps& service : kServices) {
    threads::fail = true;
    EXPECT_EQ(0, service.enable()) << service.name;
    EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_INTERNAL_ERROR}) << service.name;
    threads::fail = false;
    service.clearCalls();
    enable(service);
    expectHearsJustThis(service);
    disable(service);
  }
}

TEST_F(NoThread, SecondThreadThatEnablesGetsAFailureOfItsOwn) {
  for (const ServiceOps& service : kServices) {
    EXPECT_EQ(std::make_pair(0, 0), openBoth(service.enable, service.enable)) << service.name;
    EXPECT_EQ(service.waitForCalls(2), Statuses(2, STATUS_INTERNAL_ERROR)) << service.name;
    service.clearCalls();
    enable(service);
    expectHearsJustThis(service);
    disable(service);
  }
}

TEST_F(NoThread, SecondThreadThatCreatesGetsAFailureOfItsOwn) {
  for (const ServiceOps& service : kServices) {
    EXPECT_EQ(std::make_pair(0, -1), openBoth(service.enable, service.create)) << service.name;
    // LCE's second callback is not notified of this, so the first one is used.
    const int second = &service == &kServices[0] ? static_cast<int>(STATUS_INTERNAL_ERROR)
                                                 : static_cast<int>(STATUS_V2_INTERNAL_ERROR);
    Statuses told = service.waitForCalls(2);
    std::sort(told.rbegin(), told.rend());  // the two threads report in any order
    EXPECT_EQ(told, (Statuses{STATUS_INTERNAL_ERROR, second})) << service.name;
    enable(service);
    disable(service);  // destroys the object that knows both callbacks
    service.clearCalls();
  }
}

TEST_F(NoThread, SecondServiceGetsAFailureOfItsOwn) {
  EXPECT_EQ(std::make_pair(0, 0), openBoth(kLce.enable, kLle.enable));
  for (const ServiceOps* service : {&kLce, &kLle}) {
    EXPECT_EQ(service->waitForCalls(1), Statuses{STATUS_INTERNAL_ERROR}) << service->name;
    service->clearCalls();
    enable(*service);
    expectHearsJustThis(*service);
  }
}

// If no closing thread can be created, the worker finishes its work.
TEST_F(NoThread, DisableInsideACallbackStillLeaves) {
  using application::state;
  for (const ServiceOps& service : kServices) {
    state().clear();
    ASSERT_EQ(1, service.enableWith(application::onStatus));
    awaitSession(service);
    int result = -100;
    state().inNext(application::Event::Status, [&] {
      threads::fail = true;
      result = service.disable();
      threads::fail = false;
    });
    send(service, status(1));
    ASSERT_TRUE(state().waitDone());
    EXPECT_EQ(1, result) << service.name;
    EXPECT_EQ(0, service.disable()) << service.name;
    EXPECT_TRUE(libraryThreadsEnd());
    EXPECT_TRUE(daemon().waitForConnectionsClosed(daemon().totals().connections));
  }
}

TEST_F(NoThread, ConnectionWithoutAReceiverIsAFailedOne) {
  for (const ServiceOps& service : kServices) {
    threads::failForWorker = true;
    ASSERT_EQ(1, service.enable()) << service.name;
    EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_SERVICE_DOWN}) << service.name;
    threads::failForWorker = false;
    EXPECT_TRUE(daemon().waitForConnectionsClosed(daemon().totals().connections));
    service.clearCalls();
    EXPECT_LE(0, service.requests().front().valid());
    awaitSession(service);
    expectHearsJustThis(service);
    disable(service);
  }
}

}  // namespace
}  // namespace allservices
