// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// LCE, LLE and LLI in one process: shared and separate parts.
#include <array>
#include <thread>

#include "AllServicesFixture.h"

namespace allservices {
namespace {

class AllServices : public AllServicesTest {};

TEST_F(AllServices, ShareOneWorkerAndHaveASocketEach) {
  const size_t fds = processstate::descriptors();
  enableAll();
  EXPECT_TRUE(comeToBe(1, kWorker));
  EXPECT_TRUE(comeToBe(3, kReceiver));
  EXPECT_EQ(3u, daemon().sessionCount());
  EXPECT_LT(fds, processstate::descriptors());
  const auto replies = daemon().handshakeReplies();
  ASSERT_EQ(3u, replies.size());
  for (uint8_t i = 0; i < 3; ++i) {
    const auto session = static_cast<uint8_t>(i + 1);
    const auto endpoint = static_cast<uint8_t>(105 + i);
    EXPECT_EQ((Blob{2, 0, 0, 0, session, 0, 0, 0, endpoint, 0, 0, 0}), replies[i]);
  }
  const auto frames = daemon().frames();
  ASSERT_EQ(3u, frames.size());
  EXPECT_EQ(frameBytes<LceNames>(1, kEnable), frames[0].bytes());
  EXPECT_EQ(frameBytes<LleNames>(2, kEnable), frames[1].bytes());
  EXPECT_EQ(frameBytes<LliNames>(3, kEnable), frames[2].bytes());
}

TEST_F(AllServices, JoinTheClientOfTheFirst) {
  enableAll();
  size_t made = 0;
  size_t joined = 0;
  for (const LogLine& line : linesOfUnit("OrbSdk", "SdkClient")) {
    if (line.message == "SdkClient new Instance created") ++made;
    if (line.message == "Instance is available and already running, post event.") ++joined;
  }
  EXPECT_EQ(1u, made);
  EXPECT_EQ(2u, joined);
}

TEST_F(AllServices, EachHearsWhatIsSentToItAlone) {
  enableAll();
  for (const ServiceOps& service : kServices) expectHearsJustThis(service);
  for (const ServiceOps& service : kServices) EXPECT_TRUE(service.waitForCalls(0).empty());
}

TEST_F(AllServices, BlobGoesToTheServiceItNamesWhateverItsConnection) {
  enableAll();
  ASSERT_TRUE(daemon().sendBlob(mSessions[kLce.name], kLle.sdkType, status(1)));
  EXPECT_EQ(kLle.waitForCalls(1), (std::vector<int>{STATUS_SUCCESS}));
  expectHearsJustThis(kLce);
}

TEST_F(AllServices, RequestsOfEachTravelOnItsOwnConnection) {
  enableAll();
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_STOP));
  ASSERT_EQ(0, lleSetReportingCriteria(1));
  ASSERT_EQ(0, lliRegLinkInterruptInd(llitest::onInterrupt));
  for (const Blob& expected :
       {frameBytes<LceNames>(1, {0x08, 0x04, 0x1a, 0x02, 0x22, 0x00}),
        frameBytes<LleNames>(2, {0x08, 0x02, 0x1a, 0x04, 0x12, 0x02, 0x08, 0x01}),
        frameBytes<LliNames>(3, {0x08, 0x01, 0x1a, 0x04, 0x12, 0x02, 0x08, 0x01})}) {
    Frame found;
    EXPECT_TRUE(daemon().waitForFrame([&](const Frame& frame) { return frame.bytes() == expected; },
                                      &found));
    EXPECT_EQ(found.header.sessionId, found.sessionId);
  }
}

TEST_F(AllServices, LostConnectionOfOneIsToldToAllAndTheOthersGoOn) {
  enableAll();
  ASSERT_TRUE(daemon().closeSession(mSessions[kLle.name]));
  for (const ServiceOps& service : kServices) {
    EXPECT_EQ(service.waitForCalls(1), (std::vector<int>{STATUS_SERVICE_DOWN})) << service.name;
  }
  forgetCalls();
  expectHearsJustThis(kLce);
  expectHearsJustThis(kLli);
  ASSERT_EQ(0, lleSetReportingCriteria(1));
  awaitSession(kLle);
  expectHearsJustThis(kLle);
}

TEST_F(AllServices, OneMayBeEnabledAgainWhileTheOthersRun) {
  enableAll();
  for (const ServiceOps& service : kServices) {
    disable(service);
    enable(service);
    for (const ServiceOps& each : kServices) expectHearsJustThis(each);
    EXPECT_TRUE(comeToBe(1, kWorker));
  }
}

TEST_F(AllServices, CallbackOfOneMayDisableAnother) {
  enable(kLce);
  enable(kLli);
  ASSERT_EQ(1, orb_lle_enable([](status_e status) {
              CallLog<LleNames>::get().add({"status", status, {}});
              CallLog<LleNames>::get().add({"disabled LCE", orb_lce_disable(), {}});
            }));
  awaitSession(kLle);
  send(kLle, status(1));
  EXPECT_EQ(kLle.waitForCalls(2), (std::vector<int>{STATUS_SUCCESS, 1}));
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  expectDisabled(kLce);
  expectHearsJustThis(kLli);
}

TEST_F(AllServices, ThreadsEachWithAServiceOfTheirOwnMayComeAndGo) {
  std::vector<std::thread> applications;
  for (const ServiceOps& service : kServices) {
    applications.emplace_back([&service] {
      for (int round = 0; round < 50; ++round) {
        EXPECT_EQ(1, service.enable()) << service.name;
        for (const Request& request : service.requests()) EXPECT_LE(0, request.valid());
        EXPECT_EQ(1, service.disable()) << service.name;
      }
    });
  }
  for (std::thread& thread : applications) thread.join();
  EXPECT_TRUE(libraryThreadsEnd());
  for (const ServiceOps& service : kServices) EXPECT_TRUE(service.waitForCalls(0).empty());
  for (const ServiceOps& service : kServices) expectDisabled(service);
}

using Order = std::array<size_t, 3>;

class DisablingInOrder : public AllServicesTest, public ::testing::WithParamInterface<Order> {
 protected:
  // After it, all objects that are made once per process exist.
  void wholeCycle() {
    enableAll();
    for (const ServiceOps& service : kServices) disable(service);
    ASSERT_TRUE(libraryThreadsEnd());
  }
};

TEST_P(DisablingInOrder, LeavesTheOthersAloneAndTheLastEndsTheWorker) {
  ASSERT_NO_FATAL_FAILURE(wholeCycle());
  const size_t fds = processstate::descriptors();
  const size_t tasks = processstate::threads();
  ASSERT_NO_FATAL_FAILURE(enableAll());
  forgetCalls();

  for (size_t step = 0; step < 3; ++step) {
    ASSERT_NO_FATAL_FAILURE(disable(kServices[GetParam()[step]]));
    for (size_t i = 0; i <= step; ++i) expectDisabled(kServices[GetParam()[i]]);
    for (size_t i = step + 1; i < 3; ++i) expectHearsJustThis(kServices[GetParam()[i]]);
    if (step < 2) {
      EXPECT_TRUE(comeToBe(1, kWorker));
    }
    EXPECT_EQ(2 - step, daemon().sessionCount());
  }
  EXPECT_TRUE(libraryThreadsEnd());
  EXPECT_TRUE(comesTo([&] { return processstate::threads() <= tasks; }))
      << tasks << " -> " << processstate::threads();
  EXPECT_TRUE(comesTo([&] { return processstate::descriptors() <= fds; }))
      << fds << " -> " << processstate::descriptors();

  ASSERT_NO_FATAL_FAILURE(enableAll());
  EXPECT_TRUE(comeToBe(1, kWorker));
  for (const ServiceOps& service : kServices) expectHearsJustThis(service);
}

INSTANTIATE_TEST_SUITE_P(EveryOrder, DisablingInOrder,
                         ::testing::Values(Order{0, 1, 2}, Order{0, 2, 1}, Order{1, 0, 2},
                                           Order{1, 2, 0}, Order{2, 0, 1}, Order{2, 1, 0}),
                         [](const auto& order) {
                           std::string name;
                           for (const size_t index : order.param) name += kServices[index].name;
                           return name;
                         });

}  // namespace
}  // namespace allservices
