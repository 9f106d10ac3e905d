// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <vector>

#include "Functions.h"
#include "orbsim/Frame.h"

// What the model's daemon reads and says, in the messages of the services.
namespace torture::modelanswers {

// What a frame asks for.
struct Asked {
  Service service = kLce;
  int event = 0;
  bool enable = false;
  bool disables = false;
  uint32_t tag = 0;  // the number in a request that bears one
  uint64_t transaction = 0;
};

// False for anything but a request of a service.
bool parse(const orbsim::Frame& frame, Asked& asked);
uint32_t typeOf(Service service);
// The messages that answer a request; reports bear the number of the connection.
std::vector<orbsim::Blob> answers(const Asked& asked, uint64_t connection);
// A status that looks the same for all services.
orbsim::Blob serviceDown();

}  // namespace torture::modelanswers
