// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Results, refusals and log lines of the exported LLI functions.
#include "LliFixture.h"
#include "ServiceApiSuite.h"

namespace servicetest {

template <>
struct Asked<llitest::LliNames> {
  static void ask() { ASSERT_EQ(0, lliRegLinkInterruptInd(llitest::onInterrupt)); }
  static std::vector<LliProto::ClientMsg> answers() {
    return {llitest::indication({1, 0, 0, 0, 0, 0})};
  }
  static CallLog<llitest::LliNames>::List calls() { return {{"interrupt", 1, {}}}; }
};

}  // namespace servicetest

namespace llitest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lli, ServiceApi, LliNames, ServiceName);

class LliApi : public LliTest {};

TEST_F(LliApi, RegisteringAgainReplacesTheCallbackAndTellsTheDaemonAgain) {
  enable();
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  ASSERT_EQ(0, lliRegLinkInterruptInd(onOtherInterrupt));
  EXPECT_EQ(frame(1).bytes(), frame(2).bytes());
  send(indication({1, 0, 0, 0, 0, 0}));
  EXPECT_EQ(settle(), (CallList{{"otherInterrupt", 1, {}}}));
}

}  // namespace
}  // namespace llitest
