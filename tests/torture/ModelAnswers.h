// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <vector>

#include "Functions.h"
#include "orbsim/Frame.h"

// Reads the requests and makes the answers of the model's daemon.
namespace torture::modelanswers {

// The request in a frame.
struct Asked {
  Service service = kLce;
  int event = 0;
  bool enable = false;
  bool disables = false;
  uint32_t tag = 0;  // the number in a request; 0 for none
  uint64_t transaction = 0;
};

// False if the frame is no request of a service.
bool parse(const orbsim::Frame& frame, Asked& asked);
uint32_t typeOf(Service service);
// The messages that answer a request; reports contain the number of the connection.
std::vector<orbsim::Blob> answers(const Asked& asked, uint64_t connection);
// A status; its bytes are the same for every service.
orbsim::Blob serviceDown();

}  // namespace torture::modelanswers
