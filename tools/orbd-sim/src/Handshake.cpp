// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Handshake.h"

#include <sys/socket.h>
#include <sys/types.h>

#include <cerrno>
#include <cstring>

namespace orbsim {

bool sendHandshakeRecord(int fd, int32_t type, uint32_t sessionId, const HandshakeTap& tap) {
  uint8_t record[8];
  std::memcpy(record, &type, sizeof(type));
  std::memcpy(record + sizeof(type), &sessionId, sizeof(sessionId));
  // Before it is sent, so that it is traced before its answer.
  if (tap) tap(Direction::kToClient, record, sizeof(record));
  ssize_t sent;
  do {
    sent = ::send(fd, record, sizeof(record), MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(sizeof(record));
}

bool readHandshakeReply(int fd, HandshakeReply& reply, const HandshakeTap& tap) {
  reply.bytes.clear();
  uint8_t buffer[HandshakeReply::kSize];
  while (reply.bytes.size() < HandshakeReply::kSize) {
    const ssize_t got = ::recv(fd, buffer, HandshakeReply::kSize - reply.bytes.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    if (tap) tap(Direction::kToDaemon, buffer, static_cast<size_t>(got));
    reply.bytes.insert(reply.bytes.end(), buffer, buffer + got);
  }
  std::memcpy(&reply.type, reply.bytes.data(), sizeof(reply.type));
  std::memcpy(&reply.sessionId, reply.bytes.data() + 4, sizeof(reply.sessionId));
  std::memcpy(&reply.endpoint, reply.bytes.data() + 8, sizeof(reply.endpoint));
  return true;
}

bool performHandshake(int fd, uint32_t sessionId, HandshakeReply& reply, const HandshakeTap& tap) {
  if (!sendHandshakeRecord(fd, kHandshakeInit, sessionId, tap)) return false;
  if (!readHandshakeReply(fd, reply, tap)) return false;
  if (reply.type != kHandshakeResp || reply.sessionId != sessionId) return false;
  return sendHandshakeRecord(fd, kHandshakeComplete, sessionId, tap);
}

}  // namespace orbsim
