// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The payload of the one message that carries service blobs. Input: the payload.
#include <cstring>

#include "Check.h"
#include "FuzzTarget.h"
#include "SdkClientEndpoint.h"
#include "SendBlobMessage.h"

namespace {

using Bytes = std::vector<unsigned char>;

void checkTooShort(const Bytes& payload) {
  const Bytes before{1, 2, 3};
  SendBlobMessage message(OrbSdkType::LLE, before);
  message.deserialize(payload);
  FUZZ_CHECK(message.type() == OrbSdkType::LLE && message.blob() == before);
}

void checkWhole(const Bytes& payload) {
  SendBlobMessage message(OrbSdkType::LLE, {1, 2, 3});
  message.deserialize(payload);
  uint32_t type = 0;
  std::memcpy(&type, payload.data(), sizeof type);
  FUZZ_CHECK(static_cast<uint32_t>(message.type()) == type);
  FUZZ_CHECK(message.blob() == Bytes(payload.begin() + sizeof type, payload.end()));
  FUZZ_CHECK(message.serialize() == payload);
}

// A number is either one client type, in both directions of the conversion, or none.
void checkType(const Bytes& payload) {
  SendBlobMessage message;
  message.deserialize(payload);
  const OrbSdkClientType client = convertSdkTypeToSdk(message.type());
  if (client == OrbSdkClientType::None) return;
  FUZZ_CHECK(convertSdkTypeToIpc(client) == message.type());
  FUZZ_CHECK(static_cast<size_t>(client) < kOrbSdkClientTypes);
  (void)endpointOf(client);
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) { return 0; }

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Bytes payload(data, data + size);
  if (size < SendBlobMessage::kTypeSize) {
    checkTooShort(payload);
  } else {
    checkWhole(payload);
  }
  checkType(payload);
  return 0;
}
