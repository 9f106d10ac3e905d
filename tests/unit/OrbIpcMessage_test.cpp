// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "OrbIpcMessage.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<unsigned char>;

TEST(OrbIpcMessage, ConnectToServerIsMessageOneWithoutBytes) {
  OrbIpcConnectToServerMessage message;
  EXPECT_EQ(1u, message.id());
  EXPECT_EQ("OrbIpcConnectToServerMessage", message.name());
  message.deserialize({1, 2});
  EXPECT_TRUE(message.serialize().empty());
  EXPECT_EQ(nullptr, message.session());
}

TEST(OrbIpcMessage, IncomingRawIsMessageTwoWithoutBytes) {
  OrbIpcIncomingRawMessage message(3, 9, {1, 2, 3});
  EXPECT_EQ(2u, message.id());
  EXPECT_EQ("OrbIpcIncomingRawMessage", message.name());
  EXPECT_EQ(3u, message.mSubsystemId);
  EXPECT_EQ(9u, message.mMsgId);
  message.deserialize({7});
  EXPECT_EQ((Bytes{1, 2, 3}), message.mPayload);
  EXPECT_TRUE(message.serialize().empty());
}

TEST(OrbIpcMessage, RawIsMessageThreeAndSerializesToItsPayload) {
  OrbIpcRawMessage message(3, 9, {0, 255, 3});
  EXPECT_EQ(3u, message.id());
  EXPECT_EQ("OrbIpcRawMessage", message.name());
  EXPECT_EQ(3u, message.mSubsystemId);
  EXPECT_EQ(9u, message.mMsgId);
  message.deserialize({7});
  EXPECT_EQ((Bytes{0, 255, 3}), message.serialize());
  EXPECT_EQ((Bytes{0, 255, 3}), message.serialize());
  EXPECT_TRUE(OrbIpcRawMessage(0, 0, {}).serialize().empty());
}

TEST(OrbIpcMessage, RawLeavesRoomForAHeader) {
  OrbIpcRawMessage message(3, 9, {8, 255, 3});
  EXPECT_EQ((Bytes{0, 0, 8, 255, 3}), message.serializeBehind(2));
  EXPECT_EQ((Bytes{8, 255, 3}), message.serialize());
}

TEST(OrbIpcMessage, SessionEndIsMessageFourWithoutBytes) {
  OrbIpcSessionEndMessage message(0xFFFFFFFF);
  EXPECT_EQ(4u, message.id());
  EXPECT_EQ("OrbIpcSessionEndMessage", message.name());
  EXPECT_EQ(0xFFFFFFFFu, message.mSessionId);
  message.deserialize({7});
  EXPECT_TRUE(message.serialize().empty());
}

}  // namespace
