// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Results, refusals and log lines of the exported LCE functions, and their results after the daemon
// is lost.
#include "LceFixture.h"
#include "ServiceApiSuite.h"

namespace servicetest {

template <>
struct Asked<lcetest::LceNames> {
  static inline uint64_t sCriteria = 0;  // the number of the request

  static void ask() {
    const LceReportingCriteria criteria = {};
    const int64_t id = lceSetReportingCriteria(&criteria, lcetest::onCriteria);
    ASSERT_GT(id, 0);
    sCriteria = static_cast<uint64_t>(id);
    ASSERT_EQ(0, lceGetLastEstimationReport(lcetest::onLast));
    ASSERT_EQ(0, lceRegEstimationReports(lcetest::onReport));
  }
  static std::vector<LceProto::ClientMsg> answers() {
    return {lcetest::lastReport(1, 0, 0, 0, "NONE"), lcetest::periodicReport(2, 0, 0, 0, "NONE"),
            lcetest::criteriaResult(sCriteria, true, "NONE")};
  }
  static CallLog<lcetest::LceNames>::List calls() {
    return {{"last", LCE_ESTIMATION_REPORT_STATUS_SUCCESS, {1, {}, {}, 0}},
            {"report", LCE_ESTIMATION_REPORT_STATUS_SUCCESS, {2, {}, {}, 0}},
            {"criteria", 1, {}}};
  }
};

}  // namespace servicetest

namespace lcetest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lce, ServiceApi, LceNames, ServiceName);

class LceApi : public LceTest {};

LceReportingCriteria criteria() {
  LceReportingCriteria result = {};
  result.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_LTE;
  return result;
}

TEST_F(LceApi, InvalidArgumentsAreRefusedSilentlyAndSendNothing) {
  enable();
  recording::clear();
  LceReportingCriteria bad = criteria();
  EXPECT_EQ(-2, lceSetReportingCriteria(&bad, nullptr));
  EXPECT_EQ(-2, lceSetReportingCriteria(nullptr, onCriteria));
  bad.firstListCount = 21;
  EXPECT_EQ(-2, lceSetReportingCriteria(&bad, onCriteria));
  bad.firstListCount = 255;
  EXPECT_EQ(-2, lceSetReportingCriteria(&bad, onCriteria));
  bad = criteria();
  bad.secondListCount = 21;
  EXPECT_EQ(-2, lceSetReportingCriteria(&bad, onCriteria));
  bad = criteria();
  bad.accessNetworkType = static_cast<SdlAccessNetworkType>(4);
  EXPECT_EQ(-2, lceSetReportingCriteria(&bad, onCriteria));
  bad.accessNetworkType = static_cast<SdlAccessNetworkType>(-1);
  EXPECT_EQ(-2, lceSetReportingCriteria(&bad, onCriteria));
  EXPECT_EQ(-2, lcePerformReportingAction(static_cast<LceReportingAction>(4)));
  EXPECT_EQ(-2, lcePerformReportingAction(static_cast<LceReportingAction>(-1)));
  for (const char* function : {"lceSetReportingCriteria", "lceGetLastEstimationReport",
                               "lcePerformReportingAction", "lceRegEstimationReports"}) {
    EXPECT_TRUE(linesOf(function).empty()) << function;
  }
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_STOP));
  ASSERT_TRUE(daemon().waitForFrames(2));
  const auto frames = daemon().frames();
  EXPECT_EQ((Blob{0x08, 0x04, 0x1a, 0x02, 0x22, 0x00}), frames[1].blob());
}

TEST_F(LceApi, FullAndEmptyListsAndNoNetworkAreAccepted) {
  enable();
  LceReportingCriteria full = {};
  EXPECT_GT(lceSetReportingCriteria(&full, onCriteria), 0);
  full.firstListCount = full.secondListCount = LCE_REPORTING_CRITERIA_LIST_MAX;
  full.accessNetworkType = SDL_ACCESS_NETWORK_TYPE_NR5G;
  EXPECT_GT(lceSetReportingCriteria(&full, onCriteria), 0);
  EXPECT_TRUE(daemon().waitForFrames(3));
}

TEST_F(LceApi, TransactionIdsAreDifferentAndFitTheirRange) {
  enable();
  const LceReportingCriteria valid = criteria();
  const int64_t first = lceSetReportingCriteria(&valid, onCriteria);
  const int64_t second = lceSetReportingCriteria(&valid, onCriteria);
  EXPECT_NE(first, second);
  for (const int64_t id : {first, second}) {
    EXPECT_GE(id, 1);
    EXPECT_LE(id, 4294967295);
  }
}

TEST_F(LceApi, NextRequestAfterALostConnectionFindsTheDaemonAgain) {
  enableBoth();
  daemon().stop();
  ASSERT_EQ(2u, waitForCalls(2).size());
  clearCalls();
  daemon().setAutoAnswer(true);
  daemon().setNextSessionId(1);
  ASSERT_TRUE(daemon().start()) << daemon().error();
  ASSERT_EQ(0, lceGetLastEstimationReport(onLast));
  EXPECT_EQ(waitForCalls(1),
            (CallList{{"last", LCE_ESTIMATION_REPORT_STATUS_CRITERIA_NOT_SET, {}}}));
}

TEST_F(LceApi, PendingCriteriaRequestSurvivesALostConnection) {
  enable();
  const auto id = static_cast<uint64_t>(setCriteria());
  ASSERT_TRUE(daemon().waitForFrames(2));
  ASSERT_TRUE(daemon().closeSession(1));
  ASSERT_EQ(waitForCalls(1), (CallList{{"status", STATUS_SERVICE_DOWN, {}}}));
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_STOP));
  ASSERT_TRUE(daemon().waitForFrames(3));
  mSession = 2;
  clearCalls();
  send(criteriaResult(id, true, "NONE"));
  EXPECT_EQ(settle(), (CallList{{"criteria", 1, {}}}));
}

TEST_F(LceApi, NextRequestAfterARefusedHandshakeTriesAgain) {
  daemon().setHandshake([](int, uint32_t) { return false; });
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_EQ(1u, waitForCalls(1).size());
  daemon().setHandshake({});
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_STOP));
  ASSERT_TRUE(daemon().waitForFrames(1));
  EXPECT_EQ((Blob{0x08, 0x04, 0x1a, 0x02, 0x22, 0x00}), daemon().frames()[0].blob())
      << "the enable message was dropped";
  EXPECT_EQ(1u, calls().size());
}

}  // namespace
}  // namespace lcetest
