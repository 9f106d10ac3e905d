// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Ids of criteria requests; the test chooses the random numbers instead of the C library.
#include <gtest/gtest.h>

#include <deque>

#include "Application.h"
#include "CLibrary.h"
#include "RecordingPlatform.h"

namespace {

std::deque<int> drawn;  // by the test's thread only

}  // namespace

// Replaces the function of the C library.
extern "C" int rand() ORB_C_FUNCTION {
  const int number = drawn.front();
  drawn.pop_front();
  return number;
}

using namespace application;

namespace {

class LceIds : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(1, orb_lce_enable(onStatus)); }
  void TearDown() override {
    orb_lce_disable();
    EXPECT_TRUE(drawn.empty());
    state().clear();
    recording::clear();
  }
  static int64_t setCriteria() {
    const LceReportingCriteria criteria = {};
    return lceSetReportingCriteria(&criteria, onCriteria);
  }
};

TEST_F(LceIds, ZeroIsNoId) {
  drawn = {0, 0, 7};
  EXPECT_EQ(7, setCriteria());
}

TEST_F(LceIds, IdOfARequestThatWaitsForItsAnswerIsNotGivenAgain) {
  drawn = {7, 7, 7, 8};
  EXPECT_EQ(7, setCriteria());
  EXPECT_EQ(8, setCriteria());
}

TEST_F(LceIds, NewServiceObjectKnowsNoIds) {
  drawn = {7, 7};
  EXPECT_EQ(7, setCriteria());
  orb_lce_disable();
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  EXPECT_EQ(7, setCriteria());
}

}  // namespace
