// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The exported functions when the system has no thread to give.
#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <string>
#include <thread>

#include "AllServicesFixture.h"
#include "QuietThreads.h"

namespace {

std::atomic<bool> threadsFail{false};
std::atomic<bool> workersThreadsFail{false};  // only those that the library's worker wants
std::function<void()> atFirstFailure;         // set before, called by the thread that fails

bool fails() {
  if (threadsFail) return true;
  if (!workersThreadsFail) return false;
  char name[16] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  return std::string(name) == "orb-sdk";
}

int failure() {
  std::function<void()> action;
  action.swap(atFirstFailure);
  if (action) action();
  return EAGAIN;
}

}  // namespace

// Comes before the C library's own.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* data) {
  if (fails()) return failure();
  static const auto real =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return real(thread, attributes, body, data);
}

namespace allservices {
namespace {

using Statuses = std::vector<int>;

class NoThread : public AllServicesTest {
 protected:
  void TearDown() override {
    threadsFail = workersThreadsFail = false;
    atFirstFailure = nullptr;
    AllServicesTest::TearDown();
    application::state().clear();
  }

  // Another thread opens @p second while the one that opens @p first finds no thread: when that
  // fails, the other one waits for it or has made up its mind. Returns both results.
  std::pair<int, int> openBoth(int (*first)(), int (*second)()) {
    std::promise<void> begin;
    int result = -100;
    std::thread other([&] {
      begin.get_future().wait();
      result = second();
    });
    atFirstFailure = [&begin] {
      begin.set_value();
      quiet::awaitThreads();
    };
    threadsFail = true;
    const int own = first();
    other.join();
    threadsFail = false;
    return {own, result};
  }
};

TEST_F(NoThread, EnableFailsAndMayBeTriedAgain) {
  for (const ServiceOps& service : kServices) {
    threadsFail = true;
    EXPECT_EQ(0, service.enable()) << service.name;
    EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_INTERNAL_ERROR}) << service.name;
    threadsFail = false;
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
    // LCE's own second callback is not told of this, so the first one is.
    const int second = &service == &kServices[0] ? static_cast<int>(STATUS_INTERNAL_ERROR)
                                                 : static_cast<int>(STATUS_V2_INTERNAL_ERROR);
    Statuses told = service.waitForCalls(2);
    std::sort(told.rbegin(), told.rend());  // the two threads tell in any order
    EXPECT_EQ(told, (Statuses{STATUS_INTERNAL_ERROR, second})) << service.name;
    enable(service);
    disable(service);  // the object that knows both callbacks goes
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

// The worker finishes what no closing thread can be had for.
TEST_F(NoThread, DisableInsideACallbackStillLeaves) {
  using application::state;
  for (const ServiceOps& service : kServices) {
    state().clear();
    ASSERT_EQ(1, service.enableWith(application::onStatus));
    awaitSession(service);
    int result = -100;
    state().inNext(application::Event::Status, [&] {
      threadsFail = true;
      result = service.disable();
      threadsFail = false;
      state().done();
    });
    send(service, status(1));
    ASSERT_TRUE(state().waitDone());
    EXPECT_EQ(1, result) << service.name;
    EXPECT_EQ(0, service.disable()) << service.name;
    EXPECT_TRUE(workerAndReceiversEnd());
    EXPECT_TRUE(daemon().waitForConnectionsClosed(daemon().totals().connections));
  }
}

TEST_F(NoThread, ConnectionWithoutAReceiverIsAFailedOne) {
  for (const ServiceOps& service : kServices) {
    workersThreadsFail = true;
    ASSERT_EQ(1, service.enable()) << service.name;
    EXPECT_EQ(service.waitForCalls(1), Statuses{STATUS_SERVICE_DOWN}) << service.name;
    workersThreadsFail = false;
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
