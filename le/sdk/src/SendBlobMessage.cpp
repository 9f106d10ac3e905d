// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SendBlobMessage.h"

#include <string.h>

namespace {

struct TypePair {
  uint32_t sdk;
  uint32_t ipc;
};

// 4, 5 and 7 belong to other clients of the platform; 7 is sent as 6.
constexpr TypePair kTypes[] = {{4, 4}, {5, 5}, {7, 6}, {9, 7}, {10, 8}, {11, 9}};

}  // namespace

OrbSdkType convertSdkTypeToIpc(OrbSdkClientType type) {
  for (const TypePair& pair : kTypes) {
    if (pair.sdk == static_cast<uint32_t>(type)) return static_cast<OrbSdkType>(pair.ipc);
  }
  return OrbSdkType::None;
}

OrbSdkClientType convertSdkTypeToSdk(OrbSdkType type) {
  for (const TypePair& pair : kTypes) {
    if (pair.ipc == static_cast<uint32_t>(type)) return static_cast<OrbSdkClientType>(pair.sdk);
  }
  return OrbSdkClientType::None;
}

std::vector<unsigned char> SendBlobMessage::serializeBehind(size_t room) {
  std::vector<unsigned char> bytes(room + kTypeSize + mBlob.size());
  unsigned char* const payload = bytes.data() + room;
  memcpy(payload, &mType, kTypeSize);
  if (!mBlob.empty()) memcpy(payload + kTypeSize, mBlob.data(), mBlob.size());
  return bytes;
}

void SendBlobMessage::deserialize(std::vector<unsigned char> bytes) {
  if (bytes.size() < kTypeSize) return;
  memcpy(&mType, bytes.data(), kTypeSize);
  bytes.erase(bytes.begin(), bytes.begin() + kTypeSize);
  mBlob = std::move(bytes);
}
