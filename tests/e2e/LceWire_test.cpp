// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The bytes that the library sends to the daemon, and their order in long runs.
#include <memory>

#include "LceFixture.h"
#include "ServiceWireSuite.h"

namespace lcetest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lce, ServiceWire, LceNames, ServiceName);

class LceWire : public LceTest {
 protected:
  static Blob frameBytes(uint64_t session, const Blob& blob) {
    return servicetest::frameBytes<LceNames>(session, blob);
  }
};

TEST_F(LceWire, GetLastEstimationReport) {
  enable();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  EXPECT_EQ(frameBytes(1, kGetLast), frame(1).bytes());
}

TEST_F(LceWire, ReportingActionsTravelAsStopStartReset) {
  enable();
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_STOP));
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_RESET));
  EXPECT_EQ(frameBytes(1, {0x08, 0x04, 0x1a, 0x02, 0x22, 0x00}), frame(1).bytes());
  EXPECT_EQ(frameBytes(1, {0x08, 0x04, 0x1a, 0x04, 0x22, 0x02, 0x08, 0x01}), frame(2).bytes());
  EXPECT_EQ(frameBytes(1, {0x08, 0x04, 0x1a, 0x04, 0x22, 0x02, 0x08, 0x02}), frame(3).bytes());
}

TEST_F(LceWire, RegisteringForReportsSendsNothing) {
  enable();
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  EXPECT_EQ(frameBytes(1, kGetLast), frame(1).bytes());
}

TEST_F(LceWire, CriteriaCarryUsedEntriesCountsAndTransactionId) {
  enable();
  LceReportingCriteria criteria = {};
  for (uint32_t& value : criteria.firstList) value = 99;
  for (uint32_t& value : criteria.secondList) value = 98;
  criteria.firstList[0] = 1;
  criteria.firstList[1] = 300;
  criteria.firstListCount = 2;
  criteria.secondList[0] = 4294967295;
  criteria.secondListCount = 1;
  criteria.criteriaValue1 = 5;
  criteria.criteriaValue2 = 6;
  criteria.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_NR5G;
  const int64_t id = lceSetReportingCriteria(&criteria, onCriteria);
  ASSERT_GT(id, 0);
  const Blob body = Blob{0x08, 5, 0x10, 1} + delimited(0x1a, varint(4294967295)) + Blob{0x20, 2} +
                    delimited(0x2a, Blob{1} + varint(300)) + Blob{0x30, 3, 0x38, 6};
  const Blob blob = Blob{0x08, 0x02, 0x10} + varint(static_cast<uint64_t>(id)) +
                    delimited(0x1a, delimited(0x12, body));
  EXPECT_EQ(frameBytes(1, blob), frame(1).bytes());
}

TEST_F(LceWire, EmptyCriteriaAreAnEmptyMember) {
  enable();
  const LceReportingCriteria criteria = {};
  const int64_t id = lceSetReportingCriteria(&criteria, onCriteria);
  ASSERT_GT(id, 0);
  const Blob blob =
      Blob{0x08, 0x02, 0x10} + varint(static_cast<uint64_t>(id)) + Blob{0x1a, 2, 0x12, 0};
  EXPECT_EQ(frameBytes(1, blob), frame(1).bytes());
}

TEST_F(LceWire, FullListsKeepTheirOrder) {
  enable();
  LceReportingCriteria criteria = {};
  for (uint32_t i = 0; i < LCE_REPORTING_CRITERIA_LIST_MAX; ++i) {
    criteria.firstList[i] = 100 + i;
    criteria.secondList[i] = 200 - i;
  }
  criteria.firstListCount = criteria.secondListCount = LCE_REPORTING_CRITERIA_LIST_MAX;
  ASSERT_GT(lceSetReportingCriteria(&criteria, onCriteria), 0);
  const Blob blob = frame(1).blob();
  LceProto::ServiceMsg message;
  ASSERT_TRUE(message.ParseFromArray(blob.data(), static_cast<int>(blob.size())));
  const auto& request = message.data().set_reporting_criteria();
  EXPECT_EQ(20u, request.first_list_count());
  EXPECT_EQ(20u, request.second_list_count());
  EXPECT_EQ(std::vector<uint32_t>(request.first_list().begin(), request.first_list().end()),
            std::vector<uint32_t>(std::begin(criteria.firstList), std::end(criteria.firstList)));
  EXPECT_EQ(std::vector<uint32_t>(request.second_list().begin(), request.second_list().end()),
            std::vector<uint32_t>(std::begin(criteria.secondList), std::end(criteria.secondList)));
}

TEST_F(LceWire, RequestsMadeBeforeTheDaemonIsThereArriveInOrder) {
  daemon().stop();
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
  ASSERT_TRUE(daemon().start()) << daemon().error();
  EXPECT_EQ(frameBytes(1, {0x08, 0x04, 0x1a, 0x04, 0x22, 0x02, 0x08, 0x01}), frame(2).bytes());
  EXPECT_EQ(frameBytes(1, kEnable), frame(0).bytes());
  EXPECT_EQ(frameBytes(1, kGetLast), frame(1).bytes());
}

TEST_F(LceWire, TenThousandRequestsAreEachAnsweredOnceAndInOrder) {
  constexpr uint32_t kRequests = 10000;
  const auto rate = std::make_shared<uint32_t>(0);  // shared by the copies of the handler
  daemon().setFrameHandler([rate](orbsim::Session& session, const Frame& frame) {
    return frame.blob() == kGetLast &&
           session.sendBlob(orbsim::kSdkTypeLce, serialise(lastReport((*rate)++, 0, 0, 0, "NONE")));
  });
  enable();
  for (uint32_t i = 0; i < kRequests; ++i) ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  ASSERT_EQ(kRequests, waitForCalls(kRequests, std::chrono::seconds(300)).size());
  const CallList all = settle();
  ASSERT_EQ(kRequests, all.size());
  for (uint32_t i = 0; i < kRequests; ++i) {
    ASSERT_EQ(all[i], (Call{"last", 1, {i, {}, {}, 0}})) << i;
  }
}

TEST_F(LceWire, TenThousandCriteriaRequestsTravelInOrderAndAreEachAnsweredOnce) {
  constexpr size_t kRequests = 10000;
  daemon().setAutoAnswer(true);
  enable();
  ASSERT_EQ(1u, waitForCalls(1).size());
  clearCalls();
  std::vector<int64_t> ids;
  for (size_t i = 0; i < kRequests; ++i) ids.push_back(setCriteria());
  ASSERT_EQ(kRequests, waitForCalls(kRequests, std::chrono::seconds(300)).size());
  const CallList all = settle();
  EXPECT_EQ(CallList(kRequests, Call{"criteria", 1, {}}), all);
  const auto frames = daemon().frames();
  ASSERT_EQ(kRequests + 1, frames.size());
  for (size_t i = 0; i < kRequests; ++i) {
    const Blob blob = frames[i + 1].blob();
    LceProto::ServiceMsg message;
    ASSERT_TRUE(message.ParseFromArray(blob.data(), static_cast<int>(blob.size())));
    ASSERT_EQ(static_cast<uint64_t>(ids[i]), message.transaction_id()) << i;
  }
}

}  // namespace
}  // namespace lcetest
