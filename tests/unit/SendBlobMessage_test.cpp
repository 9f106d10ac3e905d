// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SendBlobMessage.h"

#include <gtest/gtest.h>

#include "SdkClientEndpoint.h"

namespace {

using Bytes = std::vector<unsigned char>;

TEST(SendBlobMessage, IsMessageFive) {
  SendBlobMessage message(OrbSdkType::LCE, {1});
  EXPECT_EQ(5u, message.id());
  EXPECT_EQ("SendBlobMessage", message.name());
}

TEST(SendBlobMessage, SerializesTypeInFourBytesThenTheBlob) {
  EXPECT_EQ((Bytes{7, 0, 0, 0, 0x0A, 0x0B}),
            SendBlobMessage(OrbSdkType::LCE, {0x0A, 0x0B}).serialize());
  EXPECT_EQ((Bytes{9, 0, 0, 0}), SendBlobMessage(OrbSdkType::LLI, {}).serialize());
  EXPECT_EQ((Bytes{0x44, 0x33, 0x22, 0x11, 0}),
            SendBlobMessage(static_cast<OrbSdkType>(0x11223344), {0}).serialize());
}

TEST(SendBlobMessage, LeavesRoomForAHeader) {
  SendBlobMessage message(OrbSdkType::LCE, {0x0A});
  EXPECT_EQ((Bytes{0, 0, 0, 7, 0, 0, 0, 0x0A}), message.serializeBehind(3));
}

TEST(SendBlobMessage, DeserializesWhatSerializeMakes) {
  SendBlobMessage message;
  message.deserialize({8, 0, 0, 0, 1, 2, 3});
  EXPECT_EQ(OrbSdkType::LLE, message.type());
  EXPECT_EQ((Bytes{1, 2, 3}), message.blob());
  EXPECT_EQ((Bytes{8, 0, 0, 0, 1, 2, 3}), message.serialize());
}

TEST(SendBlobMessage, FourBytesAreATypeWithAnEmptyBlob) {
  SendBlobMessage message(OrbSdkType::LCE, {1, 2});
  message.deserialize({9, 0, 0, 0});
  EXPECT_EQ(OrbSdkType::LLI, message.type());
  EXPECT_TRUE(message.blob().empty());
}

TEST(SendBlobMessage, FewerThanFourBytesChangeNothing) {
  for (size_t size = 0; size < 4; ++size) {
    SendBlobMessage message(OrbSdkType::LLE, {5});
    message.deserialize(Bytes(size, 0xFF));
    EXPECT_EQ(OrbSdkType::LLE, message.type()) << size;
    EXPECT_EQ((Bytes{5}), message.blob()) << size;
  }
}

TEST(SendBlobMessage, UnknownTypeIsKept) {
  SendBlobMessage message;
  message.deserialize({0xFF, 0xFF, 0xFF, 0xFF, 1});
  EXPECT_EQ(0xFFFFFFFFu, static_cast<uint32_t>(message.type()));
  EXPECT_EQ((Bytes{1}), message.blob());
  message.deserialize({4, 3, 2, 1});
  EXPECT_EQ(0x01020304u, static_cast<uint32_t>(message.type()));
  EXPECT_TRUE(message.blob().empty());
}

TEST(SendBlobMessage, SdkTypesConvertToIpcTypes) {
  const uint32_t expected[] = {0, 0, 0, 0, 4, 5, 0, 6, 0, 7, 8, 9, 0, 0, 0};
  for (uint32_t type = 0; type < 15; ++type) {
    EXPECT_EQ(expected[type],
              static_cast<uint32_t>(convertSdkTypeToIpc(static_cast<OrbSdkClientType>(type))))
        << type;
  }
  EXPECT_EQ(OrbSdkType::None, convertSdkTypeToIpc(static_cast<OrbSdkClientType>(0xFFFFFFFF)));
}

TEST(SendBlobMessage, IpcTypesConvertToSdkTypes) {
  const uint32_t expected[] = {0, 0, 0, 0, 4, 5, 7, 9, 10, 11, 0, 0, 0};
  for (uint32_t type = 0; type < 13; ++type) {
    EXPECT_EQ(expected[type],
              static_cast<uint32_t>(convertSdkTypeToSdk(static_cast<OrbSdkType>(type))))
        << type;
  }
  EXPECT_EQ(OrbSdkClientType::None, convertSdkTypeToSdk(static_cast<OrbSdkType>(0xFFFFFFFF)));
}

TEST(SendBlobMessage, EveryClientTypeHasItsEndpoint) {
  const int32_t expected[] = {108, 108, 108, 108, 101, 102, 108, 104, 108, 105, 106, 107, 108, 108};
  for (uint32_t type = 0; type < 14; ++type) {
    EXPECT_EQ(expected[type], static_cast<int32_t>(endpointOf(static_cast<OrbSdkClientType>(type))))
        << type;
  }
  EXPECT_EQ(ProcessId::Other, endpointOf(static_cast<OrbSdkClientType>(0xFFFFFFFF)));
}

}  // namespace
