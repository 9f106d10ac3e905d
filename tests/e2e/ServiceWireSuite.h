// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "WireBytes.h"

// Handshake, frame header, enable and disable messages: the same for every service except the
// endpoint and the service number. Each service's *Wire_test.cpp instantiates the suite.
namespace servicetest {

template <class S>
class ServiceWire : public ServiceTest<S> {};

TYPED_TEST_SUITE_P(ServiceWire);

TYPED_TEST_P(ServiceWire, HandshakeIsAnsweredWithSessionAndEndpoint) {
  this->daemon().setNextSessionId(0x01020304);
  this->enable();
  const auto replies = this->daemon().handshakeReplies();
  ASSERT_EQ(1u, replies.size());
  EXPECT_EQ((Blob{2, 0, 0, 0, 0x04, 0x03, 0x02, 0x01, TypeParam::kEndpoint, 0, 0, 0}), replies[0]);
}

TYPED_TEST_P(ServiceWire, FramesCarryTheSessionIdOfTheHandshake) {
  this->daemon().setNextSessionId(0x01020304);
  this->enable();
  EXPECT_EQ(frameBytes<TypeParam>(0x01020304, kEnable), this->frame(0).bytes());
}

TYPED_TEST_P(ServiceWire, BothGenerationsEnableAndDisableWithTheSameBytes) {
  ASSERT_EQ(1, TypeParam::enable(this->onStatus));
  ASSERT_EQ(1, TypeParam::disable());
  ASSERT_TRUE(this->daemon().waitForSessionsClosed(1));
  ASSERT_EQ(0, TypeParam::create(this->onV2));
  ASSERT_EQ(0, TypeParam::destroy());
  ASSERT_TRUE(this->daemon().waitForSessionsClosed(2));
  const auto frames = this->daemon().frames();
  ASSERT_EQ(4u, frames.size());
  EXPECT_EQ(frameBytes<TypeParam>(1, kEnable), frames[0].bytes());
  EXPECT_EQ(frameBytes<TypeParam>(1, kDisable), frames[1].bytes());
  EXPECT_EQ(frameBytes<TypeParam>(2, kEnable), frames[2].bytes());
  EXPECT_EQ(frameBytes<TypeParam>(2, kDisable), frames[3].bytes());
}

REGISTER_TYPED_TEST_SUITE_P(ServiceWire, HandshakeIsAnsweredWithSessionAndEndpoint,
                            FramesCarryTheSessionIdOfTheHandshake,
                            BothGenerationsEnableAndDisableWithTheSameBytes);

}  // namespace servicetest
