// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "orbsim/Frame.h"
#include "orbsim/TraceMessage.h"

namespace orbsim {

// Before the first frame, both sides exchange three records of 32-bit words without a header: the
// daemon proposes a session id (8 bytes), the client answers with this id and its endpoint number
// (12 bytes), the daemon confirms (8 bytes).
constexpr int32_t kHandshakeInit = 1;
constexpr int32_t kHandshakeResp = 2;
constexpr int32_t kHandshakeComplete = 3;

struct HandshakeReply {
  static constexpr size_t kSize = 12;

  Blob bytes;  // the received bytes, also if incomplete
  int32_t type = 0;
  uint32_t sessionId = 0;
  int32_t endpoint = 0;
};

// Gets the bytes of a handshake.
using HandshakeTap = std::function<void(Direction direction, const uint8_t* data, size_t size)>;

// Sends one record of the daemon with one call, because clients expect a record per read.
bool sendHandshakeRecord(int fd, int32_t type, uint32_t sessionId, const HandshakeTap& tap = {});

// Waits for the client's answer. False if the connection ended first; `reply.bytes` then has the
// bytes that came.
bool readHandshakeReply(int fd, HandshakeReply& reply, const HandshakeTap& tap = {});

// The daemon's part of the whole handshake. True if the client gave the right answer.
bool performHandshake(int fd, uint32_t sessionId, HandshakeReply& reply,
                      const HandshakeTap& tap = {});

}  // namespace orbsim
