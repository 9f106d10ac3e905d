// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstring>
#include <utility>
#include <vector>

#include "OrbdSimClient.h"
#include "orbsim/Handshake.h"
#include "orbsim/Recording.h"

namespace orbsimtest {

using orbsim::Direction;
using orbsim::RecordedEvent;

inline Blob words(std::vector<uint32_t> all) {
  Blob bytes(4 * all.size());
  std::memcpy(bytes.data(), all.data(), bytes.size());
  return bytes;
}

// Events as a relay records them.
class Script {
 public:
  explicit Script(uint32_t endpoint = kLcePid, uint32_t session = 9)
      : mEndpoint(endpoint), mSession(session) {}

  // The next connection; the following events belong to it.
  Script& open() {
    ++mConnection;
    return add(RecordedEvent::Kind::kOpen, Direction::kToDaemon, {});
  }
  Script& handshake() {
    said(words({1, mSession})).asked(words({2, mSession, mEndpoint}));
    return said(words({3, mSession}));
  }
  Script& from(uint32_t endpoint, uint32_t session) {
    mEndpoint = endpoint;
    mSession = session;
    return *this;
  }
  Script& at(int milliseconds) {
    mTime = std::chrono::milliseconds(milliseconds);
    return *this;
  }
  Script& asked(const Blob& bytes) {
    return add(RecordedEvent::Kind::kBytes, Direction::kToDaemon, bytes);
  }
  Script& said(const Blob& bytes) {
    return add(RecordedEvent::Kind::kBytes, Direction::kToClient, bytes);
  }
  template <class Request>
  Script& request(const Request& message) {
    return asked(frame<Request>({mEndpoint, 1, 5, 0, mSession, 0}, serialize(message)));
  }
  template <class Request>
  Script& answer(const typename Wire<Request>::Answer& message) {
    return said(frame<Request>({1, mEndpoint, 5, 0, mSession, 0}, serialize(message)));
  }
  Script& end(Direction direction) { return add(RecordedEvent::Kind::kEnd, direction, {}); }

  const std::vector<RecordedEvent>& events() const { return mEvents; }

 private:
  template <class Request>
  static Blob frame(Header header, const Blob& blob) {
    const Blob payload = orbsim::encodeBlobPayload(Wire<Request>::kSdkType, blob);
    header.payloadLength = payload.size();
    return orbsim::encodeFrame(header, payload);
  }
  Script& add(RecordedEvent::Kind kind, Direction direction, const Blob& bytes) {
    RecordedEvent event;
    event.time = mTime;
    event.connection = mConnection;
    event.kind = kind;
    event.direction = direction;
    event.bytes = bytes;
    mEvents.push_back(event);
    return *this;
  }

  uint32_t mEndpoint;
  uint32_t mSession;
  uint32_t mConnection = 0;
  std::chrono::microseconds mTime{0};
  std::vector<RecordedEvent> mEvents;
};

}  // namespace orbsimtest
