// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "OrbEventBase.h"

// Kinds of SDK clients. This library uses LCE, LLE and LLI. 4 to 8 belong to other clients; only
// the conversions know them.
enum class OrbSdkClientType : uint32_t { None = 0, LCE = 9, LLE = 10, LLI = 11 };

constexpr size_t kOrbSdkClientTypes = 14;

// Unit of work for the SDK worker. Made by the service objects, handled once, in the order of
// posting.
class SdkClientEvent : public OrbEventBase {
 public:
  SdkClientEvent(OrbSdkClientType clientType, std::vector<uint8_t> message)
      : SdkClientEvent(clientType, std::move(message), false) {}
  SdkClientEvent(OrbSdkClientType clientType, std::vector<uint8_t> message, bool lastOfType)
      : cleanup(lastOfType), type(clientType), blob(std::move(message)) {}
  bool isMultiThreadEvent() override { return true; }

  const bool cleanup;  // carries the disable message; after it the client type is deactivated
  const OrbSdkClientType type;
  std::vector<uint8_t> blob;  // moved out by who sends it
  bool inbound = false;       // came from the service and goes to the listener
  bool silent = false;        // a cleanup event without a disable message
};
