// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "WakelockWrapper.h"

#include <gtest/gtest.h>

#include "RecordingPlatform.h"

namespace {

using orb::utils::WakelockWrapper;

TEST(WakelockWrapper, IsOneSharedObjectPerProcess) {
  const std::shared_ptr<WakelockWrapper> first = WakelockWrapper::getInstance();
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, WakelockWrapper::getInstance());
}

TEST(WakelockWrapper, OperationsDoNothing) {
  recording::clear();
  const std::shared_ptr<WakelockWrapper> wrapper = WakelockWrapper::getInstance();
  wrapper->start();
  wrapper->acquireWakelock();
  EXPECT_EQ(0, wrapper->doResetTimer());
  EXPECT_EQ(0, wrapper->releaseWakelock());
  EXPECT_TRUE(recording::lines().empty());
}

}  // namespace
