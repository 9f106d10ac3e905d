// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdio>

#include "AllServicesFixture.h"
#include "FailingNew.h"

namespace allservices {

using Statuses = std::vector<int>;

// The shipped library without memory, at one of its allocations after the other.
class OutOfMemoryTest : public AllServicesTest {
 protected:
  void SetUp() override {
    AllServicesTest::SetUp();
    // The first user creates the permanent objects, above all the log.
    for (const ServiceOps& service : kServices) {
      ASSERT_NO_FATAL_FAILURE(enable(service));
      ASSERT_NO_FATAL_FAILURE(disable(service));
    }
    ASSERT_TRUE(libraryThreadsEnd());
    forgetCalls();
    mDescriptors = processstate::descriptors();
  }
  void TearDown() override {
    AllServicesTest::TearDown();
    application::state().clear();
  }

  // A request reaches the daemon, and the answer reaches the application.
  void expectEnabled(const ServiceOps& service) {
    service.clearCalls();
    expectSent(service);
    expectHearsJustThis(service);
  }
  void expectSent(const ServiceOps& service) {
    const size_t frames = daemon().frames().size();
    EXPECT_LE(0, service.requests().front().valid()) << service.name;
    EXPECT_TRUE(daemon().waitForFrames(frames + 1)) << service.name;
  }
  // No service is enabled any more: everything is released.
  void expectNothingLeft() {
    EXPECT_TRUE(daemon().waitForConnectionsClosed(daemon().totals().connections));
    EXPECT_TRUE(libraryThreadsEnd());
    EXPECT_TRUE(comesTo([this] { return processstate::descriptors() == mDescriptors; }))
        << mDescriptors << " -> " << processstate::descriptors();
  }

  static void print(const char* what, const ServiceOps& service, size_t failed) {
    std::printf("%s, %s: %zu allocations failed\n", what, service.name, failed);
    EXPECT_GT(failed, 0u) << what;
  }

 private:
  size_t mDescriptors = 0;
};

}  // namespace allservices
