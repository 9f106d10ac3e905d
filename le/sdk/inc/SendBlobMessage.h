// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "OrbIpcMessage.h"
#include "SdkClientEvent.h"

// Client types as they travel in a SendBlobMessage.
enum class OrbSdkType : uint32_t { None = 0, LCE = 7, LLE = 8, LLI = 9 };

OrbSdkType convertSdkTypeToIpc(OrbSdkClientType type);
OrbSdkClientType convertSdkTypeToSdk(OrbSdkType type);

// A service blob to or from the daemon: the type in four bytes, host byte order, then the blob.
class SendBlobMessage : public OrbIpcMessage {
 public:
  static constexpr unsigned int ID = 5;
  static constexpr size_t kTypeSize = sizeof(uint32_t);

  SendBlobMessage() : SendBlobMessage(OrbSdkType::None, {}) {}
  SendBlobMessage(OrbSdkType type, std::vector<unsigned char> blob)
      : OrbIpcMessage("SendBlobMessage", ID), mType(type), mBlob(std::move(blob)) {}

  std::vector<unsigned char> serialize() override { return serializeBehind(0); }
  std::vector<unsigned char> serializeBehind(size_t room) override;
  // Needs at least the four bytes of the type; with fewer it changes nothing.
  void deserialize(std::vector<unsigned char> bytes) override;

  OrbSdkType type() const { return mType; }
  const std::vector<unsigned char>& blob() const { return mBlob; }

 private:
  OrbSdkType mType;
  std::vector<unsigned char> mBlob;
};
