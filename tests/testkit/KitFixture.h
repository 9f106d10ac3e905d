// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "KitClient.h"

namespace kitclient {

// A test with a daemon and an application of three services; both end with the test. Used on the
// test's thread.
class Kit : public orbsim::testkit::DaemonTest {
 protected:
  void SetUp() override {
    clear();
    DaemonTest::SetUp();
  }
  void TearDown() override {
    destroySdfClient();
    destroyLleClient();
    destroyLliClient();
    DaemonTest::TearDown();
  }

  void enableLce() {
    ASSERT_EQ(0, createLceClient(onLce));
    ASSERT_TRUE(waitFor("lce status 0"));
    ASSERT_EQ(0, lceRegEstimationReports(onCapacity));
  }
  void enableLle() {
    ASSERT_EQ(0, createLleClient(onLle));
    ASSERT_TRUE(waitFor("lle status 0"));
    ASSERT_EQ(0, lleRegEstimationReports(onLatency));
  }
  void enableLli() {
    ASSERT_EQ(0, createLliClient(onLli));
    ASSERT_EQ(0, lliRegLinkInterruptInd(onHandoff));
    ASSERT_TRUE(daemon().waitForRequest(orbsim::testkit::Service::kLli, "register"));
  }
};

}  // namespace kitclient
