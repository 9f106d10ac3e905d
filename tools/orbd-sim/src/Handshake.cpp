// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Handshake.h"

#include <sys/socket.h>
#include <sys/types.h>

#include <cerrno>
#include <cstring>

namespace orbsim {

bool sendHandshakeRecord(int fd, int32_t type, uint32_t sessionId) {
  uint8_t record[8];
  std::memcpy(record, &type, sizeof(type));
  std::memcpy(record + sizeof(type), &sessionId, sizeof(sessionId));
  ssize_t sent;
  do {
    sent = ::send(fd, record, sizeof(record), MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(sizeof(record));
}

bool readHandshakeReply(int fd, HandshakeReply& reply) {
  reply.bytes.clear();
  uint8_t buffer[HandshakeReply::kSize];
  while (reply.bytes.size() < HandshakeReply::kSize) {
    const ssize_t got = ::recv(fd, buffer, HandshakeReply::kSize - reply.bytes.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    reply.bytes.insert(reply.bytes.end(), buffer, buffer + got);
  }
  std::memcpy(&reply.type, reply.bytes.data(), sizeof(reply.type));
  std::memcpy(&reply.sessionId, reply.bytes.data() + 4, sizeof(reply.sessionId));
  std::memcpy(&reply.endpoint, reply.bytes.data() + 8, sizeof(reply.endpoint));
  return true;
}

bool performHandshake(int fd, uint32_t sessionId, HandshakeReply& reply) {
  if (!sendHandshakeRecord(fd, kHandshakeInit, sessionId)) return false;
  if (!readHandshakeReply(fd, reply)) return false;
  if (reply.type != kHandshakeResp || reply.sessionId != sessionId) return false;
  return sendHandshakeRecord(fd, kHandshakeComplete, sessionId);
}

}  // namespace orbsim
