// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Results, refusals and log lines of the exported LLI functions.
#include "LliFixture.h"
#include "ServiceApiSuite.h"

namespace llitest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lli, ServiceApi, LliNames, ServiceName);

class LliApi : public LliTest {};

TEST_F(LliApi, RefusedCallsLeaveTheCallbacksOfEarlierOnes) {
  enable();
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  EXPECT_EQ(0, orb_lli_enable(nullptr));
  EXPECT_EQ(-2, lliRegLinkInterruptInd(nullptr));
  send(indication({1, 0, 0, 0, 0, 0}));
  EXPECT_EQ(settle(), (CallList{{"interrupt", 1, {}}}));
}

TEST_F(LliApi, RegisteringAgainReplacesTheCallbackAndTellsTheDaemonAgain) {
  enable();
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  ASSERT_EQ(0, lliRegLinkInterruptInd(onOtherInterrupt));
  EXPECT_EQ(frame(1).bytes(), frame(2).bytes());
  send(indication({1, 0, 0, 0, 0, 0}));
  EXPECT_EQ(settle(), (CallList{{"otherInterrupt", 1, {}}}));
}

TEST_F(LliApi, EnableAfterDisableStartsAfresh) {
  enableBoth();
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  ASSERT_EQ(1, orb_lli_disable());
  ASSERT_EQ(1, orb_lli_enable(onStatus));
  ASSERT_TRUE(daemon().waitForFrame([](const Frame& frame) { return frame.sessionId == 2; }));
  mSession = 2;
  send(indication({1, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(1u, calls().size()) << "the second generation's callback is forgotten";
}

}  // namespace
}  // namespace llitest
