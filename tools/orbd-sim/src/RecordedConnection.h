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

// What a service's message is, as far as a replay must know.
struct MessageKey {
  uint32_t sdkType = 0;
  uint64_t event = 0;        // of a blob; for any other frame the id of the message
  uint64_t transaction = 0;  // of a blob

  bool sameRequest(const MessageKey& other) const {
    return sdkType == other.sdkType && event == other.event;
  }
};
MessageKey keyOf(const Frame& frame, Direction direction);
// "LCE SET_REPORTING_CRITERIA", for people.
std::string nameOf(const Frame& frame);
// The frame as a client must get it: with that transaction in its blob.
Frame withTransaction(const Frame& frame, uint64_t transaction);

// What the daemon did after a request.
struct RecordedStep {
  std::chrono::microseconds after{0};  // the request
  bool end = false;                    // it ended the connection
  std::optional<Frame> frame;
  Blob bytes;                     // where it was no whole frame
  bool takesTransaction = false;  // of the request
};

struct RecordedRequest {
  MessageKey key;
  std::vector<RecordedStep> steps;
  bool played = false;
  bool answered = false;  // while the recording is read
};

// One connection of a recording, put in order for playing. Plain values; Replay says who uses it.
struct RecordedConnection {
  uint32_t session = 0;
  uint64_t endpoint = 0;
  bool established = false;               // all three records of the handshake are there
  Blob records;                           // what the daemon said of it, if they are not
  bool endedByDaemon = false;             // before the client had ended it
  std::vector<RecordedRequest> requests;  // the first stands for the handshake
  bool played = false;
};

// One for each connection that was opened, in that order.
std::vector<std::unique_ptr<RecordedConnection>> connectionsOf(
    const std::vector<RecordedEvent>& events);

}  // namespace orbsim
