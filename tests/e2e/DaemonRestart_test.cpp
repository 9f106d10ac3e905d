// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A restarted daemon counts its sessions from the first id again, even if the library is still busy
// with the former connections.
#include <future>

#include "AllServicesFixture.h"

namespace allservices {
namespace {

class DaemonRestart : public AllServicesTest {
 protected:
  // LCE's receiver stays in its callback until release().
  void enableLceAndKeepItBusy() {
    sEntered = &mEntered;
    sMayLeave = mMayLeave.get_future().share();
    ASSERT_EQ(1, orb_lce_enable([](status_e) {
                sEntered->set_value();
                sMayLeave.wait();
              }));
    awaitSession(kLce);
    send(kLce, status(1));
    mEntered.get_future().wait();
  }
  void restartDaemon() {
    daemon().stop();
    ASSERT_TRUE(daemon().start());
    mSessions.clear();
    daemon().clearRecords();
  }
  // With the first id, which was LCE's.
  void expectEnabledAsFirst(const ServiceOps& service) {
    ASSERT_NO_FATAL_FAILURE(enable(service));
    EXPECT_EQ(1u, mSessions[service.name]);
    expectHearsJustThis(service);
  }
  void release() { mMayLeave.set_value(); }

  static inline std::promise<void>* sEntered = nullptr;
  static inline std::shared_future<void> sMayLeave;
  std::promise<void> mEntered;
  std::promise<void> mMayLeave;
};

TEST_F(DaemonRestart, ServiceIsEnabledWhileAnotherOnesCallbackHoldsTheFormerConnection) {
  ASSERT_NO_FATAL_FAILURE(enableLceAndKeepItBusy());
  restartDaemon();
  expectEnabledAsFirst(kLle);
  std::promise<void> lost;
  sEntered = &lost;
  release();
  lost.get_future().wait();  // all services are notified of a loss, LCE first
  EXPECT_EQ(kLle.waitForCalls(1), std::vector<int>{STATUS_SERVICE_DOWN});
  kLle.clearCalls();
  expectHearsJustThis(kLle);
  EXPECT_EQ(1u, daemon().totals().connections);
}

}  // namespace
}  // namespace allservices
