// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <map>
#include <string>

#include "Application.h"
#include "LceFixture.h"
#include "LleFixture.h"
#include "LliFixture.h"
#include "ProcessState.h"
#include "ServiceFixture.h"
#include "WireBytes.h"

// One process that uses all services at once.
namespace allservices {

using namespace servicetest;
using lcetest::LceNames;
using lletest::LleNames;
using llitest::LliNames;

// One service, as a value.
struct ServiceOps {
  const char* name;
  uint8_t endpoint;
  uint8_t sdkType;
  int (*enable)();
  int (*enableWith)(void (*cb)(status_e));
  int (*disable)();
  int (*create)();
  std::vector<Request> (*requests)();
  std::vector<int> (*waitForCalls)(size_t count);  // the first argument of each callback
  void (*clearCalls)();
};

template <class S>
ServiceOps opsOf() {
  struct Tools : ServiceTools<S> {
    using ServiceTools<S>::onStatus;
    using ServiceTools<S>::onV2;
  };
  return {S::kName,
          S::kEndpoint,
          S::kSdkType,
          [] { return S::enable(Tools::onStatus); },
          [](void (*cb)(status_e)) { return S::enable(cb); },
          S::disable,
          [] { return S::create(Tools::onV2); },
          S::requests,
          [](size_t count) {
            std::vector<int> result;
            for (const auto& call : CallLog<S>::get().waitForAll(count))
              result.push_back(call.status);
            return result;
          },
          [] { CallLog<S>::get().clear(); }};
}

inline const ServiceOps kLce = opsOf<LceNames>();
inline const ServiceOps kLle = opsOf<LleNames>();
inline const ServiceOps kLli = opsOf<LliNames>();
inline const std::vector<ServiceOps> kServices{kLce, kLle, kLli};

using processstate::libraryThreadsEnd;
using processstate::threadsNamed;

inline bool comeToBe(size_t count, const std::string& start) {
  return comesTo([&] { return threadsNamed(start) == count; });
}
const char* const kWorker = "orb-sdk";
const char* const kReceiver = "orb-receiver";

// The library against a daemon in the same process that sends only what the test sends.
class AllServicesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    mDaemon.setAutoAnswer(false);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    recording::clear();
    forgetCalls();
  }
  void TearDown() override {
    for (const ServiceOps& service : kServices) service.disable();
    mDaemon.stop();
  }

  orbsim::Daemon& daemon() { return mDaemon; }

  static void forgetCalls() {
    for (const ServiceOps& service : kServices) service.clearCalls();
  }
  void enable(const ServiceOps& service) {
    ASSERT_EQ(1, service.enable());
    awaitSession(service);
  }
  void enableAll() {
    for (const ServiceOps& service : kServices) ASSERT_NO_FATAL_FAILURE(enable(service));
  }
  // Waits for the first frame on the service's next connection: from then on the daemon may send.
  void awaitSession(const ServiceOps& service) {
    Frame first;
    const uint32_t before = mSessions[service.name];
    ASSERT_TRUE(mDaemon.waitForFrame(
        [&](const Frame& frame) {
          return frame.header.source == service.endpoint && frame.sessionId > before;
        },
        &first))
        << service.name;
    mSessions[service.name] = first.sessionId;
  }
  void disable(const ServiceOps& service) {
    const size_t closed = mDaemon.totals().sessionsClosed;
    ASSERT_EQ(1, service.disable());
    ASSERT_TRUE(mDaemon.waitForSessionsClosed(closed + 1));
  }

  void send(const ServiceOps& service, const Blob& blob) {
    ASSERT_TRUE(mDaemon.sendBlob(mSessions[service.name], service.sdkType, blob)) << service.name;
  }
  // A status message; the bytes are the same for every service.
  static Blob status(uint8_t number) { return {0x1a, 0x04, 0x0a, 0x02, 0x08, number}; }

  // The connection works, and the callback has got nothing else since the last forgetCalls().
  void expectHearsJustThis(const ServiceOps& service) {
    send(service, status(4));
    EXPECT_EQ(service.waitForCalls(1), (std::vector<int>{STATUS_NOT_SUPPORTED})) << service.name;
    service.clearCalls();
  }
  static void expectDisabled(const ServiceOps& service) {
    EXPECT_TRUE(service.waitForCalls(0).empty()) << service.name;
    EXPECT_EQ(0, service.disable()) << service.name;
    for (const Request& request : service.requests()) {
      EXPECT_EQ(-5, request.valid()) << request.function;
    }
  }

  std::map<std::string, uint32_t> mSessions;  // by name; ids grow

 private:
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(0);
    return options;
  }
  orbsim::Daemon mDaemon{options()};
};

}  // namespace allservices
