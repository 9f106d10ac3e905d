// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Disabling one service while the shared worker is busy with another service.
#include <poll.h>

#include <future>

#include "AllServicesFixture.h"

namespace allservices {
namespace {

using std::chrono::milliseconds;

// The limit is 500 ms; there is a large margin for sanitizers and a loaded machine.
constexpr milliseconds kDisableBound(2000);

class AllServicesDisable : public AllServicesTest {
 protected:
  static void disableInTime(const ServiceOps& service) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(1, service.disable()) << service.name;
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_LT(std::chrono::duration_cast<milliseconds>(took).count(), kDisableBound.count());
  }
  // From now on, a new connection gets no first handshake record.
  void leaveTheHandshakeOut() {
    daemon().setHandshake([](int fd, uint32_t) {
      pollfd hangUp = {fd, POLLRDHUP, 0};
      poll(&hangUp, 1, -1);  // sends nothing until the client disconnects
      return false;
    });
  }
  template <class S>
  bool disableMessageArrived(const ServiceOps& service) {
    const Blob expected = frameBytes<S>(static_cast<uint8_t>(mSessions[service.name]), kDisable);
    return daemon().waitForFrame([&](const Frame& frame) { return frame.bytes() == expected; });
  }
};

TEST_F(AllServicesDisable, HealthyConnectionGetsTheDisableMessageWhileTheWorkerConnectsAnother) {
  enable(kLce);
  leaveTheHandshakeOut();
  ASSERT_EQ(1, kLle.enable());
  ASSERT_TRUE(daemon().waitForConnections(2));

  disableInTime(kLce);
  EXPECT_TRUE(disableMessageArrived<LceNames>(kLce));
  EXPECT_TRUE(daemon().waitForSessionsClosed(1));
  EXPECT_TRUE(kLle.waitForCalls(0).empty());
  expectDisabled(kLce);

  disableInTime(kLle);
  EXPECT_TRUE(libraryThreadsEnd());
}

TEST_F(AllServicesDisable, HealthyConnectionGetsTheDisableMessageWhileTheWorkerIsInACallback) {
  static std::promise<void>* entered = nullptr;
  static std::shared_future<void> left;
  std::promise<void> hasEntered;
  std::promise<void> mayLeave;
  entered = &hasEntered;
  left = mayLeave.get_future().share();
  enable(kLli);
  daemon().setHandshake([](int, uint32_t) { return false; });
  ASSERT_EQ(1, orb_lle_enable([](status_e) {
              entered->set_value();
              left.wait();
            }));
  hasEntered.get_future().wait();

  disableInTime(kLli);
  EXPECT_TRUE(disableMessageArrived<LliNames>(kLli));
  EXPECT_TRUE(daemon().waitForSessionsClosed(1));
  mayLeave.set_value();
}

TEST_F(AllServicesDisable, DeepQueueOfItsOwnDoesNotCostTheDisableMessageNorRepeatIt) {
  enable(kLle);
  for (uint32_t i = 0; i < 50000; ++i) ASSERT_EQ(0, lleSetReportingCriteria(1));
  disableInTime(kLle);
  EXPECT_TRUE(disableMessageArrived<LleNames>(kLle));
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  const auto frames = daemon().frames();
  EXPECT_EQ(1, std::count_if(frames.begin(), frames.end(),
                             [](const Frame& frame) { return frame.blob() == kDisable; }));
  EXPECT_EQ(kDisable, frames.back().blob());
}

TEST_F(AllServicesDisable, SilentConnectionOfOneDoesNotHoldUpTheOthersForLonger) {
  enable(kLce);
  enable(kLli);
  leaveTheHandshakeOut();
  ASSERT_EQ(1, kLle.enable());
  ASSERT_TRUE(daemon().waitForConnections(3));
  disableInTime(kLle);
  // The worker is free again: requests of the other services are sent.
  for (const ServiceOps& service : {kLce, kLli}) expectHearsJustThis(service);
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_STOP));
  EXPECT_TRUE(daemon().waitForFrame([](const Frame& frame) {
    return frame.bytes() == frameBytes<LceNames>(1, {0x08, 0x04, 0x1a, 0x02, 0x22, 0x00});
  }));
}

}  // namespace
}  // namespace allservices
