// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orbsim/Recording.h"

namespace orbsim {

// The data of a service message that a replay needs.
struct MessageKey {
  uint32_t sdkType = 0;
  uint64_t event = 0;        // for a blob; for another frame the message id
  uint64_t transaction = 0;  // for a blob

  bool sameRequest(const MessageKey& other) const {
    return sdkType == other.sdkType && event == other.event;
  }
};
MessageKey keyOf(const Frame& frame, Direction direction);
// "LCE SET_REPORTING_CRITERIA", for people.
std::string nameOf(const Frame& frame);
// The frame for a client: with that transaction in its blob.
Frame withTransaction(const Frame& frame, uint64_t transaction);

// An action of the daemon after a request.
struct RecordedStep {
  std::chrono::microseconds after{0};  // the request
  bool end = false;                    // whether it ended the connection
  std::optional<Frame> frame;
  Blob bytes;                     // if it was not a complete frame
  bool takesTransaction = false;  // from the request
};

struct RecordedRequest {
  MessageKey key;
  std::vector<RecordedStep> steps;
  bool played = false;
  bool answered = false;  // used while the recording is read
};

// One connection of a recording, in the order for playing. Plain values; Replay documents the
// threads.
struct RecordedConnection {
  uint32_t session = 0;
  uint64_t endpoint = 0;
  bool established = false;               // whether all three handshake records are there
  Blob records;                           // the daemon's handshake records if they are not
  bool endedByDaemon = false;             // before the client ended it
  std::vector<RecordedRequest> requests;  // the first one is for the handshake
  bool played = false;
};

// One for each opened connection, in that order.
std::vector<std::unique_ptr<RecordedConnection>> connectionsOf(
    const std::vector<RecordedEvent>& events);

}  // namespace orbsim
